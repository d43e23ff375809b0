#pragma once

// Raster pixels handed to cairo: for PNG files and PDF and SVG documents.

#include <cairo.h>

#include <cstddef>
#include <cstdint>
#include <memory>

#include "VtPixels_p.h"

namespace VTC::gfx {

struct SurfaceDeleter {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
using SurfacePtr = std::unique_ptr<cairo_surface_t, SurfaceDeleter>;

struct ContextDeleter {
    void operator()(cairo_t* cr) const { cairo_destroy(cr); }
};
using ContextPtr = std::unique_ptr<cairo_t, ContextDeleter>;

// A cairo image of `view`'s size whose pixel (x, y) is pixelAt(colour of view's (x, y)).
template <typename PixelAt>
SurfacePtr ConvertToCairo(const RasterView& view, cairo_format_t format, PixelAt&& pixelAt)
{
    SurfacePtr surface(cairo_image_surface_create(format, view.width, view.height));
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) {
        return surface;
    }
    unsigned char* data = cairo_image_surface_get_data(surface.get());
    const int stride = cairo_image_surface_get_stride(surface.get());
    for (int y = 0; y < view.height; ++y) {
        auto* row = reinterpret_cast<uint32_t*>(data + static_cast<std::ptrdiff_t>(y) * stride);
        for (int x = 0; x < view.width; ++x) {
            row[x] = pixelAt(RawToColour(view, ReadRaw(view, x, y)) & 0xFFFFFFu);
        }
    }
    cairo_surface_mark_dirty(surface.get());
    return surface;
}

}  // namespace VTC::gfx
