#pragma once

#include <cairo.h>

#include <memory>

#include "RasterImage.h"

// Pictures (straight alpha) to and from cairo surfaces (premultiplied alpha).
namespace LqTool {

struct SurfaceDeleter {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
struct ContextDeleter {
    void operator()(cairo_t* context) const { cairo_destroy(context); }
};
using Surface = std::unique_ptr<cairo_surface_t, SurfaceDeleter>;
using Context = std::unique_ptr<cairo_t, ContextDeleter>;

Surface PictureSurface(const LqExample::RasterImage& picture);
// The pixels of an ARGB32 image surface.
LqExample::RasterImage SurfacePicture(cairo_surface_t* surface);

// `picture` scaled so that its longer side is `side` pixels, alpha kept.
LqExample::RasterImage ScaleToFit(const LqExample::RasterImage& picture, int side);
// `picture` on a transparent square of `side` pixels, centred, scaled down
// when it does not fit (never up).
LqExample::RasterImage CentreInSquare(const LqExample::RasterImage& picture, int side);

}  // namespace LqTool
