#include <algorithm>

#include "FillTestSupport.h"

using namespace FillTest;

namespace {

class TransparentBlit : public FillTestBase {};

constexpr unsigned int kKey = ZEDARGB(255, 0, 128);
constexpr unsigned int kSwappedKey = ZEDARGB(128, 0, 255);

// The surface bytes after blitting cols x rows of `image` to (x, y) at
// transparency t: copied at 0 and below, blended with the fourth byte of
// 32-bit pixels forced to 0 in between, untouched at 100 and above.
std::vector<unsigned char> ExpectedBlit(VtGraphics* surface, const VtImage* image, int x, int y, int cols, int rows,
                                        int t)
{
    std::vector<unsigned char> expected = BytesOf(surface->GetTargetImage());
    const int bits = image->GetBitsPerPixel(), bytes = bits / 8, stride = surface->GetTargetImage()->GetRowBytes();
    const bool littleEndian = reinterpret_cast<const unsigned char*>(&un_bigendina)[0] == 1;
    const auto field = [&](unsigned a, unsigned b) { return a * (100 - t) / 100 + b * t / 100; };
    for (int r = 0; r < rows && t < 100; ++r)
        for (int c = 0; c < cols; ++c) {
            const std::vector<unsigned char> s = PixelBytes(image, c, r);
            unsigned char* d = expected.data() + (y + r) * stride + (x + c) * bytes;
            if (t <= 0) {
                std::copy(s.begin(), s.end(), d);
            } else if (bits == 16) {
                const unsigned sv = s[0] | (s[1] << 8), dv = d[0] | (d[1] << 8);
                const unsigned v = (field(sv >> 11, dv >> 11) << 11) | (field((sv >> 5) & 63, (dv >> 5) & 63) << 5) |
                                   field(sv & 31, dv & 31);
                d[0] = static_cast<unsigned char>(v), d[1] = static_cast<unsigned char>(v >> 8);
            } else {
                for (int b = 0; b < bytes; ++b)
                    d[b] = Blend(s[b], d[b], t);
                if (bits == 32)
                    d[littleEndian ? 3 : 0] = 0;
            }
        }
    return expected;
}

// An 8 x 8 image whose left half is `left` and whose right half is `right`.
Image HalvedImage(VtGraphics* surface, unsigned int left, unsigned int right)
{
    Image image = ImageFor(surface, 8, 8, right);
    for (int i = 0; i < 32; ++i)
        image->SetPixelColour(i % 4, i / 4, left);
    return image;
}

// A 16 x 8 surface of kPaper: a window, drawn on through raster operations,
// or an image-backed surface (kind 9), drawn on pixel by pixel.
struct PaperSurface {
    Image target;
    Surface surface;
    PaperSurface(bool imageBacked, int bits) : surface(Window(16, 8, bits))
    {
        if (imageBacked) {
            target = ImageFor(surface.get(), 16, 8, kPaper);
            surface.reset(VtGraphicsManager::CreateImageGraphics(target.get()));
        }
    }
    unsigned int At(int x, int y) const { return surface->GetTargetImage()->GetPixelColour(x, y); }
};

}  // namespace

TEST_F(TransparentBlit, BlendsExactlyAtEveryDepthAndTransparency)
{
    for (int bits : {32, 24, 16})
        for (int t : {0, 40, 50, 100, 1, 99, -7, 101}) {
            Surface surface = Window(64, 48, bits);
            Scramble(surface->GetTargetImage(), 3);
            Image image = ImageFor(surface.get(), 20, 10, 0);
            Scramble(image.get(), 7);
            const std::vector<unsigned char> expected = ExpectedBlit(surface.get(), image.get(), 5, 7, 20, 10, t);
            EXPECT_TRUE(VtEspecialFill::TransparentBitblt(surface.get(), image.get(), 5, 7, 20, 10, t));
            EXPECT_EQ(BytesOf(surface->GetTargetImage()), expected) << bits << " bits, t " << t;
        }
    // Indexed images are copied without blending.
    Surface surface = Window(16, 16);
    Image indexed(VtGraphicsManager::NewImage(0));
    const VtPalette palette({ZEDARGB(200, 100, 50)});
    ASSERT_TRUE(indexed->CreateImage(4, 4, 1, 8, &palette, nullptr));
    EXPECT_TRUE(VtEspecialFill::TransparentBitblt(surface.get(), indexed.get(), 1, 1, 4, 4, 40));
    EXPECT_EQ(PixelAt(surface.get(), 2, 2), Rgb(ZEDARGB(200, 100, 50)));
    EXPECT_TRUE(RendererLog().empty());
}

TEST_F(TransparentBlit, ExtentsLargerAndSmallerThanTheImageInLogicalUnits)
{
    Surface surface = Window(40, 40, 24);
    Scramble(surface->GetTargetImage(), 5);
    Image image = ImageFor(surface.get(), 10, 8, 0);
    Scramble(image.get(), 9);
    // Logical scale, position and extent; then the device pixels blended.
    const int cases[][9] = {{1, 3, 4, 25, 20, 3, 4, 10, 8}, {1, 20, 20, 4, 3, 20, 20, 4, 3}, {2, 5, 6, 5, 4, 10, 12, 10, 8}};
    for (const auto& c : cases) {
        surface->SetScale(c[0]);
        const auto expected = ExpectedBlit(surface.get(), image.get(), c[5], c[6], c[7], c[8], 40);
        EXPECT_TRUE(VtEspecialFill::TransparentBitblt(surface.get(), image.get(), c[1], c[2], c[3], c[4], 40));
        EXPECT_EQ(BytesOf(surface->GetTargetImage()), expected) << c[1] << ',' << c[2];
    }
}

