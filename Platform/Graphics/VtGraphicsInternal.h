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

}  // namespace gfx

// The one door into the private parts of images and regions.
struct VtGraphicsInternals {
    // `counted` objects take part in the manager's live-object count.
    static std::unique_ptr<VtImage> MakeImage(bool counted);
    static std::unique_ptr<VtRgn> MakeRgn(bool counted);

    static gfx::RasterView View(const VtImage& image);
    static gfx::PixelFormat Format(const VtImage& image);
    // Allocates width x height pixels of `format`, copied from `bits` (rows at
    // the image's stride) or all bytes 0.
    static bool Allocate(VtImage& image, int width, int height, gfx::PixelFormat format,
                         const void* bits = nullptr);

    static const cairo_region_t* Region(const VtRgn& rgn);
    static void SetRegion(VtRgn& rgn, gfx::RegionPtr region);
};

}  // namespace VTC
