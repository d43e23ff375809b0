#include "FillTestSupport.h"

using namespace FillTest;
using VTC::VtGraphicsManager;

namespace {

class MaskedBlit : public FillTestBase {};
class KeyedDraw : public FillTestBase {};

constexpr unsigned int kKey = ZEDARGB(255, 0, 255);
constexpr unsigned int kInk = ZEDARGB(20, 140, 200);
constexpr unsigned int kPaper = ZEDARGB(100, 50, 10);

// An 8 x 8 image of kInk whose left half is the key colour.
Image KeyedImage(VtGraphics* surface)
{
    Image image = ImageFor(surface, 8, 8, kInk);
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 4; ++x)
            image->SetPixelColour(x, y, kKey);
    return image;
}

unsigned int Blended(unsigned int source, unsigned int target, int t)
{
    return Rgb(ZEDARGB(Blend(ZEDAREDVAL(source), ZEDAREDVAL(target), t),
                       Blend(ZEDAGREENVAL(source), ZEDAGREENVAL(target), t),
                       Blend(ZEDABLUEVAL(source), ZEDABLUEVAL(target), t)));
}

}  // namespace

TEST_F(MaskedBlit, WhiteMaskHidesAndBlackMaskShows)
{
    for (int t : {0, 40}) {
        Surface surface = Window(16, 16, 32);
        Scramble(surface->GetTargetImage(), 4);
        Surface twin = Window(16, 16, 32);
        Scramble(twin->GetTargetImage(), 4);
        const std::vector<unsigned char> before = ColourBytesOf(surface->GetTargetImage());
        // Black where the image shows: the raster-operation path expects it.
        Image image = ImageFor(surface.get(), 8, 8, kInk);
        Image white = ImageFor(surface.get(), 8, 8, ZEDARGB(255, 255, 255));
        Image black = ImageFor(surface.get(), 8, 8, ZEDARGB(0, 0, 0));

        EXPECT_TRUE(VtEspecialFill::TransparentBitbltMask(surface.get(), black.get(), white.get(), 2, 2, 8, 8, t));
        // The raster operations work on raw pixels, alpha included: compare colours.
        EXPECT_EQ(ColourBytesOf(surface->GetTargetImage()), before) << t;

        EXPECT_TRUE(VtEspecialFill::TransparentBitbltMask(surface.get(), image.get(), black.get(), 2, 2, 8, 8, t));
        EXPECT_TRUE(VtEspecialFill::TransparentBitblt(twin.get(), image.get(), 2, 2, 8, 8, t));
        if (t == 0) {
            EXPECT_EQ(PixelAt(surface.get(), 5, 5), Rgb(kInk));
            EXPECT_EQ(PixelAt(twin.get(), 5, 5), Rgb(kInk));
        } else {
            EXPECT_EQ(BytesOf(surface->GetTargetImage()), BytesOf(twin->GetTargetImage())) << t;
        }
    }
}

TEST_F(MaskedBlit, HalfMaskBlendsOnlyUnderBlack)
{
    for (int bits : {24, 32}) {
        Surface surface = Window(16, 16, bits);
        surface->GetTargetImage()->Fill(kPaper);
        Image image = ImageFor(surface.get(), 8, 8, kInk);
        Image mask = ImageFor(surface.get(), 8, 8, ZEDARGB(0, 0, 0));
        for (int y = 0; y < 8; ++y)
            for (int x = 4; x < 8; ++x)
                mask->SetPixelColour(x, y, ZEDARGB(255, 255, 255));
        EXPECT_TRUE(VtEspecialFill::TransparentBitbltMask(surface.get(), image.get(), mask.get(), 0, 0, 8, 8, 30));
        EXPECT_EQ(PixelAt(surface.get(), 1, 1), Blended(kInk, kPaper, 30)) << bits;
        EXPECT_EQ(PixelAt(surface.get(), 6, 6), Rgb(kPaper)) << bits;
        EXPECT_EQ(PixelAt(surface.get(), 9, 9), Rgb(kPaper)) << bits;
    }
}

