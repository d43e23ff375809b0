#pragma once

// Lines, outlines and ellipses as spans. Polygons and lines are moved 1/128
// pixel up and left, so that no pixel centre lies exactly on an edge:
// neighbouring shapes that share an edge neither overlap nor leave a gap.
// Ellipses stay where they are, so that they keep their symmetry, and decide
// centres on their outline by a rule of their own.

#include "VtRasterScan_p.h"
#include "VtRasterSpans_p.h"

namespace VTC::gfx::raster {

// The shift up and left, in 1/256 pixel.
constexpr Fixed kEdgeShift = 2;

// The pixels, first to past the last, that a pen of `width` covers across a
// path through the centres of the pixels at v.
constexpr std::pair<int64_t, int64_t> PenBand(int64_t v, int width) { return {v - width / 2, v - width / 2 + width}; }

// Even-odd interior of a polygon of integer vertices (pixel corners).
void FillPolygon(SpanWriter& out, const ZedaPoint* points, int count);

// A butt-capped line of `width` pixels along the path from the centre of
// pixel `from` to the centre of pixel `to`, both pulled back 1/32 pixel along
// the line: the pixels whose centres lie inside that rectangle. A line of
// zero length draws nothing.
void StrokeLine(SpanWriter& out, const ZedaPoint& from, const ZedaPoint& to, int width);

// The outline of a closed polygon through the centres of its vertex pixels:
// the rectangle of `width` along each edge (not pulled back) and, at each
// corner, the wedge that closes the outer side, mitred up to a miter length
// of 10 pen widths and bevelled beyond. A polygon whose vertices are all one
// point paints the pen's square, PenBand x PenBand, about that pixel.
void StrokePolygon(SpanWriter& out, const ZedaPoint* points, int count, int width);

// The pixels whose centres lie strictly inside the ellipse inscribed in
// `bounds` (corners on pixel corners). False, with nothing written, when a
// semi-axis passes 2^30 pixels.
bool FillEllipse(SpanWriter& out, const ZedaRect& bounds);

// The outline of the ellipse whose path runs through the centres of the
// edge pixels of `bounds` (its semi-axes are half the bounds less half a
// pixel): the pixels whose centres lie strictly inside that ellipse grown by
// width / 2 on both semi-axes and not strictly inside it shrunk by width / 2,
// so that rings which meet neither overlap nor leave a gap. Where the shrunk
// ellipse vanishes the grown one is covered whole. For a circle these are
// the centres at a distance d from the path's centre with r - w/2 <= d <
// r + w/2. Centres and semi-axes are whole half pixels and the tests exact.
// False, with nothing written, when a semi-axis passes 2^30 pixels.
bool StrokeEllipse(SpanWriter& out, const ZedaRect& bounds, int width);

}  // namespace VTC::gfx::raster
