#include "VtRasterShapes_p.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <new>
#include <type_traits>
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

// Room for the points or edges of a shape: on the stack for the few that
// shapes usually have (no thread-local look-up, no heap), on the heap beyond.
// The stack's room is left unset: every element is written before it is read,
// and zeroing it would cost more than the shape's arithmetic.
template <typename T>
    requires std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>
class ShapeScratch {
public:
    explicit ShapeScratch(int count)
    {
        if (count > kOnStack) {
            heap_.resize(static_cast<std::size_t>(count));
            data_ = heap_.data();
        } else {
            data_ = std::launder(reinterpret_cast<T*>(stack_));
        }
    }
    ShapeScratch(const ShapeScratch&) = delete;
    ShapeScratch& operator=(const ShapeScratch&) = delete;

    T* data() { return data_; }
    T& operator[](std::size_t i) { return data_[i]; }

private:
    static constexpr int kOnStack = 16;
    alignas(T) std::byte stack_[kOnStack * sizeof(T)];
    std::vector<T> heap_;
    T* data_;
};

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

// How far the rows of an ellipse reach from its centre column, followed
// from the rows farthest from the centre inwards, where the reach only grows.
// A row's run is symmetric about the centre column and the same in the row
// mirrored about the centre row, so one reach gives four ends.
class EllipseReach {
public:
    // Pixel centres lie at x = 2 p + c half pixels from the centre.
    EllipseReach(const Ellipse& e, int64_t c) : e_(e), nearest_(c & 1) {}

    // The largest x >= 0 of the centres' parity strictly inside at row
    // offset t >= 0 (half pixels), or a negative value when the row has
    // none. Offsets come in decreasing order.
    int64_t At(int64_t t)
    {
        if (e_.IsEmpty() || t >= e_.B()) {
            return -1;
        }
        if (!known_) {
            reach_ = Estimate(t);
            while (reach_ >= nearest_ && !e_.Inside(reach_, t)) {
                reach_ -= 2;
            }
            known_ = true;
        }
        while (e_.Inside(reach_ + 2, t)) {
            reach_ += 2;
        }
        return reach_;
    }

private:
    // Near the true reach and of the centres' parity.
    int64_t Estimate(int64_t t) const
    {
        const double b = static_cast<double>(e_.B());
        const double across = static_cast<double>(e_.A()) *
                              std::sqrt((b - static_cast<double>(t)) * (b + static_cast<double>(t))) / b;
        const auto x = static_cast<int64_t>(across);
        return std::max<int64_t>(x - ((x - nearest_) & 1), nearest_ - 2);
    }

    const Ellipse& e_;
    int64_t nearest_;  // the smallest x >= 0 of the centres' parity
    int64_t reach_ = 0;
    bool known_ = false;
};

