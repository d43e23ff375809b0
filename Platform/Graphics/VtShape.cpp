#include "VtShape_p.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <numbers>

#include "VtMask_p.h"
#include "VtRasterShapes_p.h"
#include "VtRegion_p.h"

namespace VTC::gfx {

namespace {

// cairo draws what the raster core does not, shifted the same way.
static_assert(kEdgeBias * raster::kFixedOne == raster::kEdgeShift);

enum class Pass { Interior, Outline };

// How far a butt-capped line is pulled back along its direction, so that its
// first pixel is drawn and its last is not.
constexpr double kLineEndPull = 1.0 / 32.0;

// Outlines of rectangles, ellipses and arcs run this far inside the bounds,
// through the centres of the edge pixels: a one-pixel pen covers exactly the
// edge pixels of the bounds, and a wider pen, centred on the path, reaches
// past them by half its width.
constexpr double kOutlineInset = 0.5;

void SetColour(cairo_t* cr, uint32_t colour)
{
    cairo_set_source_rgb(cr, ZEDAREDVAL(colour) / 255.0, ZEDAGREENVAL(colour) / 255.0, ZEDABLUEVAL(colour) / 255.0);
}

void TraceRect(cairo_t* cr, double left, double top, double right, double bottom)
{
    cairo_rectangle(cr, left, top, right - left, bottom - top);
}

// Angle of a point seen from the centre of an ellipse scaled to a unit circle,
// in cairo's sense (clockwise on screen).
double EllipseAngle(const ZedaRect& b, const ZedaPoint& p)
{
    const double cx = (b.left + b.right) / 2.0;
    const double cy = (b.top + b.bottom) / 2.0;
    const double rx = std::max(b.Width() / 2.0, 1e-9);
    const double ry = std::max(b.Height() / 2.0, 1e-9);
    return std::atan2((p.y - cy) / ry, (p.x - cx) / rx);
}

// The ellipse of the bounds, moved in by `inset` (out where negative).
void TraceEllipse(cairo_t* cr, const ShapeOp& op, double inset, bool whole)
{
    const ZedaRect& b = op.bounds;
    const double rx = b.Width() / 2.0 - inset;
    const double ry = b.Height() / 2.0 - inset;
    cairo_save(cr);
    cairo_translate(cr, (b.left + b.right) / 2.0, (b.top + b.bottom) / 2.0);
    cairo_scale(cr, rx, ry);
    if (whole) {
        cairo_new_sub_path(cr);
        cairo_arc(cr, 0, 0, 1, 0, 2 * std::numbers::pi);
        cairo_close_path(cr);
    } else {
        // Counter-clockwise on screen is the negative direction in cairo.
        cairo_new_sub_path(cr);
        cairo_arc_negative(cr, 0, 0, 1, EllipseAngle(b, op.arcStart), EllipseAngle(b, op.arcEnd));
    }
    cairo_restore(cr);
}

void TraceLine(cairo_t* cr, const ShapeOp& op)
{
    const ZedaPoint& from = op.points[0];
    const ZedaPoint& to = op.points[1];
    const double dx = to.x - from.x;
    const double dy = to.y - from.y;
    const double length = std::hypot(dx, dy);
    const double pullX = dx / length * kLineEndPull;
    const double pullY = dy / length * kLineEndPull;
    cairo_move_to(cr, from.x + 0.5 - pullX, from.y + 0.5 - pullY);
    cairo_line_to(cr, to.x + 0.5 - pullX, to.y + 0.5 - pullY);
}

void TracePolygon(cairo_t* cr, const ShapeOp& op, double shift)
{
    cairo_move_to(cr, op.points[0].x + shift, op.points[0].y + shift);
    for (std::size_t i = 1; i < op.points.size(); ++i) {
        cairo_line_to(cr, op.points[i].x + shift, op.points[i].y + shift);
    }
    cairo_close_path(cr);
}

bool HasArea(const ShapeOp& op)
{
    switch (op.kind) {
    case ShapeOp::Kind::Polygon:
        return op.points.size() >= 3;
    case ShapeOp::Kind::Rectangle:
    case ShapeOp::Kind::Ellipse:
        return !op.bounds.IsEmpty();
    default:
        return false;
    }
}

bool HasOutline(const ShapeOp& op)
{
    switch (op.kind) {
    case ShapeOp::Kind::Line:
        return op.points.size() == 2 && op.points[0] != op.points[1];
    case ShapeOp::Kind::Polygon:
        return op.points.size() >= 2;
    default:
        return !op.bounds.IsEmpty();
    }
}

void PaintInterior(cairo_t* cr, const ShapeOp& op)
{
    cairo_set_fill_rule(cr, CAIRO_FILL_RULE_EVEN_ODD);
    if (op.kind == ShapeOp::Kind::Polygon) {
        TracePolygon(cr, op, 0.0);
    } else if (op.kind == ShapeOp::Kind::Rectangle) {
        TraceRect(cr, op.bounds.left, op.bounds.top, op.bounds.right, op.bounds.bottom);
    } else {
        TraceEllipse(cr, op, 0.0, true);
    }
    cairo_fill(cr);
}

void PaintRectangleOutline(cairo_t* cr, const ShapeOp& op, double half)
{
    const ZedaRect& b = op.bounds;
    const double in = kOutlineInset;
    // Once the pen closes the hole in the middle it covers one box.
    if (2 * half >= std::min(b.Width(), b.Height()) - 2 * in) {
        TraceRect(cr, b.left + in - half, b.top + in - half, b.right - in + half, b.bottom - in + half);
        cairo_fill(cr);
        return;
    }
    TraceRect(cr, b.left + in, b.top + in, b.right - in, b.bottom - in);
    cairo_stroke(cr);
}

void PaintEllipseOutline(cairo_t* cr, const ShapeOp& op, double half)
{
    bool whole = op.kind == ShapeOp::Kind::Ellipse || op.arcStart == op.arcEnd;
    const double radius = std::min(op.bounds.Width(), op.bounds.Height()) / 2.0 - kOutlineInset;
    // A pen reaching past the centre covers the whole shape. cairo would
    // leave a hole where the inner edge of such a stroke turns over, so the
    // ellipse grown by half the pen is filled; the stroke still adds what an
    // eccentric ellipse's outline reaches beyond that grown ellipse.
    if (half > radius) {
        TraceEllipse(cr, op, kOutlineInset - half, true);
        cairo_fill(cr);
        if (radius <= 0) {
            return;  // the path has collapsed onto a line, which the fill covers
        }
        whole = true;
    }
    TraceEllipse(cr, op, kOutlineInset, whole);
    cairo_stroke(cr);
}

void PaintOutline(cairo_t* cr, const ShapeOp& op)
{
    const double width = op.stroke->width;
    cairo_set_line_width(cr, width);
    cairo_set_line_cap(cr, CAIRO_LINE_CAP_BUTT);
    cairo_set_line_join(cr, CAIRO_LINE_JOIN_MITER);
    cairo_set_fill_rule(cr, CAIRO_FILL_RULE_WINDING);
    switch (op.kind) {
    case ShapeOp::Kind::Line:
        TraceLine(cr, op);
        cairo_stroke(cr);
        return;
    case ShapeOp::Kind::Polygon:
        TracePolygon(cr, op, 0.5);
        cairo_stroke(cr);
        return;
    case ShapeOp::Kind::Rectangle:
        PaintRectangleOutline(cr, op, width / 2.0);
        return;
    default:
        PaintEllipseOutline(cr, op, width / 2.0);
    }
}

// Paints one pass onto `cr` in its current source.
void PaintPass(cairo_t* cr, const ShapeOp& op, Pass pass)
{
    cairo_new_path(cr);
    if (pass == Pass::Interior) {
        PaintInterior(cr, op);
    } else {
        PaintOutline(cr, op);
    }
}

// The interior, then the outline, each in its colour, where the shape has them.
struct Passes {
    std::array<std::pair<Pass, uint32_t>, 2> list;
    std::size_t count = 0;
    const std::pair<Pass, uint32_t>* begin() const { return list.data(); }
    const std::pair<Pass, uint32_t>* end() const { return list.data() + count; }
};

Passes PassesOf(const ShapeOp& op)
{
    Passes passes;
    if (op.fill && HasArea(op)) {
        passes.list[passes.count++] = {Pass::Interior, *op.fill};
    }
    if (op.stroke && HasOutline(op)) {
        passes.list[passes.count++] = {Pass::Outline, op.stroke->colour};
    }
    return passes;
}

}  // namespace

ZedaRect ShapeBounds(const ShapeOp& op)
{
    if (op.kind != ShapeOp::Kind::Line && op.kind != ShapeOp::Kind::Polygon) {
        ZedaRect bounds = op.bounds;
        if (op.stroke) {
            // The pen reaches past the outline path, which runs inside the bounds.
            bounds.Inflate(static_cast<int>(std::ceil(op.stroke->width / 2.0 - kOutlineInset)));
        }
        return bounds;
    }
    ZedaRect bounds{INT_MAX, INT_MAX, INT_MIN, INT_MIN};
    for (const ZedaPoint& p : op.points) {
        bounds.left = std::min(bounds.left, p.x);
        bounds.top = std::min(bounds.top, p.y);
        bounds.right = std::max(bounds.right, p.x + 1);
        bounds.bottom = std::max(bounds.bottom, p.y + 1);
    }
    if (op.stroke) {
        // Miter joins reach out by at most the miter limit times the half width.
        const int reach = static_cast<int>(std::ceil(op.stroke->width * 5.0)) + 1;
        bounds.Inflate(reach);
    }
    return bounds;
}

namespace {

// cairo's own layout of 16- and 32-bit pixels is the platform's, so shapes
// can be drawn into those rasters directly.
std::optional<cairo_format_t> CairoFormatOf(const RasterView& target)
{
    if (target.format.bpp == 32) {
        return CAIRO_FORMAT_ARGB32;
    }
    if (target.format.bpp == 16) {
        return CAIRO_FORMAT_RGB16_565;
    }
    return std::nullopt;
}

// A cairo context on the raster last drawn into directly, kept per thread:
// consecutive shapes on one raster are the common case.
class DirectCanvas {
public:
    DirectCanvas() = default;
    DirectCanvas(const DirectCanvas&) = delete;
    DirectCanvas& operator=(const DirectCanvas&) = delete;
    ~DirectCanvas() { Release(); }

