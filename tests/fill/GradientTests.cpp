#include <algorithm>
#include <cstdlib>
#include <numbers>

#include "FillTestSupport.h"

using namespace FillTest;
using std::numbers::pi;

namespace {

class Gradient : public FillTestBase {};

unsigned int ColourAlong(int x, int length)
{
    unsigned int colour = 0;
    VtEspecialFill::GetColor({0, 0}, {length, 0}, kFrom, kTo, {x, 0}, colour);
    return Rgb(colour);
}

unsigned int At(const Image& image, int x, int y) { return Rgb(image->GetPixelColour(x, y)); }
int RedAt(const Image& image, int x, int y) { return ZEDAREDVAL(image->GetPixelColour(x, y)); }

}  // namespace

TEST_F(Gradient, LinearBandsOnScreenAndOnPaper)
{
    Surface window = Window(400, 100);
    Surface page(VtGraphicsManager::CreatePrintGraphics(400, 100, 254));
    // About 100 bands on screen and 200 on paper: every third and every second pixel.
    for (const auto& [surface, step] : {std::pair{window.get(), 3}, std::pair{page.get(), 2}}) {
        Image image(VtEspecialFill::GetLinearImage(surface, ZedaRect(0, 0, 300, 10), kFrom, kTo, 0.0, 0, 0));
        for (int x = 0; x < 300; x += step)
            for (int y : {0, 9})
                ASSERT_EQ(At(image, x, y), ColourAlong(x, 300)) << step << ' ' << x << ',' << y;
        EXPECT_EQ(At(image, 299, 5), Rgb(kTo));
    }
    // Upwards: horizontal bands, colour 1 at the bottom.
    Image upwards(VtEspecialFill::GetLinearImage(window.get(), ZedaRect(0, 0, 10, 300), kFrom, kTo, pi / 2, 0, 0));
    EXPECT_EQ((Colours{At(upwards, 5, 299), At(upwards, 5, 0), At(upwards, 0, 150)}),
              (Colours{Rgb(kFrom), Rgb(kTo), At(upwards, 9, 150)}));
    // Slanted: colour 1 bottom left, colour 2 top right, rising along the axis, constant across
    // it, and every pixel covered (the image starts black).
    Image slanted(VtEspecialFill::GetLinearImage(window.get(), ZedaRect(0, 0, 160, 60), kFrom, kTo, pi / 6, 0, 0));
    EXPECT_EQ((Colours{At(slanted, 0, 59), At(slanted, 159, 0)}), (Colours{Rgb(kFrom), Rgb(kTo)}));
    EXPECT_TRUE(RedAt(slanted, 20, 40) < RedAt(slanted, 80, 30) && RedAt(slanted, 80, 30) < RedAt(slanted, 140, 20));
    for (int i = 0; i < 160 * 60; ++i)
        ASSERT_NE(At(slanted, i % 160, i / 160), 0u) << i % 160 << ',' << i / 160;
    for (int d = 0; d < 40; d += 10)  // across the axis: 1 to the right for 1.73 down
        EXPECT_NEAR(RedAt(slanted, 60 + d, 5 + d * 173 / 100), RedAt(slanted, 60, 5), 240 / 50) << d;
}