// The rows of `outer` within the limits, less `inner` where it is not empty.
void PaintEllipseRows(SpanWriter& out, const ZedaRect& bounds, const Ellipse& outer, const Ellipse& inner)
{
    const int64_t cx = HalfPixelsFrom(0, int64_t{bounds.left} + bounds.right);
    const int64_t cy = HalfPixelsFrom(0, int64_t{bounds.top} + bounds.bottom);
    const int64_t first = std::max<int64_t>(out.Limits().top, (-outer.B() - cy) / 2 - 1);
    const int64_t end = std::min<int64_t>(out.Limits().bottom, (outer.B() - cy) / 2 + 2);
    if (first >= end) {
        return;
    }
    // Row r lies y = 2 r + cy half pixels from the centre; the offsets |y| of
    // the rows wanted, farthest first. All share the parity of cy.
    const int64_t yFirst = 2 * first + cy, yLast = 2 * (end - 1) + cy;
    const int64_t farthest = std::max(std::abs(yFirst), std::abs(yLast));
    const int64_t nearest = yFirst <= 0 && yLast >= 0 ? (cy & 1) : std::min(std::abs(yFirst), std::abs(yLast));
    EllipseReach outerReach(outer, cx), innerReach(inner, cx);
    for (int64_t t = farthest; t >= nearest; t -= 2) {
        const int64_t reach = outerReach.At(t);
        if (reach < 0) {
            continue;
        }
        // Pixel p has its centre at 2 p + cx; reaches share cx's parity.
        const int64_t lo = (-reach - cx) / 2, hi = (reach - cx) / 2;
        const int64_t hole = innerReach.At(t);
        if (hole >= 0 && (-hole - cx) / 2 <= out.Limits().left && (hole - cx) / 2 + 1 >= out.Limits().right) {
            return;  // the hole spans the columns here and, wider still, in every row nearer the centre
        }
        const auto paint = [&](int64_t row) {
            if (row < first || row >= end) {
                return;
            }
            if (hole >= 0) {
                out.Span(row, lo, (-hole - cx) / 2);
                out.Span(row, (hole - cx) / 2 + 1, hi + 1);
            } else {
                out.Span(row, lo, hi + 1);
            }
        };
        paint((-t - cy) / 2);
        if (t != 0) {
            paint((t - cy) / 2);
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

// Puts the vertices of a closed path without repeats, the closing one
// included, into `path`; returns how many there are.
int DistinctVertices(const ZedaPoint* points, int count, ZedaPoint* path)
{
    int n = 0;
    for (int i = 0; i < count; ++i) {
        if (n == 0 || points[i] != path[n - 1]) {
            path[n++] = points[i];
        }
    }
    while (n > 1 && path[n - 1] == path[0]) {
        --n;
    }
    return n;
}

struct PathSegment {
    Vector along;   // unit direction
    Vector offset;  // half the pen to the left of the direction (x, y) -> (-y, x)
};

FixedPoint Moved(const ZedaPoint& p, const Vector& v, double sign)
{
    return ToFixed(PathCoordinate(p.x) + sign * v.x, PathCoordinate(p.y) + sign * v.y);
}

// Whether the pixels of a piece of an outline, all within `reach` pixels of
// the box of path points from .. to, lie wholly beside the limits: such a
// piece writes nothing, and is not worked out at all. Two pixels of margin
// cover the pixel centres, the edge shift and the rounding.
bool MissesLimits(const ZedaRect& limits, const ZedaPoint& from, const ZedaPoint& to, double reach)
{
    const double margin = reach + 2;
    return std::max(from.x, to.x) + margin < limits.left || std::min(from.x, to.x) - margin > limits.right ||
           std::max(from.y, to.y) + margin < limits.top || std::min(from.y, to.y) - margin > limits.bottom;
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
    ShapeScratch<FixedPoint> fixed(count);
    for (int i = 0; i < count; ++i) {
        fixed[static_cast<std::size_t>(i)] = {points[i].x * kFixedOne - kEdgeShift, points[i].y * kFixedOne - kEdgeShift};
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
    ShapeScratch<ZedaPoint> distinct(count);
    const ZedaPoint* path = distinct.data();
    const int n = DistinctVertices(points, count, distinct.data());
    if (n == 0) {
        return;
    }
    if (n == 1) {
        const auto [left, right] = PenBand(path[0].x, width);
        const auto [top, bottom] = PenBand(path[0].y, width);
        const int64_t end = std::min<int64_t>(bottom, out.Limits().bottom);
        for (int64_t y = std::max<int64_t>(top, out.Limits().top); y < end; ++y) {
            out.Span(y, left, right);
        }
        return;
    }
    // Every segment first: their square roots and divisions then overlap.
    const double half = width / 2.0;
    ShapeScratch<PathSegment> segments(n);
    for (int i = 0; i < n; ++i) {
        const Vector u = UnitAlong(path[i], path[i + 1 == n ? 0 : i + 1]);
        segments[static_cast<std::size_t>(i)] = PathSegment{u, {-u.y * half, u.x * half}};
    }
    for (int i = 0; i < n; ++i) {
        const ZedaPoint& a = path[i];
        const ZedaPoint& b = path[i + 1 == n ? 0 : i + 1];
        const PathSegment& current = segments[static_cast<std::size_t>(i)];
        if (!MissesLimits(out.Limits(), a, b, half)) {
            const FixedPoint band[4] = {Moved(a, current.offset, 1), Moved(b, current.offset, 1),
                                        Moved(b, current.offset, -1), Moved(a, current.offset, -1)};
            FillPolygon(out, band, 4);
        }
        // A wedge reaches at most a miter length from its corner.
        if (!MissesLimits(out.Limits(), a, a, half * kMiterLimit)) {
            PaintCorner(out, path[i == 0 ? n - 1 : i - 1], a, b,
                        segments[static_cast<std::size_t>(i == 0 ? n - 1 : i - 1)], current);
        }
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
