#pragma once

// Private plumbing of the graphics library: live-object accounting, fault
// injection, logging, and access to the private state of images and regions.

#include <cairo.h>

#include <memory>

#include "VtGraphicsTypes.h"
#include "VtImage.h"
#include "VtPixels.h"
#include "VtRgn.h"

namespace VTC {

namespace gfx {

// Every object the manager hands out is counted while it lives.
void CountCreated();
void CountDestroyed();
// True when an injected fault of this kind fires now.
bool TakeFault(VtFaultKind kind);
void LogFailure(const char* code, const char* source, int line);

struct RegionDeleter {
    void operator()(cairo_region_t* region) const { cairo_region_destroy(region); }
};
using RegionPtr = std::unique_ptr<cairo_region_t, RegionDeleter>;

RegionPtr MakeRegion(const ZEDA::ZedaRect& rect);
RegionPtr CopyRegion(const cairo_region_t* region);
ZEDA::ZedaRect RegionExtents(const cairo_region_t* region);
// The even-odd interior of the polygons, sampled at pixel centres.
RegionPtr RasterisePolygons(const ZEDA::ZedaPoint* points, const int* counts, int polyCount);

// Calls visit(rect) for each rectangle of `box` that lies within `bounds` and
// inside `clip` (null: no clip).
template <typename Visit>
void ForEachVisibleRect(ZEDA::ZedaRect box, const ZEDA::ZedaRect& bounds, const cairo_region_t* clip, Visit&& visit)
{
    if (!box.Intersection(bounds)) {
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

}  // namespace gfx

// The one door into the private parts of images and regions.
struct VtGraphicsInternals {
    // `counted` objects take part in the manager's live-object count.
    static std::unique_ptr<VtImage> MakeImage(bool counted);
    static std::unique_ptr<VtRgn> MakeRgn(bool counted);

    static gfx::RasterView View(const VtImage& image);
    // For a caller that writes every pixel of `rect` before anything reads
    // it: a new image's zero fill is done only outside it.
    static gfx::RasterView ViewForOverwrite(const VtImage& image, const ZEDA::ZedaRect& rect);
    static gfx::PixelFormat Format(const VtImage& image);
    // Allocates width x height pixels of `format`, copied from `bits` (rows at
    // the image's stride) or all bytes 0.
    static bool Allocate(VtImage& image, int width, int height, gfx::PixelFormat format,
                         const void* bits = nullptr);

    static const cairo_region_t* Region(const VtRgn& rgn);
    static void SetRegion(VtRgn& rgn, gfx::RegionPtr region);
};

}  // namespace VTC
