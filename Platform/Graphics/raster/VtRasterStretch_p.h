#pragma once

// The innermost loop of the polygon scan on plain 32-bit rows: two edges
// stepped down a stretch of rows in which neither changes, the run between
// their crossings written in each row. One file per instruction set, chosen
// once (ChosenStretchWriter); every writer steps the edges by the same
// integer arithmetic, so all write the same pixels.

#include <algorithm>
#include <span>

#include "VtRasterScan_p.h"
#include "VtRasterSpans_p.h"

namespace VTC::gfx::raster {

// An edge's crossing of successive sample rows: x + remainder / dy in 1/256
// pixel, 0 <= remainder < dy, advanced by stepX + stepRemainder / dy a row.
struct EdgeSteps {
    Fixed x, remainder, dy, stepX, stepRemainder;

    // Without a branch: the carry comes in no predictable pattern.
    void Step()
    {
        remainder += stepRemainder;
        const Fixed carry = remainder >= dy ? 1 : 0;
        x += stepX + carry;
        remainder -= carry * dy;
    }
};

// Pixel row y is sampled this far below its top, in 1/256 pixel.
constexpr Fixed kSampleBelowTop = 127;

// The pixel a crossing at x starts or ends a run at.
inline Fixed CrossingPixel(Fixed x) { return (x + kSampleBelowTop) >> 8; }

// Writes `count` rows from `row` on (each the run between the two crossings,
// held within left .. right) and leaves both edges stepped past them.
using StretchWriter = void (*)(EdgeSteps& a, EdgeSteps& b, Fixed count, Fixed left, Fixed right,
                               const Plain32Rows& rows, unsigned char* row);

// A row at a time; inline, for the short stretches that most shapes have.
inline void WriteStretchPortable(EdgeSteps& a, EdgeSteps& b, Fixed count, Fixed left, Fixed right,
                                 const Plain32Rows& rows, unsigned char* row)
{
    // Edges and rows held locally: the pixels written could otherwise alias them.
    EdgeSteps first = a, second = b;
    const Plain32Rows pixels = rows;
    for (; count > 0; --count, row += pixels.stride) {
        const Fixed cutA = CrossingPixel(first.x);
        const Fixed cutB = CrossingPixel(second.x);
        first.Step();
        second.Step();
        // Holding the run within the limits is holding each crossing there:
        // the rounding keeps the order, and a run beside the limits is empty either way.
        pixels.Fill(row, std::max(std::min(cutA, cutB), left), std::min(std::max(cutA, cutB), right));
    }
    a = first;
    b = second;
}

// Stretches of fewer rows are written by WriteStretchPortable: they cost
// more to start in vector lanes than they save.
constexpr Fixed kFewestLaneRows = 8;

#if defined(__x86_64__)
// VtRasterStretchAvx512.cpp: the crossings of eight rows at a time in 32-bit
// lanes where the stretch's values fit them, each short run written by one
// masked store; only where the processor has AVX-512 (F, VL) and BMI2.
void WriteStretchAvx512(EdgeSteps& a, EdgeSteps& b, Fixed count, Fixed left, Fixed right, const Plain32Rows& rows,
                        unsigned char* row);
#endif

struct StretchWriterChoice {
    const char* name;
    StretchWriter write;
};

// Every writer this processor can run, widest first.
std::span<const StretchWriterChoice> RunnableStretchWriters();
// The widest of them, chosen on first use.
StretchWriter ChosenStretchWriter();

}  // namespace VTC::gfx::raster
