#include <cmath>
#include <cstdlib>
#include <numbers>

#include "FillTestSupport.h"

using namespace FillTest;
using VTC::VtGraphicsManager;
using std::numbers::pi;

namespace {

class GradientImages : public FillTestBase {};
class GradientFills : public FillTestBase {};

constexpr unsigned int kFrom = ZEDARGB(0, 10, 200);
constexpr unsigned int kTo = ZEDARGB(240, 130, 20);
constexpr unsigned int kPaper = ZEDARGB(90, 90, 90);

unsigned int ColourAt(ZedaPoint start, ZedaPoint end, ZedaPoint point)
{
    unsigned int colour = 0;
    VtEspecialFill::GetColor(start, end, kFrom, kTo, point, colour);
    return Rgb(colour);
}

unsigned int ImagePixel(const Image& image, int x, int y) { return Rgb(image->GetPixelColour(x, y)); }

Surface PaperWindow(int width, int height, int bits = 32)
{
    Surface surface = Window(width, height, bits);
    surface->GetTargetImage()->Fill(kPaper);
    return surface;
}

using Generator = VtImage* (*)(VtGraphics*, const ZedaRect&);

VtImage* Linear(VtGraphics* g, const ZedaRect& r) { return VtEspecialFill::GetLinearImage(g, r, kFrom, kTo, 0.7, 10, 20); }
VtImage* Radial(VtGraphics* g, const ZedaRect& r) { return VtEspecialFill::GetRadialImage(g, r, kFrom, kTo, 10, 20); }
VtImage* Conical(VtGraphics* g, const ZedaRect& r) { return VtEspecialFill::GetConicalImage(g, r, kFrom, kTo, 10, 20, 0.7); }
VtImage* SquareGradient(VtGraphics* g, const ZedaRect& r)
{
    return VtEspecialFill::GetSquareImage(g, r, kFrom, kTo, 10, 20, 0.7);
}

const Generator kGenerators[] = {Linear, Radial, Conical, SquareGradient};

}  // namespace

TEST_F(GradientImages, LinearBandsOnScreenAndOnPaper)
{
    Surface window = Window(400, 100);
    Image image(VtEspecialFill::GetLinearImage(window.get(), ZedaRect(0, 0, 300, 10), kFrom, kTo, 0.0, 0, 0));
    ASSERT_TRUE(image);
    EXPECT_EQ(image->GetWidth(), 300);
    EXPECT_EQ(image->GetHeight(), 10);
    // Vertical bands every third pixel, three pixels wide, each in the colour of its x.
    for (int v = 0; v < 300; v += 3)
        for (int y : {0, 5, 9})
            ASSERT_EQ(ImagePixel(image, v, y), ColourAt({0, 0}, {300, 0}, {v, 0})) << v << ',' << y;
    EXPECT_EQ(ImagePixel(image, 0, 0), Rgb(kFrom));
    EXPECT_EQ(ImagePixel(image, 299, 5), Rgb(kTo));
    for (int x = 1; x < 300; ++x)
        ASSERT_GE(ZEDAREDVAL(ImagePixel(image, x, 5)), ZEDAREDVAL(ImagePixel(image, x - 1, 5))) << x;

    // Printing: 200 bands, every second pixel.
    Surface page(VtGraphicsManager::CreatePrintGraphics(400, 100, 254));
    Image printed(VtEspecialFill::GetLinearImage(page.get(), ZedaRect(0, 0, 300, 10), kFrom, kTo, 0.0, 0, 0));
    ASSERT_TRUE(printed);
    for (int v = 0; v < 300; v += 2)
        ASSERT_EQ(ImagePixel(printed, v, 5), ColourAt({0, 0}, {300, 0}, {v, 0})) << v;
    EXPECT_NE(ImagePixel(printed, 2, 5), ImagePixel(image, 2, 5));

    // Upwards (pi / 2): horizontal bands, colour 1 at the bottom.
    Image upwards(VtEspecialFill::GetLinearImage(window.get(), ZedaRect(0, 0, 10, 300), kFrom, kTo, pi / 2, 0, 0));
    ASSERT_TRUE(upwards);
    EXPECT_EQ(ImagePixel(upwards, 5, 299), ImagePixel(image, 0, 5));
    EXPECT_EQ(ImagePixel(upwards, 5, 0), Rgb(kTo));
    EXPECT_EQ(ImagePixel(upwards, 0, 150), ImagePixel(upwards, 9, 150));
}

