#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <vector>

#include "LqGraphics.h"
#include "VtEspecialFill.h"
#include "VtEspecialFillRegion_p.h"
#include "VtEspecialFill_p.h"
#include "VtModuleLog_p.h"

namespace VTC {

using namespace EspecialFillDetail;

namespace {

using std::numbers::pi;

// The memory graphics and the image that a generator paints into. While the
// canvas lives the image is selected into the memory graphics; then the
// previous image is selected back and the memory graphics destroyed, and
// the image with it unless it was handed out.
struct GradientCanvas {
    ZedaRect area;  // the working rectangle W, device pixels
    bool screen = true;
    Owned<VtImage> image;  // destroyed after the memory graphics
    Owned<VtGraphics> memory;
    VtImage* previousImage = nullptr;
    bool selected = false;

    // W starts as a normalised copy of the target rectangle.
    explicit GradientCanvas(const ZedaRect& rect) : area(rect) { area.Normalize(); }
    GradientCanvas(const GradientCanvas&) = delete;
    GradientCanvas& operator=(const GradientCanvas&) = delete;

    ~GradientCanvas()
    {
        if (selected)
            memory->SelectImage(previousImage);
    }

    ZedaPoint Local(const ZedaPoint& p) const
    {
        return ZedaPoint(WrappingSub(p.x, area.left), WrappingSub(p.y, area.top));
    }

    // The painted image, now the caller's.
    VtImage* HandOut() { return image.release(); }
};

// Screen surfaces never get gradient work beyond the screen.
void ClipToScreen(VtGraphics* graphics, GradientCanvas& canvas)
{
    canvas.screen = IsScreenSurface(graphics);
    if (canvas.screen)
        canvas.area.Intersection(ScreenRect());
}

// Size test, memory graphics and image of the working rectangle; false
// (logged) when the canvas cannot be made.
bool OpenCanvas(VtGraphics* graphics, GradientCanvas& canvas)
{
    if (canvas.area.Width() < 2 || canvas.area.Height() < 2) {
        especialFillLog.Fail("EEa003");
        return false;
    }
    canvas.memory = NewMemoryGraphics(graphics);
    if (!canvas.memory) {
        especialFillLog.Fail("EGd001");
        return false;
    }
    canvas.image = NewCompatibleImage(graphics, canvas.area.Width(), canvas.area.Height());
    if (!canvas.image) {
        especialFillLog.Fail("EGd004");
        return false;
    }
    canvas.previousImage = canvas.memory->SelectImage(canvas.image.get());
    canvas.selected = true;
    return true;
}

// A generator whose drawing tools could not be made gives no image.
VtImage* NoTools()
{
    especialFillLog.Fail("EGe001");
    return nullptr;
}

// Centre G and far corner F of the radial, conical and square gradients,
// both taken on the normalised rectangle before any clipping.
struct GradientCentre {
    ZedaPoint centre;
    ZedaPoint farCorner;

    GradientCentre(const ZedaRect& rect, int offsetX, int offsetY)
        : centre(ZEDA::GradientCentre<ZEDA::WholePixels>(rect, offsetX, offsetY)),
          farCorner(ZEDA::GradientFarCorner(rect, offsetX, offsetY))
    {
    }

    int Radius() const
    {
        const double dx = WrappingSub(centre.x, farCorner.x);
        const double dy = WrappingSub(centre.y, farCorner.y);
        return TruncateToInt(std::ceil(std::sqrt(dx * dx + dy * dy)));
    }

    // Distance d from the centre of W and half-diagonal h of W.
    void Reach(const ZedaRect& area, double& d, double& h) const
    {
        const ZedaPoint middle = area.CenterPoint();
        const double dx = WrappingAbs(WrappingSub(centre.x, middle.x));
        const double dy = WrappingAbs(WrappingSub(centre.y, middle.y));
        d = std::sqrt(dx * dx + dy * dy);
        const double halfWidth = area.Width() / 2.0;
        const double halfHeight = area.Height() / 2.0;
        h = std::sqrt(halfWidth * halfWidth + halfHeight * halfHeight);
    }
};

// The canvas of the radial, conical and square gradients: G and F come from
// the normalised rectangle, the reach from W after the screen clip.
struct CentredCanvas : GradientCanvas {
    GradientCentre g;
    double d = 0, h = 0;  // distance of G from the centre of W, half-diagonal of W
    ZedaPoint centre;     // G in image coordinates