TEST_F(Gradient, RingsSquaresAndSectorsAroundTheirCentre)
{
    Surface window = Window(200, 200);
    const ZedaRect rect(0, 0, 100, 100);
    Image rings(VtEspecialFill::GetRadialImage(window.get(), rect, kFrom, kTo, 0, 0));
    Image flat(VtEspecialFill::GetSquareImage(window.get(), rect, kFrom, kTo, 0, 0, 0.0));
    Image full(VtEspecialFill::GetSquareImage(window.get(), rect, kFrom, kTo, 0, 0, 2 * pi));
    Image turned(VtEspecialFill::GetSquareImage(window.get(), rect, kFrom, kTo, 0, 0, pi / 2));
    EXPECT_EQ(BytesOf(flat.get()), BytesOf(full.get()));
    // The centre holds the colour nearest to colour 1: the dot, or the first
    // ring or square where the surface draws them over it.
    EXPECT_LE(std::max(RedAt(rings, 50, 50), RedAt(flat, 50, 50)), 240 * 2 / 71);
    EXPECT_EQ(At(rings, 99, 99), Rgb(kTo));
    for (int k = 1; k < 49; ++k) {
        ASSERT_EQ((Colours{At(rings, 49 - k, 49), At(rings, 49, 50 + k)}), Colours(2, At(rings, 50 + k, 50))) << k;
        ASSERT_EQ((Colours{At(flat, 50, 50 + k), At(flat, 50 + k, 50 + k / 2)}), Colours(2, At(flat, 50 + k, 50)));
        ASSERT_GE(RedAt(rings, 50 + k, 50), RedAt(rings, 49 + k, 50)) << k;
        ASSERT_GE(RedAt(flat, 50 + k, 50), RedAt(flat, 49 + k, 50)) << k;
        // The turned path draws the same squares up to rounding: one square apart at most.
        ASSERT_LE(std::abs(RedAt(flat, 50 + k, 50 - k / 3) - RedAt(turned, 50 + k, 50 - k / 3)), 240 / 71 + 1) << k;
    }
    // Six pixels apart (720 x 400), the wide pens still meet: the dot keeps
    // colour 1, no pixel is left black out to the far corners (the image
    // starts black), and the turned squares stay within one square of the
    // upright ones.
    const ZedaRect wide(0, 0, 720, 400);
    Image wideRings(VtEspecialFill::GetRadialImage(window.get(), wide, kFrom, kTo, 0, 0));
    Image wideFlat(VtEspecialFill::GetSquareImage(window.get(), wide, kFrom, kTo, 0, 0, 0.0));
    Image wideTurned(VtEspecialFill::GetSquareImage(window.get(), wide, kFrom, kTo, 0, 0, pi / 2));
    EXPECT_EQ((Colours{At(wideRings, 360, 200), At(wideFlat, 360, 200), At(wideTurned, 360, 200)}),
              Colours(3, Rgb(kFrom)));
    const int oneSquare = 240 * 6 / 412 + 1;  // red per six pixels of the 412-pixel radius, rounded up
    for (int i = 0; i < 720 * 400; ++i) {
        const int x = i % 720, y = i / 720;
        ASSERT_TRUE(At(wideRings, x, y) != 0 && At(wideFlat, x, y) != 0 && At(wideTurned, x, y) != 0) << x << ',' << y;
        ASSERT_LE(std::abs(RedAt(wideFlat, x, y) - RedAt(wideTurned, x, y)), oneSquare) << x << ',' << y;
    }
    // About a centre one full width to the left: no dot, the left edge
    // already a third of the way to colour 2, rising to the right.
    Image shifted(VtEspecialFill::GetRadialImage(window.get(), rect, kFrom, kTo, -100, 0));
    EXPECT_TRUE(RedAt(shifted, 0, 50) >= 240 * 45 / 159 && RedAt(shifted, 0, 50) <= 240 * 60 / 159);
    for (int x = 1; x < 100; ++x)
        ASSERT_GE(RedAt(shifted, x, 50), RedAt(shifted, x - 1, 50)) << x;
    // Conical: the colour follows the direction from the centre.
    Image sectors(VtEspecialFill::GetConicalImage(window.get(), rect, kFrom, kTo, 0, 0, 0.0));
    Image up(VtEspecialFill::GetConicalImage(window.get(), rect, kFrom, kTo, 0, 0, pi / 2));
    // 64 sectors each way on screen: straight up is sector 32, 5.7 degrees up sector 2.
    const unsigned int halfway = ColourAlong(32, 64), second = ColourAlong(2, 64);
    EXPECT_EQ((Colours{At(sectors, 90, 50), At(sectors, 10, 50), At(sectors, 50, 10), At(sectors, 50, 90),
                       At(sectors, 90, 46), At(up, 50, 10), At(up, 50, 90)}),
              (Colours{Rgb(kFrom), Rgb(kTo), halfway, halfway, second, Rgb(kFrom), Rgb(kTo)}));
    // A centre far outside still covers every pixel (the image starts black).
    Image outside(VtEspecialFill::GetConicalImage(window.get(), ZedaRect(0, 0, 100, 60), kFrom, kTo, 100, 100, 1.0));
    for (int i = 0; i < 6000; ++i)
        ASSERT_NE(At(outside, i % 100, i / 100), 0u) << i % 100 << ',' << i / 100;
}

