#include <algorithm>

#include "FillTestSupport.h"

using namespace FillTest;

namespace {

class TransparentBlit : public FillTestBase {};

// The surface bytes after blitting cols x rows of `image` to (x, y) at
// transparency t: copied at 0 and below, blended with the fourth byte of
// 32-bit pixels forced to 0 in between, untouched at 100 and above.
std::vector<unsigned char> ExpectedBlit(VtGraphics* surface, const VtImage* image, int x, int y, int cols, int rows,
                                        int t)
{
    std::vector<unsigned char> expected = BytesOf(surface->GetTargetImage());
    const int bits = image->GetBitsPerPixel(), bytes = bits / 8;
    const int stride = surface->GetTargetImage()->GetRowBytes();
    const bool littleEndian = reinterpret_cast<const unsigned char*>(&ZEDA::un_bigendina)[0] == 1;
    for (int r = 0; r < rows && t < 100; ++r)
        for (int c = 0; c < cols; ++c) {
            const std::vector<unsigned char> s = PixelBytes(image, c, r);
            unsigned char* d = expected.data() + (y + r) * stride + (x + c) * bytes;
            if (t <= 0) {
                std::copy(s.begin(), s.end(), d);
            } else if (bits == 16) {
                const unsigned sv = s[0] | (s[1] << 8), dv = d[0] | (d[1] << 8);
                const auto field = [&](unsigned a, unsigned b) { return a * (100 - t) / 100 + b * t / 100; };
                const unsigned v = (field(sv >> 11, dv >> 11) << 11) | (field((sv >> 5) & 63, (dv >> 5) & 63) << 5) |
                                   field(sv & 31, dv & 31);
                d[0] = static_cast<unsigned char>(v);
                d[1] = static_cast<unsigned char>(v >> 8);
            } else {
                for (int b = 0; b < bytes; ++b)
                    d[b] = Blend(s[b], d[b], t);
                if (bits == 32)
                    d[littleEndian ? 3 : 0] = 0;
            }
        }
    return expected;
}

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
    Surface surface = Window(16, 16, 32);
    Image indexed(VtGraphicsManager::NewImage(0));
    const VTC::VtPalette palette({ZEDARGB(200, 100, 50)});
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
    const struct {
        double scale;
        int x, y, width, height;  // logical
        int left, top, cols, rows;  // what is blended, in device pixels
    } cases[] = {
        {1, 3, 4, 25, 20, 3, 4, 10, 8},   // larger: the image's own pixels only
        {1, 20, 20, 4, 3, 20, 20, 4, 3},  // smaller: that part of the image only
        {2, 5, 6, 5, 4, 10, 12, 10, 8},
    };
    for (const auto& c : cases) {
        surface->SetScale(c.scale);
        const auto expected = ExpectedBlit(surface.get(), image.get(), c.left, c.top, c.cols, c.rows, 40);
        EXPECT_TRUE(VtEspecialFill::TransparentBitblt(surface.get(), image.get(), c.x, c.y, c.width, c.height, 40));
        EXPECT_EQ(BytesOf(surface->GetTargetImage()), expected) << c.x << ',' << c.y;
    }
}
