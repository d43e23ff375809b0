#include "FillTestSupport.h"

using namespace FillTest;
using VTC::VtGraphicsManager;

namespace {

class TransparentShape : public FillTestBase {};

constexpr unsigned int kPaper = ZEDARGB(100, 50, 10);
constexpr unsigned int kInk = ZEDARGB(20, 140, 250);

unsigned int Blended(unsigned int colour, unsigned int under, int t)
{
    return Rgb(ZEDARGB(Blend(ZEDAREDVAL(colour), ZEDAREDVAL(under), t),
                       Blend(ZEDAGREENVAL(colour), ZEDAGREENVAL(under), t),
                       Blend(ZEDABLUEVAL(colour), ZEDABLUEVAL(under), t)));
}

Surface PaperWindow(int width, int height, int bits = 32)
{
    Surface surface = Window(width, height, bits);
    surface->GetTargetImage()->Fill(kPaper);
    return surface;
}

}  // namespace

TEST_F(TransparentShape, RectangleBlendsEveryPixelExactly)
{
    for (int bits : {32, 24}) {
        for (int t : {40, 50, 1, 99}) {
            Surface surface = Window(40, 30, bits);
            Scramble(surface->GetTargetImage(), 8);
            const std::vector<unsigned char> before = BytesOf(surface->GetTargetImage());
            EXPECT_TRUE(VtEspecialFill::TransparentRectangle(surface.get(), ZedaRect(5, 4, 25, 14), kInk, t));
            const VtImage* target = surface->GetTargetImage();
            const int stride = target->GetRowBytes(), bytes = bits / 8;
            const unsigned char ink[3] = {ZEDABLUEVAL(kInk), ZEDAGREENVAL(kInk), ZEDAREDVAL(kInk)};
            for (int y = 0; y < 30; ++y) {
                for (int x = 0; x < 40; ++x) {
                    const bool inside = x >= 5 && x < 25 && y >= 4 && y < 14;
                    const std::vector<unsigned char> got = PixelBytes(target, x, y);
                    for (int b = 0; b < bytes; ++b) {
                        const unsigned char old = before[static_cast<std::size_t>(y * stride + x * bytes + b)];
                        const unsigned char expected = !inside ? old : b == 3 ? 0 : Blend(ink[b], old, t);
                        ASSERT_EQ(got[static_cast<std::size_t>(b)], expected)
                            << bits << " bits, t " << t << " at " << x << ',' << y << " byte " << b;
                    }
                }
            }
        }
    }
    // White over black at 50 % gives 127.5, truncated.
    Surface black = Window(8, 8, 24);
    black->GetTargetImage()->Fill(ZEDARGB(0, 0, 0));
    EXPECT_TRUE(VtEspecialFill::TransparentRectangle(black.get(), ZedaRect(0, 0, 8, 8), ZEDARGB(255, 255, 255), 50));
    EXPECT_EQ(PixelAt(black.get(), 3, 3), Rgb(ZEDARGB(127, 127, 127)));
    EXPECT_TRUE(RendererLog().empty());
}

TEST_F(TransparentShape, SixteenBitFillPutsRedHigh)
{
    Surface surface = Window(8, 8, 16);
    surface->GetTargetImage()->Fill(ZEDARGB(0, 0, 0));
    EXPECT_TRUE(VtEspecialFill::TransparentRectangle(surface.get(), ZedaRect(0, 0, 4, 4), ZEDARGB(255, 0, 0), 50));
    const std::vector<unsigned char> pixel = PixelBytes(surface->GetTargetImage(), 1, 1);
    EXPECT_EQ(pixel[0] | (pixel[1] << 8), 15 << 11);
    // Small channels reduce to 0: 7 of red, 3 of green.
    surface->GetTargetImage()->Fill(ZEDARGB(0, 0, 0));
    EXPECT_TRUE(VtEspecialFill::TransparentRectangle(surface.get(), ZedaRect(0, 0, 4, 4), ZEDARGB(7, 3, 255), 1));
    const std::vector<unsigned char> low = PixelBytes(surface->GetTargetImage(), 1, 1);
    EXPECT_EQ(low[0] | (low[1] << 8), 31 * 99 / 100);
}

