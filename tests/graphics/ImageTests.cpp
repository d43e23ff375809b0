#include <cstring>

#include "GraphicsTestSupport.h"

namespace VTC::test {
namespace {

TEST(ImageTest, EveryDepthHasTopDownRowsPaddedToFourBytesAndStartsZeroed)
{
    const struct {
        int bpp;
        int stride;
    } cases[] = {{1, 4}, {8, 8}, {16, 12}, {24, 16}, {32, 20}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.bpp);
        auto image = MakeImage(5, 3, c.bpp);
        VtImageInfo info;
        ASSERT_TRUE(image->GetImageInfo(info));
        EXPECT_EQ(info.width, 5);
        EXPECT_EQ(info.height, 3);
        EXPECT_EQ(info.rowBytes, c.stride);
        EXPECT_EQ(info.bitsPerPixel, c.bpp);
        EXPECT_EQ(info.bits, image->GetBitsPointer());
        std::vector<unsigned char> bytes(static_cast<std::size_t>(c.stride * 3), 0xAB);
        EXPECT_EQ(image->GetBits(1000, bytes.data()), c.stride * 3);
        EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 0), c.stride * 3);
    }
}

TEST(ImageTest, RefusesWhatItCannotHold)
{
    Owned<VtImage> image(VtGraphicsManager::NewImage(0));
    EXPECT_FALSE(image->CreateImage(4, 4, 1, 12, nullptr, nullptr));
    EXPECT_FALSE(image->CreateImage(4, 4, 3, 24, nullptr, nullptr));
    EXPECT_FALSE(image->CreateImage(0, 4, 1, 24, nullptr, nullptr));
    EXPECT_FALSE(image->CreateCompatibleImage(nullptr, 4, 4));
    EXPECT_FALSE(image->IsCreated());
    VtImageInfo info;
    EXPECT_FALSE(image->GetImageInfo(info));
    EXPECT_EQ(info.bits, nullptr);
    unsigned char byte = 7;
    EXPECT_EQ(image->GetBits(1, &byte), 0);
    EXPECT_EQ(image->SetBits(1, &byte), 0);
    EXPECT_EQ(image->GetPixelColour(0, 0), 0u);
}

TEST(ImageTest, PixelsAreStoredInTheDocumentedLayouts)
{
    const unsigned int colour = ZEDARGBA(0xF8, 0xFC, 0x08, 0x40);

    auto argb = MakeImage(2, 1, 32);
    argb->SetPixelColour(1, 0, colour);
    uint32_t stored;
    std::memcpy(&stored, argb->GetBitsPointer() + 4, 4);
    EXPECT_EQ(stored, colour);
    EXPECT_EQ(argb->GetPixelColour(1, 0), colour);

    auto bgr = MakeImage(2, 1, 24);
    bgr->SetPixelColour(1, 0, colour);
    const unsigned char* p = bgr->GetBitsPointer() + 3;
    EXPECT_EQ(p[0], 0x08);
    EXPECT_EQ(p[1], 0xFC);
    EXPECT_EQ(p[2], 0xF8);
    EXPECT_EQ(bgr->GetPixelColour(1, 0), ZEDARGB(0xF8, 0xFC, 0x08));

    auto rgb565 = MakeImage(2, 1, 16);
    rgb565->SetPixelColour(0, 0, ZEDARGB(255, 0, 0));
    rgb565->SetPixelColour(1, 0, colour);
    uint16_t red, mixed;
    std::memcpy(&red, rgb565->GetBitsPointer(), 2);
    std::memcpy(&mixed, rgb565->GetBitsPointer() + 2, 2);
    EXPECT_EQ(red, 0xF800);
    EXPECT_EQ(mixed, (0x1F << 11) | (0x3F << 5) | 0x01);
    EXPECT_EQ(rgb565->GetPixelColour(0, 0), ZEDARGB(255, 0, 0));
    EXPECT_EQ(rgb565->GetPixelColour(1, 0), ZEDARGB(255, 255, 8));

    auto mono = MakeImage(10, 1, 1);
    mono->SetPixelColour(0, 0, kWhite);
    mono->SetPixelColour(9, 0, ZEDARGB(200, 200, 200));
    mono->SetPixelColour(8, 0, ZEDARGB(40, 40, 40));
    EXPECT_EQ(mono->GetBitsPointer()[0], 0x80);
    EXPECT_EQ(mono->GetBitsPointer()[1], 0x40);
    EXPECT_EQ(mono->GetPixelColour(9, 0), kWhite);
    EXPECT_EQ(mono->GetPixelColour(8, 0), kBlack);

    Owned<VtImage> indexed(VtGraphicsManager::NewImage(0));
    const VtPalette palette({kBlack, kRed, kBlue});
    ASSERT_TRUE(indexed->CreateImage(2, 1, 1, 8, &palette, nullptr));
    indexed->SetPixelColour(0, 0, ZEDARGB(20, 10, 230));
    EXPECT_EQ(indexed->GetBitsPointer()[0], 2);
    EXPECT_EQ(indexed->GetPixelColour(0, 0), kBlue);
    VtImageInfo info;
    ASSERT_TRUE(indexed->GetImageInfo(info));
    EXPECT_EQ(info.palette.GetCount(), 3);
}

