#include "VtPolygonRegion_p.h"

#include <algorithm>
#include <climits>
#include <vector>

#include "VtRasterShapes_p.h"

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

// Each run becomes a rectangle one pixel high.
class RunCollector : public raster::RunSink {
public:
    void Run(int y, int x0, int x1) override { runs.push_back({x0, y, x1 - x0, 1}); }
    std::vector<cairo_rectangle_int_t> runs;
};

}  // namespace

RegionPtr RasterisePolygons(const ZedaPoint* points, const int* counts, int polyCount)
{
    int total = 0;
    for (int p = 0; p < polyCount; ++p) {
        total += std::max(counts[p], 0);
    }
    const ZedaRect bounds = PointBounds(points, total);
    // Moved up and left as every shape is, by the raster core's rules.
    std::vector<raster::FixedPoint> fixed;
    fixed.reserve(static_cast<std::size_t>(total));
    for (int i = 0; i < total; ++i) {
        fixed.push_back({points[i].x * raster::kFixedOne - raster::kEdgeShift,
                         points[i].y * raster::kFixedOne - raster::kEdgeShift});
    }
    RunCollector collector;
    for (long long top = bounds.top; top < bounds.bottom; top += kTile) {
        for (long long left = bounds.left; left < bounds.right; left += kTile) {
            const ZedaRect tile{static_cast<int>(left), static_cast<int>(top),
                                static_cast<int>(std::min<long long>(left + kTile, bounds.right)),
                                static_cast<int>(std::min<long long>(top + kTile, bounds.bottom))};
            raster::SpanWriter out(tile, collector);
            raster::FillPolygons(out, fixed.data(), counts, polyCount);
        }
    }
    return RegionPtr(cairo_region_create_rectangles(collector.runs.data(), static_cast<int>(collector.runs.size())));
}

}  // namespace VTC::gfx