TEST_F(TransparentShape, OpaqueAndInvisibleEnds)
{
    Surface surface = PaperWindow(20, 20);
    SelectionProbe probe(surface.get());
    const std::vector<unsigned char> before = BytesOf(surface->GetTargetImage());
    EXPECT_TRUE(VtEspecialFill::TransparentRectangle(surface.get(), ZedaRect(2, 2, 10, 10), kInk, 100));
    EXPECT_TRUE(VtEspecialFill::TransparentRectangle(surface.get(), ZedaRect(2, 2, 10, 10), kInk, 300));
    EXPECT_EQ(BytesOf(surface->GetTargetImage()), before);
    for (int t : {0, -20}) {
        EXPECT_TRUE(VtEspecialFill::TransparentRectangle(surface.get(), ZedaRect(2, 2, 10, 10), kInk, t));
        EXPECT_EQ(PixelAt(surface.get(), 2, 2), Rgb(kInk));
        EXPECT_EQ(PixelAt(surface.get(), 9, 9), Rgb(kInk));
        EXPECT_EQ(PixelAt(surface.get(), 10, 10), Rgb(kPaper));
        EXPECT_EQ(PixelAt(surface.get(), 1, 5), Rgb(kPaper));
    }
    EXPECT_TRUE(probe.Unchanged());
    EXPECT_TRUE(RendererLog().empty());
}

TEST_F(TransparentShape, LogicalUnitsAndTheSurfaceStateComeBack)
{
    Surface surface = PaperWindow(60, 60);
    surface->SetScale(2.0);
    surface->SetOrigin(ZedaPoint(10, 6));
    const SurfaceState state = StateOf(surface.get());
    EXPECT_TRUE(VtEspecialFill::TransparentRectangle(surface.get(), ZedaRect(0, 0, 5, 5), kInk, 40));
    EXPECT_EQ(StateOf(surface.get()), state);
    EXPECT_EQ(PixelAt(surface.get(), 10, 6), Blended(kInk, kPaper, 40));
    EXPECT_EQ(PixelAt(surface.get(), 19, 15), Blended(kInk, kPaper, 40));
    EXPECT_EQ(PixelAt(surface.get(), 20, 16), Rgb(kPaper));
    EXPECT_EQ(PixelAt(surface.get(), 9, 5), Rgb(kPaper));
    // A rectangle given the wrong way round is normalised.
    EXPECT_TRUE(VtEspecialFill::TransparentRectangle(surface.get(), ZedaRect(20, 20, 15, 15), kInk, 40));
    EXPECT_EQ(PixelAt(surface.get(), 45, 45), Blended(kInk, kPaper, 40));
}

TEST_F(TransparentShape, ScreenClipAndRefusals)
{
    VTC::VtToolkit::SetScreenSize(1024, 1024);
    Surface surface = PaperWindow(1100, 20);
    // Beyond the screen's 1024 pixels nothing is read or written.
    EXPECT_TRUE(VtEspecialFill::TransparentRectangle(surface.get(), ZedaRect(1000, 0, 1100, 10), kInk, 40));
    EXPECT_EQ(PixelAt(surface.get(), 1023, 5), Blended(kInk, kPaper, 40));
    EXPECT_EQ(PixelAt(surface.get(), 1024, 5), Rgb(kPaper));
    EXPECT_TRUE(RendererLog().empty());

    EXPECT_FALSE(VtEspecialFill::TransparentRectangle(surface.get(), ZedaRect(1030, 0, 1090, 10), kInk, 40));
    EXPECT_FALSE(VtEspecialFill::TransparentRectangle(surface.get(), ZedaRect(-50, 0, -10, 10), kInk, 40));
    EXPECT_EQ(RendererLog(), (std::vector<std::string>{"300:EEf002", "300:EEf002"}));

    ClearLog();
    Surface vector(VtGraphicsManager::CreateVectorGraphics(::testing::TempDir() + "fill.svg", VTC::VT_VECTOR_SVG,
                                                           50, 50, false));
    const ZedaPoint triangle[] = {{0, 0}, {40, 0}, {0, 40}};
    const int counts[] = {3};
    EXPECT_FALSE(VtEspecialFill::TransparentRectangle(vector.get(), ZedaRect(0, 0, 10, 10), kInk, 40));
    EXPECT_FALSE(VtEspecialFill::TransparentPolygon(vector.get(), triangle, 3, kInk, 40));
    EXPECT_FALSE(VtEspecialFill::TransparentPolyPolygon(vector.get(), triangle, counts, 1, kInk, 40));
    EXPECT_TRUE(RendererLog().empty());
}

