#include "SymbolRenderer.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <numbers>
#include <vector>

#include "LqGraphics.h"

namespace LqExample {

using VTC::VtBrush;
using VTC::VtGraphics;
using VTC::VtGraphicsManager;
using VTC::VtImage;
using VTC::VtPen;
using ZEDA::ZedaPoint;
using ZEDA::ZedaRect;
using ZEDA::ZedaSize;

namespace {

// A vertex of a shape in its own frame: x right, y up, radius 1.
struct Vertex {
    double x;
    double y;
};

std::vector<Vertex> RegularPolygon(int corners, double startDegrees)
{
    std::vector<Vertex> vertices;
    for (int i = 0; i < corners; ++i) {
        const double a = (startDegrees + 360.0 * i / corners) * std::numbers::pi / 180.0;
        vertices.push_back({std::cos(a), std::sin(a)});
    }
    return vertices;
}

std::vector<Vertex> Star()
{
    std::vector<Vertex> vertices;
    for (int i = 0; i < 10; ++i) {
        const double a = (90.0 + 36.0 * i) * std::numbers::pi / 180.0;
        const double r = i % 2 == 0 ? 1.0 : 0.4;
        vertices.push_back({r * std::cos(a), r * std::sin(a)});
    }
    return vertices;
}

std::vector<Vertex> Cross(double turnDegrees)
{
    constexpr double w = 0.3;
    std::vector<Vertex> arm{{w, 1}, {w, w}, {1, w}, {1, -w}, {w, -w}, {w, -1},
                            {-w, -1}, {-w, -w}, {-1, -w}, {-1, w}, {-w, w}, {-w, 1}};
    const double a = turnDegrees * std::numbers::pi / 180.0;
    for (Vertex& v : arm)
        v = {v.x * std::cos(a) - v.y * std::sin(a), v.x * std::sin(a) + v.y * std::cos(a)};
    return arm;
}

std::vector<Vertex> Arrow()
{
    return {{1, 0}, {0.1, 0.8}, {0.1, 0.3}, {-1, 0.3}, {-1, -0.3}, {0.1, -0.3}, {0.1, -0.8}};
}

std::vector<Vertex> Outline(MarkerShape shape)
{
    switch (shape) {
    case MarkerShape::Square: return RegularPolygon(4, 45.0);
    case MarkerShape::Triangle: return RegularPolygon(3, 90.0);
    case MarkerShape::Diamond: return RegularPolygon(4, 90.0);
    case MarkerShape::Pentagon: return RegularPolygon(5, 90.0);
    case MarkerShape::Hexagon: return RegularPolygon(6, 0.0);
    case MarkerShape::Star: return Star();
    case MarkerShape::Cross: return Cross(0.0);
    case MarkerShape::Saltire: return Cross(45.0);
    case MarkerShape::Arrow: return Arrow();
    case MarkerShape::Circle: break;
    }
    return {};
}

// Scales, turns counter-clockwise and places the vertices on the screen (y down).
std::vector<ZedaPoint> Place(const std::vector<Vertex>& vertices, double radius, double degrees, double centre)
{
    const double a = degrees * std::numbers::pi / 180.0;
    std::vector<ZedaPoint> points;
    for (const Vertex& v : vertices) {
        const double x = radius * (v.x * std::cos(a) - v.y * std::sin(a));
        const double y = radius * (v.x * std::sin(a) + v.y * std::cos(a));
        points.emplace_back(static_cast<int>(std::lround(centre + x)), static_cast<int>(std::lround(centre - y)));
    }
    return points;
}

// A 32-bit image, transparent at first, with a graphics drawing on it in
// one colour, the pen's or the brush's style chosen by the caller.
class Canvas {
public:
    Canvas(int width, int height, int penStyle, int brushStyle, double penWidth)
        : image_(VtGraphicsManager::NewImage(0)), pen_(VtGraphicsManager::NewPen(0)),
          brush_(VtGraphicsManager::NewBrush(0))
    {
        if (!image_ || !pen_ || !brush_ || !image_->CreateImage(width, height, 1, 32, nullptr, nullptr))
            return;
        graphics_.reset(VtGraphicsManager::CreateImageGraphics(image_.get()));
        if (!graphics_ || !pen_->CreatePen(penStyle, opaqueWhite, 0, 0, penWidth) ||
            !brush_->CreateBrush(brushStyle, opaqueWhite, 100, 0, ZedaSize(0, 0), 0)) {
            graphics_.reset();
            return;
        }
        previousPen_ = graphics_->SelectPen(pen_.get());
        previousBrush_ = graphics_->SelectBrush(brush_.get());
    }
    ~Canvas()
    {
        if (graphics_) {
            graphics_->SelectPen(previousPen_);
            graphics_->SelectBrush(previousBrush_);
        }
    }
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    VtGraphics* Graphics() { return graphics_.get(); }
    // Ends the drawing and hands out the pixels: the drawing in `colour`,
    // its alpha the colour's alpha scaled by how much of each pixel the
    // drawing covers. The surface draws opaque colours only, so the alpha of
    // an #AARRGGBB colour is applied here.
    bool Finish(unsigned int colour, RasterImage& image)
    {
        graphics_.reset();
        RasterImage coverage;
        if (!CopyFromImage(*image_, coverage))
            return false;
        for (unsigned int& pixel : coverage.pixels)
            pixel = WithAlpha(colour, ZEDAALPHAVAL(pixel) * ZEDAALPHAVAL(colour) / 255);
        image = std::move(coverage);
        return true;
    }

private:
    static constexpr unsigned int opaqueWhite = ZEDARGB(255, 255, 255);