TEST_F(GradientImages, SlantedLinearBandsAreParallel)
{
    Surface window = Window(200, 200);
    Image image(VtEspecialFill::GetLinearImage(window.get(), ZedaRect(0, 0, 120, 120), kFrom, kTo, pi / 4, 0, 0));
    ASSERT_TRUE(image);
    // Colour 1 in the bottom-left corner, colour 2 in the top-right one, and
    // constant along lines perpendicular to the axis.
    EXPECT_EQ(ImagePixel(image, 0, 119), Rgb(kFrom));
    EXPECT_EQ(ImagePixel(image, 119, 0), Rgb(kTo));
    int differing = 0;
    for (int d = 10; d < 110; ++d)
        differing += ImagePixel(image, d, d) != ImagePixel(image, d + 5, d + 5) ? 1 : 0;
    EXPECT_LE(differing, 10);
    EXPECT_LT(ZEDAREDVAL(ImagePixel(image, 30, 90)), ZEDAREDVAL(ImagePixel(image, 60, 60)));
    EXPECT_LT(ZEDAREDVAL(ImagePixel(image, 60, 60)), ZEDAREDVAL(ImagePixel(image, 90, 30)));
}

TEST_F(GradientImages, RadialRingsAreCentredAndSymmetric)
{
    Surface window = Window(200, 200);
    Image image(VtEspecialFill::GetRadialImage(window.get(), ZedaRect(0, 0, 100, 100), kFrom, kTo, 0, 0));
    ASSERT_TRUE(image);
    // The centre holds the colour nearest to colour 1: the dot, or the first
    // ring where the surface draws rings that reach over it.
    EXPECT_LE(ZEDAREDVAL(ImagePixel(image, 50, 50)), 240 * 2 / 71);
    for (int k = 1; k < 49; ++k) {
        ASSERT_EQ(ImagePixel(image, 50 + k, 50), ImagePixel(image, 49 - k, 49)) << k;
        ASSERT_EQ(ImagePixel(image, 50 + k, 50), ImagePixel(image, 49, 50 + k)) << k;
        ASSERT_GE(ZEDAREDVAL(ImagePixel(image, 50 + k, 50)), ZEDAREDVAL(ImagePixel(image, 49 + k, 50))) << k;
    }
    EXPECT_EQ(ImagePixel(image, 99, 99), Rgb(kTo));

    // The centre one full width to the left: no dot, the left edge already
    // a third of the way to colour 2, rising to the right.
    Image shifted(VtEspecialFill::GetRadialImage(window.get(), ZedaRect(0, 0, 100, 100), kFrom, kTo, -100, 0));
    ASSERT_TRUE(shifted);
    const unsigned int left = ImagePixel(shifted, 0, 50);
    EXPECT_NE(left, Rgb(kFrom));
    EXPECT_GE(ZEDAREDVAL(left), 240 * 45 / 159);
    EXPECT_LE(ZEDAREDVAL(left), 240 * 60 / 159);
    for (int x = 1; x < 100; ++x)
        ASSERT_GE(ZEDAREDVAL(ImagePixel(shifted, x, 50)), ZEDAREDVAL(ImagePixel(shifted, x - 1, 50))) << x;
}

