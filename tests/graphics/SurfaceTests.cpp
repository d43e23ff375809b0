#include <cmath>
#include <numbers>

#include "GraphicsTestSupport.h"

namespace VTC::test {
namespace {

using ZEDA::ZedaPoint;
using ZEDA::ZedaRect;
using ZEDA::ZedaSize;

Owned<VtGraphics> MemoryOn(VtGraphics* reference, VtImage* image)
{
    Owned<VtGraphics> memory(VtGraphicsManager::NewGraphics(0));
    EXPECT_TRUE(memory->CreateCompatibleGraphics(reference));
    memory->SelectImage(image);
    return memory;
}

void FillRect(VtGraphics& graphics, const ZedaRect& rect, unsigned int colour)
{
    auto brush = MakeBrush(colour);
    auto pen = MakePen(kBlack, 0, VT_PEN_NULL);
    VtBrush* oldBrush = graphics.SelectBrush(brush.get());
    VtPen* oldPen = graphics.SelectPen(pen.get());
    graphics.DrawRectangle(rect);
    graphics.SelectBrush(oldBrush);
    graphics.SelectPen(oldPen);
}

TEST(SurfaceTest, PrinterPageWritesPngAndPdf)
{
    TempDir dir;
    Owned<VtGraphics> printer(VtGraphicsManager::CreatePrintGraphics(500, 300, 127));
    EXPECT_EQ(printer->GetDeviceSize(), ZedaSize(250, 150));
    FillRect(*printer, {100, 100, 200, 200}, kRed);  // 10 mm square from 1 cm in
    EXPECT_EQ(ColourBounds(*printer->GetTargetImage(), kRed), ZedaRect(50, 50, 100, 100));

    ASSERT_TRUE(printer->SavePng(dir / "page.png"));
    const std::string png = ReadFileBytes(dir / "page.png");
    ASSERT_GT(png.size(), 24u);
    EXPECT_EQ(png.substr(1, 3), "PNG");
    EXPECT_EQ(static_cast<unsigned char>(png[19]), 250);
    EXPECT_EQ(static_cast<unsigned char>(png[23]), 150);

    ASSERT_TRUE(printer->SavePdf(dir / "page.pdf"));
    const std::string pdf = ReadFileBytes(dir / "page.pdf");
    EXPECT_EQ(pdf.substr(0, 5), "%PDF-");
    // 50 mm x 30 mm in points.
    EXPECT_NE(pdf.find("/MediaBox [ 0 0 141.732283 85.03937 ]"), std::string::npos);
    EXPECT_FALSE(printer->SavePdf(dir / "no-such-folder/page.pdf"));
}

TEST(SurfaceTest, VectorDocumentIsWrittenWhenDestroyedAndCannotBeReadBack)
{
    TempDir dir;
    auto picture = MakeImage(4, 4, 32);
    picture->Fill(kBlue);
    {
        Owned<VtGraphics> svg(VtGraphicsManager::CreateVectorGraphics(dir / "doc.svg", VT_VECTOR_SVG, 40, 30, false));
        FillRect(*svg, {5, 5, 20, 20}, kRed);
        auto memory = MemoryOn(svg.get(), picture.get());
        EXPECT_TRUE(svg->BitBlt(25, 5, 4, 4, memory.get(), 0, 0, VT_ROP_COPY));
        EXPECT_TRUE(svg->BitBlt(25, 5, 4, 4, memory.get(), 0, 0, VT_ROP_AND));
        EXPECT_FALSE(svg->BitBlt(25, 5, 4, 4, memory.get(), 0, 0, VT_ROP_XOR));

        auto readBack = MakeImage(4, 4, 32);
        auto reader = MemoryOn(svg.get(), readBack.get());
        EXPECT_FALSE(reader->BitBlt(0, 0, 4, 4, svg.get(), 0, 0, VT_ROP_COPY));
        EXPECT_EQ(svg->GetTargetImage(), nullptr);
        EXPECT_FALSE(svg->SavePng(dir / "doc.png"));
        ASSERT_TRUE(svg->SavePdf(dir / "copy.pdf"));
    }
    const std::string svgText = ReadFileBytes(dir / "doc.svg");
    EXPECT_NE(svgText.find("<svg"), std::string::npos);
    EXPECT_NE(svgText.find("rgb(100%,0%,0%)"), std::string::npos);
    EXPECT_EQ(ReadFileBytes(dir / "copy.pdf").substr(0, 5), "%PDF-");

    { Owned<VtGraphics> pdf(VtGraphicsManager::CreateVectorGraphics(dir / "doc.pdf", VT_VECTOR_PDF, 40, 30, true)); }
    EXPECT_EQ(ReadFileBytes(dir / "doc.pdf").substr(0, 5), "%PDF-");
}

TEST(SurfaceTest, RecordingReplaysOntoAnySurfaceAndReadsBackByReplaying)
{
    Owned<VtGraphics> recording(VtGraphicsManager::CreateRecordingGraphics(20, 20, 24));
    FillRect(*recording, {2, 2, 10, 10}, kRed);
    Owned<VtRgn> clip(VtGraphicsManager::NewRgn(0));
    ASSERT_TRUE(clip->CreateRectRegion(12, 0, 20, 20));
    recording->SelectClipRegion(clip.get(), VT_CLIP_REPLACE);
    FillRect(*recording, {8, 12, 18, 18}, kBlue);  // clipped to x >= 12
    recording->SelectClipRegion(nullptr, VT_CLIP_REPLACE);

    auto picture = MakeImage(2, 2, 32);
    picture->Fill(kGreen);
    auto memory = MemoryOn(recording.get(), picture.get());
    ASSERT_TRUE(recording->BitBlt(0, 18, 2, 2, memory.get(), 0, 0, VT_ROP_COPY));

    // Reading back plays the commands onto white paper.
    Owned<VtImage> copy(VtGraphicsManager::NewImage(0));
    ASSERT_TRUE(copy->CreateCompatibleImage(recording.get(), 20, 20));
    EXPECT_TRUE(copy->IsRedFirst());
    auto reader = MemoryOn(recording.get(), copy.get());
    ASSERT_TRUE(reader->BitBlt(0, 0, 20, 20, recording.get(), 0, 0, VT_ROP_COPY));
    EXPECT_EQ(ColourBounds(*copy, kRed), ZedaRect(2, 2, 10, 10));
    EXPECT_EQ(ColourBounds(*copy, kBlue), ZedaRect(12, 12, 18, 18));
    EXPECT_EQ(ColourBounds(*copy, kGreen), ZedaRect(0, 18, 2, 20));
    EXPECT_EQ(copy->GetPixelColour(19, 0), kWhite);

    // Later drawing shows up in the next read.
    FillRect(*recording, {0, 0, 1, 1}, kBlack);
    EXPECT_EQ(recording->GetTargetImage()->GetPixelColour(0, 0), kBlack);

    Owned<VtGraphics> window(VtGraphicsManager::CreateWindowGraphics(20, 20, 16));
    Owned<VtRgn> upper(VtGraphicsManager::NewRgn(0));
    ASSERT_TRUE(upper->CreateRectRegion(0, 0, 20, 5));
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
    Owned<VtRgn> clip(VtGraphicsManager::NewRgn(0));
    const ZedaPoint triangle[] = {{10, 10}, {50, 10}, {10, 30}};
    ASSERT_TRUE(clip->CreatePolygonRegion(triangle, 3));
    surface->SelectClipRegion(clip.get(), VT_CLIP_REPLACE);

    ASSERT_TRUE(surface->DrawLinearGradient(kBlack, kWhite, 0, 0, 0.0));
    // Only inside the clip; darker to the left, constant down a column.
    EXPECT_EQ(pixels.GetPixelColour(45, 25), kWhite);
    const int left = ZEDAREDVAL(pixels.GetPixelColour(10, 10));
    const int middle = ZEDAREDVAL(pixels.GetPixelColour(25, 10));
    const int right = ZEDAREDVAL(pixels.GetPixelColour(45, 10));
    EXPECT_LT(left, 20);
    EXPECT_LT(left, middle);
    EXPECT_LT(middle, right);
    EXPECT_GT(right, 220);
    EXPECT_EQ(pixels.GetPixelColour(25, 10), pixels.GetPixelColour(25, 18));

    // Radial: colour1 at the box centre, colour2 at its corners.
    surface->SelectClipRegion(nullptr, VT_CLIP_REPLACE);
    ASSERT_TRUE(surface->DrawRadialGradient(kRed, kBlue, 0, 0, 0.0));
    EXPECT_EQ(pixels.GetPixelColour(29, 19), pixels.GetPixelColour(30, 20));
    EXPECT_GT(ZEDAREDVAL(pixels.GetPixelColour(30, 20)), 245);
    EXPECT_GT(ZEDABLUEVAL(pixels.GetPixelColour(0, 0)), 235);
    EXPECT_GT(ZEDABLUEVAL(pixels.GetPixelColour(59, 39)), 235);

    // Square: an image of the clip's bounds grown by one pixel each side,
    // here (9, 9) - (51, 31) with its centre on the corner of pixel (21, 11).
    Owned<VtRgn> box(VtGraphicsManager::NewRgn(0));
    ASSERT_TRUE(box->CreateRectRegion(10, 10, 50, 30));
    surface->SelectClipRegion(box.get(), VT_CLIP_REPLACE);
    Owned<VtImage> square(surface->CreateSquareGradientImage(kBlack, kWhite, 0, 0, 0.0));
    ASSERT_NE(square, nullptr);
    EXPECT_EQ(square->GetWidth(), 42);
    EXPECT_EQ(square->GetHeight(), 22);
    EXPECT_EQ(square->GetBitsPerPixel(), 32);
    // Equal colours along a square ring, the centre darkest.
    EXPECT_EQ(square->GetPixelColour(16, 6), square->GetPixelColour(16, 15));
    EXPECT_EQ(square->GetPixelColour(16, 6), square->GetPixelColour(25, 6));
    EXPECT_EQ(square->GetPixelColour(16, 6), square->GetPixelColour(18, 6));
    EXPECT_LT(ZEDAREDVAL(square->GetPixelColour(20, 10)), ZEDAREDVAL(square->GetPixelColour(16, 6)));
    Owned<VtImage> turned(surface->CreateSquareGradientImage(kBlack, kWhite, 0, 0, std::numbers::pi / 4));
    ASSERT_NE(turned, nullptr);
    EXPECT_NE(turned->GetPixelColour(16, 6), turned->GetPixelColour(18, 6));

    Owned<VtGraphics> window(VtGraphicsManager::CreateWindowGraphics(10, 10, 32));
    EXPECT_FALSE(window->DrawLinearGradient(kBlack, kWhite, 0, 0, 0.0));
    EXPECT_FALSE(window->DrawRadialGradient(kBlack, kWhite, 0, 0, 0.0));
    EXPECT_EQ(window->CreateSquareGradientImage(kBlack, kWhite, 0, 0, 0.0), nullptr);
}

TEST(SurfaceTest, OffsetsMoveTheNativeGradient)
{
    Owned<VtGraphics> surface(VtGraphicsManager::CreateNativeGradientGraphics(100, 10, 24));
    const VtImage& pixels = *surface->GetTargetImage();
    ASSERT_TRUE(surface->DrawRadialGradient(kBlack, kWhite, 25, 0, 0.0));
    // The centre moved a quarter of the width to the right.
    int darkest = 0;
    for (int x = 0; x < 100; ++x) {
        if (ZEDAREDVAL(pixels.GetPixelColour(x, 5)) < ZEDAREDVAL(pixels.GetPixelColour(darkest, 5))) {
            darkest = x;
        }
    }
    EXPECT_NEAR(darkest, 75, 1);
}

TEST(SurfaceTest, ImageBackedGraphicsDrawsOnItsTarget)
{
    TempDir dir;
    auto target = MakeImage(8, 8, 16);
    auto graphics = GraphicsOn(target.get());
    EXPECT_EQ(graphics->GetTargetImage(), target.get());
    EXPECT_EQ(graphics->GetBitsPerPixel(), 16);
    EXPECT_EQ(graphics->GetDeviceSize(), ZedaSize(8, 8));
    FillRect(*graphics, {0, 0, 4, 8}, kRed);
    EXPECT_EQ(ColourBounds(*target, kRed), ZedaRect(0, 0, 4, 8));
    ASSERT_TRUE(graphics->SavePng(dir / "target.png"));
    EXPECT_EQ(ReadFileBytes(dir / "target.png").substr(1, 3), "PNG");
    EXPECT_FALSE(graphics->SavePdf(dir / "target.pdf"));

    // A memory graphics without an image has nothing to draw on or read.
    Owned<VtGraphics> memory(VtGraphicsManager::NewGraphics(0));
    EXPECT_EQ(memory->GetDeviceSize(), ZedaSize(0, 0));
    FillRect(*memory, {0, 0, 4, 4}, kRed);
    EXPECT_FALSE(graphics->BitBlt(0, 0, 4, 4, memory.get(), 0, 0, VT_ROP_COPY));
    EXPECT_FALSE(memory->BitBlt(0, 0, 4, 4, graphics.get(), 0, 0, VT_ROP_COPY));
}

}  // namespace
}  // namespace VTC::test