    static unsigned int WithAlpha(unsigned int colour, unsigned int alpha)
    {
        return alpha == 0 ? 0u : ZEDARGBA(ZEDAREDVAL(colour), ZEDAGREENVAL(colour), ZEDABLUEVAL(colour), alpha);
    }

    std::unique_ptr<VtImage> image_;
    std::unique_ptr<VtPen> pen_;
    std::unique_ptr<VtBrush> brush_;
    std::unique_ptr<VtGraphics> graphics_;
    VtPen* previousPen_ = nullptr;
    VtBrush* previousBrush_ = nullptr;
};

// `top` over `bottom`, both with straight alpha, into `bottom`.
void Over(const RasterImage& top, RasterImage& bottom)
{
    for (std::size_t i = 0; i < bottom.pixels.size(); ++i) {
        const unsigned int upper = top.pixels[i];
        const unsigned int lower = bottom.pixels[i];
        const unsigned int a = ZEDAALPHAVAL(upper);
        const unsigned int b = ZEDAALPHAVAL(lower) * (255 - a) / 255;
        const unsigned int alpha = a + b;
        if (alpha == 0)
            continue;
        const auto mix = [&](unsigned int u, unsigned int l) {
            return static_cast<unsigned char>((u * a + l * b + alpha / 2) / alpha);
        };
        bottom.pixels[i] = ZEDARGBA(mix(ZEDAREDVAL(upper), ZEDAREDVAL(lower)),
                                    mix(ZEDAGREENVAL(upper), ZEDAGREENVAL(lower)),
                                    mix(ZEDABLUEVAL(upper), ZEDABLUEVAL(lower)), alpha);
    }
}

// Draws the marker's shape on a canvas of `side` pixels.
void DrawShape(const MarkerSymbol& marker, int side, VtGraphics& graphics)
{
    if (marker.shape == MarkerShape::Circle) {
        graphics.DrawEllipse(ZedaRect(1, 1, side - 1, side - 1));
        return;
    }
    const std::vector<ZedaPoint> points = Place(Outline(marker.shape), marker.size / 2.0, marker.rotation, side / 2.0);
    graphics.DrawPolygon(points.data(), static_cast<int>(points.size()));
}

}  // namespace

bool RenderMarker(const MarkerSymbol& marker, RasterImage& image)
{
    if (marker.size < 1 || marker.size > MarkerSymbol::maxSize)
        return false;
    const int side = marker.size + 2;
    // Fill and outline drawn apart, each in its own colour and alpha, then the outline over the fill.
    Canvas fill(side, side, VTC::VT_PEN_NULL, VTC::VT_BRUSH_SOLID, 1.0);
    Canvas outline(side, side, VTC::VT_PEN_SOLID, VTC::VT_BRUSH_NULL, 1.0);
    if (!fill.Graphics() || !outline.Graphics())
        return false;
    DrawShape(marker, side, *fill.Graphics());
    DrawShape(marker, side, *outline.Graphics());
    RasterImage filled;
    RasterImage outlined;
    if (!fill.Finish(marker.colour, filled) || !outline.Finish(marker.outlineColour, outlined))
        return false;
    Over(outlined, filled);
    image = std::move(filled);
    return true;
}

bool RenderLineSample(const LineSymbol& line, int length, RasterImage& image)
{
    const int thickness = std::clamp(static_cast<int>(std::lround(line.width)), 1, 64);
    const int height = thickness + 4;
    if (length < 1 || length > ResourceCache::maxImageSide)
        return false;
    Canvas canvas(length, height, VTC::VT_PEN_SOLID, VTC::VT_BRUSH_SOLID, 0.0);
    VtGraphics* graphics = canvas.Graphics();
    if (!graphics)
        return false;
    const int top = (height - thickness) / 2;
    const std::vector<int> pattern = line.dashes.empty() ? std::vector<int>{length} : line.dashes;
    bool on = true;
    for (int x = 0, i = 0; x < length; x += pattern[i], i = (i + 1) % static_cast<int>(pattern.size())) {
        if (on)
            graphics->DrawRectangle(ZedaRect(x, top, std::min(x + pattern[i], length), top + thickness));
        on = !on;
    }
    return canvas.Finish(line.colour, image);
}

bool CopyFromImage(const VtImage& source, RasterImage& image)
{
    if (!source.IsCreated())
        return false;
    RasterImage copy(source.GetWidth(), source.GetHeight());
    for (int y = 0; y < copy.height; ++y)
        for (int x = 0; x < copy.width; ++x)
            copy.At(x, y) = source.GetPixelColour(x, y);
    image = std::move(copy);
    return true;
}

bool SavePng(const RasterImage& image, const std::string& path)
{
    std::unique_ptr<VtImage> target(VtGraphicsManager::NewImage(0));
    return target && !image.IsEmpty() &&
           target->CreateImage(image.width, image.height, 1, 32, nullptr, image.pixels.data()) &&
           target->SavePng(path);
}

}  // namespace LqExample
