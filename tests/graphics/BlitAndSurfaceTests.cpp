#include <numbers>

#include "GraphicsTestSupport.h"

namespace VTC::test {
namespace {

TEST(BlitTest, RasterOperationsAreBitwiseOnRawPixelsAndFormatsConvert)
{
    const unsigned int target = 0xCC00FF33u, source = 0xAA0F0F55u;
    for (const auto& [rop, expected] : {std::pair{VT_ROP_COPY, source}, {VT_ROP_AND, source & target},
                                        {VT_ROP_OR, source | target}, {VT_ROP_XOR, source ^ target}}) {
        auto destination = MakeImage(3, 2, 32, target);
        auto graphics = GraphicsOn(destination.get());
        auto sourceImage = MakeImage(2, 2, 32, source);
        EXPECT_TRUE(graphics->BitBlt(1, 1, 2, 1, MemoryOn(graphics.get(), sourceImage.get()).get(), 0, 0, rop));
        EXPECT_EQ(ColoursOf(*destination), (std::vector{target, target, target, target, expected, expected})) << rop;
    }

    // Colour into a mask gives 1 where the colour is the source's background colour.
    const unsigned int colours[] = {ZEDARGBA(10, 20, 30, 0), ZEDARGB(10, 20, 30), ZEDARGB(10, 20, 31), kWhite};
    auto picture = PaintedImage(4, 1, 32, [&](int x, int) { return colours[x]; });
    auto pictureGraphics = GraphicsOn(picture.get());
    EXPECT_EQ(pictureGraphics->SetBackgroundColour(ZEDARGB(10, 20, 30)), kWhite);
    auto mask = MakeImage(4, 1, 1);
    auto maskGraphics = GraphicsOn(mask.get());
    ASSERT_TRUE(maskGraphics->BitBlt(0, 0, 4, 1, pictureGraphics.get(), 0, 0, VT_ROP_COPY));
    EXPECT_EQ(mask->GetBitsPointer()[0], 0b11000000);
    // 1 bits give white, 0 bits black.
    auto colour = MakeImage(4, 1, 24, ZEDARGB(1, 2, 3));
    ASSERT_TRUE(GraphicsOn(colour.get())->BitBlt(0, 0, 4, 1, maskGraphics.get(), 0, 0, VT_ROP_COPY));
    EXPECT_EQ(ColoursOf(*colour), (std::vector{kWhite, kWhite, kBlack, kBlack}));
    // 5-6-5 into red-first 24 bits, channel by channel.
    Owned<VtGraphics> printer(Manager::CreatePrintGraphics(10, 10, 254));
    Owned<VtImage> paper(Manager::NewImage(0));
    ASSERT_TRUE(paper->CreateCompatibleImage(printer.get(), 1, 1));
    auto rgb565 = MakeImage(1, 1, 16, ZEDARGB(248, 4, 16));
    ASSERT_TRUE(GraphicsOn(paper.get())->BitBlt(0, 0, 1, 1, GraphicsOn(rgb565.get()).get(), 0, 0, VT_ROP_COPY));
    EXPECT_EQ(std::vector<int>(paper->GetBitsPointer(), paper->GetBitsPointer() + 3), (std::vector{255, 4, 16}));

    TakeLog();
    EXPECT_FALSE(maskGraphics->BitBlt(0, 0, 1, 1, maskGraphics.get(), 0, 0, 0x123456));
    EXPECT_FALSE(maskGraphics->BitBlt(0, 0, 1, 1, nullptr, 0, 0, VT_ROP_COPY));
    EXPECT_EQ(TakeLog(), (std::vector<std::string>{"300 GGr005", "300 GGr005"}));
}

TEST(BlitTest, CopiesLandExactlyAtEveryDepthEvenWithinOneImage)
{
    const auto pattern = [](int x, int y) { return ZEDARGB(x * 19, y * 23, (x ^ y) * 15); };
    for (int bpp : {1, 8, 16, 24, 32}) {
        // Target (3, -1) takes source (1, 2): shifted by (2, -3), cut by both images and the clip.
        auto source = PaintedImage(13, 11, bpp, pattern);
        auto target = MakeImage(17, 9, bpp, ZEDARGB(40, 80, 120));
        const unsigned int background = target->GetPixelColour(0, 0);
        auto graphics = GraphicsOn(target.get());
        graphics->SelectClipRegion(MakeRegion(ZedaRect(0, 0, 14, 20)).get(), VT_CLIP_REPLACE);
        ASSERT_TRUE(graphics->BitBlt(3, -1, 30, 30, GraphicsOn(source.get()).get(), 1, 2, VT_ROP_COPY));
        EXPECT_EQ(ColoursOf(*target), Grid(17, 9, [&](int x, int y) {
                      return ZedaRect(3, 0, 14, 8).PtInRect({x, y}) ? source->GetPixelColour(x - 2, y + 3) : background;
                  })) << bpp;
        // Within one image, rows are read before they are overwritten.
        for (const ZedaPoint shift : {ZedaPoint(1, 0), ZedaPoint(-1, 0), ZedaPoint(0, 1), ZedaPoint(3, -2)}) {
            auto image = PaintedImage(12, 10, bpp, pattern);
            auto self = GraphicsOn(image.get());
            ASSERT_TRUE(self->BitBlt(2 + shift.x, 2 + shift.y, 6, 5, self.get(), 2, 2, VT_ROP_COPY));
            EXPECT_EQ(ColoursOf(*image), Grid(12, 10, [&](int x, int y) {
                          const bool moved = ZedaRect(2, 2, 8, 7).PtInRect({x - shift.x, y - shift.y});
                          return source->GetPixelColour(moved ? x - shift.x : x, moved ? y - shift.y : y);
                      })) << bpp << " bits moved by " << shift.x << ',' << shift.y;
        }
    }
}

TEST(BlitTest, ImageDataIsPlacedFromEitherEdgeWithoutMirroringAndMayBeRedFirst)
{
    auto target = MakeImage(4, 4, 24, kWhite);
    auto graphics = GraphicsOn(target.get());
    unsigned char rows[2][4] = {{200, 100, 50, 0}, {50, 100, 200, 0}};
    VtImageInfo info{1, 2, 4, 1, 24, 0, 0, kWhite, {}, rows[0]};  // 1 x 2 pixels of 24 bits, 4 bytes a row
    ASSERT_TRUE(graphics->DrawImageData(1, 3, 1, -2, 0, 0, 1, 2, info));  // top-down rows, placed from below
    info.reserved1 = 1;  // red first
    ASSERT_TRUE(graphics->DrawImageData(2, 0, 1, 2, 0, 0, 1, 2, info));
    const unsigned int first = ZEDARGB(50, 100, 200), second = ZEDARGB(200, 100, 50);
    EXPECT_EQ(ColoursAt(*target, {{1, 1}, {1, 2}, {2, 0}, {2, 1}}), (std::vector{first, second, second, first}));
}

TEST(SurfaceTest, PrinterPagesAndVectorDocumentsAreWrittenWellFormed)
{
    TempDir dir;
    Owned<VtGraphics> printer(Manager::CreatePrintGraphics(500, 300, 127));
    FillRect(*printer, {100, 100, 200, 200}, kRed);  // 10 mm square from 1 cm in
    EXPECT_EQ(ColourBounds(*printer->GetTargetImage(), kRed), ZedaRect(50, 50, 100, 100));
    ASSERT_TRUE(printer->SavePng(dir / "page.png"));
    EXPECT_EQ(ReadFileText(dir / "page.png").substr(0, 24),
              std::string("\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR\0\0\0\xfa\0\0\0\x96", 24));  // 250 x 150
    ASSERT_TRUE(printer->SavePdf(dir / "page.pdf"));
    const std::string pdf = ReadFileText(dir / "page.pdf");
    EXPECT_EQ(pdf.substr(0, 5), "%PDF-");
    EXPECT_NE(pdf.find("/MediaBox [ 0 0 141.732283 85.03937 ]"), std::string::npos);  // 50 x 30 mm
    EXPECT_NE(pdf.find("%%EOF"), std::string::npos);

    // A vector document is written when destroyed; blits paint what they can.
    auto picture = MakeImage(4, 4, 32, kBlue);
    {
        Owned<VtGraphics> svg(Manager::CreateVectorGraphics(dir / "doc.svg", VT_VECTOR_SVG, 40, 30, false));
        FillRect(*svg, {5, 5, 20, 20}, kRed);
        auto memory = MemoryOn(svg.get(), picture.get());
        EXPECT_TRUE(svg->BitBlt(25, 5, 4, 4, memory.get(), 0, 0, VT_ROP_COPY));
        TakeLog();
        EXPECT_FALSE(svg->BitBlt(25, 5, 4, 4, memory.get(), 0, 0, VT_ROP_XOR));
        EXPECT_FALSE(printer->SavePdf(dir / "no-such-folder/page.pdf"));
        EXPECT_FALSE(GraphicsOn(picture.get())->SavePdf(dir / "raster.pdf"));
        EXPECT_EQ(TakeLog(), (std::vector<std::string>{"300 GGr011", "300 GGr010", "300 GGr013"}));
        ASSERT_TRUE(svg->SavePdf(dir / "copy.pdf"));
    }
    const std::string svg = ReadFileText(dir / "doc.svg");
    EXPECT_NE(svg.find("<svg"), std::string::npos);
    EXPECT_NE(svg.find("rgb(100%,0%,0%)"), std::string::npos);
    EXPECT_NE(svg.find("</svg>"), std::string::npos);
    EXPECT_NE(ReadFileText(dir / "copy.pdf").find("%%EOF"), std::string::npos);
}

TEST(SurfaceTest, RecordingReplaysOntoAnySurfaceAndReadsBackByReplaying)
{
    Owned<VtGraphics> recording(Manager::CreateRecordingGraphics(20, 20, 24));
    FillRect(*recording, {2, 2, 10, 10}, kRed);
    recording->SelectClipRegion(MakeRegion(ZedaRect(12, 0, 20, 20)).get(), VT_CLIP_REPLACE);
    FillRect(*recording, {8, 12, 18, 18}, kBlue);  // clipped to x >= 12
    recording->SelectClipRegion(nullptr, VT_CLIP_REPLACE);
    auto picture = MakeImage(2, 2, 32, kGreen);
    ASSERT_TRUE(recording->BitBlt(0, 18, 2, 2, MemoryOn(recording.get(), picture.get()).get(), 0, 0, VT_ROP_COPY));

    // Reading back plays the commands onto white paper.
    Owned<VtImage> copy(Manager::NewImage(0));
    ASSERT_TRUE(copy->CreateCompatibleImage(recording.get(), 20, 20));
    ASSERT_TRUE(MemoryOn(recording.get(), copy.get())->BitBlt(0, 0, 20, 20, recording.get(), 0, 0, VT_ROP_COPY));
    EXPECT_EQ(ColourBounds(*copy, kRed), ZedaRect(2, 2, 10, 10));
    EXPECT_EQ(ColourBounds(*copy, kBlue), ZedaRect(12, 12, 18, 18));
    EXPECT_EQ(ColourBounds(*copy, kGreen), ZedaRect(0, 18, 2, 20));
    FillRect(*recording, {0, 0, 1, 1}, kBlack);  // shows up in the next read
    EXPECT_EQ(ColourBounds(*recording->GetTargetImage(), kBlack), ZedaRect(0, 0, 1, 1));

    Owned<VtGraphics> window(Manager::CreateWindowGraphics(20, 20, 16));
    window->SelectClipRegion(MakeRegion(ZedaRect(0, 0, 20, 5)).get(), VT_CLIP_REPLACE);
    ASSERT_TRUE(recording->Replay(window.get()));
    EXPECT_EQ(ColourBounds(*window->GetTargetImage(), kRed), ZedaRect(2, 2, 10, 5));
    EXPECT_EQ(ColourBounds(*window->GetTargetImage(), kBlue), ZedaRect());
    EXPECT_FALSE(window->Replay(recording.get()));
}

TEST(SurfaceTest, NativeGradientsCoverTheClipBoundsPixelByPixel)
{
    Owned<VtGraphics> surface(Manager::CreateNativeGradientGraphics(60, 40, 32));
    const VtImage& pixels = *surface->GetTargetImage();
    const auto red = [&](int x, int y) { return int{ZEDAREDVAL(pixels.GetPixelColour(x, y))}; };
    surface->SelectClipRegion(MakeRegion({{10, 10}, {50, 10}, {10, 30}}).get(), VT_CLIP_REPLACE);
    ASSERT_TRUE(surface->DrawLinearGradient(kBlack, kWhite, 0, 0, 0.0));
    // Only inside the clip; darker to the left, constant down a column.
    EXPECT_EQ(pixels.GetPixelColour(45, 25), kWhite);
    EXPECT_TRUE(red(10, 10) < 20 && red(10, 10) < red(25, 10) && red(25, 10) < red(45, 10) && red(45, 10) > 220);
    EXPECT_EQ(pixels.GetPixelColour(25, 10), pixels.GetPixelColour(25, 18));
    // Radial: colour1 at the centre, moved a quarter of the width right, colour2 at the far corner.
    surface->SelectClipRegion(nullptr, VT_CLIP_REPLACE);
    ASSERT_TRUE(surface->DrawRadialGradient(kRed, kBlack, 25, 0, 0.0));
    EXPECT_EQ(pixels.GetPixelColour(45, 19), pixels.GetPixelColour(45, 20));
    EXPECT_TRUE(red(45, 20) > 245 && red(0, 0) < 20 && red(59, 39) > red(0, 39));

    // Square: an image of the clip's bounds grown by a pixel, centred on the corner of pixel (21, 11).
    surface->SelectClipRegion(MakeRegion(ZedaRect(10, 10, 50, 30)).get(), VT_CLIP_REPLACE);
    Owned<VtImage> square(surface->CreateSquareGradientImage(kBlack, kWhite, 0, 0, 0.0));
    Owned<VtImage> turned(surface->CreateSquareGradientImage(kBlack, kWhite, 0, 0, std::numbers::pi / 4));
    ASSERT_TRUE(square && turned);
    EXPECT_EQ(ZedaSize(square->GetWidth(), square->GetHeight()), ZedaSize(42, 22));
    // Equal colours along a square ring, the centre darkest; turned, no longer.
    const unsigned int ring = square->GetPixelColour(16, 6);
    EXPECT_EQ(ColoursAt(*square, {{16, 15}, {25, 6}, {18, 6}}), (std::vector{ring, ring, ring}));
    EXPECT_LT(ZEDAREDVAL(square->GetPixelColour(20, 10)), ZEDAREDVAL(ring));
    EXPECT_NE(turned->GetPixelColour(16, 6), turned->GetPixelColour(18, 6));

    EXPECT_FALSE(GraphicsOn(square.get())->DrawLinearGradient(kBlack, kWhite, 0, 0, 0.0));
    EXPECT_EQ(GraphicsOn(square.get())->CreateSquareGradientImage(kBlack, kWhite, 0, 0, 0.0), nullptr);
}

}  // namespace
}  // namespace VTC::test
