#include <algorithm>
#include <tuple>

#include "FillTestSupport.h"

using namespace FillTest;

namespace {

class TransparentShape : public FillTestBase {};

constexpr unsigned int kWhite = ZEDARGB(255, 255, 255);

// True when `call` makes exactly `count` graphics through the manager: the
// fault waits for call count + 1 and is then met by a probe.
template <typename Call>
bool MakesExactlyGraphics(int count, Call call)
{
    VtGraphicsManager::InjectFault(VT_FAULT_NEW_GRAPHICS, count);
    call();
    const Surface probe(VtGraphicsManager::NewGraphics(0));
    VtGraphicsManager::ClearFaults();
    return probe == nullptr;
}

}  // namespace

TEST_F(TransparentShape, RectangleBlendsEveryPixelExactly)
{
    const unsigned char ink[3] = {ZEDABLUEVAL(kInk), ZEDAGREENVAL(kInk), ZEDAREDVAL(kInk)};
    for (int bits : {32, 24})
        for (int t : {0, 40, 50, 100, 1, 99, -20, 300}) {
            Surface surface = Window(64, 30, bits);
            Scramble(surface->GetTargetImage(), 8);
            const std::vector<unsigned char> before = BytesOf(surface->GetTargetImage());
            const int stride = surface->GetTargetImage()->GetRowBytes(), bytes = bits / 8;
            // Rows longer than a blend pattern, and not a whole number of them.
            EXPECT_TRUE(VtEspecialFill::TransparentRectangle(surface.get(), ZedaRect(5, 4, 46, 14), kInk, t));
            for (int y = 0; y < 30; ++y)
                for (int x = 0; x < 64; ++x) {
                    const bool inside = x >= 5 && x < 46 && y >= 4 && y < 14 && t < 100;
                    const std::vector<unsigned char> got = PixelBytes(surface->GetTargetImage(), x, y);
                    // Opaque fills keep whatever fourth byte the surface draws with.
                    for (int b = 0; b < (t <= 0 ? 3 : bytes); ++b) {
                        const unsigned char old = before[static_cast<std::size_t>(y * stride + x * bytes + b)];
                        ASSERT_EQ(got[b], !inside ? old : b == 3 ? 0 : Blend(ink[b], old, std::max(t, 0)))
                            << bits << " bits, t " << t << " at " << x << ',' << y << " byte " << b;
                    }
                }
        }
    EXPECT_TRUE(RendererLog().empty());
}

TEST_F(TransparentShape, SixteenBitFillPutsRedHigh)
{
    Surface surface = Window(8, 8, 16, 0);
    EXPECT_TRUE(VtEspecialFill::TransparentRectangle(surface.get(), ZedaRect(0, 0, 4, 4), ZEDARGB(255, 0, 0), 50));
    EXPECT_TRUE(VtEspecialFill::TransparentRectangle(surface.get(), ZedaRect(4, 4, 8, 8), ZEDARGB(7, 3, 255), 1));
    EXPECT_EQ(PixelBytes(surface->GetTargetImage(), 1, 1), (std::vector<unsigned char>{0, 15 << 3}));
    EXPECT_EQ(PixelBytes(surface->GetTargetImage(), 5, 5), (std::vector<unsigned char>{31 * 99 / 100, 0}));
}

TEST_F(TransparentShape, LogicalUnitsNormalisedAndTheSurfaceStateComesBack)
{
    Surface surface = Window(60, 60);
    surface->SetScale(2.0);
    surface->SetOrigin(ZedaPoint(10, 6));
    const SurfaceState state = StateOf(surface.get());
    EXPECT_TRUE(VtEspecialFill::TransparentRectangle(surface.get(), ZedaRect(0, 0, 5, 5), kInk, 40));
    EXPECT_TRUE(VtEspecialFill::TransparentRectangle(surface.get(), ZedaRect(20, 20, 15, 15), kInk, 40));
    EXPECT_EQ(StateOf(surface.get()), state);
    const unsigned int blended = Blended(kInk, kPaper, 40), paper = Rgb(kPaper);
    const std::tuple<int, int, unsigned int> probes[] = {{10, 6, blended}, {19, 15, blended}, {20, 16, paper},
                                                         {9, 5, paper},    {45, 45, blended}, {39, 45, paper}};
    for (const auto& [x, y, expected] : probes)
        EXPECT_EQ(PixelAt(surface.get(), x, y), expected) << x << ',' << y;
}

TEST_F(TransparentShape, ScreenAndImageClips)
{
    VtToolkit::SetScreenSize(1024, 1024);
    Surface surface = Window(1100, 20);
    // Beyond the screen's 1024 pixels nothing is read or written.
    EXPECT_TRUE(VtEspecialFill::TransparentRectangle(surface.get(), ZedaRect(1000, 0, 1100, 10), kInk, 40));
    EXPECT_EQ(PixelAt(surface.get(), 1023, 5), Blended(kInk, kPaper, 40));
    EXPECT_EQ(PixelAt(surface.get(), 1024, 5), Rgb(kPaper));
    // A printing image-backed surface clips to its image while image graphics are current.
    Image target = ImageFor(surface.get(), 100, 50, kPaper);
    Surface printing(VtGraphicsManager::CreateImageGraphics(target.get()));
    printing->SetPrinting(true);
    VtGraphicsManager::SetCurGraphicsType(9);
    EXPECT_TRUE(VtEspecialFill::TransparentRectangle(printing.get(), ZedaRect(-10, -10, 200, 200), kInk, 40));
    EXPECT_FALSE(VtEspecialFill::TransparentRectangle(printing.get(), ZedaRect(150, 0, 200, 10), kInk, 40));
    VtGraphicsManager::SetCurGraphicsType(2);
    EXPECT_EQ(RendererLog(), std::vector<std::string>{"300:EEf002"});
    EXPECT_EQ(Rgb(target->GetPixelColour(0, 0)), Blended(kInk, kPaper, 40));
    EXPECT_EQ(Rgb(target->GetPixelColour(99, 49)), Blended(kInk, kPaper, 40));
}