TEST_F(TransparentBlit, MaskedBlitBlendsOnlyUnderBlack)
{
    for (int bits : {24, 32})
        for (int t : {0, 40, 100}) {
            PaperSurface p(false, bits);
            // Black with a fourth byte, which is not colour; the image is black
            // where masked, as the raster-operation path needs.
            Image mask = HalvedImage(p.surface.get(), ZEDARGBA(0, 0, 0, 255), ZEDARGB(255, 255, 255));
            Image image = HalvedImage(p.surface.get(), kInk, ZEDARGB(0, 0, 0));
            EXPECT_TRUE(VtEspecialFill::TransparentBitbltMask(p.surface.get(), image.get(), mask.get(), 4, 0, 8, 8, t));
            const unsigned int shown = p.At(6, 3);
            EXPECT_EQ(Rgb(shown), t == 0 ? Rgb(kInk) : t == 100 ? Rgb(kPaper) : Blended(kInk, kPaper, t)) << bits << t;
            if (bits == 32) {
                EXPECT_EQ(ZEDAALPHAVAL(shown) == 0, t == 40) << t;
            }
            for (int x : {3, 9, 12})
                EXPECT_EQ(Rgb(p.At(x, 3)), Rgb(kPaper)) << bits << ' ' << t << ' ' << x;
        }
    EXPECT_TRUE(RendererLog().empty());
}

TEST_F(TransparentBlit, KeyColourAndOpacityOnBothDrawStrategies)
{
    const unsigned int paper = Rgb(kPaper), ink = Rgb(kInk), key = Rgb(kKey);
    const struct {
        bool imageBacked;
        unsigned int key;
        int opacity;
        unsigned int keyed, inked;  // what shows where the image has the key, and its ink
    } cases[] = {
        {false, kKey, 100, paper, ink}, {false, kKey, 250, paper, ink}, {false, kKey, -1, paper, ink},
        {false, kKey, 50, paper, Blended(kInk, kPaper, 50)},
        {false, kKey, 0, paper, paper},
        {false, kSwappedKey, 100, key, ink},   // no pixel has that key: all drawn
        {true, kSwappedKey, 100, paper, ink},  // pixel by pixel, blue is compared with red
        {true, kKey, 100, key, ink},
        {true, kSwappedKey, 0, paper, ink},  // 0 and below draw opaque on this strategy
        {true, kSwappedKey, -3, paper, ink},
        {true, kSwappedKey, 50, paper, Blended(kInk, kPaper, 50)},
        {true, kSwappedKey, 25, paper, Blended(kInk, kPaper, 75)},
    };
    for (int bits : {24, 32})
        for (const auto& c : cases) {
            SCOPED_TRACE(::testing::Message() << bits << " bits, " << c.imageBacked << ' ' << c.key << ' ' << c.opacity);
            PaperSurface p(c.imageBacked, bits);
            ASSERT_EQ(p.surface->GetSurfaceKind(), c.imageBacked ? VT_SURFACE_IMAGE : VT_SURFACE_WINDOW);
            Image image = HalvedImage(p.surface.get(), kKey, kInk);
            VtEspecialFill::TransparentDraw(p.surface.get(), image.get(), 4, 0, c.key, c.opacity);
            EXPECT_EQ((std::vector{Rgb(p.At(2, 3)), Rgb(p.At(5, 3)), Rgb(p.At(10, 3)), Rgb(p.At(13, 3))}),
                      (std::vector{paper, c.keyed, c.inked, paper}));
            EXPECT_TRUE(bits == 24 || !c.imageBacked || ZEDAALPHAVAL(p.At(10, 3)) == 0);
        }
    EXPECT_TRUE(RendererLog().empty());
}

TEST_F(TransparentBlit, PixelStrategyDoesNotShiftNegativeStarts)
{
    PaperSurface p(true, 32);
    Image image = ImageFor(p.surface.get(), 4, 4, kInk);
    image->SetPixelColour(0, 1, ZEDARGB(9, 9, 9));
    // Rows are not shifted by x = -2: row 1 of the image starts at the end of
    // row 0 of the surface, and row 0, before the first pixel, is skipped.
    VtEspecialFill::TransparentDraw(p.surface.get(), image.get(), -2, 0, ZEDARGB(1, 1, 1), 100);
    EXPECT_EQ((std::vector{Rgb(p.At(14, 0)), Rgb(p.At(15, 0)), Rgb(p.At(14, 1)), Rgb(p.At(0, 0)), Rgb(p.At(0, 1))}),
              (std::vector{Rgb(ZEDARGB(9, 9, 9)), Rgb(kInk), Rgb(kInk), Rgb(kPaper), Rgb(kPaper)}));
    // Wholly outside: nothing drawn.
    const std::vector<unsigned char> before = BytesOf(p.target.get());
    VtEspecialFill::TransparentDraw(p.surface.get(), image.get(), 0, 9, ZEDARGB(1, 1, 1), 100);
    VtEspecialFill::TransparentDraw(p.surface.get(), image.get(), -9, 0, ZEDARGB(1, 1, 1), 100);
    EXPECT_EQ(BytesOf(p.target.get()), before);
}