TEST_F(GradientImages, ConicalColourFollowsTheDirection)
{
    Surface window = Window(200, 200);
    Image image(VtEspecialFill::GetConicalImage(window.get(), ZedaRect(0, 0, 100, 100), kFrom, kTo, 0, 0, 0.0));
    ASSERT_TRUE(image);
    const unsigned int halfway = ColourAt({0, 0}, {64, 0}, {32, 0});
    EXPECT_EQ(ImagePixel(image, 90, 50), Rgb(kFrom));
    EXPECT_EQ(ImagePixel(image, 10, 50), Rgb(kTo));
    EXPECT_EQ(ImagePixel(image, 50, 10), halfway);
    EXPECT_EQ(ImagePixel(image, 50, 90), halfway);
    // Turned by pi / 2, colour 1 points up.
    Image turned(VtEspecialFill::GetConicalImage(window.get(), ZedaRect(0, 0, 100, 100), kFrom, kTo, 0, 0, pi / 2));
    ASSERT_TRUE(turned);
    EXPECT_EQ(ImagePixel(turned, 50, 10), Rgb(kFrom));
    EXPECT_EQ(ImagePixel(turned, 50, 90), Rgb(kTo));
    // A centre far outside still covers every pixel (the image starts black).
    Image outside(VtEspecialFill::GetConicalImage(window.get(), ZedaRect(0, 0, 100, 60), kFrom, kTo, 100, 100, 1.0));
    ASSERT_TRUE(outside);
    for (int y = 0; y < 60; ++y)
        for (int x = 0; x < 100; ++x)
            ASSERT_NE(ImagePixel(outside, x, y), 0u) << x << ',' << y;
}

TEST_F(GradientImages, SquaresAreNestedAndTurned)
{
    Surface window = Window(200, 200);
    const ZedaRect rect(0, 0, 100, 100);
    Image flat(VtEspecialFill::GetSquareImage(window.get(), rect, kFrom, kTo, 0, 0, 0.0));
    Image full(VtEspecialFill::GetSquareImage(window.get(), rect, kFrom, kTo, 0, 0, 2 * pi));
    Image quarter(VtEspecialFill::GetSquareImage(window.get(), rect, kFrom, kTo, 0, 0, pi / 2));
    ASSERT_TRUE(flat && full && quarter);
    EXPECT_EQ(BytesOf(flat.get()), BytesOf(full.get()));
    EXPECT_LE(ZEDAREDVAL(ImagePixel(flat, 50, 50)), 240 * 2 / 71);
    int differing = 0;
    for (int k = 2; k < 49; ++k) {
        // Squares: equal colours along both axes and along the diagonal's square.
        ASSERT_EQ(ImagePixel(flat, 50 + k, 50), ImagePixel(flat, 50, 50 + k)) << k;
        ASSERT_EQ(ImagePixel(flat, 50 + k, 50), ImagePixel(flat, 50 + k, 50 + k / 2)) << k;
        ASSERT_GE(ZEDAREDVAL(ImagePixel(flat, 50 + k, 50)), ZEDAREDVAL(ImagePixel(flat, 49 + k, 50))) << k;
        // The turned path draws the same squares up to rounding: one square apart at most.
        const int red = ZEDAREDVAL(ImagePixel(flat, 50 + k, 50 - k / 3));
        const int turnedRed = ZEDAREDVAL(ImagePixel(quarter, 50 + k, 50 - k / 3));
        differing += std::abs(red - turnedRed) > 240 / 71 + 1 ? 1 : 0;
    }
    EXPECT_EQ(differing, 0);
}

