#include "VtEspecialFillRegion_p.h"

#include <algorithm>
#include <array>
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

// A device-pixel copy of the points: held inline for the polygons a call
// usually brings, so that it takes nothing from the heap; larger ones on it.
class DevicePoints {
public:
    DevicePoints(VtGraphics* graphics, const ZedaPoint* points, int count)
    {
        const auto n = static_cast<std::size_t>(std::max(count, 0));
        if (n > inline_.size()) {
            heap_.assign(points, points + n);
            data_ = heap_.data();
        } else {
            std::copy(points, points + n, inline_.begin());
        }
        graphics->LogicalToDevicePoints(data_, static_cast<int>(n));
    }
    DevicePoints(const DevicePoints&) = delete;
    DevicePoints& operator=(const DevicePoints&) = delete;

    const ZedaPoint* Data() const { return data_; }

private:
    std::array<ZedaPoint, 16> inline_{};
    std::vector<ZedaPoint> heap_;
    ZedaPoint* data_ = inline_.data();
};

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
    const DevicePoints copy(graphics, points, count);
    if (!create(region.get(), copy.Data())) {
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
