#include "VtGradientFill_p.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "VtRegion_p.h"
#include "ZedaGradient.h"

namespace VTC::gfx {

namespace {

using ZEDA::ExactPixels;
using Vec = ExactPixels::Point;

// Calls paint(x, y) for every pixel of `box` on the target and inside `clip`.
template <typename Paint>
void ForEachPixel(const RasterView& target, const ZedaRect& box, const cairo_region_t* clip, Paint&& paint)
{
    ForEachVisibleRect(box, target.Bounds(), clip, [&](const ZedaRect& r) {
        for (int y = r.top; y < r.bottom; ++y) {
            for (int x = r.left; x < r.right; ++x) {
                paint(x, y);
            }
        }
    });
}

// The centre moved by the offsets (a positive offsetY moves it up) and the
// distance from it to the far corner, where colour2 is reached.
std::pair<Vec, double> CentreAndReach(const ZedaRect& box, const GradientParams& params)
{
    const Vec centre = ZEDA::GradientCentre<ExactPixels>(box, params.offsetX, params.offsetY);
    const ZEDA::ZedaPoint farCorner = ZEDA::GradientFarCorner(box, params.offsetX, params.offsetY);
    const Vec corner{double(farCorner.x), double(farCorner.y)};
    const double reach = std::hypot(corner.x - centre.x, corner.y - centre.y);
    return {centre, std::max(reach, 1.0)};
}

}  // namespace

void PaintLinearGradient(const RasterView& target, const ZedaRect& box, const GradientParams& params,
                         const cairo_region_t* clip)
{
    const double angle = ZEDA::GradientAngle(params.angle);
    const Vec axis{std::cos(angle), -std::sin(angle)};
    const ZEDA::GradientAxisCorners corners = ZEDA::GradientAxisCornersOf(box, axis.x, axis.y);
    const Vec start{double(corners.entry.x), double(corners.entry.y)};
    const Vec opposite{double(corners.opposite.x), double(corners.opposite.y)};
    const double length = std::max((opposite.x - start.x) * axis.x + (opposite.y - start.y) * axis.y, 1e-9);
    const Vec end{start.x + axis.x * length, start.y + axis.y * length};
    const Vec shift = ZEDA::GradientAxisShift<ExactPixels>(start, end, params.offsetX, params.offsetY);
    ForEachPixel(target, box, clip, [&](int x, int y) {
        const double px = x + 0.5 + shift.x - start.x;
        const double py = y + 0.5 + shift.y - start.y;
        const double t = std::fabs(px * axis.x + py * axis.y) / length;
        WriteRaw(target, x, y, DrawingRaw(target, ZEDA::GradientColour(params.colour1, params.colour2, t)));
    });
}

void PaintRadialGradient(const RasterView& target, const ZedaRect& box, const GradientParams& params,
                         const cairo_region_t* clip)
{
    const auto [centre, reach] = CentreAndReach(box, params);
    ForEachPixel(target, box, clip, [&](int x, int y) {
        const double t = std::hypot(x + 0.5 - centre.x, y + 0.5 - centre.y) / reach;
        WriteRaw(target, x, y, DrawingRaw(target, ZEDA::GradientColour(params.colour1, params.colour2, t)));
    });
}

void PaintSquareGradient(const RasterView& image, const ZedaRect& box, const GradientParams& params)
{
    const auto [centre, reach] = CentreAndReach(box, params);
    const double angle = ZEDA::GradientAngle(params.angle);
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            const double dx = box.left + x + 0.5 - centre.x;
            const double dy = box.top + y + 0.5 - centre.y;
            // Distance measured in squares turned by the angle.
            const double half = std::max(std::fabs(dx * c - dy * s), std::fabs(dx * s + dy * c));
            const uint32_t colour = ZEDA::GradientColour(params.colour1, params.colour2, half / reach);
            WriteRaw(image, x, y, DrawingRaw(image, colour));
        }
    }
}

}  // namespace VTC::gfx
