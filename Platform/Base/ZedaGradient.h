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

// The corner of `rect` from which a centred gradient (radial, conical,
// square) measures its reach: the left one unless offsetX moves the centre
// left, the top one unless offsetY moves it up (a positive offsetY).
constexpr ZedaPoint GradientFarCorner(const ZedaRect& rect, int offsetX, int offsetY)
{
    return {offsetX < 0 ? rect.right : rect.left, offsetY > 0 ? rect.bottom : rect.top};
}

}  // namespace ZEDA
