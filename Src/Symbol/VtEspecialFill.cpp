#include "VtEspecialFill.h"

#include <cmath>
#include <cstring>
#include <numbers>
#include <optional>

#include "LqGraphics.h"
#include "LqToolkit.h"
#include "VtEspecialFill_p.h"
#include "VtModuleLog_p.h"

namespace VTC {

namespace EspecialFillDetail {

bool IsScreenSurface(VtGraphics* graphics)
{
    return !graphics->IsPrinting() && !graphics->IsRecording();
}

void ResetImageInfo(VtImageInfo& info)
{
    info.width = 0;
    info.height = 0;
    info.rowBytes = 0;
    info.planes = 1;
    info.bitsPerPixel = 0;
    info.reserved1 = 0;
    info.reserved2 = 0;
    info.colour = ZEDARGB(255, 255, 255);
    info.palette.RemoveAll();
    info.bits = nullptr;
}

ZedaRect ScreenRect()
{
    const ZedaSize screen = VtEspecialFill::GetScreenSize();
    return ZedaRect(0, 0, screen.cx, screen.cy);
}

Owned<VtGraphics> NewMemoryGraphics(VtGraphics* reference)
{
    Owned<VtGraphics> memory(VtGraphicsManager::NewGraphics(0));
    if (memory && !memory->CreateCompatibleGraphics(reference))
        memory.reset();
    return memory;
}

Owned<VtImage> NewCompatibleImage(VtGraphics* reference, int width, int height)
{
    Owned<VtImage> image(VtGraphicsManager::NewImage(0));
    if (image && !image->CreateCompatibleImage(reference, width, height))
        image.reset();
    return image;
}

bool DrawOpaqueRectangle(VtGraphics* graphics, const ZedaRect& rect, unsigned int colour)
{
    Owned<VtPen> pen;
    const Owned<VtBrush> brush(VtGraphicsManager::NewBrush(0));
    if (brush)
        pen.reset(VtGraphicsManager::NewPen(0));
    if (!pen) {
        especialFillLog.Fail("EGe001");
        return false;
    }
    brush->CreateBrush(VT_BRUSH_SOLID, colour, 100, 0, ZedaSize(0, 0), 0);
    pen->CreatePen(VT_PEN_NULL, ZEDARGB(0, 0, 0), 0, 0, 0.0);
    VtBrush* previousBrush = graphics->SelectBrush(brush.get());
    VtPen* previousPen = graphics->SelectPen(pen.get());
    graphics->DrawRectangle(rect);
    graphics->SelectBrush(previousBrush);
    graphics->SelectPen(previousPen);
    return true;
}

}  // namespace EspecialFillDetail

using namespace EspecialFillDetail;

namespace {

constexpr double kLineTolerance = 1e-10;
constexpr double kAngleTolerance = 0.001;

// The squares and sums of the geometry are 32-bit integers by definition;
// wrap them the way the hardware does instead of overflowing.
int WrappedSquareSum(int dx, int dy)
{
    const auto ux = static_cast<unsigned>(dx);
    const auto uy = static_cast<unsigned>(dy);
    return static_cast<int>(ux * ux + uy * uy);
}

double Distance(const ZedaPoint& a, const ZedaPoint& b)
{
    return std::sqrt(static_cast<double>(
        WrappedSquareSum(WrappingSub(a.x, b.x), WrappingSub(a.y, b.y))));
}

bool IsNear(double value) { return -kLineTolerance < value && value < kLineTolerance; }

// A gradient axis's direction on screen (y grows downwards).
struct AxisDirection {
    double x;
    double y;
};

// Angles within the tolerance of a right angle run exactly along an edge,
// and so does every angle outside 0 to 2 pi, as 0: callers normalise theirs.
std::optional<AxisDirection> EdgeDirection(double angle)
{
    using std::numbers::pi;
    if (angle < kAngleTolerance || 2 * pi - angle < kAngleTolerance)
        return AxisDirection{1, 0};
    if (std::fabs(angle - pi / 2) < kAngleTolerance)
        return AxisDirection{0, -1};
    if (std::fabs(angle - pi) < kAngleTolerance)
        return AxisDirection{-1, 0};
    if (std::fabs(angle - 3 * pi / 2) < kAngleTolerance)
        return AxisDirection{0, 1};
    return std::nullopt;
}

// The line through p1 and p2 and the point to place, in doubles.
struct LineAndPoint {
    double x1, y1, x3, y3;
    double dx, dy;  // p2 - p1, exact for any two ints

    LineAndPoint(const ZedaPoint& p1, const ZedaPoint& p2, const ZedaPoint& point)
        : x1(p1.x), y1(p1.y), x3(point.x), y3(point.y), dx(static_cast<double>(p2.x) - x1),
          dy(static_cast<double>(p2.y) - y1)
    {
    }