TEST_F(GradientImages, NormalisedRectanglesPaintAlike)
{
    Surface window = Window(300, 300);
    for (Generator generator : kGenerators) {
        Image straight(generator(window.get(), ZedaRect(10, 20, 130, 90)));
        Image reversed(generator(window.get(), ZedaRect(130, 90, 10, 20)));
        ASSERT_TRUE(straight && reversed);
        EXPECT_EQ(straight->GetWidth(), 120);
        EXPECT_EQ(straight->GetHeight(), 70);
        EXPECT_EQ(BytesOf(straight.get()), BytesOf(reversed.get()));
    }
    // On screen the image never goes past the screen.
    VTC::VtToolkit::SetScreenSize(1024, 1024);
    for (Generator generator : kGenerators) {
        Image clipped(generator(window.get(), ZedaRect(1000, -30, 1100, 40)));
        ASSERT_TRUE(clipped);
        EXPECT_EQ(clipped->GetWidth(), 24);
        EXPECT_EQ(clipped->GetHeight(), 40);
    }
    EXPECT_TRUE(RendererLog().empty());
}

TEST_F(GradientImages, FailuresLogAndLeaveNothingBehind)
{
    Surface window = Window(300, 300);
    const struct {
        VTC::VtFaultKind fault;
        ZedaRect rect;
        std::string code;
    } cases[] = {
        {VTC::VT_FAULT_KIND_COUNT, ZedaRect(0, 0, 1, 50), "300:EEa003"},
        {VTC::VT_FAULT_KIND_COUNT, ZedaRect(0, 0, 50, 1), "300:EEa003"},
        {VTC::VT_FAULT_KIND_COUNT, ZedaRect(2000, 0, 2100, 50), "300:EEa003"},
        {VTC::VT_FAULT_NEW_GRAPHICS, ZedaRect(0, 0, 50, 50), "300:EGd001"},
        {VTC::VT_FAULT_COMPATIBLE_GRAPHICS, ZedaRect(0, 0, 50, 50), "300:EGd001"},
        {VTC::VT_FAULT_NEW_IMAGE, ZedaRect(0, 0, 50, 50), "300:EGd004"},
        {VTC::VT_FAULT_COMPATIBLE_IMAGE, ZedaRect(0, 0, 50, 50), "300:EGd004"},
        {VTC::VT_FAULT_NEW_PEN, ZedaRect(0, 0, 50, 50), "300:EGe001"},
    };
    for (const auto& c : cases) {
        for (Generator generator : kGenerators) {
            ClearLog();
            if (c.fault != VTC::VT_FAULT_KIND_COUNT)
                VtGraphicsManager::InjectFault(c.fault);
            EXPECT_EQ(generator(window.get(), c.rect), nullptr);
            VtGraphicsManager::ClearFaults();
            EXPECT_EQ(RendererLog(), std::vector<std::string>{c.code}) << c.fault;
        }
    }
    // The 2 x 2 rectangle is the smallest one painted.
    for (Generator generator : kGenerators)
        EXPECT_TRUE(Image(generator(window.get(), ZedaRect(5, 5, 7, 7))));
    ClearLog();
    EXPECT_EQ(VtEspecialFill::GetLinearImage(window.get(), ZedaRect(5, 5, 5, 50), kFrom, kTo, 0, 0, 0), nullptr);
    VtGraphicsManager::InjectFault(VTC::VT_FAULT_NEW_BRUSH);
    EXPECT_EQ(Conical(window.get(), ZedaRect(0, 0, 50, 50)), nullptr);
    VtGraphicsManager::InjectFault(VTC::VT_FAULT_NEW_BRUSH);
    EXPECT_EQ(Radial(window.get(), ZedaRect(0, 0, 50, 50)), nullptr);
    EXPECT_EQ(RendererLog(), (std::vector<std::string>{"300:EEf002", "300:EGe001", "300:EGe001"}));
}

