#pragma once

// Rules that every gradient of the framework follows, whoever paints it: the
// fill module's band generators and the native-gradient surface both paint
// from these, so that the two cannot drift apart.

#include <cmath>

#include "LqExport.h"
#include "ZedaGeometry.h"

namespace ZEDA {

// An angle that is not finite is taken as 0.
inline double GradientAngle(double angle) { return std::isfinite(angle) ? angle : 0.0; }

// colour1 blended towards colour2 by t, channel by channel, each channel's
// step truncated toward colour1. A t that is not a number or above 1 gives
// colour2, one below 0 colour1. The alpha byte of the result is 255.
LQ_EXPORT unsigned int GradientColour(unsigned int colour1, unsigned int colour2, double t);

// The two ways the rules below are computed: in whole pixels by the fill
// module's band generators (quotients truncated toward zero, sums wrapping
// as the hardware's do), and exactly by the native-gradient surface, which
// samples every pixel at its centre.
struct WholePixels {
    using Number = int;
    using Point = ZedaPoint;
    static constexpr int Middle(int a, int b) { return static_cast<int>((static_cast<long long>(a) + b) / 2); }
    static constexpr int Percent(int length, int percent) { return WrappingMul(length, percent) / 100; }
    static constexpr int Plus(int a, int b) { return WrappingAdd(a, b); }
    static constexpr int Minus(int a, int b) { return WrappingSub(a, b); }
};

struct ExactPixels {
    using Number = double;
    struct Point {
        double x = 0;
        double y = 0;
    };
    static constexpr double Middle(double a, double b) { return (a + b) / 2.0; }
    static constexpr double Percent(double length, int percent) { return length * percent / 100.0; }
    static constexpr double Plus(double a, double b) { return a + b; }
    static constexpr double Minus(double a, double b) { return a - b; }
};

// The centre of a centred gradient (radial, conical, square): the middle of
// `rect` moved right by offsetX percent of its width and up by offsetY
// percent of its height.
template <typename Pixels>
constexpr typename Pixels::Point GradientCentre(const ZedaRect& rect, int offsetX, int offsetY)
{
    return {Pixels::Plus(Pixels::Middle(rect.left, rect.right), Pixels::Percent(rect.Width(), offsetX)),
            Pixels::Minus(Pixels::Middle(rect.top, rect.bottom), Pixels::Percent(rect.Height(), offsetY))};
}

// The corner of `rect` from which a centred gradient measures its reach: the
// left one unless offsetX moves the centre left, the top one unless offsetY
// moves it up (a positive offsetY).
constexpr ZedaPoint GradientFarCorner(const ZedaRect& rect, int offsetX, int offsetY)
{
    return {offsetX < 0 ? rect.right : rect.left, offsetY > 0 ? rect.bottom : rect.top};
}

// The corners of `rect` that a linear gradient's axis runs between when it
// points along (dx, dy) on screen (y grows downwards): it starts where it
// enters the rectangle and ends at the projection of the opposite corner,
// so that the lines across it through its two ends just enclose the
// rectangle. A zero component counts as positive.
struct GradientAxisCorners {
    ZedaPoint entry;
    ZedaPoint opposite;
};

constexpr GradientAxisCorners GradientAxisCornersOf(const ZedaRect& rect, double dx, double dy)
{
    const bool rightwards = dx >= 0;
    const bool downwards = dy >= 0;
    return {{rightwards ? rect.left : rect.right, downwards ? rect.top : rect.bottom},
            {rightwards ? rect.right : rect.left, downwards ? rect.bottom : rect.top}};
}

// How far the offsets move the colours along a linear gradient's axis from
// `start` to `end`: offsetX percent of its extent across, offsetY percent of
// its extent down, each towards the start.
template <typename Pixels>
constexpr typename Pixels::Point GradientAxisShift(const typename Pixels::Point& start,
                                                   const typename Pixels::Point& end, int offsetX, int offsetY)
{
    return {Pixels::Percent(Pixels::Minus(start.x, end.x), offsetX),
            Pixels::Percent(Pixels::Minus(start.y, end.y), offsetY)};
}

}  // namespace ZEDA
