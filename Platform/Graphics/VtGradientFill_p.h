#pragma once

// Gradients computed per pixel, for the native-gradient surface.

#include <cairo.h>

#include <cstdint>

#include "VtPixels_p.h"

namespace VTC::gfx {

struct GradientParams {
    uint32_t colour1 = 0;
    uint32_t colour2 = 0;
    int offsetX = 0;  // percent of the box
    int offsetY = 0;
    double angle = 0.0;  // radians, counter-clockwise on screen
};

// `box` is the gradient's frame in device pixels; only pixels of `target`
// inside `clip` (when given) are painted.
void PaintLinearGradient(const RasterView& target, const ZedaRect& box, const GradientParams& params,
                         const cairo_region_t* clip);
void PaintRadialGradient(const RasterView& target, const ZedaRect& box, const GradientParams& params,
                         const cairo_region_t* clip);
// Fills all of `image`, whose pixel (0, 0) is the top-left of `box`.
void PaintSquareGradient(const RasterView& image, const ZedaRect& box, const GradientParams& params);

}  // namespace VTC::gfx