// A centre on the right or lower edge gets no dot; the turned squares start
// with one of no size, which the wide pen still paints, so no pixel of the
// image (which starts black) stays unpainted.
TEST_F(Gradient, TurnedSquaresAboutACentreOnTheEdgeCoverTheirImage)
{
    // From 4 pixels a step on, the first square's pen leaves a hole about the
    // centre wide enough to reach the pixels next to it.
    Surface window = Window(100, 100);
    int unpainted = 0;
    for (int side : {300, 301, 420})
        for (int turn = 1; turn < 8; ++turn)
            for (const auto& [offsetX, offsetY] : {std::pair{50, 0}, std::pair{0, -50}}) {
                const ZedaRect rect(0, 0, side, side - 40);
                Image image(VtEspecialFill::GetSquareImage(window.get(), rect, kFrom, kTo, offsetX, offsetY, turn * 0.7));
                bool black = false;
                for (int i = 0; i < rect.Width() * rect.Height(); ++i)
                    black = black || At(image, i % rect.Width(), i / rect.Width()) == 0;
                unpainted += black;
            }
    EXPECT_EQ(unpainted, 0);
}

TEST_F(Gradient, GeneratorsNormaliseAndStayOnScreen)
{
    Surface window = Window(300, 300);
    VtToolkit::SetScreenSize(1024, 1024);
    const auto sizeOf = [&](Generator generator, ZedaRect rect) {
        const Image image(generator(window.get(), rect));
        return image ? ZedaSize(image->GetWidth(), image->GetHeight()) : ZedaSize();
    };
    // 2 x 2 is the smallest painted.
    for (Generator generator : kGenerators)
        EXPECT_EQ((std::vector{sizeOf(generator, {130, 90, 10, 20}), sizeOf(generator, {1000, -30, 1100, 40}),
                               sizeOf(generator, {5, 5, 7, 7})}),
                  (std::vector{ZedaSize(120, 70), ZedaSize(24, 40), ZedaSize(2, 2)}));
}

// Each kind is its generator's image of the device rectangle, inflated by a
// pixel, blitted at the transparency; offsets beyond 100 % are 100 %. Equal
// colours and other kinds fill it opaque with colour 1.
TEST_F(Gradient, EachKindIsItsGeneratorsImageBlittedInDevicePixels)
{
    const ZedaRect device(23, 17, 125, 79);  // (20, 15, 120, 75) about the origin (4, 3)
    const std::pair<int, unsigned int> kinds[] = {
        {VT_GRADIENT_LINEAR, kTo}, {VT_GRADIENT_RADIAL, kTo}, {VT_GRADIENT_CONICAL, kTo}, {VT_GRADIENT_SQUARE, kTo},
        {9, kTo}, {14, kTo}, {VT_GRADIENT_LINEAR, kFrom}};
    for (const auto& [kind, to] : kinds)
        for (int t : {0, 40}) {
            Surface surface = Window(160, 90);
            VtGraphics* s = surface.get();
            Scramble(s->GetTargetImage(), 11);
            s->SetOrigin(ZedaPoint(4, 3));
            const SurfaceState state = StateOf(s);
            const bool plain = kind < VT_GRADIENT_LINEAR || kind > VT_GRADIENT_SQUARE || to == kFrom;
            Image image(plain ? ImageFor(s, 102, 62, kFrom).release()
                              : kGenerators[kind - VT_GRADIENT_LINEAR](s, device));
            const Bytes expected = ExpectedBlit(s, image.get(), device.left, device.top, 102, 62, plain ? 0 : t);
            EXPECT_TRUE(VtEspecialFill::GradientRectangle(s, {20, 15, 120, 75}, kFrom, to, 0.7, 250, -30, kind, t));
            EXPECT_EQ(BytesOf(s->GetTargetImage()), expected) << kind << " t " << t;
            EXPECT_EQ(StateOf(s), state);
        }
}

