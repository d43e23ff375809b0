#include "FillTestSupport.h"

using namespace FillTest;

namespace {

class TransparentShape : public FillTestBase {};

constexpr unsigned int kWhite = ZEDARGB(255, 255, 255);

}  // namespace

// A fill blends like a blit of an image of its colour, beyond 100 % is
// invisible and below 0 % opaque. Rows are longer than a blend pattern.
TEST_F(TransparentShape, RectangleBlendsEveryPixelExactly)
{
    for (int bits : {32, 24})
        for (int t : {0, 40, 50, 100, 1, 99, -20, 300}) {
            Surface surface = Window(64, 30, bits);
            Scramble(surface->GetTargetImage(), 8);
            const Bytes expected = ExpectedBlit(surface.get(), ImageFor(surface.get(), 41, 10, kInk).get(), 5, 4, 41, 10, t);
            EXPECT_TRUE(VtEspecialFill::TransparentRectangle(surface.get(), ZedaRect(5, 4, 46, 14), kInk, t));
            EXPECT_EQ(BytesOf(surface->GetTargetImage()), expected) << bits << " bits, t " << t;
        }
}

TEST_F(TransparentShape, SixteenBitFillPutsRedHigh)
{
    Surface surface = Window(8, 8, 16, 0);
    EXPECT_TRUE(VtEspecialFill::TransparentRectangle(surface.get(), ZedaRect(0, 0, 4, 4), ZEDARGB(255, 0, 0), 50));
    EXPECT_TRUE(VtEspecialFill::TransparentRectangle(surface.get(), ZedaRect(4, 4, 8, 8), ZEDARGB(7, 3, 255), 1));
    EXPECT_EQ(PixelBytes(surface->GetTargetImage(), 1, 1), (Bytes{0, 15 << 3}));
    EXPECT_EQ(PixelBytes(surface->GetTargetImage(), 5, 5), (Bytes{31 * 99 / 100, 0}));
}

TEST_F(TransparentShape, LogicalUnitsPolygonsAndTheCallersClip)
{
    Surface surface = Window(120, 120);
    surface->SetScale(2.0);
    surface->SetOrigin(ZedaPoint(4, 4));
    const std::unique_ptr<VtRgn> clip(VtGraphicsManager::NewRgn(0));
    clip->CreateRectRegion(0, 0, 100, 120);
    surface->SelectClipRegion(clip.get(), VT_CLIP_REPLACE);
    const SurfaceState state = StateOf(surface.get());
    const ZedaPoint triangle[] = {{0, 0}, {40, 0}, {0, 40}}, wide[] = {{40, 0}, {58, 0}, {58, 10}, {40, 10}};
    const ZedaPoint squares[] = {{0, 45}, {10, 45}, {10, 55}, {0, 55}, {30, 45}, {40, 45}, {40, 55}, {30, 55}};
    const int counts[] = {4, 4};
    EXPECT_TRUE(VtEspecialFill::TransparentPolygon(surface.get(), triangle, 3, kInk, 40));
    EXPECT_TRUE(VtEspecialFill::TransparentPolyPolygon(surface.get(), squares, counts, 2, kInk, 40));
    EXPECT_TRUE(VtEspecialFill::TransparentPolygon(surface.get(), wide, 4, kInk, 40));
    // Given the wrong way round: normalised.
    EXPECT_TRUE(VtEspecialFill::TransparentRectangle(surface.get(), ZedaRect(30, 30, 25, 25), kInk, 40));
    EXPECT_EQ(StateOf(surface.get()), state);
    const unsigned int in = Blended(kInk, kPaper, 40), out = Rgb(kPaper);
    EXPECT_EQ(ColoursAt(surface.get(), {{14, 14}, {78, 78}, {14, 104}, {74, 104}, {44, 104}, {99, 14}, {100, 14},
                                        {54, 54}, {63, 63}, {64, 64}, {53, 53}, {3, 14}}),
              (Colours{in, out, in, in, out, in, out, in, in, out, out, out}));
}

