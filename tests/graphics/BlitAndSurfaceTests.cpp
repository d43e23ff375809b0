#include <numbers>

#include "GraphicsTestSupport.h"

namespace VTC::test {
namespace {

std::vector<int> BytesOf(const VtImage& image, int count)
{
    return std::vector<int>(image.GetBitsPointer(), image.GetBitsPointer() + count);
}

TEST(BlitTest, RasterOperationsAreBitwiseOnRawPixels)
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
    // The same on a 1-bit mask.
    auto mask = MakeImage(8, 1, 1);
    mask->GetBitsPointer()[0] = 0b11001100;
    auto bits = MakeImage(8, 1, 1);
    bits->GetBitsPointer()[0] = 0b10101010;
    auto maskGraphics = GraphicsOn(mask.get());
    ASSERT_TRUE(maskGraphics->BitBlt(0, 0, 8, 1, GraphicsOn(bits.get()).get(), 0, 0, VT_ROP_XOR));
    EXPECT_EQ(mask->GetBitsPointer()[0], 0b01100110);
    TakeLoggedCodes();
    EXPECT_FALSE(maskGraphics->BitBlt(0, 0, 8, 1, maskGraphics.get(), 0, 0, 0x123456));
    EXPECT_FALSE(maskGraphics->BitBlt(0, 0, 8, 1, nullptr, 0, 0, VT_ROP_COPY));
    EXPECT_EQ(TakeLoggedCodes(), (std::vector<std::string>{"GGr005", "GGr005"}));
}

TEST(BlitTest, ColourIntoMonoMarksTheBackgroundColourAndOtherFormatsConvertPerChannel)
{
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

    // 5-6-5 into red-first 24 bits into 32 bits.
    auto source = MakeImage(1, 1, 16, ZEDARGB(248, 4, 16));
    Owned<VtGraphics> printer(VtGraphicsManager::CreatePrintGraphics(10, 10, 254));
    Owned<VtImage> paper(VtGraphicsManager::NewImage(0));
    ASSERT_TRUE(paper->CreateCompatibleImage(printer.get(), 1, 1));
    auto paperGraphics = GraphicsOn(paper.get());
    ASSERT_TRUE(paperGraphics->BitBlt(0, 0, 1, 1, GraphicsOn(source.get()).get(), 0, 0, VT_ROP_COPY));
    EXPECT_EQ(BytesOf(*paper, 3), (std::vector{255, 4, 16}));
    auto wide = MakeImage(1, 1, 32);
    ASSERT_TRUE(GraphicsOn(wide.get())->BitBlt(0, 0, 1, 1, paperGraphics.get(), 0, 0, VT_ROP_COPY));
    EXPECT_EQ(wide->GetPixelColour(0, 0), ZEDARGB(255, 4, 16));
}

TEST(BlitTest, CopiesLandExactlyAtEveryDepthCutByBothImagesAndTheClip)
{
    for (int bpp : {1, 8, 16, 24, 32}) {
        auto source = PaintedImage(13, 11, bpp, [](int x, int y) { return ZEDARGB(x * 19, y * 23, (x ^ y) * 15); });
        auto target = MakeImage(17, 9, bpp, ZEDARGB(40, 80, 120));
        const std::vector<unsigned int> before = ColoursOf(*target);
        // Target (3, -1) takes source (1, 2): shifted by (2, -3), cut by both images and the clip.
        auto graphics = GraphicsOn(target.get());
        auto clip = MakeRegion(ZedaRect(0, 0, 14, 20));
        graphics->SelectClipRegion(clip.get(), VT_CLIP_REPLACE);
        ASSERT_TRUE(graphics->BitBlt(3, -1, 30, 30, GraphicsOn(source.get()).get(), 1, 2, VT_ROP_COPY));
        EXPECT_EQ(ColoursOf(*target), Grid(17, 9, [&](int x, int y) {
                      return ZedaRect(3, 0, 14, 8).PtInRect({x, y}) ? source->GetPixelColour(x - 2, y + 3)
                                                                   : before[static_cast<std::size_t>(y * 17 + x)];
                  })) << bpp;
    }
    // Each end maps its own logical coordinates.
    Owned<VtGraphics> window(VtGraphicsManager::CreateWindowGraphics(10, 10, 32));
    auto source = MakeImage(4, 4, 32);
    source->SetPixelColour(3, 3, kRed);
    auto memory = MemoryOn(window.get(), source.get());
    window->SetScale(2.0);
    memory->SetOrigin({-3, -3});
    ASSERT_TRUE(window->BitBlt(1, 1, 1, 1, memory.get(), 6, 6, VT_ROP_COPY));
    EXPECT_EQ(ColourBounds(*window->GetTargetImage(), kRed), ZedaRect(2, 2, 3, 3));
    EXPECT_EQ(CountColour(*window->GetTargetImage(), kWhite), 99);
}

TEST(BlitTest, OverlappingCopiesWithinOneImageReadTheOldPixels)
{
    for (const ZedaPoint shift : {ZedaPoint(1, 0), ZedaPoint(-1, 0), ZedaPoint(0, 1), ZedaPoint(3, -2)}) {
        auto image = PaintedImage(12, 10, 24, [](int x, int y) { return ZEDARGB(x * 20, y * 25, 7); });
        const std::vector<unsigned int> before = ColoursOf(*image);
        auto graphics = GraphicsOn(image.get());
        ASSERT_TRUE(graphics->BitBlt(2 + shift.x, 2 + shift.y, 6, 5, graphics.get(), 2, 2, VT_ROP_COPY));
        EXPECT_EQ(ColoursOf(*image), Grid(12, 10, [&](int x, int y) {
                      const bool moved = ZedaRect(2, 2, 8, 7).PtInRect({x - shift.x, y - shift.y});
                      return before[static_cast<std::size_t>(moved ? (y - shift.y) * 12 + x - shift.x : y * 12 + x)];
                  })) << shift.x << ',' << shift.y;
    }
}

TEST(BlitTest, ImageDataIsPlacedFromEitherEdgeWithoutMirroring)
{
    auto target = MakeImage(4, 4, 24, kWhite);
    auto graphics = GraphicsOn(target.get());
    unsigned int rows[2][2] = {{kRed, kRed}, {kBlue, kBlue}};
    VtImageInfo info;
    info.width = info.height = 2;
    info.rowBytes = 8;
    info.bitsPerPixel = 32;
    info.bits = reinterpret_cast<unsigned char*>(rows);
    ASSERT_TRUE(graphics->DrawImageData(1, 3, 2, -2, 0, 0, 2, 2, info));
    EXPECT_EQ(ColourBounds(*target, kRed), ZedaRect(1, 1, 3, 2));
    EXPECT_EQ(ColourBounds(*target, kBlue), ZedaRect(1, 2, 3, 3));
    ASSERT_TRUE(graphics->DrawImageData(0, 0, 4, 4, 0, 0, 2, 2, info));  // nearest neighbour, twice as large
    EXPECT_EQ(ColourBounds(*target, kBlue), ZedaRect(0, 2, 4, 4));

    unsigned char rgb[4] = {200, 100, 50, 0};
    info.width = info.height = 1;
    info.bitsPerPixel = 24;
    info.reserved1 = 1;  // red first
    info.bits = rgb;
    ASSERT_TRUE(graphics->DrawImageData(3, 3, 1, 1, 0, 0, 1, 1, info));
    EXPECT_EQ(target->GetPixelColour(3, 3), ZEDARGB(200, 100, 50));
    info.bits = nullptr;
    EXPECT_FALSE(graphics->DrawImageData(3, 3, 1, 1, 0, 0, 1, 1, info));
}

TEST(SurfaceTest, PrinterPageCountsTenthsOfAMillimetreAndWritesPngAndPdf)
{
    TempDir dir;
    Owned<VtGraphics> printer(VtGraphicsManager::CreatePrintGraphics(500, 300, 127));
    EXPECT_EQ(printer->GetDeviceSize(), ZedaSize(250, 150));
    FillRect(*printer, {100, 100, 200, 200}, kRed);  // 10 mm square from 1 cm in
    EXPECT_EQ(ColourBounds(*printer->GetTargetImage(), kRed), ZedaRect(50, 50, 100, 100));

    ASSERT_TRUE(printer->SavePng(dir / "page.png"));
    const std::string png = ReadFileBytes(dir / "page.png");
    EXPECT_EQ(png.substr(0, 16), std::string("\x89PNG\r\n\x1a\n\0\0\0\x0dIHDR", 16));
    EXPECT_EQ(png.substr(16, 8), std::string("\0\0\0\xfa\0\0\0\x96", 8));  // 250 x 150
    ASSERT_TRUE(printer->SavePdf(dir / "page.pdf"));
    const std::string pdf = ReadFileBytes(dir / "page.pdf");
    EXPECT_EQ(pdf.substr(0, 5), "%PDF-");
    EXPECT_NE(pdf.find("/MediaBox [ 0 0 141.732283 85.03937 ]"), std::string::npos);  // 50 x 30 mm
    EXPECT_NE(pdf.find("%%EOF"), std::string::npos);
    TakeLoggedCodes();
    EXPECT_FALSE(printer->SavePdf(dir / "no-such-folder/page.pdf"));
    EXPECT_FALSE(GraphicsOn(printer->GetTargetImage())->SavePdf(dir / "raster.pdf"));
    EXPECT_EQ(TakeLoggedCodes(), (std::vector<std::string>{"GGr010", "GGr013"}));
}

TEST(SurfaceTest, VectorDocumentIsWrittenWhenDestroyedAndBlitsOnlyWhatItCanPaint)
{
    TempDir dir;
    auto picture = MakeImage(4, 4, 32, kBlue);
    {
        Owned<VtGraphics> svg(VtGraphicsManager::CreateVectorGraphics(dir / "doc.svg", VT_VECTOR_SVG, 40, 30, false));
        FillRect(*svg, {5, 5, 20, 20}, kRed);
        auto memory = MemoryOn(svg.get(), picture.get());
        EXPECT_TRUE(svg->BitBlt(25, 5, 4, 4, memory.get(), 0, 0, VT_ROP_COPY));
        EXPECT_TRUE(svg->BitBlt(25, 5, 4, 4, memory.get(), 0, 0, VT_ROP_AND));
        TakeLoggedCodes();
        EXPECT_FALSE(svg->BitBlt(25, 5, 4, 4, memory.get(), 0, 0, VT_ROP_XOR));
        EXPECT_EQ(TakeLoggedCodes(), std::vector<std::string>{"GGr011"});
        ASSERT_TRUE(svg->SavePdf(dir / "copy.pdf"));
    }
    const std::string svgText = ReadFileBytes(dir / "doc.svg");
    EXPECT_NE(svgText.find("<svg"), std::string::npos);
    EXPECT_NE(svgText.find("rgb(100%,0%,0%)"), std::string::npos);
    EXPECT_NE(svgText.find("</svg>"), std::string::npos);
    EXPECT_NE(ReadFileBytes(dir / "copy.pdf").find("%%EOF"), std::string::npos);
    { Owned<VtGraphics> pdf(VtGraphicsManager::CreateVectorGraphics(dir / "doc.pdf", VT_VECTOR_PDF, 40, 30, true)); }
    EXPECT_EQ(ReadFileBytes(dir / "doc.pdf").substr(0, 5), "%PDF-");
}

TEST(SurfaceTest, RecordingReplaysOntoAnySurfaceAndReadsBackByReplaying)
{
    Owned<VtGraphics> recording(VtGraphicsManager::CreateRecordingGraphics(20, 20, 24));
    FillRect(*recording, {2, 2, 10, 10}, kRed);
    auto clip = MakeRegion(ZedaRect(12, 0, 20, 20));
    recording->SelectClipRegion(clip.get(), VT_CLIP_REPLACE);
    FillRect(*recording, {8, 12, 18, 18}, kBlue);  // clipped to x >= 12
    recording->SelectClipRegion(nullptr, VT_CLIP_REPLACE);
    auto picture = MakeImage(2, 2, 32, kGreen);
    ASSERT_TRUE(recording->BitBlt(0, 18, 2, 2, MemoryOn(recording.get(), picture.get()).get(), 0, 0, VT_ROP_COPY));

    // Reading back plays the commands onto white paper.
    Owned<VtImage> copy(VtGraphicsManager::NewImage(0));
    ASSERT_TRUE(copy->CreateCompatibleImage(recording.get(), 20, 20));
    ASSERT_TRUE(MemoryOn(recording.get(), copy.get())->BitBlt(0, 0, 20, 20, recording.get(), 0, 0, VT_ROP_COPY));
    EXPECT_EQ(ColourBounds(*copy, kRed), ZedaRect(2, 2, 10, 10));
    EXPECT_EQ(ColourBounds(*copy, kBlue), ZedaRect(12, 12, 18, 18));
    EXPECT_EQ(ColourBounds(*copy, kGreen), ZedaRect(0, 18, 2, 20));
    EXPECT_EQ(CountColour(*copy, kWhite), 400 - 64 - 36 - 4);
    FillRect(*recording, {0, 0, 1, 1}, kBlack);  // shows up in the next read
    EXPECT_EQ(recording->GetTargetImage()->GetPixelColour(0, 0), kBlack);

    Owned<VtGraphics> window(VtGraphicsManager::CreateWindowGraphics(20, 20, 16));
    auto upper = MakeRegion(ZedaRect(0, 0, 20, 5));
    window->SelectClipRegion(upper.get(), VT_CLIP_REPLACE);
    ASSERT_TRUE(recording->Replay(window.get()));
    EXPECT_EQ(ColourBounds(*window->GetTargetImage(), kRed), ZedaRect(2, 2, 10, 5));
    EXPECT_EQ(CountColour(*window->GetTargetImage(), kBlue), 0);
    EXPECT_FALSE(window->Replay(recording.get()));
}

TEST(SurfaceTest, NativeGradientsCoverTheClipBoundsPixelByPixel)
{
    Owned<VtGraphics> surface(VtGraphicsManager::CreateNativeGradientGraphics(60, 40, 32));
    const VtImage& pixels = *surface->GetTargetImage();
    const auto red = [&](int x, int y) { return int{ZEDAREDVAL(pixels.GetPixelColour(x, y))}; };
    auto clip = MakeRegion({{10, 10}, {50, 10}, {10, 30}});
    surface->SelectClipRegion(clip.get(), VT_CLIP_REPLACE);
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

    // Square: an image of the clip's bounds grown by one pixel each side,
    // here (9, 9) - (51, 31) with its centre on the corner of pixel (21, 11).
    auto box = MakeRegion(ZedaRect(10, 10, 50, 30));
    surface->SelectClipRegion(box.get(), VT_CLIP_REPLACE);
    Owned<VtImage> square(surface->CreateSquareGradientImage(kBlack, kWhite, 0, 0, 0.0));
    ASSERT_NE(square, nullptr);
    EXPECT_EQ(ZedaSize(square->GetWidth(), square->GetHeight()), ZedaSize(42, 22));
    // Equal colours along a square ring, the centre darkest; turned, no longer.
    for (const ZedaPoint& ring : {ZedaPoint(16, 15), ZedaPoint(25, 6), ZedaPoint(18, 6)})
        EXPECT_EQ(square->GetPixelColour(16, 6), square->GetPixelColour(ring.x, ring.y)) << ring.x << ',' << ring.y;
    EXPECT_LT(ZEDAREDVAL(square->GetPixelColour(20, 10)), ZEDAREDVAL(square->GetPixelColour(16, 6)));
    Owned<VtImage> turned(surface->CreateSquareGradientImage(kBlack, kWhite, 0, 0, std::numbers::pi / 4));
    ASSERT_NE(turned, nullptr);
    EXPECT_NE(turned->GetPixelColour(16, 6), turned->GetPixelColour(18, 6));

    Owned<VtGraphics> window(VtGraphicsManager::CreateWindowGraphics(10, 10, 32));
    EXPECT_FALSE(window->DrawLinearGradient(kBlack, kWhite, 0, 0, 0.0));
    EXPECT_EQ(window->CreateSquareGradientImage(kBlack, kWhite, 0, 0, 0.0), nullptr);
}

}  // namespace
}  // namespace VTC::test
