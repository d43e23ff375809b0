#pragma once

// Even-odd polygon interiors with vertices in 1/256 pixel, scanned row by row
// into a SpanWriter.

#include <cmath>
#include <cstdint>

#if defined(__SSE2__) && defined(__x86_64__)
#include <emmintrin.h>
#endif

#include "VtRasterSpans_p.h"

namespace VTC::gfx::raster {

// A coordinate in 1/256 pixel.
using Fixed = int64_t;
constexpr Fixed kFixedOne = 256;

struct FixedPoint {
    Fixed x = 0;
    Fixed y = 0;
    friend bool operator==(const FixedPoint&, const FixedPoint&) = default;
};

// The nearest 1/256 (ties to even). Inline, and on x86-64 the instruction
// that lrint is made of without the call: shapes convert a dozen points each.
inline Fixed ToFixed(double v)
{
#if defined(__SSE2__) && defined(__x86_64__)
    return _mm_cvtsd_si64(_mm_set_sd(v * kFixedOne));
#else
    return std::lrint(v * kFixedOne);
#endif
}
inline FixedPoint ToFixed(double x, double y) { return {ToFixed(x), ToFixed(y)}; }

// Writes the even-odd interior of the closed polygons (counts[i] vertices
// each, one after the other). The rules are those of a non-antialiased
// scan at 1/256 pixel: pixel row y is sampled at y + 127/256; an edge covers
// the rows whose sample lies at or below its upper end and above its lower
// end, and crosses the sample at x rounded down to 1/256 and held within the
// writer's limits; a crossing at x starts or ends a run at pixel
// floor((x + 127) / 256); runs less than two pixels apart join. Horizontal edges take no part. Any coordinate an int
// pixel can hold is exact, and only the rows within the limits are visited.
void FillPolygons(SpanWriter& out, const FixedPoint* points, const int* counts, int polyCount);

inline void FillPolygon(SpanWriter& out, const FixedPoint* points, int count)
{
    FillPolygons(out, points, &count, 1);
}

}  // namespace VTC::gfx::raster