TEST_F(TransparentShape, RectangleFailuresRestoreEverything)
{
    Surface surface = PaperWindow(30, 30);
    surface->SetOrigin(ZedaPoint(3, 2));
    const SurfaceState state = StateOf(surface.get());
    SelectionProbe probe(surface.get());
    const std::vector<unsigned char> before = BytesOf(surface->GetTargetImage());
    const struct {
        VTC::VtFaultKind fault;
        int skip;
        int transparency;
        std::vector<std::string> log;
    } cases[] = {
        {VTC::VT_FAULT_NEW_BRUSH, 0, 0, {"300:EGe001"}},
        {VTC::VT_FAULT_NEW_GRAPHICS, 0, 40, {"300:EGd002"}},
        {VTC::VT_FAULT_COMPATIBLE_GRAPHICS, 0, 40, {"300:EGd002"}},
        {VTC::VT_FAULT_NEW_GRAPHICS, 1, 40, {"300:EGd003"}},
        {VTC::VT_FAULT_COMPATIBLE_GRAPHICS, 1, 40, {"300:EGd003"}},
        {VTC::VT_FAULT_NEW_IMAGE, 0, 40, {"300:EGd007", "300:EGd004"}},
        {VTC::VT_FAULT_COMPATIBLE_IMAGE, 0, 40, {"300:EGd007", "300:EGd004"}},
        {VTC::VT_FAULT_NEW_IMAGE, 1, 40, {"300:EGd006"}},
        {VTC::VT_FAULT_COMPATIBLE_IMAGE, 1, 40, {"300:EGd006"}},
    };
    for (const auto& c : cases) {
        ClearLog();
        VtGraphicsManager::InjectFault(c.fault, c.skip);
        EXPECT_FALSE(VtEspecialFill::TransparentRectangle(surface.get(), ZedaRect(1, 1, 9, 9), kInk, c.transparency));
        VtGraphicsManager::ClearFaults();
        EXPECT_EQ(RendererLog(), c.log) << c.fault << '/' << c.skip;
        EXPECT_EQ(BytesOf(surface->GetTargetImage()), before);
        EXPECT_EQ(StateOf(surface.get()), state);
    }
    EXPECT_TRUE(probe.Unchanged());
}