    CentredCanvas(const ZedaRect& rect, int offsetX, int offsetY) : GradientCanvas(rect), g(area, offsetX, offsetY) {}

    // Screen clip, canvas and reach; false (logged, nothing left made) when
    // the canvas cannot be made.
    bool Open(VtGraphics* graphics)
    {
        ClipToScreen(graphics, *this);
        if (!OpenCanvas(graphics, *this))
            return false;
        g.Reach(area, d, h);
        centre = Local(g.centre);
        return true;
    }
};

// Band and ring steps: about 100 (linear) or 72 (rings, squares) on screen,
// 200 otherwise. Never zero, so that the band loops always advance.
int StepFor(int length, int screenBands, bool screen)
{
    const int bands = screen ? screenBands : 200;
    return std::max(1, WrappingAdd(length, bands - 1) / bands);
}

int WidePen(int step) { return step + (step + 1) / 2; }

void RedefinePen(VtPen* pen, unsigned int colour, int width)
{
    pen->ReleasePen();
    pen->CreatePen(VT_PEN_SOLID, colour, 0, 0, width);
}

void RedefineBrush(VtBrush* brush, int style, unsigned int colour)
{
    brush->ReleaseBrush();
    brush->CreateBrush(style, colour, 100, 0, ZedaSize(0, 0), 0);
}

// The square of half-size k about `centre`.
ZedaRect SquareAbout(const ZedaPoint& centre, int k)
{
    return ZedaRect(WrappingSub(centre.x, k), WrappingSub(centre.y, k), WrappingAdd(centre.x, k),
                    WrappingAdd(centre.y, k));
}

// The colour the radial and square gradients give at distance k from G.
unsigned int ColourAtDistance(const GradientCentre& g, int radius, unsigned int colour1, unsigned int colour2, int k)
{
    unsigned int colour = 0;
    const ZedaPoint reference(WrappingAdd(g.centre.x, radius), g.centre.y);
    VtEspecialFill::GetColor(g.centre, reference, colour1, colour2, ZedaPoint(WrappingAdd(g.centre.x, k), g.centre.y),
                             colour);
    return colour;
}

// The pen of the radial rings and the square outlines: about 72 (screen) or
// 200 steps to R, on to the reach of W, half as wide again as a step and in
// the colour at the distance from G that it draws at.
struct RingPen {
    const CentredCanvas& canvas;
    VtPen* pen;
    unsigned int colour1, colour2;
    int radius, step, width, last;

    RingPen(const CentredCanvas& canvas, VtPen* pen, unsigned int colour1, unsigned int colour2)
        : canvas(canvas), pen(pen), colour1(colour1), colour2(colour2), radius(canvas.g.Radius()),
          step(StepFor(radius, 72, canvas.screen)), width(WidePen(step)),
          last(TruncateToInt(std::ceil(canvas.d + canvas.h)))
    {
    }

    // The pen in colour1, selected; returns the pen selected before.
    VtPen* SelectFirst() const
    {
        pen->CreatePen(VT_PEN_SOLID, colour1, 0, 0, width);
        return canvas.memory->SelectPen(pen);
    }

    // The pen in the colour at distance k from G, selected.
    void SelectAt(int k) const
    {
        RedefinePen(pen, ColourAtDistance(canvas.g, radius, colour1, colour2, k), width);
        canvas.memory->SelectPen(pen);
    }
};

// Linear bands: one thick line across W for each step along the axis.
struct LinearBands {
    ZedaPoint start, end;                // full colour axis
    ZedaPoint sectionStart, sectionEnd;  // axis of W
    double back = 0, forward = 0;        // reach A and B of a slanted band
    double s = 0, c = 0;                 // band direction
    ZedaPoint offset;
    bool alongX = true;
    bool slanted = false;
    int lo = 0, hi = 0, step = 1;