TEST_F(TransparentShape, ScreenAndImageClips)
{
    VtToolkit::SetScreenSize(1024, 1024);
    Surface surface = Window(1100, 20);
    // Beyond the screen's 1024 pixels nothing is read or written.
    EXPECT_TRUE(VtEspecialFill::TransparentRectangle(surface.get(), ZedaRect(1000, 0, 1100, 10), kInk, 40));
    EXPECT_EQ(ColoursAt(surface.get(), {{1023, 5}, {1024, 5}}), (Colours{Blended(kInk, kPaper, 40), Rgb(kPaper)}));
    // A printing image-backed surface clips to its image while image graphics are current.
    Image target = ImageFor(surface.get(), 100, 50, kPaper);
    Surface printing(VtGraphicsManager::CreateImageGraphics(target.get()));
    printing->SetPrinting(true);
    VtGraphicsManager::SetCurGraphicsType(9);
    EXPECT_TRUE(VtEspecialFill::TransparentRectangle(printing.get(), ZedaRect(-10, -10, 200, 200), kInk, 40));
    EXPECT_FALSE(VtEspecialFill::TransparentRectangle(printing.get(), ZedaRect(150, 0, 200, 10), kInk, 40));
    VtGraphicsManager::SetCurGraphicsType(2);
    EXPECT_EQ(TakeLog(), std::vector<std::string>{"300:EEf002"});
    EXPECT_EQ(ColoursAt(printing.get(), {{0, 0}, {99, 49}}), Colours(2, Blended(kInk, kPaper, 40)));
}

TEST_F(TransparentShape, PrintedPagesAreTiledAt4000Pixels)
{
    // 254 dots per inch: one logical tenth of a millimetre is one pixel.
    Surface page(VtGraphicsManager::CreatePrintGraphics(4600, 3100, 254));
    page->GetTargetImage()->Fill(kWhite);
    const unsigned int grey = Rgb(ZEDARGB(127, 127, 127)), white = Rgb(kWhite);
    const auto fill = [&](ZedaRect rect) { EXPECT_TRUE(VtEspecialFill::TransparentRectangle(page.get(), rect, 0, 50)); };
    // True when the fill makes exactly `count` memory graphics: the fault waits
    // for call count + 1 and is then met by a probe.
    const auto makesExactlyGraphics = [&](int count, ZedaRect rect) {
        VtGraphicsManager::InjectFault(VT_FAULT_NEW_GRAPHICS, count);
        fill(rect);
        const Surface probe(VtGraphicsManager::NewGraphics(0));
        VtGraphicsManager::ClearFaults();
        return probe == nullptr;
    };
    // Two full tiles, a right strip, two bottom tiles and a corner: six fills
    // of two memory graphics each, neither overlapping nor leaving gaps.
    EXPECT_TRUE(makesExactlyGraphics(12, {0, 0, 4500, 3000}));
    for (int x : {0, 1999, 2000, 3999, 4000, 4499})
        EXPECT_EQ(ColoursAt(page.get(), {{x, 0}, {x, 1999}, {x, 2000}, {x, 2999}}), Colours(4, grey)) << x;
    EXPECT_EQ(ColoursAt(page.get(), {{4500, 100}, {100, 3000}}), Colours(2, white));
    // 3999 pixels go in one piece, 4000 in tiles (two bottom-strip tiles here).
    EXPECT_TRUE(makesExactlyGraphics(2, {0, 3010, 3999, 3020}));
    EXPECT_TRUE(makesExactlyGraphics(4, {0, 3030, 4000, 3040}));
    EXPECT_EQ(ColoursAt(page.get(), {{3998, 3015}, {3999, 3015}, {3999, 3035}}), (Colours{grey, white, grey}));
    // The page stores red first: the fill swaps red and blue to match.
    EXPECT_TRUE(VtEspecialFill::TransparentRectangle(page.get(), ZedaRect(4510, 0, 4590, 50), kInk, 40));
    EXPECT_EQ(PixelAt(page.get(), 4550, 20), Blended(kInk, kWhite, 40));
    // A failing tile does not stop the others, nor the result.
    VtGraphicsManager::InjectFault(VT_FAULT_NEW_GRAPHICS, 2);
    fill(ZedaRect(0, 3050, 4000, 3060));
    EXPECT_EQ(TakeLog(), std::vector<std::string>{"300:EGd002"});
    EXPECT_EQ(ColoursAt(page.get(), {{100, 3055}, {2100, 3055}}), (Colours{grey, white}));
}
