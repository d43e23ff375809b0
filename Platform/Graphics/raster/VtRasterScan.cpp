#include "VtRasterScan_p.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace VTC::gfx::raster {

namespace {

using Wide = __int128;

constexpr Fixed kSampleBelowTop = 127;

Fixed FloorDiv(Wide a, Wide b)
{
    Wide q = a / b;
    if (a % b != 0 && ((a < 0) != (b < 0))) {
        --q;
    }
    return static_cast<Fixed>(q);
}

// b > 0. A 32-bit division where the values allow: it takes a fraction of
// the time of a 64-bit one, and shapes start a few of them per edge.
Fixed FloorDiv64(Fixed a, Fixed b)
{
    constexpr Fixed kInt32 = Fixed{1} << 31;
    if (a > -kInt32 && a < kInt32 && b < kInt32) {
        const auto a32 = static_cast<int32_t>(a), b32 = static_cast<int32_t>(b);
        const int32_t q = a32 / b32;
        return (a32 % b32 != 0 && a32 < 0) ? q - 1 : q;
    }
    const Fixed q = a / b;
    return (a % b != 0 && a < 0) ? q - 1 : q;
}

// The first row whose sample point lies at or below y.
Fixed FirstSampledRow(Fixed y) { return FloorDiv(Wide{y} - kSampleBelowTop + kFixedOne - 1, kFixedOne); }

// An edge stepped down the rows: its crossing is x + remainder / dy.
struct Edge {
    Fixed firstRow, endRow;
    Fixed x, remainder, dy, stepX, stepRemainder;

    void StartAt(Fixed row, const FixedPoint& top, const FixedPoint& bottom)
    {
        dy = bottom.y - top.y;
        const Fixed dx = bottom.x - top.x;
        const Fixed below = row * kFixedOne + kSampleBelowTop - top.y;
        // The crossing is top.x + floor(below * dx / dy); 64 bits hold it
        // within a few million pixels, beyond that 128 do.
        constexpr Fixed kSmall = Fixed{1} << 30;
        if (dx > -kSmall && dx < kSmall && below < kSmall && dy < kSmall) {
            const Fixed numerator = below * dx;
            const Fixed whole = FloorDiv64(numerator, dy);
            x = top.x + whole;
            remainder = numerator - whole * dy;
            stepX = FloorDiv64(kFixedOne * dx, dy);
            stepRemainder = kFixedOne * dx - stepX * dy;
            return;
        }
        const Wide numerator = Wide{below} * dx;
        const Fixed whole = FloorDiv(numerator, dy);
        x = top.x + whole;
        remainder = static_cast<Fixed>(numerator - Wide{whole} * dy);
        stepX = FloorDiv(Wide{kFixedOne} * dx, dy);
        stepRemainder = static_cast<Fixed>(Wide{kFixedOne} * dx - Wide{stepX} * dy);
    }

