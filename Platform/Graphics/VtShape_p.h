#pragma once

// Shapes in device pixels, and how they reach a raster or a cairo context.

#include <cairo.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <vector>

#include "LqBase.h"
#include "VtPixels_p.h"

namespace VTC::gfx {

using ZEDA::ZedaPoint;

// The vertices of a shape: lines, triangles and squares (what the fills draw
// by the hundred) are held inline, larger polygons on the heap.
class ShapePoints {
public:
    ShapePoints() = default;
    ShapePoints(std::initializer_list<ZedaPoint> points) { assign(points.begin(), points.end()); }

    void assign(const ZedaPoint* first, const ZedaPoint* last)
    {
        size_ = static_cast<std::size_t>(last - first);
        if (size_ > inline_.size()) {
            heap_.assign(first, last);
        } else {
            std::copy(first, last, inline_.begin());
        }
    }
    ZedaPoint* data() { return size_ > inline_.size() ? heap_.data() : inline_.data(); }
    const ZedaPoint* data() const { return size_ > inline_.size() ? heap_.data() : inline_.data(); }
    std::size_t size() const { return size_; }
    ZedaPoint& operator[](std::size_t i) { return data()[i]; }
    const ZedaPoint& operator[](std::size_t i) const { return data()[i]; }
    const ZedaPoint* begin() const { return data(); }
    const ZedaPoint* end() const { return data() + size_; }

private:
    std::array<ZedaPoint, 6> inline_{};
    std::vector<ZedaPoint> heap_;
    std::size_t size_ = 0;
};

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
    ShapePoints points;  // Line: from, to. Polygon: the vertices.
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
