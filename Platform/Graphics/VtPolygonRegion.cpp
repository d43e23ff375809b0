#include "VtPolygonRegion_p.h"

#include <algorithm>
#include <climits>
#include <optional>
#include <vector>

#include "VtMask_p.h"
#include "VtPolygonScan_p.h"

namespace VTC::gfx {

using ZEDA::ZedaPoint;
using ZEDA::ZedaRect;

namespace {

// Polygons are rasterised in tiles of at most this many pixels a side, so
// that regions of any extent need only bounded scratch memory.
constexpr int kTile = 4096;

ZedaRect PointBounds(const ZedaPoint* points, int total)
{
    ZedaRect bounds{INT_MAX, INT_MAX, INT_MIN, INT_MIN};
    for (int i = 0; i < total; ++i) {
        bounds.left = std::min(bounds.left, points[i].x);
        bounds.top = std::min(bounds.top, points[i].y);
        bounds.right = std::max(bounds.right, points[i].x);
        bounds.bottom = std::max(bounds.bottom, points[i].y);
    }
    return bounds;
}

void TracePolygons(cairo_t* cr, const ZedaPoint* points, const int* counts, int polyCount)
{
    for (int p = 0; p < polyCount; ++p) {
        const int count = counts[p];
        if (count > 0) {
            cairo_move_to(cr, points[0].x - kEdgeBias, points[0].y - kEdgeBias);
            for (int i = 1; i < count; ++i) {
                cairo_line_to(cr, points[i].x - kEdgeBias, points[i].y - kEdgeBias);
            }
            cairo_close_path(cr);
        }
        points += std::max(count, 0);
    }
}

void RasteriseTile(const ZedaRect& tile, const ZedaPoint* points, const int* counts, int polyCount,
                   const std::optional<PolygonScan>& scan, std::vector<cairo_rectangle_int_t>& runs)
{
    if (scan) {
        scan->ForEachRun(tile, [&](int y, int x0, int x1) { runs.push_back({x0, y, x1 - x0, 1}); });
        return;
    }
    MaskSurface mask(tile);
    if (!mask.IsValid()) {
        return;
    }
    cairo_t* cr = mask.Context();
    cairo_set_fill_rule(cr, CAIRO_FILL_RULE_EVEN_ODD);
    TracePolygons(cr, points, counts, polyCount);
    cairo_fill(cr);
    mask.ForEachRun([&](int y, int x0, int x1) { runs.push_back({x0, y, x1 - x0, 1}); });
}

}  // namespace

RegionPtr RasterisePolygons(const ZedaPoint* points, const int* counts, int polyCount)
{
    int total = 0;
    for (int p = 0; p < polyCount; ++p) {
        total += std::max(counts[p], 0);
    }
    const ZedaRect bounds = PointBounds(points, total);
    // Shifted as every shape is; cairo scans what this cannot hold exactly.
    const auto scan = PolygonScan::Make(points, counts, polyCount, -kEdgeBias256);
    std::vector<cairo_rectangle_int_t> runs;
    for (long long top = bounds.top; top < bounds.bottom; top += kTile) {
        for (long long left = bounds.left; left < bounds.right; left += kTile) {
            const ZedaRect tile{static_cast<int>(left), static_cast<int>(top),
                                static_cast<int>(std::min<long long>(left + kTile, bounds.right)),
                                static_cast<int>(std::min<long long>(top + kTile, bounds.bottom))};
            RasteriseTile(tile, points, counts, polyCount, scan, runs);
        }
    }
    return RegionPtr(cairo_region_create_rectangles(runs.data(), static_cast<int>(runs.size())));
}

}  // namespace VTC::gfx
