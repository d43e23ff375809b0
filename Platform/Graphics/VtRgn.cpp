#include "VtRgn.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <optional>
#include <vector>

#include "VtGraphicsInternal.h"
#include "VtMask.h"
#include "VtPolygonScan.h"

namespace VTC {

using ZEDA::ZedaPoint;
using ZEDA::ZedaRect;

namespace {

constexpr const char* kSource = "Platform/Graphics/VtRgn";
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
            cairo_move_to(cr, points[0].x - gfx::kEdgeBias, points[0].y - gfx::kEdgeBias);
            for (int i = 1; i < count; ++i) {
                cairo_line_to(cr, points[i].x - gfx::kEdgeBias, points[i].y - gfx::kEdgeBias);
            }
            cairo_close_path(cr);
        }
        points += std::max(count, 0);
    }
}

void RasteriseTile(const ZedaRect& tile, const ZedaPoint* points, const int* counts, int polyCount,
                   const std::optional<gfx::PolygonScan>& scan, std::vector<cairo_rectangle_int_t>& runs)
{
    if (scan) {
        scan->ForEachRun(tile, [&](int y, int x0, int x1) { runs.push_back({x0, y, x1 - x0, 1}); });
        return;
    }
    gfx::MaskSurface mask(tile);
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

namespace gfx {

RegionPtr MakeRegion(const ZedaRect& rect)
{
    if (rect.IsEmpty()) {
        return RegionPtr(cairo_region_create());
    }
    const cairo_rectangle_int_t r{rect.left, rect.top, rect.Width(), rect.Height()};
    return RegionPtr(cairo_region_create_rectangle(&r));
}

RegionPtr CopyRegion(const cairo_region_t* region) { return RegionPtr(cairo_region_copy(region)); }

ZedaRect RegionExtents(const cairo_region_t* region)
{
    if (cairo_region_is_empty(region)) {
        return {};
    }
    cairo_rectangle_int_t r;
    cairo_region_get_extents(region, &r);
    return {r.x, r.y, r.x + r.width, r.y + r.height};
}

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

}  // namespace gfx

struct VtRgn::State {
    gfx::RegionPtr region{cairo_region_create()};
    bool counted = false;
};

VtRgn::VtRgn() : state_(std::make_unique<State>()) {}

VtRgn::~VtRgn()
{
    if (state_->counted) {
        gfx::CountDestroyed();
    }
}

std::unique_ptr<VtRgn> VtGraphicsInternals::MakeRgn(bool counted)
{
    std::unique_ptr<VtRgn> rgn(new VtRgn());
    rgn->state_->counted = counted;
    if (counted) {
        gfx::CountCreated();
    }
    return rgn;
}

const cairo_region_t* VtGraphicsInternals::Region(const VtRgn& rgn) { return rgn.state_->region.get(); }

void VtGraphicsInternals::SetRegion(VtRgn& rgn, gfx::RegionPtr region) { rgn.state_->region = std::move(region); }

bool VtRgn::CreateRectRegion(int left, int top, int right, int bottom)
{
    ZedaRect rect{left, top, right, bottom};
    rect.Normalize();
    state_->region = gfx::MakeRegion(rect);
    return true;
}

bool VtRgn::CreatePolygonRegion(const ZedaPoint* points, int count)
{
    return CreatePolyPolygonRegion(points, &count, 1);
}

bool VtRgn::CreatePolyPolygonRegion(const ZedaPoint* points, const int* counts, int polyCount)
{
    if (gfx::TakeFault(VT_FAULT_CREATE_REGION)) {
        return false;
    }
    const bool countsValid =
        counts != nullptr && polyCount >= 1 && std::all_of(counts, counts + polyCount, [](int c) { return c >= 0; });
    if (points == nullptr || !countsValid || std::all_of(counts, counts + polyCount, [](int c) { return c == 0; })) {
        gfx::LogFailure("GRg001", kSource, __LINE__);
        return false;
    }
    state_->region = gfx::RasterisePolygons(points, counts, polyCount);
    return true;
}

bool VtRgn::CombineRegion(VtRgn* a, VtRgn* b, int mode)
{
    if (a == nullptr || (b == nullptr && mode != 5)) {
        gfx::LogFailure("GRg002", kSource, __LINE__);
        return false;
    }
    gfx::RegionPtr result = gfx::CopyRegion(a->state_->region.get());
    cairo_status_t status = CAIRO_STATUS_SUCCESS;
    switch (mode) {
    case 1:
        status = cairo_region_intersect(result.get(), b->state_->region.get());
        break;
    case 2:
        status = cairo_region_union(result.get(), b->state_->region.get());
        break;
    case 3:
        status = cairo_region_xor(result.get(), b->state_->region.get());
        break;
    case 4:
        status = cairo_region_subtract(result.get(), b->state_->region.get());
        break;
    case 5:
        break;
    default:
        gfx::LogFailure("GRg003", kSource, __LINE__);
        return false;
    }
    if (status != CAIRO_STATUS_SUCCESS) {
        gfx::LogFailure("GRg004", kSource, __LINE__);
        return false;
    }
    state_->region = std::move(result);
    return true;
}

ZedaRect VtRgn::GetBoundingRect() const { return gfx::RegionExtents(state_->region.get()); }

bool VtRgn::PtInRegion(int x, int y) const { return cairo_region_contains_point(state_->region.get(), x, y); }

bool VtRgn::IsEmpty() const { return cairo_region_is_empty(state_->region.get()); }

void VtRgn::CopyFrom(const VtRgn& other)
{
    if (&other != this) {
        state_->region = gfx::CopyRegion(other.state_->region.get());
    }
}

}  // namespace VTC
