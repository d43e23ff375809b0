#pragma once

// One-bit coverage masks rasterised by cairo without anti-aliasing.

#include <cairo.h>

#include <algorithm>
#include <bit>
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

// The first pixel at or after `from` whose bit is `set`, or `width` if none.
// On a little-endian host the first pixel of a word is its lowest bit.
inline int NextMaskBit(const uint32_t* row, int from, int width, bool set)
{
    const uint32_t flip = set ? 0u : 0xFFFFFFFFu;
    int w = from / 32;
    uint32_t word = (row[w] ^ flip) & (0xFFFFFFFFu << (from % 32));
    while (word == 0) {
        if (++w * 32 >= width) {
            return width;
        }
        word = row[w] ^ flip;
    }
    return std::min(width, w * 32 + std::countr_zero(word));
}

template <typename Emit>
void MaskSurface::ForEachRun(Emit&& emit)
{
    cairo_surface_flush(surface_);
    const unsigned char* data = cairo_image_surface_get_data(surface_);
    const int stride = cairo_image_surface_get_stride(surface_);
    const int width = area_.Width();
    for (int y = 0; y < area_.Height(); ++y) {
        const auto* row = reinterpret_cast<const uint32_t*>(data + static_cast<std::ptrdiff_t>(y) * stride);
        for (int x = NextMaskBit(row, 0, width, true); x < width;) {
            const int end = NextMaskBit(row, x, width, false);
            emit(area_.top + y, area_.left + x, area_.left + end);
            x = end < width ? NextMaskBit(row, end, width, true) : width;
        }
    }
}

}  // namespace VTC::gfx
