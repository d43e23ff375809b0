#pragma once

// Even-odd polygon interiors scanned row by row without cairo, giving the
// pixels cairo's non-antialiased rasteriser gives for the same path.

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "LqBase.h"

namespace VTC::gfx {

// The runs of covered pixels of one row: [x0, x1) pairs, left to right.
using RowRuns = std::vector<std::pair<int, int>>;

// Polygons of integer vertices shifted by `shift256` / 256 pixel, as a set of
// non-horizontal edges in 1/256 pixel.
class PolygonScan {
public:
    // Null when a coordinate is too large for exact arithmetic (the caller
    // then leaves the polygon to cairo). Each polygon of `counts` is closed.
    static std::optional<PolygonScan> Make(const ZEDA::ZedaPoint* points, const int* counts, int polyCount,
                                           int shift256);

    // Calls emit(y, x0, x1) for every run inside `limits`. A pixel row is
    // sampled 127/256 below its top edge; an edge crossing at x (1/256 units,
    // held within the limits) ends a run at floor((x + 127) / 256); runs less
    // than two pixels apart join. These are the sampling rules of cairo's
    // mono scan converter, where a polygon is cut to its limits.
    template <typename Emit>
    void ForEachRun(const ZEDA::ZedaRect& limits, Emit&& emit) const;

    // The rows the polygon can touch.
    int FirstRow() const;
    int EndRow() const;

private:
    struct Edge {
        int64_t topX, topY, bottomX, bottomY;
        int firstRow, endRow;  // the rows whose sample point it spans
    };

    // An edge being stepped down the rows: its crossing is x + remainder / dy.
    struct ActiveEdge {
        int endRow;
        int64_t x, remainder, dy, stepX, stepRemainder;
        ActiveEdge(const Edge& e, int row);
        // Without a branch: the carry comes in no predictable pattern.
        void Step()
        {
            remainder += stepRemainder;
            const int64_t carry = remainder >= dy ? 1 : 0;
            x += stepX + carry;
            remainder -= carry * dy;
        }
    };

    static void RunsOf(std::vector<int64_t>& cuts, const ZEDA::ZedaRect& limits, RowRuns& runs);

    std::vector<Edge> edges_;  // sorted by topY
    int64_t minY_ = 0;
    int64_t maxY_ = 0;
};

template <typename Emit>
void PolygonScan::ForEachRun(const ZEDA::ZedaRect& limits, Emit&& emit) const
{
    std::vector<ActiveEdge> active;
    std::vector<int64_t> cuts;
    RowRuns runs;
    const int first = std::max(limits.top, FirstRow());
    const int end = std::min(limits.bottom, EndRow());
    const int64_t left = limits.left * int64_t{256}, right = limits.right * int64_t{256};
    std::size_t next = 0;
    for (int y = first; y < end; ++y) {
        std::erase_if(active, [y](const ActiveEdge& e) { return e.endRow <= y; });
        for (; next < edges_.size() && edges_[next].firstRow <= y; ++next) {
            if (edges_[next].endRow > y) {
                active.emplace_back(edges_[next], y);
            }
        }
        cuts.clear();
        for (ActiveEdge& e : active) {
            cuts.push_back(std::clamp(e.x, left, right));
            e.Step();
        }
        RunsOf(cuts, limits, runs);
        for (const auto& [x0, x1] : runs) {
            emit(y, x0, x1);
        }
    }
}

}  // namespace VTC::gfx
