#include "VtPolygonRegion_p.h"

#include <algorithm>
#include <vector>

#include "VtRasterShapes_p.h"

namespace VTC::gfx {

using ZEDA::ZedaPoint;
using ZEDA::ZedaRect;

namespace {

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
    // Moved up and left as every shape is, by the raster core's rules.
    std::vector<raster::FixedPoint> fixed;
    fixed.reserve(static_cast<std::size_t>(total));
    for (int i = 0; i < total; ++i) {
        fixed.push_back({points[i].x * raster::kFixedOne - raster::kEdgeShift,
                         points[i].y * raster::kFixedOne - raster::kEdgeShift});
    }
    // The scan visits only the rows of the region space, so a polygon
    // spanning billions of rows costs what one of the space's height does.
    RunCollector collector;
    raster::SpanWriter out(kRegionSpace, collector);
    raster::FillPolygons(out, fixed.data(), counts, polyCount);
    return RegionPtr(cairo_region_create_rectangles(collector.runs.data(), static_cast<int>(collector.runs.size())));
}

}  // namespace VTC::gfx
