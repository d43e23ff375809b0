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
    explicit RunCollector(std::vector<cairo_rectangle_int_t>& runs) : runs_(runs) {}
    void Run(int y, int x0, int x1) override { runs_.push_back({x0, y, x1 - x0, 1}); }

private:
    std::vector<cairo_rectangle_int_t>& runs_;
};

// Buffers kept per thread, so that regions of the usual sizes allocate only
// their cairo region; what a huge region made them grow to is let go.
struct Scratch {
    static constexpr std::size_t kKeptRuns = std::size_t{1} << 14;
    std::vector<raster::FixedPoint> points;
    std::vector<cairo_rectangle_int_t> runs;

    void Trim()
    {
        if (runs.capacity() > kKeptRuns) {
            runs.shrink_to_fit();
        }
        if (points.capacity() > kKeptRuns) {
            points.shrink_to_fit();
        }
    }
};

}  // namespace

RegionPtr RasterisePolygons(const ZedaPoint* points, const int* counts, int polyCount)
{
    thread_local Scratch scratch;
    scratch.points.clear();
    scratch.runs.clear();
    int total = 0;
    for (int p = 0; p < polyCount; ++p) {
        total += std::max(counts[p], 0);
    }
    // Moved up and left as every shape is, by the raster core's rules.
    for (int i = 0; i < total; ++i) {
        scratch.points.push_back({points[i].x * raster::kFixedOne - raster::kEdgeShift,
                                  points[i].y * raster::kFixedOne - raster::kEdgeShift});
    }
    // The scan visits only the rows of the region space, so a polygon
    // spanning billions of rows costs what one of the space's height does.
    RunCollector collector(scratch.runs);
    raster::SpanWriter out(kRegionSpace, collector);
    raster::FillPolygons(out, scratch.points.data(), counts, polyCount);
    RegionPtr region(cairo_region_create_rectangles(scratch.runs.data(), static_cast<int>(scratch.runs.size())));
    scratch.Trim();
    return region;
}

}  // namespace VTC::gfx
