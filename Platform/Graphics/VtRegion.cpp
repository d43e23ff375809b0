#include "VtRegion_p.h"

namespace VTC::gfx {

using ZEDA::ZedaRect;

RegionPtr MakeRegion(const ZedaRect& rect)
{
    if (rect.IsEmpty()) {
        return RegionPtr(cairo_region_create());
    }
    const cairo_rectangle_int_t r{rect.left, rect.top, rect.Width(), rect.Height()};
    return RegionPtr(cairo_region_create_rectangle(&r));
}

RegionPtr CopyRegion(const cairo_region_t* region) { return RegionPtr(cairo_region_copy(region)); }

RegionPtr IntersectClips(const cairo_region_t* a, const cairo_region_t* b)
{
    if (a == nullptr && b == nullptr) {
        return nullptr;
    }
    RegionPtr result = CopyRegion(a != nullptr ? a : b);
    if (a != nullptr && b != nullptr) {
        cairo_region_intersect(result.get(), b);
    }
    return result;
}

ZedaRect RegionExtents(const cairo_region_t* region)
{
    if (cairo_region_is_empty(region)) {
        return {};
    }
    cairo_rectangle_int_t r;
    cairo_region_get_extents(region, &r);
    return {r.x, r.y, r.x + r.width, r.y + r.height};
}

}  // namespace VTC::gfx