TEST_F(TransparentShape, PrintedPagesAreTiledAt4000Pixels)
{
    // 254 dots per inch: one logical tenth of a millimetre is one pixel.
    Surface page(VtGraphicsManager::CreatePrintGraphics(4600, 3100, 254));
    ASSERT_EQ(page->GetDeviceSize(), ZedaSize(4600, 3100));
    page->GetTargetImage()->Fill(ZEDARGB(255, 255, 255));
    const ZedaRect rect(0, 0, 4500, 3000);
    // Two full tiles, a right strip, two bottom tiles and a corner: six
    // fills of two memory graphics each.
    EXPECT_TRUE(MakesExactlyGraphics(12, [&] {
        EXPECT_TRUE(VtEspecialFill::TransparentRectangle(page.get(), rect, ZEDARGB(0, 0, 0), 50));
    }));
    EXPECT_TRUE(RendererLog().empty());
    // Each pixel blended once: tiles neither overlap nor leave gaps.
    for (int x : {0, 1999, 2000, 3999, 4000, 4499})
        for (int y : {0, 1999, 2000, 2999})
            EXPECT_EQ(PixelAt(page.get(), x, y), Rgb(ZEDARGB(127, 127, 127))) << x << ',' << y;
    EXPECT_EQ(PixelAt(page.get(), 4500, 100), Rgb(ZEDARGB(255, 255, 255)));
    // The page stores red first: the fill swaps red and blue to match.
    EXPECT_TRUE(VtEspecialFill::TransparentRectangle(page.get(), ZedaRect(4510, 0, 4590, 50), kInk, 40));
    EXPECT_EQ(PixelAt(page.get(), 4550, 20), Blended(kInk, ZEDARGB(255, 255, 255), 40));
    EXPECT_EQ(PixelAt(page.get(), 100, 3000), Rgb(ZEDARGB(255, 255, 255)));

    // 3999 pixels go in one piece, 4000 in tiles (two bottom-strip tiles here).
    EXPECT_TRUE(MakesExactlyGraphics(2, [&] {
        EXPECT_TRUE(VtEspecialFill::TransparentRectangle(page.get(), ZedaRect(0, 3010, 3999, 3020), 0, 50));
    }));
    EXPECT_TRUE(MakesExactlyGraphics(4, [&] {
        EXPECT_TRUE(VtEspecialFill::TransparentRectangle(page.get(), ZedaRect(0, 3030, 4000, 3040), 0, 50));
    }));
    EXPECT_EQ(PixelAt(page.get(), 3998, 3015), Rgb(ZEDARGB(127, 127, 127)));
    EXPECT_EQ(PixelAt(page.get(), 3999, 3015), Rgb(ZEDARGB(255, 255, 255)));
    EXPECT_EQ(PixelAt(page.get(), 3999, 3035), Rgb(ZEDARGB(127, 127, 127)));
    // A failing tile does not stop the others, nor the result.
    VtGraphicsManager::InjectFault(VTC::VT_FAULT_NEW_GRAPHICS, 2);
    EXPECT_TRUE(VtEspecialFill::TransparentRectangle(page.get(), ZedaRect(0, 3050, 4000, 3060), 0, 50));
    EXPECT_EQ(RendererLog(), std::vector<std::string>{"300:EGd002"});
    EXPECT_EQ(PixelAt(page.get(), 100, 3055), Rgb(ZEDARGB(127, 127, 127)));
    EXPECT_EQ(PixelAt(page.get(), 2100, 3055), Rgb(ZEDARGB(255, 255, 255)));
}

TEST_F(TransparentShape, PrintingImageSurfacesClipToTheirImage)
{
    Surface reference = Window(1, 1, 24);
    Image target = ImageFor(reference.get(), 100, 50, kPaper);
    Surface surface(VtGraphicsManager::CreateImageGraphics(target.get()));
    surface->SetPrinting(true);
    VtGraphicsManager::SetCurGraphicsType(9);
    EXPECT_TRUE(VtEspecialFill::TransparentRectangle(surface.get(), ZedaRect(-10, -10, 200, 200), kInk, 40));
    EXPECT_FALSE(VtEspecialFill::TransparentRectangle(surface.get(), ZedaRect(150, 0, 200, 10), kInk, 40));
    VtGraphicsManager::SetCurGraphicsType(2);
    EXPECT_EQ(RendererLog(), std::vector<std::string>{"300:EEf002"});
    EXPECT_EQ(Rgb(target->GetPixelColour(0, 0)), Blended(kInk, kPaper, 40));
    EXPECT_EQ(Rgb(target->GetPixelColour(99, 49)), Blended(kInk, kPaper, 40));
}

