#include <tuple>

#include "FillTestSupport.h"

using namespace FillTest;

namespace {

class TransparentBlit : public FillTestBase {};
class TransparentShape : public FillTestBase {};

constexpr unsigned int kKey = ZEDARGB(255, 0, 128);
constexpr unsigned int kSwappedKey = ZEDARGB(128, 0, 255);
constexpr unsigned int kWhite = ZEDARGB(255, 255, 255);

Image HalvedImage(VtGraphics* surface, unsigned int left, unsigned int right)
{
    Image image = ImageFor(surface, 8, 8, right);
    for (int i = 0; i < 32; ++i)
        image->SetPixelColour(i % 4, i / 4, left);
    return image;
}

// A 16 x 8 window of kPaper, drawn on through raster operations, or an
// image-backed surface (kind 9) over `target`, drawn on pixel by pixel.
Surface PaperSurface(bool imageBacked, int bits, Image& target)
{
    Surface window = Window(16, 8, bits);
    if (!imageBacked)
        return window;
    target = ImageFor(window.get(), 16, 8, kPaper);
    return Surface(VtGraphicsManager::CreateImageGraphics(target.get()));
}

}  // namespace

TEST_F(TransparentBlit, BlendsExactlyAtEveryDepthTransparencyAndExtent)
{
    // Logical scale, position and extent, then the device pixels blended: an
    // image's own, larger, smaller and scaled.
    const int extents[][9] = {{1, 5, 7, 10, 8, 5, 7, 10, 8}, {1, 3, 4, 25, 20, 3, 4, 10, 8},
                              {1, 20, 20, 4, 3, 20, 20, 4, 3}, {2, 5, 6, 5, 4, 10, 12, 10, 8}};
    for (int bits : {32, 24, 16})
        for (int t : {0, 40, 50, 100, 1, 99, -7, 101})
            for (const auto& c : extents) {
                Surface surface = Window(40, 40, bits);
                Scramble(surface->GetTargetImage(), 3);
                surface->SetScale(c[0]);
                Image image = ImageFor(surface.get(), 10, 8, 0);
                Scramble(image.get(), 7);
                const Bytes expected = ExpectedBlit(surface.get(), image.get(), c[5], c[6], c[7], c[8], t);
                EXPECT_TRUE(VtEspecialFill::TransparentBitblt(surface.get(), image.get(), c[1], c[2], c[3], c[4], t));
                EXPECT_EQ(BytesOf(surface->GetTargetImage()), expected) << bits << " bits, t " << t << " at " << c[1];
            }
    // Indexed images are copied without blending.
    Surface surface = Window(16, 16);
    Image indexed(VtGraphicsManager::NewImage(0));
    const VtPalette palette({ZEDARGB(200, 100, 50)});
    ASSERT_TRUE(indexed->CreateImage(4, 4, 1, 8, &palette, nullptr));
    EXPECT_TRUE(VtEspecialFill::TransparentBitblt(surface.get(), indexed.get(), 1, 1, 4, 4, 40));
    EXPECT_EQ(PixelAt(surface.get(), 2, 2), Rgb(ZEDARGB(200, 100, 50)));
}

TEST_F(TransparentBlit, MaskedBlitBlendsOnlyUnderBlack)
{
    const unsigned int paper = Rgb(kPaper);
    for (int bits : {24, 32})
        for (int t : {0, 40, 100}) {
            Surface window = Window(16, 8, bits);
            VtGraphics* s = window.get();
            // Black with a fourth byte, which is not colour; the image is black
            // where masked, as the raster-operation path needs.
            Image mask = HalvedImage(s, ZEDARGBA(0, 0, 0, 255), ZEDARGB(255, 255, 255));
            Image image = HalvedImage(s, kInk, ZEDARGB(0, 0, 0));
            EXPECT_TRUE(VtEspecialFill::TransparentBitbltMask(s, image.get(), mask.get(), 4, 0, 8, 8, t));
            const unsigned int shown = t == 0 ? Rgb(kInk) : t == 100 ? paper : Blended(kInk, paper, t);
            EXPECT_EQ(ColoursAt(s, {{6, 3}, {9, 3}, {12, 3}}), (Colours{shown, paper, paper})) << bits << ' ' << t;
            EXPECT_TRUE(bits == 24 || (ZEDAALPHAVAL(s->GetTargetImage()->GetPixelColour(6, 3)) == 0) == (t == 40));
        }
}