TEST_F(GradientFills, PlainFillForEqualColoursAndOtherKinds)
{
    Surface surface = PaperWindow(40, 40);
    SelectionProbe probe(surface.get());
    const struct {
        unsigned int colour2;
        int kind;
    } cases[] = {{kFrom, 10}, {kTo, 9}, {kTo, 14}};
    for (const auto& c : cases) {
        surface->GetTargetImage()->Fill(kPaper);
        EXPECT_TRUE(VtEspecialFill::GradientRectangle(surface.get(), ZedaRect(10, 10, 20, 20), kFrom, c.colour2, 0.3,
                                                      0, 0, c.kind, 60));
        EXPECT_EQ(PixelAt(surface.get(), 9, 9), Rgb(kFrom)) << c.kind;
        EXPECT_EQ(PixelAt(surface.get(), 20, 20), Rgb(kFrom));
        EXPECT_EQ(PixelAt(surface.get(), 21, 21), Rgb(kPaper));
        EXPECT_EQ(PixelAt(surface.get(), 8, 15), Rgb(kPaper));
    }
    EXPECT_TRUE(RendererLog().empty());
    // Without a brush or a pen nothing is drawn, and the surface is as it was.
    const SurfaceState state = StateOf(surface.get());
    for (VTC::VtFaultKind fault : {VTC::VT_FAULT_NEW_BRUSH, VTC::VT_FAULT_NEW_PEN}) {
        surface->GetTargetImage()->Fill(kPaper);
        VtGraphicsManager::InjectFault(fault);
        EXPECT_FALSE(VtEspecialFill::GradientRectangle(surface.get(), ZedaRect(10, 10, 20, 20), kFrom, kFrom, 0.3,
                                                       0, 0, 10, 0));
        EXPECT_EQ(PixelAt(surface.get(), 15, 15), Rgb(kPaper));
    }
    EXPECT_EQ(RendererLog(), (std::vector<std::string>{"300:EGe001", "300:EGe001"}));
    EXPECT_EQ(StateOf(surface.get()), state);
    EXPECT_TRUE(probe.Unchanged());
}

TEST_F(GradientFills, EachKindIsItsGeneratorsImageBlended)
{
    const ZedaRect rect(20, 15, 120, 75);
    const ZedaRect inflated(19, 14, 121, 76);
    const auto generate = [&](VtGraphics* g, int kind) {
        switch (kind) {
        case 10: return VtEspecialFill::GetLinearImage(g, inflated, kFrom, kTo, 0.7, 100, -30);
        case 11: return VtEspecialFill::GetRadialImage(g, inflated, kFrom, kTo, 100, -30);
        case 12: return VtEspecialFill::GetConicalImage(g, inflated, kFrom, kTo, 100, -30, 0.7);
        default: return VtEspecialFill::GetSquareImage(g, inflated, kFrom, kTo, 100, -30, 0.7);
        }
    };
    for (int kind : {10, 11, 12, 13}) {
        for (int t : {0, 40}) {
            Surface surface = Window(160, 100);
            Scramble(surface->GetTargetImage(), 11);
            const std::vector<unsigned char> before = BytesOf(surface->GetTargetImage());
            // Offsets beyond 100 % are used as 100 %.
            EXPECT_TRUE(VtEspecialFill::GradientRectangle(surface.get(), rect, kFrom, kTo, 0.7, 250, -30, kind, t));
            Image image(generate(surface.get(), kind));
            ASSERT_TRUE(image);
            const VtImage* target = surface->GetTargetImage();
            for (int y = 0; y < 100; y += 3) {
                for (int x = 0; x < 160; x += 3) {
                    const std::vector<unsigned char> got = PixelBytes(target, x, y);
                    const unsigned char* old = before.data() + y * target->GetRowBytes() + x * 4;
                    if (!inflated.PtInRect({x, y})) {
                        ASSERT_EQ(got, std::vector<unsigned char>(old, old + 4)) << kind << " at " << x << ',' << y;
                        continue;
                    }
                    const std::vector<unsigned char> s = PixelBytes(image.get(), x - inflated.left, y - inflated.top);
                    for (int b = 0; b < 3; ++b)
                        ASSERT_EQ(got[b], t == 0 ? s[b] : Blend(s[b], old[b], t)) << kind << " t " << t << " at " << x << ',' << y;
                }
            }
        }
    }
    EXPECT_TRUE(RendererLog().empty());
}

