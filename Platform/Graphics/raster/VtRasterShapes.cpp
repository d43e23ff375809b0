#include "VtRasterShapes_p.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace VTC::gfx::raster {

namespace {

using Wide = unsigned __int128;

// How far a butt-capped line is pulled back along its direction, so that its
// first pixel is drawn and its last is not.
constexpr double kLineEndPull = 1.0 / 32.0;
constexpr double kShift = static_cast<double>(kEdgeShift) / kFixedOne;
// Beyond this many pixels a semi-axis would overflow the exact products.
constexpr int64_t kLargestSemiAxis = int64_t{1} << 30;
// Outlines with sharper corners are bevelled.
constexpr double kMiterLimit = 10.0;

struct Vector {
    double x = 0;
    double y = 0;
};

// The centre of pixel v, moved up and left by the edge shift.
double PathCoordinate(int v) { return v + 0.5 - kShift; }

std::vector<FixedPoint>& FixedScratch()
{
    thread_local std::vector<FixedPoint> points;
    points.clear();
    return points;
}

// An ellipse about the origin with semi-axes a and b, in half pixels: the
// unit in which pixel centres and the semi-axes of every ellipse drawn are
// whole numbers, so that the tests are exact.
class Ellipse {
public:
    Ellipse(int64_t a, int64_t b) : a_(a), b_(b), circle_(a == b) {}

    bool IsEmpty() const { return a_ <= 0 || b_ <= 0; }
    int64_t A() const { return a_; }
    int64_t B() const { return b_; }

    // Strictly inside.
    bool Inside(int64_t x, int64_t y) const
    {
        if (circle_) {
            // Each square stays below 2^62 within kLargestSemiAxis.
            return static_cast<uint64_t>(x * x) + static_cast<uint64_t>(y * y) < static_cast<uint64_t>(a_ * a_);
        }
        const Wide bb = Wide(b_) * Wide(b_);
        const Wide aa = Wide(a_) * Wide(a_);
        return Wide(x * x) * bb + Wide(y * y) * aa < aa * bb;
    }

private:
    int64_t a_, b_;
    bool circle_;
};

// The centre of pixel p, in half pixels from a centre at twiceCentre / 2.
int64_t HalfPixelsFrom(int64_t p, int64_t twiceCentre) { return 2 * p + 1 - twiceCentre; }

class EllipseRuns {
public:
    EllipseRuns(const Ellipse& e, int64_t twiceCentreX)
        : e_(e), c_(HalfPixelsFrom(0, twiceCentreX)), nearest_(NearestToCentre(c_))
    {
    }

    // The run lo .. hi of the row whose centres lie y half pixels from the centre; false when empty.
    bool Next(int64_t y, int64_t& lo, int64_t& hi)
    {
        y_ = y;
        if (e_.IsEmpty() || y <= -e_.B() || y >= e_.B()) {
            return open_ = false;
        }
        if (!open_) {
            if (!Inside(nearest_)) {
                return false;
            }
            lo_ = hi_ = nearest_;
        }
        while (lo_ <= hi_ && !Inside(lo_)) {
            ++lo_;
        }
        while (hi_ >= lo_ && !Inside(hi_)) {
            --hi_;
        }
        if (lo_ > hi_) {
            return open_ = false;
        }
        while (Inside(lo_ - 1)) {
            --lo_;
        }
        while (Inside(hi_ + 1)) {
            ++hi_;
        }
        lo = lo_;
        hi = hi_;
        return open_ = true;
    }

private:
    // A pixel whose centre lies nearest the centre column: 2 p + c closest to 0.
    static int64_t NearestToCentre(int64_t c)
    {
        const int64_t below = c >= 0 ? -((c + 1) / 2) : (-c) / 2;  // largest p with 2 p + c <= 0
        return -(2 * below + c) <= 2 * (below + 1) + c ? below : below + 1;
    }

    bool Inside(int64_t p) const { return e_.Inside(2 * p + c_, y_); }

