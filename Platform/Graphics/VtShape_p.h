#pragma once

// Shapes in device pixels, and how they reach a raster or a cairo context.

#include <cairo.h>

#include <cstdint>
#include <optional>
#include <vector>

#include "LqBase.h"
#include "VtPixels_p.h"

namespace VTC::gfx {

using ZEDA::ZedaPoint;

struct StrokeStyle {
    uint32_t colour = 0;
    double width = 1.0;  // device pixels
};

// One drawing call, mapped to device pixels. Interiors are sampled at pixel
// centres with corners on pixel corners; lines and polygon outlines run
// through pixel centres, and outlines of rectangles, ellipses and arcs
// through the centres of the bounds' edge pixels; pens are centred on
// their path, so a wide one reaches outside the bounds.
struct ShapeOp {
    enum class Kind { Line, Polygon, Rectangle, Ellipse, Arc };
    explicit ShapeOp(Kind k) : kind(k) {}

    Kind kind;
    std::vector<ZedaPoint> points;  // Line: from, to. Polygon: the vertices.
    ZedaRect bounds;                // Rectangle, Ellipse, Arc; normalised
    ZedaPoint arcStart;
    ZedaPoint arcEnd;
    std::optional<uint32_t> fill;
    std::optional<StrokeStyle> stroke;
};

// Device pixels that the shape may touch.
ZedaRect ShapeBounds(const ShapeOp& op);

// Paints the shape onto raster pixels, through `clip` when there is one.
void PaintShape(const RasterView& target, const ShapeOp& op, const cairo_region_t* clip);

// Paints the shape with cairo (vector documents).
void PaintShape(cairo_t* cr, const ShapeOp& op, const cairo_region_t* clip);

}  // namespace VTC::gfx
