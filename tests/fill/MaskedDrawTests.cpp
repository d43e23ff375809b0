#include "FillTestSupport.h"

using namespace FillTest;

namespace {

class MaskedDraw : public FillTestBase {};

constexpr unsigned int kKey = ZEDARGB(255, 0, 128);
constexpr unsigned int kSwappedKey = ZEDARGB(128, 0, 255);
constexpr unsigned int kInk = ZEDARGB(20, 140, 200);
constexpr unsigned int kPaper = ZEDARGB(100, 50, 10);

// A 16 x 8 surface of kPaper: a window, drawn on through raster operations,
// or an image-backed surface (kind 9), drawn on pixel by pixel.
struct PaperSurface {
    Image target;
    Surface surface;

    PaperSurface(bool imageBacked, int bits)
    {
        Surface window = Window(16, 8, bits);
        if (imageBacked) {
            target = ImageFor(window.get(), 16, 8, kPaper);
            surface.reset(VtGraphicsManager::CreateImageGraphics(target.get()));
        } else {
            window->GetTargetImage()->Fill(kPaper);
            surface = std::move(window);
        }
    }
    unsigned int At(int x, int y) const { return surface->GetTargetImage()->GetPixelColour(x, y); }
};

// An 8 x 8 image whose left half is `left` and whose right half is `right`.
Image HalvedImage(VtGraphics* surface, unsigned int left, unsigned int right)
{
    Image image = ImageFor(surface, 8, 8, right);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 4; ++x)
            image->SetPixelColour(x, y, left);
    return image;
}

}  // namespace

TEST_F(MaskedDraw, MaskedBlitBlendsOnlyUnderBlack)
{
    for (int bits : {24, 32})
        for (int t : {0, 40, 100}) {
            PaperSurface p(false, bits);
            // Black with a full fourth byte, which is not a colour; the image is
            // black where masked, as the raster-operation path needs.
            Image mask = HalvedImage(p.surface.get(), ZEDARGBA(0, 0, 0, 255), ZEDARGB(255, 255, 255));
            Image image = HalvedImage(p.surface.get(), kInk, ZEDARGB(0, 0, 0));
            EXPECT_TRUE(VtEspecialFill::TransparentBitbltMask(p.surface.get(), image.get(), mask.get(), 4, 0, 8, 8, t));
            const unsigned int shown = p.At(6, 3);
            EXPECT_EQ(Rgb(shown), t == 0 ? Rgb(kInk) : t == 100 ? Rgb(kPaper) : Blended(kInk, kPaper, t)) << bits << ' ' << t;
            if (bits == 32 && t == 40) {
                EXPECT_EQ(ZEDAALPHAVAL(shown), 0);
            }
            for (int x : {3, 9, 12})
                EXPECT_EQ(Rgb(p.At(x, 3)), Rgb(kPaper)) << bits << ' ' << t << ' ' << x;
        }
    EXPECT_TRUE(RendererLog().empty());
}

TEST_F(MaskedDraw, KeyColourAndOpacityOnBothStrategies)
{
    const unsigned int paper = Rgb(kPaper), ink = Rgb(kInk), key = Rgb(kKey);
    const struct {
        bool imageBacked;
        unsigned int key;
        int opacity;
        unsigned int keyed, inked;  // what shows where the image has the key, and its ink
    } cases[] = {
        {false, kKey, 100, paper, ink},
        {false, kKey, 250, paper, ink},
        {false, kKey, -1, paper, ink},
        {false, kKey, 50, paper, Blended(kInk, kPaper, 50)},
        {false, kKey, 0, paper, paper},
        {false, kSwappedKey, 100, key, ink},  // no pixel has that key: all drawn
        {true, kSwappedKey, 100, paper, ink},  // pixel by pixel, blue is compared with red
        {true, kKey, 100, key, ink},
        {true, kSwappedKey, 0, paper, ink},  // 0 and below draw opaque on this strategy
        {true, kSwappedKey, -3, paper, ink},
        {true, kSwappedKey, 50, paper, Blended(kInk, kPaper, 50)},
        {true, kSwappedKey, 25, paper, Blended(kInk, kPaper, 75)},
    };
    for (int bits : {24, 32})
        for (const auto& c : cases) {
            PaperSurface p(c.imageBacked, bits);
            ASSERT_EQ(p.surface->GetSurfaceKind(), c.imageBacked ? VTC::VT_SURFACE_IMAGE : VTC::VT_SURFACE_WINDOW);
            Image image = HalvedImage(p.surface.get(), kKey, kInk);
            VtEspecialFill::TransparentDraw(p.surface.get(), image.get(), 4, 0, c.key, c.opacity);
            SCOPED_TRACE(::testing::Message() << bits << " bits, " << c.imageBacked << ' ' << std::hex << c.key
                                              << std::dec << ' ' << c.opacity);
            EXPECT_EQ(Rgb(p.At(5, 3)), c.keyed);
            EXPECT_EQ(Rgb(p.At(10, 3)), c.inked);
            EXPECT_EQ(Rgb(p.At(2, 3)), paper);
            EXPECT_EQ(Rgb(p.At(13, 3)), paper);
            if (bits == 32 && c.imageBacked) {
                EXPECT_EQ(ZEDAALPHAVAL(p.At(10, 3)), 0);
            }
        }
    EXPECT_TRUE(RendererLog().empty());
}

TEST_F(MaskedDraw, PixelStrategyDoesNotShiftNegativeStarts)
{
    PaperSurface p(true, 32);
    Image image = ImageFor(p.surface.get(), 4, 4, kInk);
    image->SetPixelColour(0, 1, ZEDARGB(9, 9, 9));
    // Rows are not shifted by x = -2: row 1 of the image starts at the end of
    // row 0 of the surface, and row 0, before the first pixel, is skipped.
    VtEspecialFill::TransparentDraw(p.surface.get(), image.get(), -2, 0, ZEDARGB(1, 1, 1), 100);
    EXPECT_EQ(Rgb(p.At(14, 0)), Rgb(ZEDARGB(9, 9, 9)));
    EXPECT_EQ(Rgb(p.At(15, 0)), Rgb(kInk));
    EXPECT_EQ(Rgb(p.At(14, 1)), Rgb(kInk));
    EXPECT_EQ(Rgb(p.At(0, 0)), Rgb(kPaper));
    EXPECT_EQ(Rgb(p.At(0, 1)), Rgb(kPaper));
    // Wholly outside: nothing drawn.
    const std::vector<unsigned char> before = BytesOf(p.target.get());
    VtEspecialFill::TransparentDraw(p.surface.get(), image.get(), 0, 9, ZEDARGB(1, 1, 1), 100);
    VtEspecialFill::TransparentDraw(p.surface.get(), image.get(), -9, 0, ZEDARGB(1, 1, 1), 100);
    EXPECT_EQ(BytesOf(p.target.get()), before);
}