TEST_F(TransparentShape, PolygonsBlendOnlyInside)
{
    Surface surface = PaperWindow(60, 60);
    surface->SetOrigin(ZedaPoint(2, 2));
    VTC::VtRgn* clip = VtGraphicsManager::NewRgn(0);
    clip->CreateRectRegion(0, 0, 50, 60);
    surface->SelectClipRegion(clip, VTC::VT_CLIP_REPLACE);
    delete clip;
    const SurfaceState state = StateOf(surface.get());

    const ZedaPoint triangle[] = {{0, 0}, {40, 0}, {0, 40}};
    EXPECT_TRUE(VtEspecialFill::TransparentPolygon(surface.get(), triangle, 3, kInk, 40));
    EXPECT_EQ(StateOf(surface.get()), state);
    EXPECT_EQ(PixelAt(surface.get(), 5, 5), Blended(kInk, kPaper, 40));
    EXPECT_EQ(PixelAt(surface.get(), 38, 38), Rgb(kPaper));  // in the bounds, outside the triangle

    const ZedaPoint squares[] = {{0, 45}, {10, 45}, {10, 55}, {0, 55}, {30, 45}, {40, 45}, {40, 55}, {30, 55}};
    const int counts[] = {4, 4};
    EXPECT_TRUE(VtEspecialFill::TransparentPolyPolygon(surface.get(), squares, counts, 2, kInk, 40));
    EXPECT_EQ(StateOf(surface.get()), state);
    EXPECT_EQ(PixelAt(surface.get(), 5, 50), Blended(kInk, kPaper, 40));
    EXPECT_EQ(PixelAt(surface.get(), 35, 50), Blended(kInk, kPaper, 40));
    EXPECT_EQ(PixelAt(surface.get(), 20, 50), Rgb(kPaper));
    // The caller's clip still limits the fill.
    const ZedaPoint wide[] = {{40, 0}, {58, 0}, {58, 10}, {40, 10}};
    EXPECT_TRUE(VtEspecialFill::TransparentPolygon(surface.get(), wide, 4, kInk, 40));
    EXPECT_EQ(PixelAt(surface.get(), 49, 5), Blended(kInk, kPaper, 40));
    EXPECT_EQ(PixelAt(surface.get(), 50, 5), Rgb(kPaper));
    EXPECT_TRUE(RendererLog().empty());
}

TEST_F(TransparentShape, PolygonFailureCodes)
{
    Surface surface = PaperWindow(30, 30);
    const SurfaceState state = StateOf(surface.get());
    const std::vector<unsigned char> before = BytesOf(surface->GetTargetImage());
    const ZedaPoint triangle[] = {{0, 0}, {20, 0}, {0, 20}};
    const ZedaPoint offScreen[] = {{3000, 0}, {3100, 0}, {3000, 100}};
    const int counts[] = {3};
    const auto polygon = [&](const ZedaPoint* points) {
        return VtEspecialFill::TransparentPolygon(surface.get(), points, 3, kInk, 40);
    };
    const auto polyPolygon = [&](const ZedaPoint* points) {
        return VtEspecialFill::TransparentPolyPolygon(surface.get(), points, counts, 1, kInk, 40);
    };
    const struct {
        VTC::VtFaultKind fault;
        int skip;
        const ZedaPoint* points;
        std::string polygonCode, polyPolygonCode;
    } cases[] = {
        {VTC::VT_FAULT_NEW_RGN, 0, triangle, "300:EEf006", "300:EFd009"},
        {VTC::VT_FAULT_CREATE_REGION, 0, triangle, "300:EFd009", "300:EFd009"},
        {VTC::VT_FAULT_NEW_RGN, 1, triangle, "300:EFd009", "300:EFd009"},
        {VTC::VT_FAULT_KIND_COUNT, 0, offScreen, "300:EEf005", "300:EEf005"},
    };
    for (const auto& c : cases) {
        for (bool poly : {false, true}) {
            ClearLog();
            if (c.fault != VTC::VT_FAULT_KIND_COUNT)
                VtGraphicsManager::InjectFault(c.fault, c.skip);
            EXPECT_FALSE(poly ? polyPolygon(c.points) : polygon(c.points));
            VtGraphicsManager::ClearFaults();
            EXPECT_EQ(RendererLog(), std::vector<std::string>{poly ? c.polyPolygonCode : c.polygonCode})
                << c.fault << '/' << c.skip << (poly ? " poly" : "");
        }
    }
    EXPECT_EQ(BytesOf(surface->GetTargetImage()), before);
    EXPECT_EQ(StateOf(surface.get()), state);
}