    // A context in device pixels with no clip, or null when cairo fails.
    cairo_t* On(const RasterView& target, cairo_format_t format)
    {
        if (target.data != data_ || target.width != width_ || target.height != height_ ||
            target.stride != stride_ || format != format_ || context_ == nullptr) {
            Release();
            surface_ =
                cairo_image_surface_create_for_data(target.data, format, target.width, target.height, target.stride);
            context_ = cairo_create(surface_);
            data_ = target.data;
            width_ = target.width;
            height_ = target.height;
            stride_ = target.stride;
            format_ = format;
            cairo_set_antialias(context_, CAIRO_ANTIALIAS_NONE);
            cairo_set_operator(context_, CAIRO_OPERATOR_SOURCE);
        }
        if (cairo_status(context_) != CAIRO_STATUS_SUCCESS) {
            Release();
            return nullptr;
        }
        cairo_reset_clip(context_);
        cairo_identity_matrix(context_);
        return context_;
    }

private:
    void Release()
    {
        if (context_ != nullptr) {
            cairo_destroy(context_);
            cairo_surface_destroy(surface_);
        }
        context_ = nullptr;
        surface_ = nullptr;
        data_ = nullptr;
    }

    cairo_surface_t* surface_ = nullptr;
    cairo_t* context_ = nullptr;
    const unsigned char* data_ = nullptr;
    int width_ = 0;
    int height_ = 0;
    int stride_ = 0;
    cairo_format_t format_ = CAIRO_FORMAT_INVALID;
};

// False when cairo cannot take the raster (beyond 32767 pixels a side, or
// out of memory): the mask, only as large as the shape, still can.
bool PaintDirectly(const RasterView& target, cairo_format_t format, const ShapeOp& op, Pass pass, uint32_t colour,
                   const cairo_region_t* clip, const ZedaRect& area)
{
    thread_local DirectCanvas canvas;
    cairo_t* cr = canvas.On(target, format);
    if (cr == nullptr) {
        return false;
    }
    cairo_new_path(cr);
    if (clip != nullptr) {
        AppendRegionPath(cr, clip, area);
    } else {
        TraceRect(cr, area.left, area.top, area.right, area.bottom);
    }
    cairo_clip(cr);
    cairo_translate(cr, -kEdgeBias, -kEdgeBias);
    SetColour(cr, colour);
    PaintPass(cr, op, pass);
    return true;
}

void PaintThroughMask(const RasterView& target, const ShapeOp& op, Pass pass, uint32_t colour,
                      const cairo_region_t* clip, const ZedaRect& area)
{
    MaskSurface mask(area);
    if (!mask.IsValid()) {
        return;
    }
    cairo_t* cr = mask.Context();
    if (clip != nullptr) {
        mask.Clip(clip);
    }
    cairo_translate(cr, -kEdgeBias, -kEdgeBias);
    PaintPass(cr, op, pass);
    const uint32_t raw = DrawingRaw(target, colour);
    mask.ForEachRun([&](int y, int x0, int x1) { FillSpan(target, y, x0, x1, raw); });
}

// Beyond this many pixels a pen is left to cairo: the raster core's
// arithmetic is exact for any pen an int holds, but such pens only come from
// absurd scales.
constexpr double kWidestRasterPen = 1 << 24;

// The pen's bands along the four sides of a rectangle's outline, or the one
// box they make once they close the hole in the middle.
int RectangleOutlineBoxes(const ZedaRect& b, int pen, ZedaRect* boxes)
{
    const auto band = [pen](int v) {
        const auto [first, end] = raster::PenBand(v, pen);
        return std::pair{static_cast<int>(first), static_cast<int>(end)};
    };
    const auto [outerLeft, innerLeft] = band(b.left);
    const auto [innerRight, outerRight] = band(b.right - 1);
    const auto [outerTop, innerTop] = band(b.top);
    const auto [innerBottom, outerBottom] = band(b.bottom - 1);
    if (innerLeft >= innerRight || innerTop >= innerBottom) {
        boxes[0] = {outerLeft, outerTop, outerRight, outerBottom};
        return 1;
    }
    boxes[0] = {outerLeft, outerTop, outerRight, innerTop};
    boxes[1] = {outerLeft, innerBottom, outerRight, outerBottom};
    boxes[2] = {outerLeft, innerTop, innerLeft, innerBottom};
    boxes[3] = {innerRight, innerTop, outerRight, innerBottom};
    return 4;
}

bool PaintInteriorSpans(raster::SpanWriter& out, const ShapeOp& op)
{
    switch (op.kind) {
    case ShapeOp::Kind::Rectangle:
        out.Box(op.bounds);
        return true;
    case ShapeOp::Kind::Polygon:
        raster::FillPolygon(out, op.points.data(), static_cast<int>(op.points.size()));
        return true;
    case ShapeOp::Kind::Ellipse:
        return raster::FillEllipse(out, op.bounds);
    default:
        return false;
    }
}

bool PaintOutlineSpans(raster::SpanWriter& out, const ShapeOp& op)
{
    if (op.stroke->width > kWidestRasterPen) {
        return false;
    }
    const auto pen = static_cast<int>(op.stroke->width);
    switch (op.kind) {
    case ShapeOp::Kind::Line:
        raster::StrokeLine(out, op.points[0], op.points[1], pen);
        return true;
    case ShapeOp::Kind::Polygon:
        raster::StrokePolygon(out, op.points.data(), static_cast<int>(op.points.size()), pen);
        return true;
    case ShapeOp::Kind::Rectangle: {
        ZedaRect boxes[4];
        const int count = RectangleOutlineBoxes(op.bounds, pen, boxes);
        for (int i = 0; i < count; ++i) {
            out.Box(boxes[i]);
        }
        return true;
    }
    case ShapeOp::Kind::Ellipse:
        return raster::StrokeEllipse(out, op.bounds, pen);
    default:  // an arc whose ends meet is the whole outline; other arcs are cairo's
        return op.arcStart == op.arcEnd && raster::StrokeEllipse(out, op.bounds, pen);
    }
}

// Paints a pass as spans straight into the pixels; false when the raster
// core does not draw that shape.
bool PaintSpans(const RasterView& target, const ShapeOp& op, Pass pass, uint32_t colour, const cairo_region_t* clip)
{
    raster::SpanWriter out({target.data, target.width, target.height, target.stride, target.format.bpp},
                           DrawingRaw(target, colour), clip);
    return pass == Pass::Interior ? PaintInteriorSpans(out, op) : PaintOutlineSpans(out, op);
}

}  // namespace

void PaintShape(const RasterView& target, const ShapeOp& op, const cairo_region_t* clip)
{
    ZedaRect area = ShapeBounds(op);
    if (!area.Intersection(target.Bounds()) || (clip != nullptr && !area.Intersection(RegionExtents(clip)))) {
        return;
    }
    const std::optional<cairo_format_t> format = CairoFormatOf(target);
    for (const auto& [pass, colour] : PassesOf(op)) {
        if (PaintSpans(target, op, pass, colour, clip)) {
            continue;
        }
        if (!format || !PaintDirectly(target, *format, op, pass, colour, clip, area)) {
            PaintThroughMask(target, op, pass, colour, clip, area);
        }
    }
}

void PaintShape(cairo_t* cr, const ShapeOp& op, const cairo_region_t* clip)
{
    for (const auto& [pass, colour] : PassesOf(op)) {
        cairo_save(cr);
        if (clip != nullptr) {
            cairo_new_path(cr);
            AppendRegionPath(cr, clip, RegionExtents(clip));
            cairo_clip(cr);
        }
        SetColour(cr, colour);
        PaintPass(cr, op, pass);
        cairo_restore(cr);
    }
}

}  // namespace VTC::gfx