TEST_F(GradientFills, ScreenClipCoordinatesAndRefusals)
{
    VTC::VtToolkit::SetScreenSize(1024, 1024);
    Surface surface = PaperWindow(1100, 60);
    surface->SetOrigin(ZedaPoint(4, 3));
    const SurfaceState state = StateOf(surface.get());
    // Partly off screen: generated and blitted for the on-screen part only.
    EXPECT_TRUE(VtEspecialFill::GradientRectangle(surface.get(), ZedaRect(990, 0, 1090, 40), kFrom, kTo, 0.0, 0, 0,
                                                  10, 0));
    EXPECT_EQ(StateOf(surface.get()), state);
    EXPECT_EQ(PixelAt(surface.get(), 993, 3), Rgb(kFrom));
    EXPECT_NE(PixelAt(surface.get(), 1023, 20), Rgb(kPaper));
    EXPECT_EQ(PixelAt(surface.get(), 1024, 20), Rgb(kPaper));
    EXPECT_EQ(PixelAt(surface.get(), 992, 20), Rgb(kPaper));

    EXPECT_FALSE(VtEspecialFill::GradientRectangle(surface.get(), ZedaRect(5, 5, 5, 30), kFrom, kTo, 0, 0, 0, 10, 0));
    EXPECT_EQ(RendererLog(), std::vector<std::string>{"300:EEf007"});
    // A generator's failure is logged once, by the generator.
    ClearLog();
    VtGraphicsManager::InjectFault(VTC::VT_FAULT_NEW_IMAGE);
    EXPECT_FALSE(VtEspecialFill::GradientRectangle(surface.get(), ZedaRect(5, 5, 50, 30), kFrom, kTo, 0, 0, 0, 11, 0));
    EXPECT_EQ(RendererLog(), std::vector<std::string>{"300:EGd004"});
    EXPECT_EQ(StateOf(surface.get()), state);
}

TEST_F(GradientFills, NativeGradientSurfaces)
{
    const auto fill = [](int kind, std::vector<unsigned char>& pixels) {
        Surface native(VtGraphicsManager::CreateNativeGradientGraphics(80, 60, 32));
        native->GetTargetImage()->Fill(kPaper);
        const bool result =
            VtEspecialFill::GradientRectangle(native.get(), ZedaRect(10, 10, 50, 40), kFrom, kTo, 0.5, 0, 0, kind, 0);
        pixels = BytesOf(native->GetTargetImage());
        return result;
    };
    std::vector<unsigned char> linear, radial, conical, square;
    EXPECT_FALSE(fill(10, linear));
    EXPECT_FALSE(fill(11, radial));
    EXPECT_FALSE(fill(12, conical));
    EXPECT_TRUE(fill(13, square));
    Surface blank = PaperWindow(80, 60);
    for (const auto* drawn : {&linear, &radial, &square})
        EXPECT_NE(*drawn, BytesOf(blank->GetTargetImage()));
    EXPECT_EQ(conical, radial);
    EXPECT_NE(linear, radial);
}

