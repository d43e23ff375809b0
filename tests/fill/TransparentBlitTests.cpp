#include "FillTestSupport.h"

using namespace FillTest;
using VTC::VtGraphicsManager;

namespace {

class TransparentBlit : public FillTestBase {};

// Expected surface bytes after blending `image` at (x, y) over `before`,
// for the area cols x rows, at transparency t.
std::vector<unsigned char> ExpectedBlend(const std::vector<unsigned char>& before, const VtImage* surfaceImage,
                                         const VtImage* image, int x, int y, int cols, int rows, int t)
{
    std::vector<unsigned char> expected = before;
    const int bits = image->GetBitsPerPixel();
    const int bytes = bits / 8;
    const int stride = surfaceImage->GetRowBytes();
    const bool littleEndian = reinterpret_cast<const unsigned char*>(&ZEDA::un_bigendina)[0] == 1;
    for (int r = 0; r < rows; ++r) {
        for (int c = 0; c < cols; ++c) {
            const std::vector<unsigned char> s = PixelBytes(image, c, r);
            unsigned char* d = expected.data() + (y + r) * stride + (x + c) * bytes;
            if (bits == 16) {
                const unsigned sv = s[0] | (s[1] << 8), dv = d[0] | (d[1] << 8);
                const auto field = [&](unsigned a, unsigned b) { return a * (100 - t) / 100 + b * t / 100; };
                const unsigned v = (field(sv >> 11, dv >> 11) << 11) | (field((sv >> 5) & 63, (dv >> 5) & 63) << 5) |
                                   field(sv & 31, dv & 31);
                d[0] = static_cast<unsigned char>(v);
                d[1] = static_cast<unsigned char>(v >> 8);
                continue;
            }
            for (int b = 0; b < bytes; ++b)
                d[b] = Blend(s[b], d[b], t);
            if (bits == 32)
                d[littleEndian ? 3 : 0] = 0;
        }
    }
    return expected;
}

}  // namespace

TEST_F(TransparentBlit, BlendsExactlyAtEveryDepth)
{
    for (int bits : {32, 24, 16}) {
        for (int t : {40, 50, 1, 99}) {
            Surface surface = Window(64, 48, bits);
            Scramble(surface->GetTargetImage(), 3);
            Image image = ImageFor(surface.get(), 20, 10, 0);
            Scramble(image.get(), 7);
            const std::vector<unsigned char> before = BytesOf(surface->GetTargetImage());

            EXPECT_TRUE(VtEspecialFill::TransparentBitblt(surface.get(), image.get(), 5, 7, 20, 10, t));
            EXPECT_EQ(BytesOf(surface->GetTargetImage()),
                      ExpectedBlend(before, surface->GetTargetImage(), image.get(), 5, 7, 20, 10, t))
                << bits << " bits, t " << t;
        }
    }
    EXPECT_TRUE(RendererLog().empty());
}

TEST_F(TransparentBlit, WhiteOverBlackAndTheFourthByte)
{
    Surface surface = Window(8, 8, 24);
    surface->GetTargetImage()->Fill(ZEDARGB(0, 0, 0));
    Image white = ImageFor(surface.get(), 4, 4, ZEDARGB(255, 255, 255));
    EXPECT_TRUE(VtEspecialFill::TransparentBitblt(surface.get(), white.get(), 0, 0, 4, 4, 50));
    EXPECT_EQ(PixelBytes(surface->GetTargetImage(), 1, 1), (std::vector<unsigned char>{127, 127, 127}));
    EXPECT_EQ(PixelBytes(surface->GetTargetImage(), 5, 5), (std::vector<unsigned char>{0, 0, 0}));

    Surface wide = Window(8, 8, 32);
    wide->GetTargetImage()->Fill(ZEDARGBA(1, 1, 1, 255));
    Image source = ImageFor(wide.get(), 4, 4, ZEDARGBA(255, 255, 255, 255));
    EXPECT_TRUE(VtEspecialFill::TransparentBitblt(wide.get(), source.get(), 0, 0, 4, 4, 50));
    EXPECT_EQ(wide->GetTargetImage()->GetPixelColour(2, 2) & 0xFFFFFFu, Rgb(ZEDARGB(128, 128, 128)));
    EXPECT_EQ(ZEDAALPHAVAL(wide->GetTargetImage()->GetPixelColour(2, 2)), 0);
    EXPECT_EQ(ZEDAALPHAVAL(wide->GetTargetImage()->GetPixelColour(6, 6)), 255);
}

TEST_F(TransparentBlit, OpaqueAndInvisibleEnds)
{
    Surface surface = Window(32, 32, 32);
    Scramble(surface->GetTargetImage(), 1);
    Image image = ImageFor(surface.get(), 8, 8, ZEDARGB(10, 20, 30));
    const std::vector<unsigned char> before = BytesOf(surface->GetTargetImage());
    const std::vector<unsigned char> outside = PixelBytes(surface->GetTargetImage(), 10, 10);

    for (int t : {100, 101, 5000}) {
        EXPECT_TRUE(VtEspecialFill::TransparentBitblt(surface.get(), image.get(), 2, 2, 8, 8, t));
        EXPECT_EQ(BytesOf(surface->GetTargetImage()), before);
    }
    // 0 and below copy the image as it is, its fourth byte included.
    EXPECT_TRUE(VtEspecialFill::TransparentBitblt(surface.get(), image.get(), 2, 2, 8, 8, -7));
    EXPECT_EQ(surface->GetTargetImage()->GetPixelColour(2, 2), ZEDARGB(10, 20, 30));
    EXPECT_EQ(surface->GetTargetImage()->GetPixelColour(9, 9), ZEDARGB(10, 20, 30));
    EXPECT_EQ(PixelBytes(surface->GetTargetImage(), 10, 10), outside);
    EXPECT_TRUE(RendererLog().empty());
}