    LinearBands(const GradientCanvas& canvas, double angle, const ZedaPoint& axisStart, const ZedaPoint& axisEnd,
                const ZedaPoint& bandStart, const ZedaPoint& bandEnd, int offsetX, int offsetY)
        : start(axisStart), end(axisEnd), sectionStart(bandStart), sectionEnd(bandEnd)
    {
        const ZedaRect& area = canvas.area;
        s = std::sin(angle);
        c = std::cos(angle);
        if (angle < pi) {
            back = area.Height() * std::fabs(c);
            forward = area.Width() * std::fabs(s);
        } else {
            back = area.Width() * std::fabs(s);
            forward = area.Height() * std::fabs(c);
        }
        if (pi / 2 < angle && angle < 3 * pi / 2) {
            s = -s;
            c = -c;
        }
        offset = ZEDA::GradientAxisShift<ZEDA::WholePixels>(start, end, offsetX, offsetY);
        alongX = WrappingSub(WrappingAbs(WrappingSub(sectionStart.y, sectionEnd.y)),
                             WrappingAbs(WrappingSub(sectionStart.x, sectionEnd.x))) <= 0;
        const int a = alongX ? sectionStart.x : sectionStart.y;
        const int b = alongX ? sectionEnd.x : sectionEnd.y;
        lo = std::min(a, b);
        hi = std::max(a, b);
        const int length = WrappingAbs(alongX ? WrappingSub(start.x, end.x) : WrappingSub(start.y, end.y));
        step = StepFor(length, 100, canvas.screen);
        slanted = alongX ? sectionStart.y != sectionEnd.y : sectionStart.x != sectionEnd.x;
    }

    // The band through axis point p, in device pixels, and its pen width.
    void Band(const ZedaRect& area, const ZedaPoint& p, ZedaPoint& from, ZedaPoint& to, int& width) const
    {
        width = step;
        if (slanted) {
            from = ZedaPoint(WrappingSub(p.x, RoundAway(back * s)), WrappingSub(p.y, RoundAway(back * c)));
            to = ZedaPoint(WrappingAdd(p.x, RoundAway(forward * s)), WrappingAdd(p.y, RoundAway(forward * c)));
            width = WidePen(step);
        } else if (alongX) {
            from = ZedaPoint(p.x, WrappingSub(area.top, 1));
            to = ZedaPoint(p.x, WrappingAdd(area.bottom, 1));
        } else {
            from = ZedaPoint(WrappingSub(area.left, 1), p.y);
            to = ZedaPoint(WrappingAdd(area.right, 1), p.y);
        }
    }
};

// The outer vertices of the conical gradient's sectors, each computed once:
// vertex j lies at direction angle + (j + 1/2) delta, which neighbouring
// sectors share. (j + 1/2) delta is exact for the half-integers, so every
// direction is the one the sector's own sum gives.
class ConicalFan {
public:
    ConicalFan(const ZedaPoint& centre, double reach, double angle, double delta, int sectors)
        : sectors_(sectors), vertices_(static_cast<std::size_t>(2 * sectors + 2))
    {
        for (int j = -sectors - 1; j <= sectors; ++j) {
            const double phi = angle + (j + 0.5) * delta;
            vertices_[Slot(j)] =
                ZedaPoint(RoundAway(centre.x + reach * std::cos(phi)), RoundAway(centre.y - reach * std::sin(phi)));
        }
    }

    const ZedaPoint& Vertex(int j) const { return vertices_[Slot(j)]; }

private:
    std::size_t Slot(int j) const { return static_cast<std::size_t>(j + sectors_ + 1); }