    const Ellipse& e_;
    int64_t c_;
    int64_t nearest_;
    int64_t y_ = 0;
    int64_t lo_ = 0, hi_ = 0;
    bool open_ = false;
};

// The rows of `outer` within the limits, less `inner` where it is not empty.
void PaintEllipseRows(SpanWriter& out, const ZedaRect& bounds, const Ellipse& outer, const Ellipse& inner)
{
    const int64_t twiceX = int64_t{bounds.left} + bounds.right;
    const int64_t twiceY = int64_t{bounds.top} + bounds.bottom;
    const int64_t c = HalfPixelsFrom(0, twiceY);
    const int64_t first = std::max<int64_t>(out.Limits().top, (-outer.B() - c) / 2 - 1);
    const int64_t end = std::min<int64_t>(out.Limits().bottom, (outer.B() - c) / 2 + 2);
    EllipseRuns outerRuns(outer, twiceX), innerRuns(inner, twiceX);
    for (int64_t row = first; row < end; ++row) {
        const int64_t y = 2 * row + c;
        int64_t lo = 0, hi = 0, innerLo = 0, innerHi = 0;
        const bool hole = innerRuns.Next(y, innerLo, innerHi);
        if (!outerRuns.Next(y, lo, hi)) {
            continue;
        }
        if (hole) {
            out.Span(row, lo, innerLo);
            out.Span(row, innerHi + 1, hi + 1);
        } else {
            out.Span(row, lo, hi + 1);
        }
    }
}

bool FitsExactly(const ZedaRect& bounds, int width)
{
    return (int64_t{bounds.right} - bounds.left + width) / 2 < kLargestSemiAxis &&
           (int64_t{bounds.bottom} - bounds.top + width) / 2 < kLargestSemiAxis;
}

Vector UnitAlong(const ZedaPoint& from, const ZedaPoint& to)
{
    const double dx = static_cast<double>(to.x) - from.x;
    const double dy = static_cast<double>(to.y) - from.y;
    const double length = std::sqrt(dx * dx + dy * dy);  // exact enough, and far cheaper than hypot
    return {dx / length, dy / length};
}

// The pixels of a horizontal or vertical butt-capped line: its first pixel in
// and its last out, and the pen's band across.
ZedaRect AxisLineBox(const ZedaPoint& from, const ZedaPoint& to, int width)
{
    const auto along = [](int64_t a, int64_t b) { return a < b ? std::pair{a, b} : std::pair{b + 1, a + 1}; };
    const auto clampInt = [](int64_t v) { return static_cast<int>(std::clamp<int64_t>(v, INT32_MIN, INT32_MAX)); };
    const bool horizontal = from.y == to.y;
    const auto [first, last] = horizontal ? along(from.x, to.x) : along(from.y, to.y);
    const auto [low, high] = PenBand(horizontal ? from.y : from.x, width);
    return horizontal ? ZedaRect{clampInt(first), clampInt(low), clampInt(last), clampInt(high)}
                      : ZedaRect{clampInt(low), clampInt(first), clampInt(high), clampInt(last)};
}

// The vertices of a closed path without repeats, the closing one included.
std::vector<ZedaPoint>& DistinctVertices(const ZedaPoint* points, int count)
{
    thread_local std::vector<ZedaPoint> path;
    path.clear();
    for (int i = 0; i < count; ++i) {
        if (path.empty() || points[i] != path.back()) {
            path.push_back(points[i]);
        }
    }
    while (path.size() > 1 && path.back() == path.front()) {
        path.pop_back();
    }
    return path;
}

struct PathSegment {
    Vector along;   // unit direction
    Vector offset;  // half the pen to the left of the direction (x, y) -> (-y, x)
};

FixedPoint Moved(const ZedaPoint& p, const Vector& v, double sign)
{
    return ToFixed(PathCoordinate(p.x) + sign * v.x, PathCoordinate(p.y) + sign * v.y);
}

// The wedge closing the outer side of the corner at p between segments in and
// out; nothing where the path runs straight on or turns back on itself.
void PaintCorner(SpanWriter& out, const ZedaPoint& before, const ZedaPoint& p, const ZedaPoint& after,
                 const PathSegment& in, const PathSegment& next)
{
    const int64_t cross = (int64_t{p.x} - before.x) * (int64_t{after.y} - p.y) -
                          (int64_t{p.y} - before.y) * (int64_t{after.x} - p.x);
    if (cross == 0) {
        return;
    }
    // The path turns towards the offset side when cross > 0; the outer side is the other one.
    const double side = cross > 0 ? -1.0 : 1.0;
    const double dot = in.along.x * next.along.x + in.along.y * next.along.y;
    FixedPoint wedge[4] = {Moved(p, {}, 0), Moved(p, in.offset, side)};
    int count = 2;
    if (2.0 <= kMiterLimit * kMiterLimit * (1.0 + dot)) {
        const Vector tip{(in.offset.x + next.offset.x) / (1.0 + dot), (in.offset.y + next.offset.y) / (1.0 + dot)};
        wedge[count++] = Moved(p, tip, side);
    }
    wedge[count++] = Moved(p, next.offset, side);
    FillPolygon(out, wedge, count);
}

}  // namespace

