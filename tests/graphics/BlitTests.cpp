#include <cstring>

#include "GraphicsTestSupport.h"

namespace VTC::test {
namespace {

using ZEDA::ZedaRect;

// A memory graphics compatible with `reference`, drawing on `image`.
Owned<VtGraphics> MemoryOn(VtGraphics* reference, VtImage* image)
{
    Owned<VtGraphics> memory(VtGraphicsManager::NewGraphics(0));
    EXPECT_TRUE(memory->CreateCompatibleGraphics(reference));
    memory->SelectImage(image);
    return memory;
}

uint32_t Raw32(const VtImage& image, int x, int y)
{
    uint32_t value;
    std::memcpy(&value, image.GetBitsPointer() + y * image.GetRowBytes() + 4 * x, 4);
    return value;
}

TEST(BlitTest, RasterOperationsAreBitwiseOnRawPixels)
{
    const uint32_t target = 0xCC00FF33u;
    const uint32_t source = 0xAA0F0F55u;
    const struct {
        unsigned int rop;
        uint32_t expected;
    } cases[] = {{VT_ROP_COPY, source},
                 {VT_ROP_AND, source & target},
                 {VT_ROP_OR, source | target},
                 {VT_ROP_XOR, source ^ target}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.rop);
        auto destination = MakeImage(4, 4, 32);
        destination->Fill(target);
        auto sourceImage = MakeImage(4, 4, 32);
        sourceImage->Fill(source);
        auto graphics = GraphicsOn(destination.get());
        auto memory = MemoryOn(graphics.get(), sourceImage.get());
        EXPECT_TRUE(graphics->BitBlt(1, 1, 2, 2, memory.get(), 0, 0, c.rop));
        EXPECT_EQ(Raw32(*destination, 1, 1), c.expected);
        EXPECT_EQ(Raw32(*destination, 2, 2), c.expected);
        EXPECT_EQ(Raw32(*destination, 0, 0), target);
        EXPECT_EQ(Raw32(*destination, 3, 1), target);
    }

