#pragma once

// Runs of one raw pixel value written straight into pixel rows, through a
// clip region.

#include <cairo.h>

#include <cstddef>
#include <cstdint>

#include "LqBase.h"

namespace VTC::gfx::raster {

using ZEDA::ZedaPoint;
using ZEDA::ZedaRect;

// Pixel rows owned by someone else: 1 (first pixel in the high bit), 8, 16,
// 24 or 32 bits per pixel.
struct Pixels {
    unsigned char* data = nullptr;
    int width = 0;
    int height = 0;
    int stride = 0;
    int bpp = 32;
};

// Takes runs instead of pixels (to build regions).
class RunSink {
public:
    virtual ~RunSink() = default;
    virtual void Run(int y, int x0, int x1) = 0;
};

// Writes spans of `raw` (the stored value: 0 or 1, an index, a 5-6-5 value,
// three bytes with byte 0 lowest, or a 32-bit word) to the pixels that lie
// on the surface and inside the clip (null: no clip).
class SpanWriter {
public:
    SpanWriter(const Pixels& pixels, uint32_t raw, const cairo_region_t* clip);
    // Hands the spans within `limits` to `sink` instead.
    SpanWriter(const ZedaRect& limits, RunSink& sink);

    // The surface cut to the clip's extents: nothing outside it is written.
    const ZedaRect& Limits() const { return limits_; }
    bool IsEmpty() const { return limits_.IsEmpty(); }

    // Pixels x0 .. x1 - 1 of row y. Inline: shapes write a short span per row.
    void Span(int64_t y, int64_t x0, int64_t x1)
    {
        if (y < limits_.top || y >= limits_.bottom) {
            return;
        }
        const auto from = static_cast<int>(x0 < limits_.left ? limits_.left : x0);
        const auto to = static_cast<int>(x1 > limits_.right ? limits_.right : x1);
        if (from >= to) {
            return;
        }
        if (IsPlain32()) {
            FillPlain32(static_cast<int>(y), from, to);
            return;
        }
        WriteClipped(static_cast<int>(y), from, to);
    }
    void Box(const ZedaRect& box);

    // 32-bit pixels without a clip of several rectangles: spans within the
    // limits may then be written with FillPlain32, without further checks.
    bool IsPlain32() const { return clip_ == nullptr && sink_ == nullptr && pixels_.bpp == 32; }
    void FillPlain32(int y, int from, int to) const
    {
        // The first four pixels without a branch on the length (writing the
        // last one again instead): short spans of varying length would make
        // a loop's exit mispredict on most rows.
        auto* p = reinterpret_cast<uint32_t*>(pixels_.data + static_cast<std::ptrdiff_t>(y) * pixels_.stride);
        const uint32_t raw = raw_;
        const int last = to - 1;
        p[from] = raw;
        p[from + 1 < last ? from + 1 : last] = raw;
        p[from + 2 < last ? from + 2 : last] = raw;
        p[from + 3 < last ? from + 3 : last] = raw;
        for (int x = from + 4; x < to; ++x) {
            p[x] = raw;
        }
    }

private:
    void WriteClipped(int y, int x0, int x1) const;
    void WriteThroughClip(int y, int x0, int x1) const;
    void Write(int y, int x0, int x1) const;

    Pixels pixels_;
    uint32_t raw_;
    const cairo_region_t* clip_;  // null when the clip is at most one rectangle
    ZedaRect limits_;
    RunSink* sink_ = nullptr;
};

}  // namespace VTC::gfx::raster