void FillPolygon(SpanWriter& out, const ZedaPoint* points, int count)
{
    std::vector<FixedPoint>& fixed = FixedScratch();
    for (int i = 0; i < count; ++i) {
        fixed.push_back({points[i].x * kFixedOne - kEdgeShift, points[i].y * kFixedOne - kEdgeShift});
    }
    FillPolygon(out, fixed.data(), count);
}

void StrokeLine(SpanWriter& out, const ZedaPoint& from, const ZedaPoint& to, int width)
{
    if (from == to) {
        return;
    }
    if (from.x == to.x || from.y == to.y) {
        out.Box(AxisLineBox(from, to, width));
        return;
    }
    const Vector u = UnitAlong(from, to);
    const Vector pull{-u.x * kLineEndPull, -u.y * kLineEndPull};
    const double half = width / 2.0;
    const Vector n{-u.y * half, u.x * half};
    const double ax = PathCoordinate(from.x) + pull.x, ay = PathCoordinate(from.y) + pull.y;
    const double bx = PathCoordinate(to.x) + pull.x, by = PathCoordinate(to.y) + pull.y;
    const FixedPoint quad[4] = {ToFixed(ax + n.x, ay + n.y), ToFixed(bx + n.x, by + n.y), ToFixed(bx - n.x, by - n.y),
                                ToFixed(ax - n.x, ay - n.y)};
    FillPolygon(out, quad, 4);
}

void StrokePolygon(SpanWriter& out, const ZedaPoint* points, int count, int width)
{
    const std::vector<ZedaPoint>& path = DistinctVertices(points, count);
    if (path.empty()) {
        return;
    }
    if (path.size() == 1) {
        const auto [left, right] = PenBand(path[0].x, width);
        const auto [top, bottom] = PenBand(path[0].y, width);
        const int64_t end = std::min<int64_t>(bottom, out.Limits().bottom);
        for (int64_t y = std::max<int64_t>(top, out.Limits().top); y < end; ++y) {
            out.Span(y, left, right);
        }
        return;
    }
    const std::size_t n = path.size();
    const double half = width / 2.0;
    const auto segment = [&](std::size_t i) {
        const Vector u = UnitAlong(path[i], path[(i + 1) % n]);
        return PathSegment{u, {-u.y * half, u.x * half}};
    };
    PathSegment previous = segment(n - 1);
    for (std::size_t i = 0; i < n; ++i) {
        const ZedaPoint& a = path[i];
        const ZedaPoint& b = path[(i + 1) % n];
        const PathSegment current = segment(i);
        const FixedPoint band[4] = {Moved(a, current.offset, 1), Moved(b, current.offset, 1),
                                    Moved(b, current.offset, -1), Moved(a, current.offset, -1)};
        FillPolygon(out, band, 4);
        PaintCorner(out, path[(i + n - 1) % n], a, b, previous, current);
        previous = current;
    }
}

bool FillEllipse(SpanWriter& out, const ZedaRect& bounds)
{
    if (!FitsExactly(bounds, 0)) {
        return false;
    }
    const Ellipse outer(int64_t{bounds.right} - bounds.left, int64_t{bounds.bottom} - bounds.top);
    PaintEllipseRows(out, bounds, outer, Ellipse(0, 0));
    return true;
}

bool StrokeEllipse(SpanWriter& out, const ZedaRect& bounds, int width)
{
    if (!FitsExactly(bounds, width)) {
        return false;
    }
    // Semi-axes of the path, half the bounds less half a pixel, in half pixels.
    const int64_t a = int64_t{bounds.right} - bounds.left - 1;
    const int64_t b = int64_t{bounds.bottom} - bounds.top - 1;
    const int64_t half = width;
    const Ellipse outer(a + half, b + half);
    const bool hole = a > half && b > half;
    PaintEllipseRows(out, bounds, outer, hole ? Ellipse(a - half, b - half) : Ellipse(0, 0));
    return true;
}

}  // namespace VTC::gfx::raster