    // Without a branch: the carry comes in no predictable pattern.
    void Step()
    {
        remainder += stepRemainder;
        const Fixed carry = remainder >= dy ? 1 : 0;
        x += stepX + carry;
        remainder -= carry * dy;
    }
};

// Buffers kept per thread, so that scanning allocates only while they grow.
struct Scratch {
    std::vector<Edge> edges;
    std::vector<Edge*> active;
    std::vector<Fixed> cuts;
};

Scratch& ThreadScratch()
{
    thread_local Scratch scratch;
    return scratch;
}

// The edges that meet a row of the limits, started at the first such row.
void CollectEdges(const SpanWriter& out, const FixedPoint* points, const int* counts, int polyCount,
                  std::vector<Edge>& edges)
{
    const ZedaRect& limits = out.Limits();
    for (int p = 0; p < polyCount; ++p) {
        const int count = std::max(counts[p], 0);
        for (int i = 0; i < count; ++i) {
            FixedPoint top = points[i];
            FixedPoint bottom = points[(i + 1) % count];
            if (top.y == bottom.y) {
                continue;
            }
            if (top.y > bottom.y) {
                std::swap(top, bottom);
            }
            const Fixed firstRow = std::max<Fixed>(FirstSampledRow(top.y), limits.top);
            const Fixed endRow = std::min<Fixed>(FirstSampledRow(bottom.y), limits.bottom);
            if (firstRow >= endRow) {
                continue;
            }
            Edge edge{firstRow, endRow, 0, 0, 0, 0, 0};
            edge.StartAt(firstRow, top, bottom);
            edges.push_back(edge);
        }
        points += count;
    }
    std::sort(edges.begin(), edges.end(), [](const Edge& a, const Edge& b) { return a.firstRow < b.firstRow; });
}

// Turns the crossings of one row, held within the limits, into runs.
void EmitRow(SpanWriter& out, Fixed y, std::vector<Fixed>& cuts)
{
    const Fixed left = out.Limits().left * kFixedOne, right = out.Limits().right * kFixedOne;
    // Rounded and put in order: rows meet only a few edges.
    for (std::size_t i = 0; i < cuts.size(); ++i) {
        const Fixed cut = (std::clamp(cuts[i], left, right) + kSampleBelowTop) >> 8;
        std::size_t at = i;
        for (; at > 0 && cuts[at - 1] > cut; --at) {
            cuts[at] = cuts[at - 1];
        }
        cuts[at] = cut;
    }
    for (std::size_t k = 0; k + 1 < cuts.size(); k += 2) {
        const Fixed start = cuts[k];
        // A gap of at most one pixel is bridged.
        while (k + 2 < cuts.size() && cuts[k + 2] <= cuts[k + 1] + 1) {
            k += 2;
        }
        out.Span(y, start, cuts[k + 1]);
    }
}

// One side of a polygon that is monotone in y: its vertices from the top one
// to the bottom one, walked in steps of +1 or -1 around the polygon.
class Chain {
public:
    Chain(const FixedPoint* points, int count, int top, int stride) : points_(points), count_(count), at_(top), stride_(stride) {}

    // Whether y never decreases from the top vertex to `bottom`.
    bool Descends(int bottom) const
    {
        for (int i = at_; i != bottom; i = Next(i)) {
            if (points_[Next(i)].y < points_[i].y) {
                return false;
            }
        }
        return true;
    }

    // The edge that crosses the sample of `row`, started there unless it already is.
    Edge& At(Fixed row)
    {
        if (row >= edge_.endRow) {
            Seek(row);
        }
        return edge_;
    }

private:
    int Next(int i) const
    {
        const int next = i + stride_;  // wrapped without a division: polygons are small
        return next < 0 ? next + count_ : (next >= count_ ? next - count_ : next);
    }

    void Seek(Fixed row)
    {
        for (;; at_ = Next(at_)) {
            const FixedPoint& top = points_[at_];
            const FixedPoint& bottom = points_[Next(at_)];
            if (FirstSampledRow(bottom.y) > row) {
                edge_.endRow = FirstSampledRow(bottom.y);
                edge_.StartAt(row, top, bottom);
                return;
            }
        }
    }