    // Steeper than 45 degrees: the constructions then work from y.
    bool IsSteep() const { return std::fabs(dy) - std::fabs(dx) > 0; }
};

// The vertical and horizontal lines, where both point constructions agree.
bool OntoAxisParallelLine(const LineAndPoint& line, ZedaPoint& point)
{
    if (IsNear(line.dx)) {
        point = ZedaPoint(TruncateToInt(line.x1), point.y);
        return true;
    }
    if (IsNear(line.dy)) {
        point = ZedaPoint(point.x, TruncateToInt(line.y1));
        return true;
    }
    return false;
}

}  // namespace

VtEspecialFill::~VtEspecialFill() = default;

ZedaSize VtEspecialFill::GetScreenSize()
{
    ZedaSize size(1024, 768);
    size.cx = VtToolkit::GetScreenSize(0);
    size.cy = VtToolkit::GetScreenSize(1);
    if (size.cx < 1024)
        size.cx = 1024;
    if (size.cy < 1024)
        size.cy = 1024;
    return size;
}

double VtEspecialFill::CalAzimuth(const ZedaPoint& from, const ZedaPoint& to)
{
    const int dx = WrappingSub(from.x, to.x);
    const int dy = WrappingSub(from.y, to.y);
    return std::atan2(static_cast<double>(dy), static_cast<double>(dx));
}

void VtEspecialFill::GetColor(const ZedaPoint& start, const ZedaPoint& end, unsigned int startColor,
                              unsigned int endColor, const ZedaPoint& point, unsigned int& color)
{
    const double fromStart = Distance(start, point);
    const double axisLength = Distance(start, end);
    color = ZEDA::GradientColour(startColor, endColor, fromStart / axisLength);
}

void VtEspecialFill::GetSectionPoint(const ZedaPoint& p1, const ZedaPoint& p2, ZedaPoint& point)
{
    const LineAndPoint line(p1, p2, point);
    if (OntoAxisParallelLine(line, point))
        return;
    const auto [x1, y1, x3, y3, dx, dy] = line;
    if (line.IsSteep())
        point = ZedaPoint(TruncateToInt(x1 + dx * (y3 - y1) / dy), point.y);
    else
        point = ZedaPoint(point.x, TruncateToInt(y1 + dy * (x3 - x1) / dx));
}

void VtEspecialFill::GetVerticalPoint(const ZedaPoint& p1, const ZedaPoint& p2, ZedaPoint& point)
{
    const LineAndPoint line(p1, p2, point);
    if (OntoAxisParallelLine(line, point))
        return;
    const auto [x1, y1, x3, y3, dx, dy] = line;
    const double lengthSquared = dx * dx + dy * dy;
    if (line.IsSteep()) {
        const int y = TruncateToInt((dx * dx * y1 + dy * dy * y3 + dx * dy * (x3 - x1)) / lengthSquared);
        point = ZedaPoint(TruncateToInt(x1 + dx * (y - y1) / dy), y);
    } else {
        const int x = TruncateToInt((dy * dy * x1 + dx * dx * x3 + dx * dy * (y3 - y1)) / lengthSquared);
        point = ZedaPoint(x, TruncateToInt(y1 + dy * (x - x1) / dx));
    }
}

void VtEspecialFill::GetEndPointOfColor(double angle, const ZedaRect& rect, ZedaPoint& start, ZedaPoint& end)
{
    angle = ZEDA::GradientAngle(angle);
    if (const std::optional<AxisDirection> edge = EdgeDirection(angle)) {
        const ZEDA::GradientAxisCorners corners = ZEDA::GradientAxisCornersOf(rect, edge->x, edge->y);
        start = corners.entry;
        end = edge->x != 0 ? ZedaPoint(corners.opposite.x, start.y) : ZedaPoint(start.x, corners.opposite.y);
        return;
    }
    const ZEDA::GradientAxisCorners corners = ZEDA::GradientAxisCornersOf(rect, std::cos(angle), -std::sin(angle));
    start = corners.entry;
    end = corners.opposite;
    const double diagonal = std::sqrt(static_cast<double>(WrappedSquareSum(rect.Height(), rect.Width())));
    const int directionY = WrappingSub(start.y, TruncateToInt(std::sin(angle) * diagonal));
    const int directionX = WrappingAdd(start.x, TruncateToInt(std::cos(angle) * diagonal));
    GetVerticalPoint(start, ZedaPoint(directionX, directionY), end);
}

void VtEspecialFill::SetPixel(const unsigned char& bitCount, unsigned char* pixel, const unsigned char& blue,
                              const unsigned char& green, const unsigned char& red, const unsigned char& alpha)
{
    switch (bitCount) {
    case 32: {
        const unsigned int value = ZEDARGBA(red, green, blue, alpha);
        std::memcpy(pixel, &value, sizeof value);
        break;
    }
    case 24:
        pixel[0] = blue;
        pixel[1] = green;
        pixel[2] = red;
        break;
    case 16: {
        pixel[1] = static_cast<unsigned char>((pixel[1] & 0x07) | (blue << 3));
        unsigned value = pixel[0] | (pixel[1] << 8);
        value = (value & 0xF81F) | ((green & 0x3Fu) << 5);
        pixel[0] = static_cast<unsigned char>(value);
        pixel[1] = static_cast<unsigned char>(value >> 8);
        pixel[0] = static_cast<unsigned char>((pixel[0] & 0xE0) | (red & 0x1F));
        break;
    }
    default:
        break;
    }
}

void VtEspecialFill::GetPixel(const unsigned char& bitCount, const unsigned char* pixel, unsigned char& blue,
                              unsigned char& green, unsigned char& red, unsigned char& alpha)
{
    switch (bitCount) {
    case 32: {
        unsigned int value;
        std::memcpy(&value, pixel, sizeof value);
        red = ZEDAREDVAL(value);
        green = ZEDAGREENVAL(value);
        blue = ZEDABLUEVAL(value);
        alpha = ZEDAALPHAVAL(value);
        break;
    }
    case 24:
        blue = pixel[0];
        green = pixel[1];
        red = pixel[2];
        break;
    case 16: {
        const unsigned value = pixel[0] | (pixel[1] << 8);
        blue = static_cast<unsigned char>(pixel[1] >> 3);
        green = static_cast<unsigned char>((value >> 5) & 0x3F);
        red = static_cast<unsigned char>(pixel[0] & 0x1F);
        break;
    }
    default:
        break;
    }
}

}  // namespace VTC
