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

// Rows of 32-bit pixels and the value to write, held by value so that a
// scan keeps them in registers: the pixels it writes could otherwise alias
// them, and every row would read them back from memory.
struct Plain32Rows {
    unsigned char* data;
    std::ptrdiff_t stride;
    uint32_t raw;

    unsigned char* Row(int64_t y) const { return data + static_cast<std::ptrdiff_t>(y) * stride; }

    // Pixels from .. to - 1 of a row, all within it. A plain loop: for the
    // runs of two or three pixels that bands and rings have it beats writing
    // the first four pixels without a branch on the length, and the
    // compiler vectorises it for long runs.
    void Fill(unsigned char* row, int64_t from, int64_t to) const
    {
        auto* p = reinterpret_cast<uint32_t*>(row);
        for (int64_t x = from; x < to; ++x) {
            p[x] = raw;
        }
    }
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
            const Plain32Rows rows = Plain32();
            rows.Fill(rows.Row(y), from, to);
            return;
        }
        WriteClipped(static_cast<int>(y), from, to);
    }
    void Box(const ZedaRect& box);

    // 32-bit pixels without a clip of several rectangles or a sink: spans
    // within the limits may then be written through Plain32(), without
    // further checks.
    bool IsPlain32() const { return clip_ == nullptr && sink_ == nullptr && pixels_.bpp == 32; }
    Plain32Rows Plain32() const { return {pixels_.data, pixels_.stride, raw_}; }

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
