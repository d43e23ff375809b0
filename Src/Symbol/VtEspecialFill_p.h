#pragma once

// What the gradient and the transparency halves of VtEspecialFill share:
// surface questions and the opaque fill. Region helpers are in
// VtEspecialFillRegion_p.h, the blend kernels in blend/.

#include <climits>
#include <memory>

#include "LqBase.h"

namespace VTC {

class VtGraphics;
class VtImage;
struct VtImageInfo;

namespace EspecialFillDetail {

// Every graphics, image, pen, brush and region the renderer makes is held by
// one of these from the moment it is made, so that it is destroyed on every
// path. Guards go in the reverse order of the destruction the routine owes:
// the last declared is destroyed first.
template <typename T>
using Owned = std::unique_ptr<T>;

// A memory graphics made compatible with `reference`, or null.
Owned<VtGraphics> NewMemoryGraphics(VtGraphics* reference);

// An image of width x height in the format of `reference`, or null.
Owned<VtImage> NewCompatibleImage(VtGraphics* reference, int width, int height);

// A surface that is neither printing nor recording is bound to the screen.
// IsRecording is asked only when IsPrinting is false.
bool IsScreenSurface(VtGraphics* graphics);

// The record GetImageInfo fills, set up the way every caller must set it.
void ResetImageInfo(VtImageInfo& info);

// (0, 0) to the screen size of VtEspecialFill::GetScreenSize.
ZEDA::ZedaRect ScreenRect();

// An opaque rectangle of the colour without an outline; false (logged) when
// the brush or the pen cannot be made.
bool DrawOpaqueRectangle(VtGraphics* graphics, const ZEDA::ZedaRect& rect, unsigned int colour);

// The geometry's ints are 32-bit two's complement numbers, as the hardware
// keeps them: what leaves the range wraps around.
using ZEDA::WrappingAdd;
using ZEDA::WrappingMul;
using ZEDA::WrappingSub;
inline int WrappingAbs(int a) { return a < 0 ? WrappingSub(0, a) : a; }

// The geometry's doubles become ints by truncation; a value the int range
// cannot hold (NaN included) becomes INT_MIN, as the processor's conversion
// gives it, instead of being undefined.
inline int TruncateToInt(double value)
{
    return value > -2147483649.0 && value < 2147483648.0 ? static_cast<int>(value) : INT_MIN;
}

// Half away from zero, then truncated.
inline int RoundAway(double value)
{
    return TruncateToInt(value > 0 ? value + 0.5 : value - 0.5);
}

}  // namespace EspecialFillDetail
}  // namespace VTC
