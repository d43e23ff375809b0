#include "FillTestSupport.h"

using namespace FillTest;

namespace {

class TransparentBlit : public FillTestBase {};

constexpr unsigned int kKey = ZEDARGB(255, 0, 128);
constexpr unsigned int kSwappedKey = ZEDARGB(128, 0, 255);

// An 8 x 8 image whose left half is `left` and whose right half is `right`.
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
    for (int bits : {24, 32})
        for (int t : {0, 40, 100}) {
            Surface surface = Window(16, 8, bits);
            // Black with a fourth byte, which is not colour; the image is black
            // where masked, as the raster-operation path needs.
            Image mask = HalvedImage(surface.get(), ZEDARGBA(0, 0, 0, 255), ZEDARGB(255, 255, 255));
            Image image = HalvedImage(surface.get(), kInk, ZEDARGB(0, 0, 0));
            EXPECT_TRUE(VtEspecialFill::TransparentBitbltMask(surface.get(), image.get(), mask.get(), 4, 0, 8, 8, t));
            const unsigned int paper = Rgb(kPaper), shown = t == 0 ? Rgb(kInk) : t == 100 ? paper : Blended(kInk, kPaper, t);
            EXPECT_EQ(ColoursAt(surface.get(), {{3, 3}, {6, 3}, {9, 3}, {12, 3}}), (Colours{paper, shown, paper, paper}))
                << bits << " bits, t " << t;
            EXPECT_TRUE(bits == 24 || (ZEDAALPHAVAL(surface->GetTargetImage()->GetPixelColour(6, 3)) == 0) == (t == 40));
        }
}

TEST_F(TransparentBlit, KeyColourAndOpacityOnBothDrawStrategies)
{
    const unsigned int half = Blended(kInk, kPaper, 50);
    const struct {
        bool imageBacked;
        unsigned int key;
        int opacity;
        unsigned int keyed, inked;  // what shows where the image has the key, and its ink
    } cases[] = {
        {false, kKey, 100, kPaper, kInk},      {false, kKey, 250, kPaper, kInk}, {false, kKey, -1, kPaper, kInk},
        {false, kKey, 50, kPaper, half},       {false, kKey, 0, kPaper, kPaper},
        {false, kSwappedKey, 100, kKey, kInk},   // no pixel has that key: all drawn
        {true, kSwappedKey, 100, kPaper, kInk},  // pixel by pixel, blue is compared with red
        {true, kKey, 100, kKey, kInk},         {true, kSwappedKey, -3, kPaper, kInk},
        {true, kSwappedKey, 0, kPaper, kInk},  // 0 draws opaque on this strategy
        {true, kSwappedKey, 50, kPaper, half}, {true, kSwappedKey, 25, kPaper, Blended(kInk, kPaper, 75)},
    };
    for (int bits : {24, 32})
        for (const auto& c : cases) {
            SCOPED_TRACE(::testing::Message() << bits << " bits, " << c.imageBacked << ' ' << c.key << ' ' << c.opacity);
            Image target;
            Surface surface = PaperSurface(c.imageBacked, bits, target);
            Image image = HalvedImage(surface.get(), kKey, kInk);
            VtEspecialFill::TransparentDraw(surface.get(), image.get(), 4, 0, c.key, c.opacity);
            EXPECT_EQ(ColoursAt(surface.get(), {{2, 3}, {5, 3}, {10, 3}, {13, 3}}),
                      (Colours{Rgb(kPaper), Rgb(c.keyed), Rgb(c.inked), Rgb(kPaper)}));
            EXPECT_TRUE(bits == 24 || !c.imageBacked || ZEDAALPHAVAL(surface->GetTargetImage()->GetPixelColour(10, 3)) == 0);
        }
}

TEST_F(TransparentBlit, PixelStrategyDoesNotShiftNegativeStarts)
{
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
