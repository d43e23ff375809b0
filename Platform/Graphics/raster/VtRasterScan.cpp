#include "VtRasterScan_p.h"

#include "VtRasterStretch_p.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace VTC::gfx::raster {

namespace {

using Wide = __int128;

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
Fixed FirstSampledRow(Fixed y)
{
    // An arithmetic shift is the floor division by 256 wherever the sum stays in range.
    constexpr Fixed kBias = kFixedOne - 1 - kSampleBelowTop;
    return y <= INT64_MAX - kBias ? (y + kBias) >> 8 : FloorDiv(Wide{y} + kBias, kFixedOne);
}

// An edge stepped down the rows from the first it covers to the one past its last.
struct Edge : EdgeSteps {
    Fixed firstRow = 0, endRow = 0;

    Edge(Fixed first, Fixed end) : EdgeSteps{0, 0, 0, 0, 0}, firstRow(first), endRow(end) {}

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
            // An edge that crosses one row only is never stepped: half its
            // divisions saved, and the outlines' short edges are many.
            stepX = endRow - row > 1 ? FloorDiv64(kFixedOne * dx, dy) : 0;
            stepRemainder = endRow - row > 1 ? kFixedOne * dx - stepX * dy : 0;
            return;
        }
        const Wide numerator = Wide{below} * dx;
        const Fixed whole = FloorDiv(numerator, dy);
        x = top.x + whole;
        remainder = static_cast<Fixed>(numerator - Wide{whole} * dy);
        stepX = FloorDiv(Wide{kFixedOne} * dx, dy);
        stepRemainder = static_cast<Fixed>(Wide{kFixedOne} * dx - Wide{stepX} * dy);
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
            Edge edge(firstRow, endRow);
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
        const Fixed cut = CrossingPixel(std::clamp(cuts[i], left, right));
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
    Edge edge_{0, INT64_MIN};  // no rows yet: the first call seeks
};

// Rows first .. end - 1 between the crossings of the two sides, stretch by
// stretch: the rows in which neither side changes edge.
template <typename WriteStretch>
void ScanMonotone(Chain& forward, Chain& backward, Fixed first, Fixed end, WriteStretch writeStretch)
{
    for (Fixed y = first; y < end;) {
        Edge& a = forward.At(y);
        Edge& b = backward.At(y);
        const Fixed stop = std::min({end, a.endRow, b.endRow});
        writeStretch(a, b, y, stop - y);
        y = stop;
    }
}

void ScanMonotone(SpanWriter& out, Chain& forward, Chain& backward, Fixed first, Fixed end)
{
    const ZedaRect& limits = out.Limits();
    if (out.IsPlain32()) {
        // Crossings are held within the limits already: nothing left to check.
        const Plain32Rows rows = out.Plain32();
        const StretchWriter write = ChosenStretchWriter();
        ScanMonotone(forward, backward, first, end, [&](Edge& a, Edge& b, Fixed y, Fixed count) {
            if (count < kFewestLaneRows) {
                WriteStretchPortable(a, b, count, limits.left, limits.right, rows, rows.Row(y));
            } else {
                write(a, b, count, limits.left, limits.right, rows, rows.Row(y));
            }
        });
        return;
    }
    ScanMonotone(forward, backward, first, end, [&](Edge& a, Edge& b, Fixed y, Fixed count) {
        // Holding the run within the limits is holding each crossing there.
        for (const Fixed stop = y + count; y < stop; ++y) {
            const Fixed cutA = CrossingPixel(a.x), cutB = CrossingPixel(b.x);
            a.Step();
            b.Step();
            out.Span(y, std::max<Fixed>(std::min(cutA, cutB), limits.left),
                     std::min<Fixed>(std::max(cutA, cutB), limits.right));
        }
    });
}

// Narrows first .. end to the rows whose samples can meet the polygon within
// the columns of the limits: in any other row both crossings are held at the
// same side and the run is empty. The polygon's part within the columns
// reaches exactly as high and low as the parts of its edges within them; two
// rows of margin on each side cover the rounding of the doubles and the
// truncation.
void NarrowToColumns(const FixedPoint* points, int count, const ZedaRect& limits, Fixed& first, Fixed& end)
{
    const double left = static_cast<double>(limits.left) * kFixedOne;
    const double right = static_cast<double>(limits.right) * kFixedOne;
    double low = HUGE_VAL, high = -HUGE_VAL;
    for (int i = 0; i < count; ++i) {
        const FixedPoint& a = points[i];
        const FixedPoint& b = points[i + 1 == count ? 0 : i + 1];
        const bool aFirst = a.x <= b.x;
        const double x0 = static_cast<double>(aFirst ? a.x : b.x), y0 = static_cast<double>(aFirst ? a.y : b.y);
        const double x1 = static_cast<double>(aFirst ? b.x : a.x), y1 = static_cast<double>(aFirst ? b.y : a.y);
        if (x1 < left || x0 > right) {
            continue;
        }
        double from = y0, to = y1;
        if (x0 < left) {
            from = y0 + (left - x0) * (y1 - y0) / (x1 - x0);
        }
        if (x1 > right) {
            to = y0 + (right - x0) * (y1 - y0) / (x1 - x0);
        }
        low = std::min({low, from, to});
        high = std::max({high, from, to});
    }
    if (low > high) {
        end = first;
        return;
    }
    first = std::max(first, static_cast<Fixed>((low - kSampleBelowTop) / kFixedOne) - 2);
    end = std::min(end, static_cast<Fixed>((high - kSampleBelowTop) / kFixedOne) + 3);
}

// Narrowing costs a few divisions: worth them only where many rows could be saved.
constexpr Fixed kFewestNarrowedRows = 24;

// A polygon that every row crosses at most twice, scanned without sorting:
// the run between its two crossings. False when it is not monotone in y.
bool FillMonotone(SpanWriter& out, const FixedPoint* points, int count)
{
    int top = 0, bottom = 0;
    Fixed leftmost = points[0].x, rightmost = points[0].x;
    for (int i = 1; i < count; ++i) {
        top = points[i].y < points[top].y ? i : top;
        bottom = points[i].y > points[bottom].y ? i : bottom;
        leftmost = std::min(leftmost, points[i].x);
        rightmost = std::max(rightmost, points[i].x);
    }
    const ZedaRect& limits = out.Limits();
    if (rightmost <= limits.left * kFixedOne || leftmost >= limits.right * kFixedOne ||
        FirstSampledRow(points[bottom].y) <= limits.top || FirstSampledRow(points[top].y) >= limits.bottom) {
        return true;  // wholly beside, above or below the limits: every run is empty
    }
    Chain forward(points, count, top, 1), backward(points, count, top, -1);
    if (!forward.Descends(bottom) || !backward.Descends(bottom)) {
        return false;
    }
    Fixed first = std::max<Fixed>(FirstSampledRow(points[top].y), limits.top);
    Fixed end = std::min<Fixed>(FirstSampledRow(points[bottom].y), limits.bottom);
    if (end - first > kFewestNarrowedRows &&
        (leftmost < limits.left * kFixedOne || rightmost > limits.right * kFixedOne)) {
        NarrowToColumns(points, count, limits, first, end);
    }
    if (first >= end) {
        return true;
    }
    ScanMonotone(out, forward, backward, first, end);
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

void FillPolygons(SpanWriter& out, const FixedPoint* points, const int* counts, int polyCount)
{
    if (out.IsEmpty() || (polyCount == 1 && counts[0] > 0 && FillMonotone(out, points, counts[0])) ||
        MissesLimits(out.Limits(), points, counts, polyCount)) {
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