TEST_F(GradientFills, PolygonsShowTheirBoundingBoxGradient)
{
    Surface surface = PaperWindow(100, 100);
    const SurfaceState state = StateOf(surface.get());
    const ZedaPoint triangle[] = {{10, 10}, {70, 10}, {10, 70}};
    EXPECT_TRUE(VtEspecialFill::GradientPolygon(surface.get(), triangle, 3, kFrom, kTo, 0.0, 0, 0, 10, 0));
    EXPECT_EQ(StateOf(surface.get()), state);
    // The gradient spans the region's bounding box, inflated by one pixel.
    const auto boxImage = [&](const ZedaPoint* points, const int* counts, int polygons) {
        VTC::VtRgn* region = VtGraphicsManager::NewRgn(0);
        region->CreatePolyPolygonRegion(points, counts, polygons);
        ZedaRect bounds = region->GetBoundingRect();
        delete region;
        bounds.Inflate(1);
        Surface reference = Window(100, 100);
        return std::pair(bounds, Image(VtEspecialFill::GetLinearImage(reference.get(), bounds, kFrom, kTo, 0.0, 0, 0)));
    };
    const int three[] = {3};
    const auto [triangleBox, triangleImage] = boxImage(triangle, three, 1);
    ASSERT_TRUE(triangleImage);
    for (const ZedaPoint p : {ZedaPoint(12, 12), ZedaPoint(60, 12), ZedaPoint(12, 60), ZedaPoint(35, 30)})
        EXPECT_EQ(PixelAt(surface.get(), p.x, p.y), ImagePixel(triangleImage, p.x - triangleBox.left, p.y - triangleBox.top));
    EXPECT_EQ(PixelAt(surface.get(), 60, 60), Rgb(kPaper));
    EXPECT_EQ(PixelAt(surface.get(), 12, 75), Rgb(kPaper));
    EXPECT_EQ(PixelAt(surface.get(), 8, 12), Rgb(kPaper));

    const ZedaPoint squares[] = {{10, 80}, {20, 80}, {20, 90}, {10, 90}, {60, 80}, {70, 80}, {70, 90}, {60, 90}};
    const int counts[] = {4, 4};
    EXPECT_TRUE(VtEspecialFill::GradientPolyPolygon(surface.get(), squares, counts, 2, kFrom, kTo, 0.0, 0, 0, 10, 0));
    EXPECT_EQ(StateOf(surface.get()), state);
    const auto [squaresBox, squaresImage] = boxImage(squares, counts, 2);
    ASSERT_TRUE(squaresImage);
    for (const ZedaPoint p : {ZedaPoint(12, 85), ZedaPoint(65, 82)})
        EXPECT_EQ(PixelAt(surface.get(), p.x, p.y), ImagePixel(squaresImage, p.x - squaresBox.left, p.y - squaresBox.top));
    EXPECT_EQ(PixelAt(surface.get(), 40, 85), Rgb(kPaper));
    EXPECT_TRUE(RendererLog().empty());
}

TEST_F(GradientFills, PolygonFailureCodesDiffer)
{
    Surface surface = PaperWindow(100, 100);
    const std::vector<unsigned char> before = BytesOf(surface->GetTargetImage());
    const ZedaPoint line[] = {{10, 10}, {60, 60}};
    const ZedaPoint triangle[] = {{10, 10}, {70, 10}, {10, 70}};
    const int two[] = {2};
    const int three[] = {3};
    const auto polygon = [&](const ZedaPoint* p, int n) {
        return VtEspecialFill::GradientPolygon(surface.get(), p, n, kFrom, kTo, 0, 0, 0, 10, 0);
    };
    const auto polyPolygon = [&](const ZedaPoint* p, const int* n) {
        return VtEspecialFill::GradientPolyPolygon(surface.get(), p, n, 1, kFrom, kTo, 0, 0, 0, 10, 0);
    };
    EXPECT_FALSE(polygon(line, 2));
    EXPECT_FALSE(polyPolygon(line, two));
    for (VTC::VtFaultKind fault : {VTC::VT_FAULT_NEW_RGN, VTC::VT_FAULT_CREATE_REGION}) {
        VtGraphicsManager::InjectFault(fault);
        EXPECT_FALSE(polygon(triangle, 3));
        VtGraphicsManager::InjectFault(fault);
        EXPECT_FALSE(polyPolygon(triangle, three));
    }
    VtGraphicsManager::InjectFault(VTC::VT_FAULT_NEW_RGN, 1);
    EXPECT_FALSE(polygon(triangle, 3));
    EXPECT_EQ(RendererLog(), (std::vector<std::string>{"300:EFd009", "300:EEf005", "300:EFd009", "300:EFd009",
                                                        "300:EFd009", "300:EFd009", "300:EFd009"}));
    EXPECT_EQ(BytesOf(surface->GetTargetImage()), before);
}