TEST_F(TransparentBlit, IndexedImagesAreCopiedWithoutBlending)
{
    Surface surface = Window(16, 16, 32);
    surface->GetTargetImage()->Fill(ZEDARGB(0, 0, 0));
    Image indexed(VtGraphicsManager::NewImage(0));
    const VTC::VtPalette palette({ZEDARGB(200, 100, 50)});
    ASSERT_TRUE(indexed->CreateImage(4, 4, 1, 8, &palette, nullptr));
    EXPECT_TRUE(VtEspecialFill::TransparentBitblt(surface.get(), indexed.get(), 1, 1, 4, 4, 40));
    EXPECT_EQ(PixelAt(surface.get(), 2, 2), Rgb(ZEDARGB(200, 100, 50)));
}

TEST_F(TransparentBlit, ExtentsLargerAndSmallerThanTheImage)
{
    Surface surface = Window(40, 40, 24);
    Scramble(surface->GetTargetImage(), 5);
    Image image = ImageFor(surface.get(), 10, 8, 0);
    Scramble(image.get(), 9);
    std::vector<unsigned char> before = BytesOf(surface->GetTargetImage());

    // Larger: only the image's own 10 x 8 pixels change.
    EXPECT_TRUE(VtEspecialFill::TransparentBitblt(surface.get(), image.get(), 3, 4, 25, 20, 40));
    EXPECT_EQ(BytesOf(surface->GetTargetImage()),
              ExpectedBlend(before, surface->GetTargetImage(), image.get(), 3, 4, 10, 8, 40));

    // Smaller: only 4 x 3 pixels are blended and copied.
    before = BytesOf(surface->GetTargetImage());
    EXPECT_TRUE(VtEspecialFill::TransparentBitblt(surface.get(), image.get(), 20, 20, 4, 3, 40));
    EXPECT_EQ(BytesOf(surface->GetTargetImage()),
              ExpectedBlend(before, surface->GetTargetImage(), image.get(), 20, 20, 4, 3, 40));

    // Logical units: at scale 2 an extent of 5 x 4 covers the whole image.
    surface->SetScale(2.0);
    before = BytesOf(surface->GetTargetImage());
    EXPECT_TRUE(VtEspecialFill::TransparentBitblt(surface.get(), image.get(), 5, 6, 5, 4, 50));
    EXPECT_EQ(BytesOf(surface->GetTargetImage()),
              ExpectedBlend(before, surface->GetTargetImage(), image.get(), 10, 12, 10, 8, 50));
}

TEST_F(TransparentBlit, FailuresAreLoggedAndLeaveTheSurfaceAlone)
{
    Surface surface = Window(32, 32, 32);
    Scramble(surface->GetTargetImage(), 2);
    Image image = ImageFor(surface.get(), 8, 8, ZEDARGB(1, 2, 3));
    const std::vector<unsigned char> before = BytesOf(surface->GetTargetImage());
    const SurfaceState state = StateOf(surface.get());

    const struct {
        VTC::VtFaultKind fault;
        int width;
        std::vector<std::string> log;
    } cases[] = {
        {VTC::VT_FAULT_KIND_COUNT, 0, {"300:EEa005"}},
        {VTC::VT_FAULT_NEW_GRAPHICS, 8, {"300:EGd003"}},
        {VTC::VT_FAULT_COMPATIBLE_GRAPHICS, 8, {"300:EGd003"}},
        {VTC::VT_FAULT_NEW_IMAGE, 8, {"300:EGd004", "300:EGc037"}},
        {VTC::VT_FAULT_COMPATIBLE_IMAGE, 8, {"300:EGd004", "300:EGc037"}},
    };
    for (const auto& c : cases) {
        ClearLog();
        if (c.fault != VTC::VT_FAULT_KIND_COUNT)
            VtGraphicsManager::InjectFault(c.fault);
        EXPECT_FALSE(VtEspecialFill::TransparentBitblt(surface.get(), image.get(), 4, 4, c.width, 8, 40));
        VtGraphicsManager::ClearFaults();
        EXPECT_EQ(RendererLog(), c.log);
        EXPECT_EQ(BytesOf(surface->GetTargetImage()), before);
        EXPECT_EQ(StateOf(surface.get()), state);
    }
    ClearLog();
    EXPECT_FALSE(VtEspecialFill::TransparentBitblt(surface.get(), image.get(), 4, 4, 8, 0, 40));
    EXPECT_EQ(RendererLog(), std::vector<std::string>{"300:EEa005"});
}