    int sectors_;
    std::vector<ZedaPoint> vertices_;
};

}  // namespace

VtImage* VtEspecialFill::GetLinearImage(VtGraphics* graphics, const ZedaRect& rect, unsigned int colour1,
                                        unsigned int colour2, double angle, int offsetX, int offsetY)
{
    angle = ZEDA::GradientAngle(angle);
    Owned<VtPen> pen;  // destroyed after the canvas
    GradientCanvas canvas(rect);
    if (canvas.area.IsEmpty()) {
        especialFillLog.Fail("EEf002");
        return nullptr;
    }
    ZedaPoint start, end;
    GetEndPointOfColor(angle, canvas.area, start, end);
    ClipToScreen(graphics, canvas);
    ZedaPoint sectionStart = start, sectionEnd = end;
    if (canvas.screen)
        GetEndPointOfColor(angle, canvas.area, sectionStart, sectionEnd);
    if (!OpenCanvas(graphics, canvas))
        return nullptr;
    pen.reset(VtGraphicsManager::NewPen(0));
    if (!pen)
        return NoTools();

    const LinearBands bands(canvas, angle, start, end, sectionStart, sectionEnd, offsetX, offsetY);
    for (long long v = bands.lo; v <= static_cast<long long>(bands.hi) + bands.step; v += bands.step) {
        const auto at = static_cast<int>(v);  // wraps as the int would
        ZedaPoint p = bands.alongX ? ZedaPoint(at, 0) : ZedaPoint(0, at);
        GetSectionPoint(sectionStart, sectionEnd, p);
        ZedaPoint q(WrappingAdd(p.x, bands.offset.x), WrappingAdd(p.y, bands.offset.y));
        GetVerticalPoint(start, end, q);
        unsigned int colour = 0;
        GetColor(start, end, colour1, colour2, q, colour);
        ZedaPoint from, to;
        int width = 0;
        bands.Band(canvas.area, p, from, to, width);
        pen->CreatePen(VT_PEN_SOLID, colour, 0, 0, width);
        VtPen* previousPen = canvas.memory->SelectPen(pen.get());
        canvas.memory->DrawLine(canvas.Local(from), canvas.Local(to));
        canvas.memory->SelectPen(previousPen);
        pen->ReleasePen();
    }
    return canvas.HandOut();
}

VtImage* VtEspecialFill::GetRadialImage(VtGraphics* graphics, const ZedaRect& rect, unsigned int colour1,
                                        unsigned int colour2, int offsetX, int offsetY)
{
    CentredCanvas canvas(rect, offsetX, offsetY);
    if (!canvas.Open(graphics))
        return nullptr;
    const Owned<VtPen> pen(VtGraphicsManager::NewPen(0));  // destroyed before the canvas
    if (!pen)
        return NoTools();

    const RingPen rings(canvas, pen.get(), colour1, colour2);
    const ZedaPoint& centre = canvas.centre;
    VtPen* previousPen = rings.SelectFirst();
    int r = 0;
    if (canvas.area.PtInRect(canvas.g.centre)) {
        const Owned<VtBrush> brush(VtGraphicsManager::NewBrush(0));
        if (!brush)
            return NoTools();
        brush->CreateBrush(VT_BRUSH_SOLID, colour1, 100, 0, ZedaSize(0, 0), 0);
        VtBrush* previousBrush = canvas.memory->SelectBrush(brush.get());
        canvas.memory->DrawEllipse(SquareAbout(centre, 1));
        canvas.memory->SelectBrush(previousBrush);
        r = rings.step + 1;
    } else {
        r = std::max(TruncateToInt(canvas.d - canvas.h), 1);
    }
    for (long long ring = r; ring <= rings.last; ring += rings.step) {
        const int k = static_cast<int>(ring);
        rings.SelectAt(k);
        canvas.memory->DrawArc(SquareAbout(centre, k), centre, centre);
    }
    canvas.memory->SelectPen(previousPen);
    return canvas.HandOut();
}

VtImage* VtEspecialFill::GetConicalImage(VtGraphics* graphics, const ZedaRect& rect, unsigned int colour1,
                                         unsigned int colour2, int offsetX, int offsetY, double angle)
{
    angle = ZEDA::GradientAngle(angle);
    CentredCanvas canvas(rect, offsetX, offsetY);
    if (!canvas.Open(graphics))
        return nullptr;
    // Destroyed brush first, then pen, then the canvas.
    const Owned<VtPen> pen(VtGraphicsManager::NewPen(0));
    const Owned<VtBrush> brush(VtGraphicsManager::NewBrush(0));
    if (!pen || !brush)
        return NoTools();
    pen->CreatePen(VT_PEN_NULL, colour1, 0, 0, 0.0);
    VtPen* previousPen = canvas.memory->SelectPen(pen.get());
    brush->CreateBrush(VT_BRUSH_SOLID, colour1, 100, 0, ZedaSize(0, 0), 0);
    VtBrush* previousBrush = canvas.memory->SelectBrush(brush.get());

    const int sectors = canvas.screen ? 64 : 128;
    const ConicalFan fan(canvas.centre, canvas.d + canvas.h, angle, pi / sectors, sectors);
    ZedaPoint triangle[3];
    triangle[0] = canvas.centre;
    // Sector i lies between the fan's vertices i - 1 and i.
    const auto drawSector = [&](int upper) {
        triangle[1] = fan.Vertex(upper);
        triangle[2] = fan.Vertex(upper - 1);
        canvas.memory->DrawPolygon(triangle, 3);
    };
    drawSector(0);
    for (int i = 1; i <= sectors; ++i) {
        unsigned int colour = 0;
        GetColor(ZedaPoint(0, 0), ZedaPoint(sectors, 0), colour1, colour2, ZedaPoint(i, 0), colour);
        RedefineBrush(brush.get(), VT_BRUSH_SOLID, colour);
        canvas.memory->SelectBrush(brush.get());
        drawSector(i);
        drawSector(-i);
    }

    canvas.memory->SelectBrush(previousBrush);
    canvas.memory->SelectPen(previousPen);
    return canvas.HandOut();
}

namespace {

// Corners of the square of half-size k about `centre`, turned by the angle
// whose cosine and sine are c and s.
void TurnedSquare(const ZedaPoint& centre, double k, double c, double s, ZedaPoint* corners)
{
    corners[0] = ZedaPoint(RoundAway(centre.x - k * c - k * s), RoundAway(centre.y + k * c - k * s));
    corners[1] = ZedaPoint(RoundAway(centre.x + k * c - k * s), RoundAway(centre.y + k * s + k * c));
    corners[2] = ZedaPoint(RoundAway(centre.x + k * s + k * c), RoundAway(centre.y + k * s - k * c));
    corners[3] = ZedaPoint(RoundAway(centre.x + k * s - k * c), RoundAway(centre.y - k * s - k * c));
}

bool IsAxisAligned(double angle)
{
    return (-1e-10 < angle && angle < 1e-10) || (-1e-10 < angle - 2 * pi && angle - 2 * pi < 1e-10);
}

}  // namespace

VtImage* VtEspecialFill::GetSquareImage(VtGraphics* graphics, const ZedaRect& rect, unsigned int colour1,
                                        unsigned int colour2, int offsetX, int offsetY, double angle)
{
    angle = ZEDA::GradientAngle(angle);
    // Destroyed the canvas first, then the brush, then the pen.
    Owned<VtPen> pen;
    Owned<VtBrush> brush;
    CentredCanvas canvas(rect, offsetX, offsetY);
    if (!canvas.Open(graphics))
        return nullptr;
    pen.reset(VtGraphicsManager::NewPen(0));
    if (pen)
        brush.reset(VtGraphicsManager::NewBrush(0));
    if (!brush)
        return NoTools();
    const RingPen rings(canvas, pen.get(), colour1, colour2);
    const ZedaPoint& centre = canvas.centre;
    VtPen* previousPen = rings.SelectFirst();
    const bool upright = IsAxisAligned(angle);
    const double c = std::cos(angle);
    const double s = std::sin(angle);
    std::vector<ZedaPoint> corners(4);
    const auto drawSquare = [&](int k) {
        if (upright) {
            canvas.memory->DrawRectangle(SquareAbout(centre, k));
        } else {
            TurnedSquare(centre, k, c, s, corners.data());
            canvas.memory->DrawPolygon(corners.data(), 4);
        }
    };

    // Turned squares always start at the centre, upright ones outside the dot.
    int k = upright ? 1 : 0;
    if (canvas.area.PtInRect(canvas.g.centre)) {
        brush->CreateBrush(VT_BRUSH_SOLID, colour1, 100, 0, ZedaSize(0, 0), 0);
        VtBrush* previousBrush = canvas.memory->SelectBrush(brush.get());
        drawSquare(1);
        canvas.memory->SelectBrush(previousBrush);
        brush->ReleaseBrush();
        if (upright)
            k = rings.step + 1;
    }
    brush->CreateBrush(VT_BRUSH_NULL, colour1, 100, 0, ZedaSize(0, 0), 0);
    VtBrush* previousBrush = canvas.memory->SelectBrush(brush.get());
    for (long long square = k; square <= rings.last; square += rings.step) {
        rings.SelectAt(static_cast<int>(square));
        drawSquare(static_cast<int>(square));
    }
    canvas.memory->SelectBrush(previousBrush);
    canvas.memory->SelectPen(previousPen);
    return canvas.HandOut();
}

namespace {

// The surface's own gradients; only the square one hands an image back.
VtImage* NativeGradient(VtGraphics* graphics, int kind, unsigned int colour1, unsigned int colour2, int offsetX,
                        int offsetY, double angle)
{
    switch (kind) {
    case VT_GRADIENT_LINEAR:
        graphics->DrawLinearGradient(colour1, colour2, offsetX, offsetY, angle);
        return nullptr;
    case VT_GRADIENT_RADIAL:
    case VT_GRADIENT_CONICAL:  // the surface has no conical gradient of its own
        graphics->DrawRadialGradient(colour1, colour2, offsetX, offsetY, angle);
        return nullptr;
    default:
        return graphics->CreateSquareGradientImage(colour1, colour2, offsetX, offsetY, angle);
    }
}

VtImage* GeneratedGradient(VtGraphics* graphics, const ZedaRect& rect, int kind, unsigned int colour1,
                           unsigned int colour2, int offsetX, int offsetY, double angle)
{
    switch (kind) {
    case VT_GRADIENT_LINEAR:
        return VtEspecialFill::GetLinearImage(graphics, rect, colour1, colour2, angle, offsetX, offsetY);
    case VT_GRADIENT_RADIAL:
        return VtEspecialFill::GetRadialImage(graphics, rect, colour1, colour2, offsetX, offsetY);
    case VT_GRADIENT_CONICAL:
        return VtEspecialFill::GetConicalImage(graphics, rect, colour1, colour2, offsetX, offsetY, angle);
    default:
        return VtEspecialFill::GetSquareImage(graphics, rect, colour1, colour2, offsetX, offsetY, angle);
    }
}

}  // namespace

bool VtEspecialFill::GradientRectangle(VtGraphics* graphics, const ZedaRect& rect, unsigned int colour1,
                                       unsigned int colour2, double angle, int offsetX, int offsetY, int kind,
                                       int transparency)
{
    ZedaRect area = rect;
    graphics->LogicalToDeviceRect(area);
    area.Normalize();
    if (area.IsEmpty()) {
        especialFillLog.Fail("EEf007");
        return false;
    }
    area.Inflate(1);
    angle = ZEDA::GradientAngle(angle);
    offsetX = std::clamp(offsetX, -100, 100);
    offsetY = std::clamp(offsetY, -100, 100);
    const int previousMode = graphics->SetCoordinateMode(0);
    const ZedaPoint previousOrigin = graphics->SetOrigin(ZedaPoint(0, 0));

    bool result = false;
    if (colour1 == colour2 || kind < VT_GRADIENT_LINEAR || kind > VT_GRADIENT_SQUARE) {
        result = DrawOpaqueRectangle(graphics, area, colour1);
    } else {
        const Owned<VtImage> image(
            graphics->GetSurfaceKind() == VT_SURFACE_NATIVE_GRADIENT
                ? NativeGradient(graphics, kind, colour1, colour2, offsetX, offsetY, angle)
                : GeneratedGradient(graphics, area, kind, colour1, colour2, offsetX, offsetY, angle));
        if (IsScreenSurface(graphics))
            area.Intersection(ScreenRect());
        if (image)
            result = TransparentBitblt(graphics, image.get(), area.left, area.top, area.Width(), area.Height(),
                                       transparency);
    }
    graphics->SetCoordinateMode(previousMode);
    graphics->SetOrigin(previousOrigin);
    return result;
}

namespace {

// Fills the bounds of a clip region of a polygon or a set of polygons.
bool GradientRegion(VtGraphics* graphics, VtRgn& region, const char* emptyCode, unsigned int colour1,
                    unsigned int colour2, double angle, int offsetX, int offsetY, int kind, int transparency)
{
    ZedaRect bounds = region.GetBoundingRect();
    if (bounds.IsEmpty()) {
        especialFillLog.Fail(emptyCode);
        return false;
    }
    graphics->DeviceToLogicalRect(bounds);
    if (IsScreenSurface(graphics) && !ClipRegionToScreen(region))
        return false;
    VtRgn* previousClip = graphics->SelectClipRegion(&region, VT_CLIP_INTERSECT);
    const bool result = VtEspecialFill::GradientRectangle(graphics, bounds, colour1, colour2, angle, offsetX,
                                                          offsetY, kind, transparency);
    graphics->SelectClipRegion(previousClip, VT_CLIP_REPLACE);
    return result;
}

}  // namespace

bool VtEspecialFill::GradientPolygon(VtGraphics* graphics, const ZedaPoint* points, int count, unsigned int colour1,
                                     unsigned int colour2, double angle, int offsetX, int offsetY, int kind,
                                     int transparency)
{
    const Owned<VtRgn> region = NewPolygonRegion(graphics, points, count, "EFd009");
    // An empty polygon logs "EFd009" here, but "EEf005" for a set of polygons.
    return region && GradientRegion(graphics, *region, "EFd009", colour1, colour2, angle, offsetX, offsetY, kind,
                                    transparency);
}

bool VtEspecialFill::GradientPolyPolygon(VtGraphics* graphics, const ZedaPoint* points, const int* counts,
                                         int polyCount, unsigned int colour1, unsigned int colour2, double angle,
                                         int offsetX, int offsetY, int kind, int transparency)
{
    const Owned<VtRgn> region = NewPolyPolygonRegion(graphics, points, counts, polyCount, "EFd009");
    return region && GradientRegion(graphics, *region, "EEf005", colour1, colour2, angle, offsetX, offsetY, kind,
                                    transparency);
}

}  // namespace VTC
