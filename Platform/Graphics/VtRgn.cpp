#include "VtRgn.h"

#include <algorithm>
#include <memory>
#include <utility>

#include "VtGraphicsLog_p.h"
#include "VtObjectAccounting_p.h"
#include "VtPolygonRegion_p.h"
#include "VtRgn_p.h"
#include "VtObjectMemory_p.h"

namespace VTC {

using ZEDA::ZedaPoint;
using ZEDA::ZedaRect;

namespace {

constexpr gfx::GraphicsLog kLog{"Platform/Graphics/VtRgn"};

// New region objects share one empty region, which nothing changes (every
// operation makes a region of its own), so that making one allocates nothing.
cairo_region_t* SharedEmptyRegion()
{
    static cairo_region_t* const empty = cairo_region_create();
    return cairo_region_reference(empty);
}

}  // namespace

struct VtRgn::State : gfx::PooledObject {
    gfx::RegionPtr region{SharedEmptyRegion()};
    bool counted = false;
};

VtRgn::VtRgn() : state_(std::make_unique<State>()) {}

void* VtRgn::operator new(std::size_t size) { return gfx::TakeObjectMemory(size); }

void VtRgn::operator delete(void* block, std::size_t size) noexcept { gfx::GiveObjectMemory(block, size); }

VtRgn::~VtRgn()
{
    if (state_->counted) {
        gfx::CountDestroyed();
    }
}

std::unique_ptr<VtRgn> VtRgnAccess::MakeRgn(bool counted)
{
    std::unique_ptr<VtRgn> rgn(new VtRgn());
    rgn->state_->counted = counted;
    if (counted) {
        gfx::CountCreated();
    }
    return rgn;
}

const cairo_region_t* VtRgnAccess::Region(const VtRgn& rgn) { return rgn.state_->region.get(); }


bool VtRgn::CreateRectRegion(int left, int top, int right, int bottom)
{
    ZedaRect rect{left, top, right, bottom};
    rect.Normalize();
    state_->region = gfx::MakeRegion(rect);
    return true;
}

bool VtRgn::CreatePolygonRegion(const ZedaPoint* points, int count)
{
    return CreatePolyPolygonRegion(points, &count, 1);
}

bool VtRgn::CreatePolyPolygonRegion(const ZedaPoint* points, const int* counts, int polyCount)
{
    if (gfx::TakeFault(VT_FAULT_CREATE_REGION)) {
        return false;
    }
    const bool countsValid =
        counts != nullptr && polyCount >= 1 && std::all_of(counts, counts + polyCount, [](int c) { return c >= 0; });
    if (points == nullptr || !countsValid || std::all_of(counts, counts + polyCount, [](int c) { return c == 0; })) {
        kLog.Fail("GRg001");
        return false;
    }
    state_->region = gfx::RasterisePolygons(points, counts, polyCount);
    return true;
}

bool VtRgn::CombineRegion(VtRgn* a, VtRgn* b, int mode)
{
    if (a == nullptr || (b == nullptr && mode != 5)) {
        kLog.Fail("GRg002");
        return false;
    }
    gfx::RegionPtr result = gfx::CopyRegion(a->state_->region.get());
    cairo_status_t status = CAIRO_STATUS_SUCCESS;
    switch (mode) {
    case 1:
        status = cairo_region_intersect(result.get(), b->state_->region.get());
        break;
    case 2:
        status = cairo_region_union(result.get(), b->state_->region.get());
        break;
    case 3:
        status = cairo_region_xor(result.get(), b->state_->region.get());
        break;
    case 4:
        status = cairo_region_subtract(result.get(), b->state_->region.get());
        break;
    case 5:
        break;
    default:
        kLog.Fail("GRg003");
        return false;
    }
    if (status != CAIRO_STATUS_SUCCESS) {
        kLog.Fail("GRg004");
        return false;
    }
    state_->region = std::move(result);
    return true;
}

ZedaRect VtRgn::GetBoundingRect() const { return gfx::RegionExtents(state_->region.get()); }

bool VtRgn::PtInRegion(int x, int y) const { return cairo_region_contains_point(state_->region.get(), x, y); }

bool VtRgn::IsEmpty() const { return cairo_region_is_empty(state_->region.get()); }

void VtRgn::CopyFrom(const VtRgn& other)
{
    if (&other != this) {
        state_->region = gfx::CopyRegion(other.state_->region.get());
    }
}

}  // namespace VTC
