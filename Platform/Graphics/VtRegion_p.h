#pragma once

// cairo regions of device pixels, as the clip of every painter.

#include <cairo.h>

#include <memory>

#include "LqBase.h"

namespace VTC::gfx {

struct RegionDeleter {
    void operator()(cairo_region_t* region) const { cairo_region_destroy(region); }
};
using RegionPtr = std::unique_ptr<cairo_region_t, RegionDeleter>;

RegionPtr MakeRegion(const ZEDA::ZedaRect& rect);
RegionPtr CopyRegion(const cairo_region_t* region);
// The intersection of two clips, either of which may be null (no clip).
RegionPtr IntersectClips(const cairo_region_t* a, const cairo_region_t* b);
ZEDA::ZedaRect RegionExtents(const cairo_region_t* region);

// Calls visit(rect) for each rectangle of `box` that lies within `bounds` and
// inside `clip` (null: no clip).
template <typename Visit>
void ForEachVisibleRect(ZEDA::ZedaRect box, const ZEDA::ZedaRect& bounds, const cairo_region_t* clip, Visit&& visit)
{
    if (!box.Intersection(bounds)) {
        return;
    }
    // Without a clip of several rectangles no region needs to be made.
    if (clip == nullptr || cairo_region_num_rectangles(clip) <= 1) {
        if (clip != nullptr) {
            const ZEDA::ZedaRect only = RegionExtents(clip);
            if (!box.Intersection(only)) {
                return;
            }
        }
        visit(box);
        return;
    }
    RegionPtr visible = MakeRegion(box);
    if (clip != nullptr) {
        cairo_region_intersect(visible.get(), clip);
    }
    const int count = cairo_region_num_rectangles(visible.get());
    for (int i = 0; i < count; ++i) {
        cairo_rectangle_int_t r;
        cairo_region_get_rectangle(visible.get(), i, &r);
        visit(ZEDA::ZedaRect(r.x, r.y, r.x + r.width, r.y + r.height));
    }
}

}  // namespace VTC::gfx
