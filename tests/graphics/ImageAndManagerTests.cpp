#include <functional>
#include <tuple>

#include "GraphicsTestSupport.h"

namespace VTC::test {
namespace {

using Manager = VtGraphicsManager;

TEST(ImageTest, RowsArePaddedToFourBytesStartZeroedAndCopyUpToTheImageSize)
{
    for (const auto& [bpp, stride] : {std::pair{1, 4}, {8, 8}, {16, 12}, {24, 16}, {32, 20}}) {
        auto image = MakeImage(5, 3, bpp);
        EXPECT_EQ(image->GetRowBytes(), stride) << bpp;
        std::vector<unsigned char> bytes(static_cast<std::size_t>(stride * 3), 0xAB);
        EXPECT_EQ(image->GetBits(1000, bytes.data()), stride * 3) << bpp;
        EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 0), stride * 3) << bpp;
    }
    const unsigned char rows[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    Owned<VtImage> image(Manager::NewImage(0));
    ASSERT_TRUE(image->CreateImage(1, 2, 1, 32, nullptr, rows));
    EXPECT_EQ(image->GetPixelColour(0, 1), 0x08070605u);
    const std::vector<unsigned char> nines(16, 9);
    EXPECT_EQ(image->SetBits(16, nines.data()), 8);
    EXPECT_EQ(image->GetPixelColour(0, 1), 0x09090909u);
}

TEST(ImageTest, PixelsAreStoredInTheDocumentedLayouts)
{
    const unsigned int colour = ZEDARGBA(0xF8, 0xFC, 0x08, 0x40);
    const auto bytesOf = [](int bpp, const std::vector<unsigned int>& pixels) {
        auto image = PaintedImage(static_cast<int>(pixels.size()), 1, bpp, [&](int x, int) { return pixels[x]; });
        return std::vector<int>(image->GetBitsPointer(), image->GetBitsPointer() + image->GetRowBytes());
    };
    EXPECT_EQ(bytesOf(32, {colour}), (std::vector{0x08, 0xFC, 0xF8, 0x40}));
    EXPECT_EQ(bytesOf(24, {colour}), (std::vector{0x08, 0xFC, 0xF8, 0}));
    // 5-6-5 in host order, truncated going in and bit-replicated coming out.
    EXPECT_EQ(bytesOf(16, {kRed, colour}), (std::vector{0x00, 0xF8, 0xE1, 0xFF}));
    EXPECT_EQ(MakeImage(1, 1, 16, colour)->GetPixelColour(0, 0), ZEDARGB(255, 255, 8));
    // The first pixel in the high bit; 1 where the luminance is at least 128.
    EXPECT_EQ(bytesOf(1, {kWhite, 0, 0, 0, 0, 0, 0, 0, ZEDARGB(40, 40, 40), ZEDARGB(200, 200, 200)}),
              (std::vector{0x80, 0x40, 0, 0}));
    Owned<VtImage> indexed(Manager::NewImage(0));
    const VtPalette palette({kBlack, kRed, kBlue});
    ASSERT_TRUE(indexed->CreateImage(2, 1, 1, 8, &palette, nullptr));
    indexed->SetPixelColour(0, 0, ZEDARGB(20, 10, 230));
    EXPECT_EQ(indexed->GetBitsPointer()[0], 2);
    EXPECT_EQ(indexed->GetPixelColour(0, 0), kBlue);
}

TEST(ImageTest, ImagesCompatibleWithPaperSurfacesStoreRedFirst)
{
    Owned<VtGraphics> printer(Manager::CreatePrintGraphics(100, 100, 254));
    Owned<VtGraphics> recording(Manager::CreateRecordingGraphics(10, 10, 24));
    Owned<VtGraphics> window(Manager::CreateWindowGraphics(10, 10, 24));
    Owned<VtGraphics> window16(Manager::CreateWindowGraphics(10, 10, 16));
    auto memory = MemoryOn(printer.get(), nullptr);
    auto target = MakeImage(2, 2, 24);
    auto marked = GraphicsOn(target.get());
    marked->SetPrinting(true);
    window->SetPrinting(true);  // only image-backed graphics can be marked
    for (const auto& [reference, firstByte] : {std::pair{printer.get(), 8}, {recording.get(), 8}, {memory.get(), 8},
                                              {marked.get(), 8}, {window.get(), 24}, {window16.get(), 0xA3}}) {
        SCOPED_TRACE(reference->GetSurfaceKind());
        EXPECT_EQ(reference->IsRedFirst(), firstByte == 8);
        Owned<VtImage> image(Manager::NewImage(0));
        ASSERT_TRUE(image->CreateCompatibleImage(reference, 3, 2));
        EXPECT_EQ(image->GetBitsPerPixel(), firstByte == 0xA3 ? 16 : 24);
        VtImageInfo info;
        ASSERT_TRUE(image->GetImageInfo(info));
        EXPECT_EQ(info.reserved1, firstByte == 8 ? 1 : 0);
        image->SetPixelColour(0, 0, ZEDARGB(8, 20, 24));  // exact in 5-6-5 as well
        EXPECT_EQ(image->GetPixelColour(0, 0), ZEDARGB(8, 20, 24));
        EXPECT_EQ(image->GetBitsPointer()[0], firstByte);
    }
    EXPECT_TRUE(memory->IsPrinting());
    EXPECT_EQ(memory->GetScale(), 1.0);
    EXPECT_FALSE(window->IsPrinting());
    EXPECT_FALSE(window->CreateCompatibleGraphics(printer.get()));
}

TEST(ImageTest, RecycledPixelMemoryStartsZeroed)
{
    // Large enough to be recycled: each size reuses the block the last image
    // of that size gave back, so stale bytes would show here.
    for (const auto& [width, height, bpp] : {std::tuple{700, 400, 32}, {1000, 300, 24}, {600, 500, 16}}) {
        for (int round = 0; round < 2; ++round) {
            auto image = MakeImage(width, height, bpp);
            const long long size = static_cast<long long>(image->GetRowBytes()) * height;
            ASSERT_EQ(std::count(image->GetBitsPointer(), image->GetBitsPointer() + size, 0), size) << width;
            image->Fill(kWhite);
        }
    }
}

TEST(ManagerTest, CountsEveryObjectItMadeUntilItIsDestroyed)
{
    const int before = Manager::GetLiveObjectCount();
    {
        Owned<VtGraphics> graphics(Manager::NewGraphics(0));
        Owned<VtImage> image(Manager::NewImage(0));
        const Tools tools = Use(*graphics, MakePen(kRed, 1), MakeBrush(kRed));
        auto region = MakeRegion(ZedaRect(0, 0, 2, 2));
        Owned<VtGraphics> window(Manager::CreateWindowGraphics(4, 4, 32));
        EXPECT_EQ(Manager::GetLiveObjectCount(), before + 6);
        // Clips and paper the graphics keeps for itself are not the caller's objects.
        window->SelectClipRegion(region.get(), VT_CLIP_REPLACE);
        EXPECT_NE(window->SelectClipRegion(region.get(), VT_CLIP_INTERSECT), nullptr);
        EXPECT_EQ(Manager::GetLiveObjectCount(), before + 6);
        image.reset();
        EXPECT_EQ(Manager::GetLiveObjectCount(), before + 5);
    }
    EXPECT_EQ(Manager::GetLiveObjectCount(), before);
}

template <typename T>
bool Made(T* object)
{
    return Owned<T>(object) != nullptr;
}

TEST(ManagerTest, InjectedFaultFailsTheChosenCallOnceAfterTheSkippedOnes)
{
    Owned<VtGraphics> window(Manager::CreateWindowGraphics(4, 4, 24));
    const ZedaPoint triangle[] = {{0, 0}, {4, 0}, {0, 4}};
    const int three = 3;
    const std::pair<VtFaultKind, std::function<bool()>> cases[] = {
        {VT_FAULT_NEW_GRAPHICS, [] { return Made(Manager::NewGraphics(0)); }},
        {VT_FAULT_NEW_IMAGE, [] { return Made(Manager::NewImage(0)); }},
        {VT_FAULT_NEW_PEN, [] { return Made(Manager::NewPen(0)); }},
        {VT_FAULT_NEW_BRUSH, [] { return Made(Manager::NewBrush(0)); }},
        {VT_FAULT_NEW_RGN, [] { return Made(Manager::NewRgn(0)); }},
        {VT_FAULT_COMPATIBLE_GRAPHICS, [&] { return Owned<VtGraphics>(Manager::NewGraphics(0))->CreateCompatibleGraphics(window.get()); }},
        {VT_FAULT_COMPATIBLE_IMAGE, [&] { return Owned<VtImage>(Manager::NewImage(0))->CreateCompatibleImage(window.get(), 2, 2); }},
        {VT_FAULT_CREATE_IMAGE, [] { return Owned<VtImage>(Manager::NewImage(0))->CreateImage(2, 2, 1, 32, nullptr, nullptr); }},
        {VT_FAULT_CREATE_REGION, [&] { return Owned<VtRgn>(Manager::NewRgn(0))->CreatePolygonRegion(triangle, three); }},
        {VT_FAULT_CREATE_REGION, [&] { return Owned<VtRgn>(Manager::NewRgn(0))->CreatePolyPolygonRegion(triangle, &three, 1); }},
    };
    for (const auto& [kind, call] : cases) {
        Manager::InjectFault(kind, 1);
        EXPECT_EQ(std::vector({call(), call(), call()}), std::vector({true, false, true})) << kind;
    }
    // Kinds are independent, and ClearFaults disarms them all.
    Manager::InjectFault(VT_FAULT_NEW_BRUSH);
    EXPECT_TRUE(Made(Manager::NewPen(0)));
    Manager::ClearFaults();
    EXPECT_TRUE(Made(Manager::NewBrush(0)));
}

TEST(ManagerTest, SurfacesAnswerTheirKindDeviceStateAndWhetherTheyReadBack)
{
    TempDir dir;
    auto target = MakeImage(5, 5, 32);
    const std::tuple<VtGraphics*, int, bool, bool, bool> cases[] = {  // kind, printing, recording, read back
        {Manager::CreateWindowGraphics(8, 6, 32), 1, false, false, true},
        {Manager::NewGraphics(0), 2, false, false, false},  // no image selected
        {Manager::CreatePrintGraphics(2100, 2970, 100), 3, true, false, true},
        {Manager::CreateVectorGraphics(dir / "a.svg", VT_VECTOR_SVG, 8, 6, true), 4, true, false, false},
        {Manager::CreateVectorGraphics(dir / "b.pdf", VT_VECTOR_PDF, 8, 6, false), 4, false, false, false},
        {Manager::CreateRecordingGraphics(8, 6, 24), 6, false, true, true},
        {Manager::CreateNativeGradientGraphics(8, 6, 32), 8, false, false, true},
        {Manager::CreateImageGraphics(target.get()), 9, false, false, true},
    };
    Owned<VtGraphics> reader(Manager::CreateWindowGraphics(4, 4, 24));
    for (const auto& [made, kind, printing, recording, readsBack] : cases) {
        Owned<VtGraphics> graphics(made);
        ASSERT_NE(graphics, nullptr);
        EXPECT_EQ(std::tuple(graphics->GetSurfaceKind(), graphics->IsPrinting(), graphics->IsRecording()),
                  std::tuple(kind, printing, recording));
        EXPECT_EQ(reader->BitBlt(0, 0, 4, 4, graphics.get(), 0, 0, VT_ROP_COPY), readsBack) << kind;
        EXPECT_EQ(graphics->SavePng(dir / "read.png"), readsBack) << kind;
        EXPECT_TRUE(kind != VT_SURFACE_PRINTER || graphics->GetDeviceSize() == ZedaSize(827, 1169));  // A4, 100 dpi
    }
    Manager::SetCurGraphicsType(VT_SURFACE_IMAGE);
    EXPECT_EQ(Owned<VtGraphics>(Manager::NewGraphics(0))->GetSurfaceKind(), VT_SURFACE_IMAGE);
    Manager::SetCurGraphicsType(VT_SURFACE_MEMORY);

    TakeLoggedCodes();
    EXPECT_FALSE(Made(Manager::CreateWindowGraphics(8, 6, 8)));
    EXPECT_FALSE(Made(Manager::CreatePrintGraphics(0, 10, 300)));
    EXPECT_FALSE(Made(Manager::NewPen(1)));
    Owned<VtImage> image(Manager::NewImage(0));
    EXPECT_FALSE(image->CreateImage(4, 4, 1, 12, nullptr, nullptr));
    EXPECT_FALSE(image->CreateImage(4, 4, 3, 24, nullptr, nullptr));
    EXPECT_FALSE(image->CreateCompatibleImage(nullptr, 4, 4));
    EXPECT_FALSE(image->SavePng(dir / "never.png"));
    EXPECT_EQ(TakeLoggedCodes(),
              (std::vector<std::string>{"GMg002", "GMg002", "GMg001", "GIm002", "GIm002", "GIm001", "GIm003"}));
}

}  // namespace
}  // namespace VTC::test
