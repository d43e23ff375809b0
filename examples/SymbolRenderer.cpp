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

// A 32-bit image with a graphics drawing on it, pen and brush selected.
class Canvas {
public:
    Canvas(int width, int height, unsigned int fill, unsigned int outline, double penWidth)
        : image_(VtGraphicsManager::NewImage(0)), pen_(VtGraphicsManager::NewPen(0)),
          brush_(VtGraphicsManager::NewBrush(0))
    {
        if (!image_ || !pen_ || !brush_ || !image_->CreateImage(width, height, 1, 32, nullptr, nullptr))
            return;
        graphics_.reset(VtGraphicsManager::CreateImageGraphics(image_.get()));
        if (!graphics_ || !pen_->CreatePen(VTC::VT_PEN_SOLID, outline, 0, 0, penWidth) ||
            !brush_->CreateBrush(VTC::VT_BRUSH_SOLID, fill, 100, 0, ZedaSize(0, 0), 0)) {
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
    // Ends the drawing and hands out the pixels.
    bool Finish(RasterImage& image)
    {
        graphics_.reset();
        return CopyFromImage(*image_, image);
    }

private:
    std::unique_ptr<VtImage> image_;
    std::unique_ptr<VtPen> pen_;
    std::unique_ptr<VtBrush> brush_;
    std::unique_ptr<VtGraphics> graphics_;
    VtPen* previousPen_ = nullptr;
    VtBrush* previousBrush_ = nullptr;
};

}  // namespace

bool RenderMarker(const MarkerSymbol& marker, RasterImage& image)
{
    if (marker.size < 1 || marker.size > MarkerSymbol::maxSize)
        return false;
    const int side = marker.size + 2;
    Canvas canvas(side, side, marker.colour, marker.outlineColour, 1.0);
    VtGraphics* graphics = canvas.Graphics();
    if (!graphics)
        return false;
    const double centre = side / 2.0;
    const double radius = marker.size / 2.0;
    if (marker.shape == MarkerShape::Circle) {
        graphics->DrawEllipse(ZedaRect(1, 1, side - 1, side - 1));
    } else {
        const std::vector<ZedaPoint> points = Place(Outline(marker.shape), radius, marker.rotation, centre);
        graphics->DrawPolygon(points.data(), static_cast<int>(points.size()));
    }
    return canvas.Finish(image);
}

bool RenderLineSample(const LineSymbol& line, int length, RasterImage& image)
{
    const int thickness = std::clamp(static_cast<int>(std::lround(line.width)), 1, 64);
    const int height = thickness + 4;
    if (length < 1 || length > ResourceCache::maxImageSide)
        return false;
    Canvas canvas(length, height, line.colour, line.colour, 0.0);
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
    return canvas.Finish(image);
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