TEST(ImageTest, BitsCopyInAndOutUpToTheImageSize)
{
    const unsigned char rows[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    Owned<VtImage> image(VtGraphicsManager::NewImage(0));
    ASSERT_TRUE(image->CreateImage(1, 2, 1, 32, nullptr, rows));
    EXPECT_EQ(image->GetPixelColour(0, 1), 0x08070605u);
    unsigned char out[16] = {};
    EXPECT_EQ(image->GetBits(3, out), 3);
    EXPECT_EQ(out[3], 0);
    const unsigned char changed[16] = {9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 9};
    EXPECT_EQ(image->SetBits(16, changed), 8);
    EXPECT_EQ(image->GetPixelColour(0, 1), 0x09090909u);
    image->Fill(kRed);
    EXPECT_EQ(image->GetPixelColour(0, 0), kRed);
    EXPECT_EQ(image->GetPixelColour(0, 1), kRed);
}

TEST(ImageTest, ImagesCompatibleWithPaperSurfacesStoreRedFirst)
{
    const unsigned int colour = ZEDARGB(8, 20, 24);  // exact in 5-6-5 as well
    Owned<VtGraphics> printer(VtGraphicsManager::CreatePrintGraphics(100, 100, 254));
    Owned<VtGraphics> recording(VtGraphicsManager::CreateRecordingGraphics(10, 10, 24));
    Owned<VtGraphics> window(VtGraphicsManager::CreateWindowGraphics(10, 10, 24));
    Owned<VtGraphics> window16(VtGraphicsManager::CreateWindowGraphics(10, 10, 16));
    const struct {
        VtGraphics* reference;
        int bpp;
        bool redFirst;
    } cases[] = {{printer.get(), 24, true}, {recording.get(), 24, true}, {window.get(), 24, false},
                 {window16.get(), 16, false}};
    for (const auto& c : cases) {
        Owned<VtImage> image(VtGraphicsManager::NewImage(0));
        ASSERT_TRUE(image->CreateCompatibleImage(c.reference, 3, 2));
        EXPECT_EQ(image->GetBitsPerPixel(), c.bpp);
        EXPECT_EQ(image->IsRedFirst(), c.redFirst);
        VtImageInfo info;
        ASSERT_TRUE(image->GetImageInfo(info));
        EXPECT_EQ(info.reserved1, c.redFirst ? 1 : 0);
        image->SetPixelColour(0, 0, colour);
        EXPECT_EQ(image->GetPixelColour(0, 0), colour);
        if (c.bpp == 24) {
            EXPECT_EQ(image->GetBitsPointer()[0], c.redFirst ? 8 : 24);
        }
    }
}

TEST(ImageTest, SavesPngOfItsSize)
{
    TempDir dir;
    auto image = MakeImage(7, 3, 16);
    image->Fill(kBlue);
    ASSERT_TRUE(image->SavePng(dir / "blue.png"));
    const std::string bytes = ReadFileBytes(dir / "blue.png");
    ASSERT_GT(bytes.size(), 24u);
    EXPECT_EQ(bytes.substr(0, 8), std::string("\x89PNG\r\n\x1a\n", 8));
    EXPECT_EQ(bytes.substr(12, 4), "IHDR");
    EXPECT_EQ(static_cast<unsigned char>(bytes[19]), 7);
    EXPECT_EQ(static_cast<unsigned char>(bytes[23]), 3);
    EXPECT_FALSE(image->SavePng(dir / "missing-folder/x.png"));
}

}  // namespace
}  // namespace VTC::test