TEST_F(TransparentShape, PrintedPagesAreTiledAt4000Pixels)
{
    // 254 dots per inch: one logical tenth of a millimetre is one pixel.
    Surface page(VtGraphicsManager::CreatePrintGraphics(4600, 3100, 254));
    ASSERT_EQ(page->GetDeviceSize(), ZedaSize(4600, 3100));
    page->GetTargetImage()->Fill(kWhite);
    const unsigned int grey = Rgb(ZEDARGB(127, 127, 127)), white = Rgb(kWhite);
    const auto fill = [&](ZedaRect rect) { EXPECT_TRUE(VtEspecialFill::TransparentRectangle(page.get(), rect, 0, 50)); };
    // Two full tiles, a right strip, two bottom tiles and a corner: six fills
    // of two memory graphics each, neither overlapping nor leaving gaps.
    EXPECT_TRUE(MakesExactlyGraphics(12, [&] { fill(ZedaRect(0, 0, 4500, 3000)); }));
    for (int x : {0, 1999, 2000, 3999, 4000, 4499})
        for (int y : {0, 1999, 2000, 2999})
            EXPECT_EQ(PixelAt(page.get(), x, y), grey) << x << ',' << y;
    EXPECT_EQ(PixelAt(page.get(), 4500, 100), white);
    EXPECT_EQ(PixelAt(page.get(), 100, 3000), white);
    // 3999 pixels go in one piece, 4000 in tiles (two bottom-strip tiles here).
    EXPECT_TRUE(MakesExactlyGraphics(2, [&] { fill(ZedaRect(0, 3010, 3999, 3020)); }));
    EXPECT_TRUE(MakesExactlyGraphics(4, [&] { fill(ZedaRect(0, 3030, 4000, 3040)); }));
    EXPECT_EQ(PixelAt(page.get(), 3998, 3015), grey);
    EXPECT_EQ(PixelAt(page.get(), 3999, 3015), white);
    EXPECT_EQ(PixelAt(page.get(), 3999, 3035), grey);
    // The page stores red first: the fill swaps red and blue to match.
    EXPECT_TRUE(VtEspecialFill::TransparentRectangle(page.get(), ZedaRect(4510, 0, 4590, 50), kInk, 40));
    EXPECT_EQ(PixelAt(page.get(), 4550, 20), Blended(kInk, kWhite, 40));
    EXPECT_TRUE(RendererLog().empty());
    // A failing tile does not stop the others, nor the result.
    VtGraphicsManager::InjectFault(VT_FAULT_NEW_GRAPHICS, 2);
    fill(ZedaRect(0, 3050, 4000, 3060));
    EXPECT_EQ(RendererLog(), std::vector<std::string>{"300:EGd002"});
    EXPECT_EQ(PixelAt(page.get(), 100, 3055), grey);
    EXPECT_EQ(PixelAt(page.get(), 2100, 3055), white);
}

TEST_F(TransparentShape, PolygonsBlendOnlyInsideAndWithinTheCallersClip)
{
    Surface surface = Window(60, 60);
    surface->SetOrigin(ZedaPoint(2, 2));
    const std::unique_ptr<VtRgn> clip(VtGraphicsManager::NewRgn(0));
    clip->CreateRectRegion(0, 0, 50, 60);
    surface->SelectClipRegion(clip.get(), VT_CLIP_REPLACE);
    const SurfaceState state = StateOf(surface.get());
    const ZedaPoint triangle[] = {{0, 0}, {40, 0}, {0, 40}}, wide[] = {{40, 0}, {58, 0}, {58, 10}, {40, 10}};
    const ZedaPoint squares[] = {{0, 45}, {10, 45}, {10, 55}, {0, 55}, {30, 45}, {40, 45}, {40, 55}, {30, 55}};
    const int counts[] = {4, 4};
    EXPECT_TRUE(VtEspecialFill::TransparentPolygon(surface.get(), triangle, 3, kInk, 40));
    EXPECT_TRUE(VtEspecialFill::TransparentPolyPolygon(surface.get(), squares, counts, 2, kInk, 40));
    EXPECT_TRUE(VtEspecialFill::TransparentPolygon(surface.get(), wide, 4, kInk, 40));
    EXPECT_EQ(StateOf(surface.get()), state);
    const unsigned int blended = Blended(kInk, kPaper, 40), paper = Rgb(kPaper);
    const std::tuple<int, int, unsigned int> probes[] = {{5, 5, blended},  {38, 38, paper}, {5, 50, blended},
                                                         {35, 50, blended}, {20, 50, paper}, {49, 5, blended},
                                                         {50, 5, paper}};
    for (const auto& [x, y, expected] : probes)
        EXPECT_EQ(PixelAt(surface.get(), x, y), expected) << x << ',' << y;
    EXPECT_TRUE(RendererLog().empty());
}