TEST_F(Gradient, NativeGradientSurfacesDrawConicalAsRadial)
{
    const Bytes blank = BytesOf(Window(80, 60)->GetTargetImage());
    Bytes drawn[4];
    for (int kind = VT_GRADIENT_LINEAR; kind <= VT_GRADIENT_SQUARE; ++kind) {
        Surface native(VtGraphicsManager::CreateNativeGradientGraphics(80, 60, 32));
        native->GetTargetImage()->Fill(kPaper);
        // Only the square gradient comes back as an image to blit.
        EXPECT_EQ(VtEspecialFill::GradientRectangle(native.get(), {10, 10, 50, 40}, kFrom, kTo, 0.5, 0, 0, kind, 0),
                  kind == VT_GRADIENT_SQUARE);
        drawn[kind - VT_GRADIENT_LINEAR] = BytesOf(native->GetTargetImage());
        EXPECT_NE(drawn[kind - VT_GRADIENT_LINEAR], blank) << kind;
    }
    EXPECT_EQ(drawn[2], drawn[1]);
    EXPECT_NE(drawn[0], drawn[1]);
}

TEST_F(Gradient, PolygonsShowTheirBoundingBoxGradientOnlyInside)
{
    Surface surface = Window(100, 100);
    const SurfaceState state = StateOf(surface.get());
    const ZedaPoint points[] = {{10, 10}, {70, 10}, {10, 70},  // a triangle, then two squares
                                {10, 80}, {20, 80}, {20, 90}, {10, 90}, {60, 80}, {70, 80}, {70, 90}, {60, 90}};
    const int three[] = {3}, counts[] = {4, 4};
    const int linear = VT_GRADIENT_LINEAR;
    EXPECT_TRUE(VtEspecialFill::GradientPolygon(surface.get(), points, 3, kFrom, kTo, 0.0, 0, 0, linear, 0));
    EXPECT_TRUE(VtEspecialFill::GradientPolyPolygon(surface.get(), points + 3, counts, 2, kFrom, kTo, 0, 0, 0, linear, 0));
    EXPECT_EQ(StateOf(surface.get()), state);
    EXPECT_EQ(ColoursAt(surface.get(), {{60, 60}, {12, 75}, {8, 12}, {40, 85}}), Colours(4, Rgb(kPaper)));
    // Inside, the gradient of the region's bounds, inflated by one pixel.
    for (const auto& [first, count, n, inside] :
         {std::tuple{0, three, 1, std::vector<ZedaPoint>{{12, 12}, {60, 12}, {12, 60}, {35, 30}}},
          std::tuple{3, counts, 2, std::vector<ZedaPoint>{{12, 85}, {65, 82}}}}) {
        const std::unique_ptr<VtRgn> region(VtGraphicsManager::NewRgn(0));
        region->CreatePolyPolygonRegion(points + first, count, n);
        ZedaRect box = region->GetBoundingRect();
        box.Inflate(1);
        Image image(VtEspecialFill::GetLinearImage(surface.get(), box, kFrom, kTo, 0.0, 0, 0));
        for (const ZedaPoint p : inside)
            EXPECT_EQ(PixelAt(surface.get(), p.x, p.y), At(image, p.x - box.left, p.y - box.top)) << p.x << ',' << p.y;
    }
}