TEST_F(MaskedBlit, RefusalsAndFailures)
{
    Surface surface = Window(16, 16, 32);
    Scramble(surface->GetTargetImage(), 6);
    const std::vector<unsigned char> before = BytesOf(surface->GetTargetImage());
    Image image = ImageFor(surface.get(), 8, 8, kInk);
    Image mask = ImageFor(surface.get(), 8, 8, ZEDARGB(0, 0, 0));
    Image smaller = ImageFor(surface.get(), 8, 7, ZEDARGB(0, 0, 0));
    Surface shallow = Window(4, 4, 24);
    Image otherDepth = ImageFor(shallow.get(), 8, 8, ZEDARGB(0, 0, 0));

    EXPECT_TRUE(VtEspecialFill::TransparentBitbltMask(surface.get(), image.get(), mask.get(), 0, 0, 8, 8, 100));
    EXPECT_TRUE(RendererLog().empty());
    EXPECT_FALSE(VtEspecialFill::TransparentBitbltMask(surface.get(), image.get(), mask.get(), 0, 0, 0, 8, 40));
    EXPECT_FALSE(VtEspecialFill::TransparentBitbltMask(surface.get(), image.get(), smaller.get(), 0, 0, 8, 8, 40));
    EXPECT_FALSE(VtEspecialFill::TransparentBitbltMask(surface.get(), image.get(), otherDepth.get(), 0, 0, 8, 8, 40));
    VtGraphicsManager::InjectFault(VTC::VT_FAULT_COMPATIBLE_GRAPHICS);
    EXPECT_FALSE(VtEspecialFill::TransparentBitbltMask(surface.get(), image.get(), mask.get(), 0, 0, 8, 8, 40));
    VtGraphicsManager::InjectFault(VTC::VT_FAULT_NEW_IMAGE);
    EXPECT_FALSE(VtEspecialFill::TransparentBitbltMask(surface.get(), image.get(), mask.get(), 0, 0, 8, 8, 40));
    EXPECT_EQ(RendererLog(), (std::vector<std::string>{"300:EEa005", "300:EGc001", "300:EGc001", "300:EGd002",
                                                        "300:EGd007"}));
    EXPECT_EQ(BytesOf(surface->GetTargetImage()), before);
}

TEST_F(KeyedDraw, RasterStrategyKeepsTheSurfaceUnderTheKey)
{
    for (int opacity : {100, 250, -1, 50, 0}) {
        Surface surface = Window(16, 16, 32);
        surface->GetTargetImage()->Fill(kPaper);
        Image image = KeyedImage(surface.get());
        VtEspecialFill::TransparentDraw(surface.get(), image.get(), 4, 4, kKey, opacity);
        const unsigned int keyed = PixelAt(surface.get(), 5, 5);
        const unsigned int inked = PixelAt(surface.get(), 10, 10);
        EXPECT_EQ(keyed, Rgb(kPaper)) << opacity;
        if (opacity == 0)
            EXPECT_EQ(inked, Rgb(kPaper));
        else if (opacity == 50)
            EXPECT_EQ(inked, Blended(kInk, kPaper, 50));
        else
            EXPECT_EQ(inked, Rgb(kInk)) << opacity;
        EXPECT_EQ(PixelAt(surface.get(), 12, 12), Rgb(kPaper));
    }
    // A key colour that no pixel has: the whole image is drawn.
    Surface surface = Window(16, 16, 24);
    surface->GetTargetImage()->Fill(kPaper);
    Image image = KeyedImage(surface.get());
    VtEspecialFill::TransparentDraw(surface.get(), image.get(), 0, 0, ZEDARGB(1, 2, 3), 100);
    EXPECT_EQ(PixelAt(surface.get(), 1, 1), Rgb(kKey));
    EXPECT_EQ(PixelAt(surface.get(), 6, 1), Rgb(kInk));
    EXPECT_TRUE(RendererLog().empty());
}

TEST_F(KeyedDraw, RasterStrategyFailuresAreLoggedAtLevel400)
{
    Surface surface = Window(16, 16, 32);
    surface->GetTargetImage()->Fill(kPaper);
    const std::vector<unsigned char> before = BytesOf(surface->GetTargetImage());
    Image image = KeyedImage(surface.get());
    for (VTC::VtFaultKind fault : {VTC::VT_FAULT_COMPATIBLE_IMAGE, VTC::VT_FAULT_CREATE_IMAGE}) {
        ClearLog();
        VtGraphicsManager::InjectFault(fault);
        VtEspecialFill::TransparentDraw(surface.get(), image.get(), 4, 4, kKey, 100);
        VtGraphicsManager::ClearFaults();
        EXPECT_EQ(RendererLog(), std::vector<std::string>{"400:EGd004"});
        EXPECT_EQ(BytesOf(surface->GetTargetImage()), before);
    }
    for (int skip : {0, 1}) {
        ClearLog();
        VtGraphicsManager::InjectFault(VTC::VT_FAULT_NEW_IMAGE, skip);
        VtEspecialFill::TransparentDraw(surface.get(), image.get(), 4, 4, kKey, 100);
        VtGraphicsManager::ClearFaults();
        EXPECT_EQ(RendererLog(), std::vector<std::string>{"400:EGd004"});
    }
    ClearLog();
    VtGraphicsManager::InjectFault(VTC::VT_FAULT_NEW_GRAPHICS, 2);
    VtEspecialFill::TransparentDraw(surface.get(), image.get(), 4, 4, kKey, 100);
    EXPECT_EQ(RendererLog(), std::vector<std::string>{"400:EGd002"});
    EXPECT_EQ(BytesOf(surface->GetTargetImage()), before);
}