    const FixedPoint* points_;
    int count_;
    int at_;
    int stride_;
    Edge edge_{0, INT64_MIN, 0, 0, 0, 0, 0};  // no rows yet: the first call seeks
};

// Rows first .. end - 1 between the crossings of the two sides.
template <typename Emit>
void ScanMonotone(Chain& forward, Chain& backward, Fixed first, Fixed end, const ZedaRect& limits, Emit&& emit)
{
    const Fixed left = limits.left * kFixedOne, right = limits.right * kFixedOne;
    for (Fixed y = first; y < end;) {
        // Rows in which neither side changes edge are stepped with the edges held locally.
        Edge& forwardEdge = forward.At(y);
        Edge& backwardEdge = backward.At(y);
        Edge a = forwardEdge, b = backwardEdge;
        const Fixed stop = std::min({end, a.endRow, b.endRow});
        for (; y < stop; ++y) {
            const Fixed cutA = (std::clamp(a.x, left, right) + kSampleBelowTop) >> 8;
            const Fixed cutB = (std::clamp(b.x, left, right) + kSampleBelowTop) >> 8;
            a.Step();
            b.Step();
            emit(y, std::min(cutA, cutB), std::max(cutA, cutB));
        }
        forwardEdge = a;
        backwardEdge = b;
    }
}

// A polygon that every row crosses at most twice, scanned without sorting:
// the run between its two crossings. False when it is not monotone in y.
bool FillMonotone(SpanWriter& out, const FixedPoint* points, int count)
{
    int top = 0, bottom = 0;
    for (int i = 1; i < count; ++i) {
        top = points[i].y < points[top].y ? i : top;
        bottom = points[i].y > points[bottom].y ? i : bottom;
    }
    Chain forward(points, count, top, 1), backward(points, count, top, -1);
    if (!forward.Descends(bottom) || !backward.Descends(bottom)) {
        return false;
    }
    const ZedaRect& limits = out.Limits();
    const Fixed first = std::max<Fixed>(FirstSampledRow(points[top].y), limits.top);
    const Fixed end = std::min<Fixed>(FirstSampledRow(points[bottom].y), limits.bottom);
    if (out.IsPlain32()) {
        // Crossings are held within the limits already: nothing left to check.
        ScanMonotone(forward, backward, first, end, limits, [&out](Fixed y, Fixed from, Fixed to) {
            if (from < to) {
                out.FillPlain32(static_cast<int>(y), static_cast<int>(from), static_cast<int>(to));
            }
        });
    } else {
        ScanMonotone(forward, backward, first, end, limits, [&out](Fixed y, Fixed from, Fixed to) { out.Span(y, from, to); });
    }
    return true;
}

// Whether the polygons lie wholly beside or above or below the limits, where
// every crossing is held at the same edge and every run is empty.
bool MissesLimits(const ZedaRect& limits, const FixedPoint* points, const int* counts, int polyCount)
{
    FixedPoint low{INT64_MAX, INT64_MAX}, high{INT64_MIN, INT64_MIN};
    for (int p = 0; p < polyCount; ++p) {
        for (int i = 0; i < counts[p]; ++i, ++points) {
            low = {std::min(low.x, points->x), std::min(low.y, points->y)};
            high = {std::max(high.x, points->x), std::max(high.y, points->y)};
        }
    }
    return high.x <= limits.left * kFixedOne || low.x >= limits.right * kFixedOne ||
           FirstSampledRow(high.y) <= limits.top || FirstSampledRow(low.y) >= limits.bottom;
}

}  // namespace

Fixed ToFixed(double v) { return std::lrint(v * kFixedOne); }

FixedPoint ToFixed(double x, double y) { return {ToFixed(x), ToFixed(y)}; }

void FillPolygons(SpanWriter& out, const FixedPoint* points, const int* counts, int polyCount)
{
    if (out.IsEmpty() || MissesLimits(out.Limits(), points, counts, polyCount) ||
        (polyCount == 1 && counts[0] > 0 && FillMonotone(out, points, counts[0]))) {
        return;
    }
    Scratch& s = ThreadScratch();
    s.edges.clear();
    s.active.clear();
    CollectEdges(out, points, counts, polyCount, s.edges);
    std::size_t next = 0;
    for (Fixed y = s.edges.empty() ? 0 : s.edges.front().firstRow;; ++y) {
        std::erase_if(s.active, [y](const Edge* e) { return e->endRow <= y; });
        if (s.active.empty()) {
            if (next == s.edges.size()) {
                return;
            }
            y = std::max(y, s.edges[next].firstRow);
        }
        for (; next < s.edges.size() && s.edges[next].firstRow <= y; ++next) {
            s.active.push_back(&s.edges[next]);
        }
        s.cuts.clear();
        for (Edge* e : s.active) {
            s.cuts.push_back(e->x);
            e->Step();
        }
        EmitRow(out, y, s.cuts);
    }
}

}  // namespace VTC::gfx::raster
