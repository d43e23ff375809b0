#pragma once

// One-bit coverage masks rasterised by cairo without anti-aliasing.

#include <cairo.h>

#include <cstdint>
#include <memory>

#include "LqBase.h"

namespace VTC::gfx {

// Shapes are shifted by this fraction of a pixel up and left, so that an edge
// never passes exactly through a pixel centre and every tie is broken the
// same way: a 1-pixel line through pixel centres covers exactly one row.
constexpr double kEdgeBias = 1.0 / 128.0;

// An A1 surface covering `area` of device space, with a context whose user
// space is device pixels.
class MaskSurface {
public:
    explicit MaskSurface(const ZEDA::ZedaRect& area);
    MaskSurface(const MaskSurface&) = delete;
    MaskSurface& operator=(const MaskSurface&) = delete;
    ~MaskSurface();

    bool IsValid() const;
    cairo_t* Context() const { return context_; }
    // Restricts later drawing to `clip` (device pixels).
    void Clip(const cairo_region_t* clip);
    // Calls emit(y, x0, x1) in device pixels for every run of covered pixels.
    template <typename Emit>
    void ForEachRun(Emit&& emit);

private:
    ZEDA::ZedaRect area_;
    cairo_surface_t* surface_ = nullptr;
    cairo_t* context_ = nullptr;
};

// Adds the rectangles of `region` that meet `area` to the path of `cr`.
void AppendRegionPath(cairo_t* cr, const cairo_region_t* region, const ZEDA::ZedaRect& area);

template <typename Emit>
void MaskSurface::ForEachRun(Emit&& emit)
{
    cairo_surface_flush(surface_);
    const unsigned char* data = cairo_image_surface_get_data(surface_);
    const int stride = cairo_image_surface_get_stride(surface_);
    const int width = area_.Width();
    const int words = (width + 31) / 32;
    for (int y = 0; y < area_.Height(); ++y) {
        const auto* row = reinterpret_cast<const uint32_t*>(data + static_cast<std::ptrdiff_t>(y) * stride);
        int runStart = -1;
        for (int w = 0; w < words; ++w) {
            uint32_t word = row[w];
            if (runStart < 0 && word == 0) {
                continue;
            }
            if (runStart >= 0 && word == 0xFFFFFFFFu) {
                continue;
            }
            // On a little-endian host the first pixel is the lowest bit.
            for (int bit = 0; bit < 32; ++bit) {
                const bool set = (word >> bit) & 1u;
                const int x = w * 32 + bit;
                if (x >= width) {
                    break;
                }
                if (set && runStart < 0) {
                    runStart = x;
                } else if (!set && runStart >= 0) {
                    emit(area_.top + y, area_.left + runStart, area_.left + x);
                    runStart = -1;
                }
            }
        }
        if (runStart >= 0) {
            emit(area_.top + y, area_.left + runStart, area_.left + width);
        }
    }
}

}  // namespace VTC::gfx
