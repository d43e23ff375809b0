#include "VtEspecialFillRegion_p.h"

#include <algorithm>
#include <vector>

#include "LqGraphics.h"
#include "VtEspecialFill_p.h"
#include "VtModuleLog_p.h"

namespace VTC::EspecialFillDetail {

bool ClipRegionToScreen(VtRgn& region)
{
    const ZedaRect screen = ScreenRect();
    const Owned<VtRgn> screenRegion(VtGraphicsManager::NewRgn(0));
    if (!screenRegion) {
        especialFillLog.Fail("EFd009");
        return false;
    }
    screenRegion->CreateRectRegion(screen.left, screen.top, screen.right, screen.bottom);
    region.CombineRegion(&region, screenRegion.get(), 1);
    return true;
}

namespace {

std::vector<ZedaPoint> DevicePoints(VtGraphics* graphics, const ZedaPoint* points, int count)
{
    std::vector<ZedaPoint> copy(points, points + std::max(count, 0));
    graphics->LogicalToDevicePoints(copy.data(), static_cast<int>(copy.size()));
    return copy;
}

int PointTotal(const int* counts, int polyCount)
{
    int total = 0;
    for (int i = 0; i < polyCount; ++i)
        total += counts[i];
    return total;
}

// A new region that `create` builds from a device-pixel copy of `count`
// points; the copy is made only once the region object exists.
template <typename Create>
Owned<VtRgn> NewShapeRegion(VtGraphics* graphics, const ZedaPoint* points, int count, const char* noRegionCode,
                            Create create)
{
    Owned<VtRgn> region(VtGraphicsManager::NewRgn(0));
    if (!region) {
        especialFillLog.Fail(noRegionCode);
        return nullptr;
    }
    const std::vector<ZedaPoint> copy = DevicePoints(graphics, points, count);
    if (!create(region.get(), copy.data())) {
        region.reset();
        especialFillLog.Fail("EFd009");
    }
    return region;
}

}  // namespace

Owned<VtRgn> NewPolygonRegion(VtGraphics* graphics, const ZedaPoint* points, int count,
                              const char* noRegionCode)
{
    return NewShapeRegion(graphics, points, count, noRegionCode,
                          [&](VtRgn* region, const ZedaPoint* copy) { return region->CreatePolygonRegion(copy, count); });
}

Owned<VtRgn> NewPolyPolygonRegion(VtGraphics* graphics, const ZedaPoint* points, const int* counts, int polyCount,
                                  const char* noRegionCode)
{
    return NewShapeRegion(graphics, points, PointTotal(counts, polyCount), noRegionCode,
                          [&](VtRgn* region, const ZedaPoint* copy) {
                              return region->CreatePolyPolygonRegion(copy, counts, polyCount);
                          });
}

}  // namespace VTC::EspecialFillDetail