    // The same on a 1-bit mask.
    auto mask = MakeImage(8, 1, 1);
    mask->GetBitsPointer()[0] = 0b11001100;
    auto bits = MakeImage(8, 1, 1);
    bits->GetBitsPointer()[0] = 0b10101010;
    auto maskGraphics = GraphicsOn(mask.get());
    auto bitsGraphics = GraphicsOn(bits.get());
    ASSERT_TRUE(maskGraphics->BitBlt(0, 0, 8, 1, bitsGraphics.get(), 0, 0, VT_ROP_XOR));
    EXPECT_EQ(mask->GetBitsPointer()[0], 0b01100110);
    EXPECT_FALSE(maskGraphics->BitBlt(0, 0, 8, 1, bitsGraphics.get(), 0, 0, 0x123456));
    EXPECT_FALSE(maskGraphics->BitBlt(0, 0, 8, 1, nullptr, 0, 0, VT_ROP_COPY));
}

TEST(BlitTest, ColourIntoMonoMarksTheBackgroundColourAndMonoIntoColourIsBlackAndWhite)
{
    auto picture = MakeImage(4, 1, 32);
    picture->SetPixelColour(0, 0, ZEDARGBA(10, 20, 30, 0));
    picture->SetPixelColour(1, 0, ZEDARGBA(10, 20, 30, 255));
    picture->SetPixelColour(2, 0, ZEDARGB(10, 20, 31));
    picture->SetPixelColour(3, 0, kWhite);
    auto pictureGraphics = GraphicsOn(picture.get());
    EXPECT_EQ(pictureGraphics->SetBackgroundColour(ZEDARGB(10, 20, 30)), kWhite);
    EXPECT_EQ(pictureGraphics->GetBackgroundColour(), ZEDARGB(10, 20, 30));

    auto mask = MakeImage(4, 1, 1);
    auto maskGraphics = GraphicsOn(mask.get());
    ASSERT_TRUE(maskGraphics->BitBlt(0, 0, 4, 1, pictureGraphics.get(), 0, 0, VT_ROP_COPY));
    EXPECT_EQ(mask->GetBitsPointer()[0], 0b11000000);

    auto colour = MakeImage(4, 1, 24);
    colour->Fill(ZEDARGB(1, 2, 3));
    auto colourGraphics = GraphicsOn(colour.get());
    ASSERT_TRUE(colourGraphics->BitBlt(0, 0, 4, 1, maskGraphics.get(), 0, 0, VT_ROP_COPY));
    EXPECT_EQ(colour->GetPixelColour(0, 0), kWhite);
    EXPECT_EQ(colour->GetPixelColour(1, 0), kWhite);
    EXPECT_EQ(colour->GetPixelColour(2, 0), kBlack);
}

TEST(BlitTest, KeyColourSequenceShowsTheSurfaceOnlyWhereTheKeyWas)
{
    // Image XOR, AND mask, image XOR: the picture where it is not the key.
    const unsigned int key = ZEDARGB(0, 255, 0);
    Owned<VtGraphics> window(VtGraphicsManager::CreateWindowGraphics(6, 1, 24));
    auto surface = window->GetTargetImage();
    for (int x = 0; x < 6; ++x) {
        surface->SetPixelColour(x, 0, ZEDARGB(x * 40, 7, 9));
    }
    auto picture = MakeImage(6, 1, 24);
    picture->Fill(kRed);
    picture->SetPixelColour(2, 0, key);
    picture->SetPixelColour(4, 0, key);
    Owned<VtImage> mask(VtGraphicsManager::NewImage(0));
    ASSERT_TRUE(mask->CreateImage(6, 1, 1, 1, nullptr, nullptr));
    Owned<VtImage> result(VtGraphicsManager::NewImage(0));
    ASSERT_TRUE(result->CreateCompatibleImage(window.get(), 6, 1));
    auto g1 = MemoryOn(window.get(), picture.get());
    auto g2 = MemoryOn(window.get(), mask.get());
    auto g3 = MemoryOn(window.get(), result.get());
    g1->SetBackgroundColour(key);
    ASSERT_TRUE(g2->BitBlt(0, 0, 6, 1, g1.get(), 0, 0, VT_ROP_COPY));
    ASSERT_TRUE(g3->BitBlt(0, 0, 6, 1, window.get(), 0, 0, VT_ROP_COPY));
    ASSERT_TRUE(g3->BitBlt(0, 0, 6, 1, g1.get(), 0, 0, VT_ROP_XOR));
    ASSERT_TRUE(g3->BitBlt(0, 0, 6, 1, g2.get(), 0, 0, VT_ROP_AND));
    ASSERT_TRUE(g3->BitBlt(0, 0, 6, 1, g1.get(), 0, 0, VT_ROP_XOR));
    for (int x = 0; x < 6; ++x) {
        const bool keyed = x == 2 || x == 4;
        EXPECT_EQ(result->GetPixelColour(x, 0), keyed ? ZEDARGB(x * 40, 7, 9) : kRed) << x;
    }
}

TEST(BlitTest, FormatsConvertPerChannel)
{
    auto source = MakeImage(2, 1, 16);
    source->SetPixelColour(0, 0, ZEDARGB(248, 4, 16));
    source->SetPixelColour(1, 0, kWhite);
    auto sourceGraphics = GraphicsOn(source.get());
    Owned<VtGraphics> printer(VtGraphicsManager::CreatePrintGraphics(10, 10, 254));
    Owned<VtImage> paper(VtGraphicsManager::NewImage(0));
    ASSERT_TRUE(paper->CreateCompatibleImage(printer.get(), 2, 1));
    auto paperGraphics = GraphicsOn(paper.get());
    ASSERT_TRUE(paperGraphics->BitBlt(0, 0, 2, 1, sourceGraphics.get(), 0, 0, VT_ROP_COPY));
    EXPECT_EQ(paper->GetPixelColour(0, 0), ZEDARGB(255, 4, 16));
    EXPECT_EQ(paper->GetBitsPointer()[0], 255);  // red first
    EXPECT_EQ(paper->GetPixelColour(1, 0), kWhite);

    auto wide = MakeImage(2, 1, 32);
    auto wideGraphics = GraphicsOn(wide.get());
    ASSERT_TRUE(wideGraphics->BitBlt(0, 0, 2, 1, paperGraphics.get(), 0, 0, VT_ROP_COPY));
    EXPECT_EQ(wide->GetPixelColour(0, 0), ZEDARGB(255, 4, 16));
}

TEST(BlitTest, OnlyWhatLiesOnBothSurfacesAndInsideTheClipIsCopied)
{
    Owned<VtGraphics> window(VtGraphicsManager::CreateWindowGraphics(10, 10, 32));
    auto source = MakeImage(4, 4, 32);
    source->Fill(kBlue);
    auto memory = MemoryOn(window.get(), source.get());
    // Source taken from (2, 2): only its lower right 2 x 2 exists.
    ASSERT_TRUE(window->BitBlt(-1, 3, 6, 6, memory.get(), 2, 2, VT_ROP_COPY));
    EXPECT_EQ(ColourBounds(*window->GetTargetImage(), kBlue), ZedaRect(0, 3, 1, 5));

    window->GetTargetImage()->Fill(kWhite);
    Owned<VtRgn> clip(VtGraphicsManager::NewRgn(0));
    ASSERT_TRUE(clip->CreateRectRegion(5, 0, 10, 7));
    window->SelectClipRegion(clip.get(), VT_CLIP_REPLACE);
    ASSERT_TRUE(window->BitBlt(4, 4, 4, 4, memory.get(), 0, 0, VT_ROP_COPY));
    EXPECT_EQ(ColourBounds(*window->GetTargetImage(), kBlue), ZedaRect(5, 4, 8, 7));

    // Both ends map their own logical coordinates.
    window->SelectClipRegion(nullptr, VT_CLIP_REPLACE);
    window->GetTargetImage()->Fill(kWhite);
    source->SetPixelColour(3, 3, kRed);
    window->SetScale(2.0);
    memory->SetOrigin({-3, -3});
    ASSERT_TRUE(window->BitBlt(1, 1, 1, 1, memory.get(), 6, 6, VT_ROP_COPY));
    EXPECT_EQ(ColourBounds(*window->GetTargetImage(), kRed), ZedaRect(2, 2, 3, 3));
    EXPECT_EQ(CountColour(*window->GetTargetImage(), kWhite), 99);
}

TEST(BlitTest, ImageDataIsPlacedFromEitherEdgeWithoutMirroring)
{
    auto target = MakeImage(6, 6, 24);
    target->Fill(kWhite);
    auto graphics = GraphicsOn(target.get());
    // Two rows of 32-bit pixels: red above blue.
    uint32_t rows[2][2] = {{kRed, kRed}, {kBlue, kBlue}};
    VtImageInfo info;
    info.width = 2;
    info.height = 2;
    info.rowBytes = 8;
    info.bitsPerPixel = 32;
    info.bits = reinterpret_cast<unsigned char*>(rows);
    ASSERT_TRUE(graphics->DrawImageData(1, 3, 2, -2, 0, 0, 2, 2, info));
    EXPECT_EQ(ColourBounds(*target, kRed), ZedaRect(1, 1, 3, 2));
    EXPECT_EQ(ColourBounds(*target, kBlue), ZedaRect(1, 2, 3, 3));

    // Stretched twice as large, nearest neighbour.
    target->Fill(kWhite);
    ASSERT_TRUE(graphics->DrawImageData(0, 0, 4, 4, 0, 0, 2, 2, info));
    EXPECT_EQ(ColourBounds(*target, kRed), ZedaRect(0, 0, 4, 2));
    EXPECT_EQ(ColourBounds(*target, kBlue), ZedaRect(0, 2, 4, 4));

    // The red-first flag of the description is honoured.
    unsigned char rgb[4] = {200, 100, 50, 0};
    VtImageInfo rgbInfo;
    rgbInfo.width = 1;
    rgbInfo.height = 1;
    rgbInfo.rowBytes = 4;
    rgbInfo.bitsPerPixel = 24;
    rgbInfo.reserved1 = 1;
    rgbInfo.bits = rgb;
    ASSERT_TRUE(graphics->DrawImageData(5, 5, 1, 1, 0, 0, 1, 1, rgbInfo));
    EXPECT_EQ(target->GetPixelColour(5, 5), ZEDARGB(200, 100, 50));

    rgbInfo.bits = nullptr;
    EXPECT_FALSE(graphics->DrawImageData(5, 5, 1, 1, 0, 0, 1, 1, rgbInfo));
}

}  // namespace
}  // namespace VTC::test