TEST_F(TransparentBlit, KeyColourOpacityAndUnshiftedRowsOnBothDrawStrategies)
{
    const unsigned int half = Blended(kInk, kPaper, 50);
    // Image-backed, key, opacity; then what shows where the image has the key, and where it has ink. Through
    // raster operations a key no pixel has draws all and 0 nothing; pixel by pixel, blue is compared with red
    // and 0 draws opaque.
    const std::tuple<bool, unsigned int, int, unsigned int, unsigned int> cases[] = {
        {false, kKey, 100, kPaper, kInk},       {false, kKey, 250, kPaper, kInk}, {false, kKey, -1, kPaper, kInk},
        {false, kKey, 50, kPaper, half},        {false, kKey, 0, kPaper, kPaper}, {false, kSwappedKey, 100, kKey, kInk},
        {true, kSwappedKey, 100, kPaper, kInk}, {true, kKey, 100, kKey, kInk},    {true, kSwappedKey, -3, kPaper, kInk},
        {true, kSwappedKey, 0, kPaper, kInk},   {true, kSwappedKey, 50, kPaper, half},
        {true, kSwappedKey, 25, kPaper, Blended(kInk, kPaper, 75)}};
    for (int bits : {24, 32})
        for (const auto& [imageBacked, key, opacity, keyed, inked] : cases) {
            SCOPED_TRACE(testing::Message() << bits << " bits, " << imageBacked << ' ' << key << ' ' << opacity);
            Image target;
            Surface surface = PaperSurface(imageBacked, bits, target);
            Image image = HalvedImage(surface.get(), kKey, kInk);
            VtEspecialFill::TransparentDraw(surface.get(), image.get(), 4, 0, key, opacity);
            EXPECT_EQ(ColoursAt(surface.get(), {{2, 3}, {5, 3}, {10, 3}, {13, 3}}),
                      (Colours{Rgb(kPaper), Rgb(keyed), Rgb(inked), Rgb(kPaper)}));
            EXPECT_TRUE(bits == 24 || !imageBacked || ZEDAALPHAVAL(target->GetPixelColour(10, 3)) == 0);
        }
    Image target;
    Surface surface = PaperSurface(true, 32, target);
    Image image = ImageFor(surface.get(), 4, 4, kInk);
    image->SetPixelColour(0, 1, ZEDARGB(9, 9, 9));
    // Rows are not shifted by x = -2: row 1 of the image starts at the end of
    // row 0 of the surface, and row 0, before the first pixel, is skipped.
    VtEspecialFill::TransparentDraw(surface.get(), image.get(), -2, 0, ZEDARGB(1, 1, 1), 100);
    EXPECT_EQ(ColoursAt(surface.get(), {{14, 0}, {15, 0}, {14, 1}, {0, 0}, {0, 1}}),
              (Colours{Rgb(ZEDARGB(9, 9, 9)), Rgb(kInk), Rgb(kInk), Rgb(kPaper), Rgb(kPaper)}));
}

// A fill blends like a blit of an image of its colour, beyond 100 % is
// invisible and below 0 % opaque. Rows are longer than a blend pattern.
TEST_F(TransparentShape, RectangleBlendsEveryPixelExactlyWithRedHighAt16Bits)
{
    for (int bits : {32, 24})
        for (int t : {0, 40, 50, 100, 1, 99, -20, 300}) {
            Surface surface = Window(64, 30, bits);
            Scramble(surface->GetTargetImage(), 8);
            const Image ink = ImageFor(surface.get(), 41, 10, kInk);
            const Bytes expected = ExpectedBlit(surface.get(), ink.get(), 5, 4, 41, 10, t);
            EXPECT_TRUE(VtEspecialFill::TransparentRectangle(surface.get(), ZedaRect(5, 4, 46, 14), kInk, t));
            EXPECT_EQ(BytesOf(surface->GetTargetImage()), expected) << bits << " bits, t " << t;
        }
    // At 16 bits, unlike a blit, red goes in the high bits.
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
    VtGraphicsManager::SetCurGraphicsType(VT_SURFACE_IMAGE);
    EXPECT_TRUE(VtEspecialFill::TransparentRectangle(printing.get(), ZedaRect(-10, -10, 200, 200), kInk, 40));
    EXPECT_FALSE(VtEspecialFill::TransparentRectangle(printing.get(), ZedaRect(150, 0, 200, 10), kInk, 40));
    VtGraphicsManager::SetCurGraphicsType(VT_SURFACE_MEMORY);
    EXPECT_EQ(TakeLog(), std::vector<std::string>{"300:EEf002"});
    EXPECT_EQ(ColoursAt(printing.get(), {{0, 0}, {99, 49}}), Colours(2, Blended(kInk, kPaper, 40)));
}

TEST_F(TransparentShape, PrintedPagesAreTiledAt4000Pixels)
{
    // 254 dots per inch: one logical tenth of a millimetre is one pixel.
    Surface page(VtGraphicsManager::CreatePrintGraphics(4600, 3100, 254));
    page->GetTargetImage()->Fill(kWhite);
    const unsigned int grey = Rgb(ZEDARGB(127, 127, 127)), white = Rgb(kWhite);
    const auto fill = [&](ZedaRect r) { EXPECT_TRUE(VtEspecialFill::TransparentRectangle(page.get(), r, 0, 50)); };
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