namespace {

// An image-backed surface (kind 9) over a 16 x 8 image of kPaper.
struct PixelSurface {
    Image target;
    Surface surface;

    explicit PixelSurface(int bits)
    {
        Surface reference = Window(1, 1, bits);
        target = ImageFor(reference.get(), 16, 8, kPaper);
        surface.reset(VtGraphicsManager::CreateImageGraphics(target.get()));
    }
};

}  // namespace

TEST_F(KeyedDraw, PixelStrategyOpacities)
{
    for (int opacity : {100, 0, -3, 50, 25}) {
        PixelSurface p(32);
        ASSERT_EQ(p.surface->GetSurfaceKind(), VTC::VT_SURFACE_IMAGE);
        Image image = ImageFor(p.surface.get(), 4, 4, kInk);
        VtEspecialFill::TransparentDraw(p.surface.get(), image.get(), 2, 2, ZEDARGB(1, 1, 1), opacity);
        const unsigned int drawn = p.target->GetPixelColour(3, 3);
        if (opacity == 50 || opacity == 25) {
            const double f = opacity / 100.0, g = (100 - opacity) / 100.0;
            const auto mix = [&](unsigned s, unsigned d) { return static_cast<unsigned char>(s * f + d * g); };
            EXPECT_EQ(Rgb(drawn), Rgb(ZEDARGB(mix(ZEDAREDVAL(kInk), ZEDAREDVAL(kPaper)),
                                              mix(ZEDAGREENVAL(kInk), ZEDAGREENVAL(kPaper)),
                                              mix(ZEDABLUEVAL(kInk), ZEDABLUEVAL(kPaper)))))
                << opacity;
        } else {
            // 0 and below copy the source opaque on this strategy.
            EXPECT_EQ(Rgb(drawn), Rgb(kInk)) << opacity;
        }
        EXPECT_EQ(ZEDAALPHAVAL(drawn), 0) << opacity;
        EXPECT_EQ(p.target->GetPixelColour(7, 7), kPaper);
    }
}

TEST_F(KeyedDraw, PixelStrategyComparesChannelsCrosswise)
{
    // The source's blue, green and red are compared with the key's red, green and blue.
    const unsigned int source = ZEDARGB(10, 20, 30);
    for (const auto& [key, keyed] : {std::pair{ZEDARGB(10, 20, 30), false}, std::pair{ZEDARGB(30, 20, 10), true}}) {
        PixelSurface p(24);
        Image image = ImageFor(p.surface.get(), 4, 4, source);
        VtEspecialFill::TransparentDraw(p.surface.get(), image.get(), 0, 0, key, 100);
        EXPECT_EQ(Rgb(p.target->GetPixelColour(1, 1)), Rgb(keyed ? kPaper : source)) << std::hex << key;
    }
}

TEST_F(KeyedDraw, PixelStrategyDoesNotShiftNegativeStarts)
{
    PixelSurface p(32);
    Image image = ImageFor(p.surface.get(), 4, 4, kInk);
    image->SetPixelColour(0, 1, ZEDARGB(9, 9, 9));
    // x = -2: the rows are not shifted, so row 1 of the image starts two
    // pixels before row 1 of the surface, at the end of row 0.
    VtEspecialFill::TransparentDraw(p.surface.get(), image.get(), -2, 0, ZEDARGB(1, 1, 1), 100);
    EXPECT_EQ(Rgb(p.target->GetPixelColour(14, 0)), Rgb(ZEDARGB(9, 9, 9)));
    EXPECT_EQ(Rgb(p.target->GetPixelColour(15, 0)), Rgb(kInk));
    EXPECT_EQ(Rgb(p.target->GetPixelColour(14, 1)), Rgb(kInk));
    // Row 0 of the image would fall before the surface's first pixel: skipped.
    EXPECT_EQ(Rgb(p.target->GetPixelColour(0, 0)), Rgb(kPaper));
    EXPECT_EQ(Rgb(p.target->GetPixelColour(0, 1)), Rgb(kPaper));
    // Wholly outside: nothing drawn.
    const std::vector<unsigned char> before = BytesOf(p.target.get());
    VtEspecialFill::TransparentDraw(p.surface.get(), image.get(), 0, 9, ZEDARGB(1, 1, 1), 100);
    VtEspecialFill::TransparentDraw(p.surface.get(), image.get(), -9, 0, ZEDARGB(1, 1, 1), 100);
    EXPECT_EQ(BytesOf(p.target.get()), before);
    EXPECT_TRUE(RendererLog().empty());
}
