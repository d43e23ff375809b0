#include "VtPolygonScan_p.h"

#include <algorithm>
#include <cstdlib>

namespace VTC::gfx {

namespace {

constexpr int64_t kOne = 256;
constexpr int64_t kHalfBelow = 127;  // 127/256: the sample row and the cut rounding
// Beyond a million pixels the products of the exact crossing could overflow.
constexpr int kLargestCoordinate = 1 << 20;

int64_t FloorDiv(int64_t a, int64_t b)
{
    const int64_t q = a / b;
    return (a % b != 0 && ((a < 0) != (b < 0))) ? q - 1 : q;
}

// The first row whose sample point lies at or below y: an edge spans the
// rows from that of its top up to that of its bottom.
int FirstSampledRow(int64_t y) { return static_cast<int>(FloorDiv(y - kHalfBelow + kOne - 1, kOne)); }

// Floor division by 256 (an arithmetic shift floors negative values too).
int64_t WholePixels(int64_t v) { return v >> 8; }

}  // namespace

std::optional<PolygonScan> PolygonScan::Make(const ZEDA::ZedaPoint* points, const int* counts, int polyCount,
                                             int shift256)
{
    PolygonScan scan;
    scan.minY_ = INT64_MAX;
    scan.maxY_ = INT64_MIN;
    for (int p = 0; p < polyCount; ++p) {
        const int count = std::max(counts[p], 0);
        for (int i = 0; i < count; ++i) {
            const ZEDA::ZedaPoint& a = points[i];
            const ZEDA::ZedaPoint& b = points[(i + 1) % count];
            if (std::abs(a.x) > kLargestCoordinate || std::abs(a.y) > kLargestCoordinate) {
                return std::nullopt;
            }
            const int64_t ay = a.y * kOne + shift256, by = b.y * kOne + shift256;
            scan.minY_ = std::min(scan.minY_, ay);
            scan.maxY_ = std::max(scan.maxY_, ay);
            if (ay == by) {
                continue;
            }
            const int64_t ax = a.x * kOne + shift256, bx = b.x * kOne + shift256;
            Edge edge = ay < by ? Edge{ax, ay, bx, by, 0, 0} : Edge{bx, by, ax, ay, 0, 0};
            edge.firstRow = FirstSampledRow(edge.topY);
            edge.endRow = FirstSampledRow(edge.bottomY);
            scan.edges_.push_back(edge);
        }
        points += count;
    }
    std::sort(scan.edges_.begin(), scan.edges_.end(), [](const Edge& l, const Edge& r) { return l.topY < r.topY; });
    return scan;
}

int PolygonScan::FirstRow() const { return edges_.empty() ? 0 : FirstSampledRow(minY_); }

int PolygonScan::EndRow() const { return edges_.empty() ? 0 : FirstSampledRow(maxY_); }

PolygonScan::ActiveEdge::ActiveEdge(const Edge& e, int row) : endRow(e.endRow), dy(e.bottomY - e.topY)
{
    const int64_t dx = e.bottomX - e.topX;
    const int64_t sample = row * kOne + kHalfBelow;
    const int64_t numerator = e.topX * dy + (sample - e.topY) * dx;
    x = FloorDiv(numerator, dy);
    remainder = numerator - x * dy;
    stepX = FloorDiv(kOne * dx, dy);
    stepRemainder = kOne * dx - stepX * dy;
}

void PolygonScan::RunsOf(std::vector<int64_t>& cuts, const ZEDA::ZedaRect& limits, RowRuns& runs)
{
    for (std::size_t i = 0; i < cuts.size(); ++i) {
        // Rounded, then put in order: rows meet only a few edges.
        const int64_t cut = WholePixels(cuts[i] + kHalfBelow);
        std::size_t at = i;
        for (; at > 0 && cuts[at - 1] > cut; --at) {
            cuts[at] = cuts[at - 1];
        }
        cuts[at] = cut;
    }
    runs.clear();
    bool inside = false;
    bool open = false;
    int64_t start = 0;
    for (std::size_t k = 0; k < cuts.size(); ++k) {
        inside = !inside;
        if (inside) {
            if (!open) {
                start = cuts[k];
                open = true;
            }
            continue;
        }
        if (k + 1 < cuts.size() && cuts[k + 1] <= cuts[k] + 1) {
            continue;  // a gap of at most one pixel is bridged
        }
        const auto x0 = static_cast<int>(std::max<int64_t>(start, limits.left));
        const auto x1 = static_cast<int>(std::min<int64_t>(cuts[k], limits.right));
        if (x0 < x1) {
            runs.emplace_back(x0, x1);
        }
        open = false;
    }
}

}  // namespace VTC::gfx
