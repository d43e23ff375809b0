#include <climits>
#include <functional>
#include <thread>
#include <tuple>

#include "GraphicsTestSupport.h"

namespace VTC::test {
namespace {

TEST(ImageTest, RowsArePaddedToFourBytesStartZeroedEvenInRecycledMemoryAndCopyUpToTheImageSize)
{
    for (const auto& [bpp, stride] : {std::pair{1, 4}, {8, 8}, {16, 12}, {24, 16}, {32, 20}}) {
        std::vector<unsigned char> bytes(static_cast<std::size_t>(stride * 3), 0xAB);
        EXPECT_EQ(MakeImage(5, 3, bpp)->GetBits(1000, bytes.data()), stride * 3) << bpp;
        EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 0), stride * 3) << bpp;
    }
    // Recycled blocks: each size reuses the one the last image of that size gave back.
    for (const auto& [width, height, bpp] : {std::tuple{700, 400, 32}, {1000, 300, 24}, {600, 500, 16}}) {
        for (int round = 0; round < 2; ++round) {
            auto image = MakeImage(width, height, bpp);
            const long long size = static_cast<long long>(image->GetRowBytes()) * height;
            ASSERT_EQ(std::count(image->GetBitsPointer(), image->GetBitsPointer() + size, 0), size) << width;
            image->Fill(kWhite);
        }
    }
    const std::vector<unsigned char> rows{1, 2, 3, 4, 5, 6, 7, 8, 9, 9, 9, 9, 9, 9, 9, 9};
    Owned<VtImage> image(Manager::NewImage(0));
    ASSERT_TRUE(image->CreateImage(1, 2, 1, 32, nullptr, rows.data()));
    EXPECT_EQ(image->GetPixelColour(0, 1), 0x08070605u);
    EXPECT_EQ(image->SetBits(16, rows.data() + 8), 8);
    EXPECT_EQ(image->GetPixelColour(0, 1), 0x09090909u);
}

// A recycled block is zeroed lazily: only where the first write (a copy blit
// or SetBits) does not reach, or whole when the pixels are looked at first.
TEST(ImageTest, RecycledImagesAreZeroWhereverTheirFirstWriteDoesNotReach)
{
    for (int bpp : {1, 24, 32}) {
        const int width = 700, height = 400;
        const auto dirty = [&] { MakeImage(width, height, bpp, kWhite); };  // given back at once
        dirty();
        auto viaGetBits = MakeImage(width, height, bpp);
        std::vector<unsigned char> bytes(static_cast<std::size_t>(viaGetBits->GetRowBytes()) * height, 0xAB);
        viaGetBits->GetBits(static_cast<long long>(bytes.size()), bytes.data());
        EXPECT_EQ(std::count(bytes.begin(), bytes.end(), 0), static_cast<long>(bytes.size())) << bpp;
        viaGetBits.reset();
        // A copy of white into the middle: white there, black everywhere else.
        auto source = MakeImage(300, 200, bpp, kWhite);
        auto sourceGraphics = GraphicsOn(source.get());
        auto target = MakeImage(width, height, bpp);
        GraphicsOn(target.get())->BitBlt(101, 53, 300, 200, sourceGraphics.get(), 0, 0, VT_ROP_COPY);
        const ZedaRect copied(101, 53, 401, 253);
        int wrong = 0;
        ForEachPixel(width, height, [&](int x, int y) {
            const unsigned int expected = copied.PtInRect({x, y}) ? kWhite : kBlack;
            wrong += ((target->GetPixelColour(x, y) ^ expected) & 0xFFFFFFu) != 0;  // 32 bits: no alpha in new pixels
        });
        EXPECT_EQ(wrong, 0) << bpp;
        const long long size = static_cast<long long>(target->GetRowBytes()) * height;
        target.reset();
        // Half written by SetBits: the other half 0.
        dirty();
        auto half = MakeImage(width, height, bpp);
        std::vector<unsigned char> ones(static_cast<std::size_t>(size / 2), 0x11);
        EXPECT_EQ(half->SetBits(size / 2, ones.data()), size / 2);
        EXPECT_EQ(std::count(half->GetBitsPointer(), half->GetBitsPointer() + size, 0), size - size / 2) << bpp;
    }
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
    // The nearest entry of the palette given, or of a grey ramp.
    EXPECT_EQ(bytesOf(8, {ZEDARGB(20, 10, 230), ZEDARGB(90, 90, 90)}), (std::vector{87, 90, 0, 0}));
    Owned<VtImage> indexed(Manager::NewImage(0));
    const VtPalette palette({kBlack, kRed, kBlue});
    ASSERT_TRUE(indexed->CreateImage(1, 1, 1, 8, &palette, nullptr));
    indexed->SetPixelColour(0, 0, ZEDARGB(20, 10, 230));
    EXPECT_EQ(std::pair(int{indexed->GetBitsPointer()[0]}, indexed->GetPixelColour(0, 0)), std::pair(2, kBlue));
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
        Owned<VtImage> image(Manager::NewImage(0));
        ASSERT_TRUE(image->CreateCompatibleImage(reference, 3, 2));
        VtImageInfo info;
        ASSERT_TRUE(image->GetImageInfo(info));
        EXPECT_EQ(std::pair(int{info.bitsPerPixel}, int{info.reserved1}),
                  std::pair(firstByte == 0xA3 ? 16 : 24, firstByte == 8 ? 1 : 0));
        image->SetPixelColour(0, 0, ZEDARGB(8, 20, 24));  // exact in 5-6-5 as well
        EXPECT_EQ(std::pair(image->GetPixelColour(0, 0), int{info.bits[0]}), std::pair(ZEDARGB(8, 20, 24), firstByte));
    }
    EXPECT_TRUE(memory->IsPrinting() && !window->IsPrinting());
    EXPECT_EQ(memory->GetScale(), 1.0);
    EXPECT_FALSE(window->CreateCompatibleGraphics(printer.get()));
}

TEST(ManagerTest, CountsLiveObjectsAndFailsInjectedCalls)
{
    const int before = Manager::GetLiveObjectCount();
    {
        Owned<VtImage> image(Manager::NewImage(0));
        Owned<VtGraphics> window(Manager::CreateWindowGraphics(4, 4, 32));
        const Tools tools = Use(*window, MakePen(kRed, 1), MakeBrush(kRed));
        auto region = MakeRegion(ZedaRect(0, 0, 2, 2));
        // Clips and paper the graphics keeps for itself are not the caller's objects.
        window->SelectClipRegion(region.get(), VT_CLIP_REPLACE);
        EXPECT_NE(window->SelectClipRegion(region.get(), VT_CLIP_INTERSECT), nullptr);
        EXPECT_EQ(Manager::GetLiveObjectCount(), before + 5);
        image.reset();
        EXPECT_EQ(Manager::GetLiveObjectCount(), before + 4);
    }
    EXPECT_EQ(Manager::GetLiveObjectCount(), before);

    // An injected fault fails the chosen kind of call once, after the skipped ones.
    Owned<VtGraphics> window(Manager::CreateWindowGraphics(4, 4, 24));
    const ZedaPoint triangle[] = {{0, 0}, {4, 0}, {0, 4}};
    const int three = 3;
    const auto graphics = [] { return Owned<VtGraphics>(Manager::NewGraphics(0)); };
    const auto image = [] { return Owned<VtImage>(Manager::NewImage(0)); };
    const auto region = [] { return Owned<VtRgn>(Manager::NewRgn(0)); };
    const std::pair<VtFaultKind, std::function<bool()>> cases[] = {
        {VT_FAULT_NEW_GRAPHICS, [&] { return graphics() != nullptr; }},
        {VT_FAULT_NEW_IMAGE, [&] { return image() != nullptr; }},
        {VT_FAULT_NEW_PEN, [] { return Owned<VtPen>(Manager::NewPen(0)) != nullptr; }},
        {VT_FAULT_NEW_BRUSH, [] { return Owned<VtBrush>(Manager::NewBrush(0)) != nullptr; }},
        {VT_FAULT_NEW_RGN, [&] { return region() != nullptr; }},
        {VT_FAULT_COMPATIBLE_GRAPHICS, [&] { return graphics()->CreateCompatibleGraphics(window.get()); }},
        {VT_FAULT_COMPATIBLE_IMAGE, [&] { return image()->CreateCompatibleImage(window.get(), 2, 2); }},
        {VT_FAULT_CREATE_IMAGE, [&] { return image()->CreateImage(2, 2, 1, 32, nullptr, nullptr); }},
        {VT_FAULT_CREATE_REGION, [&] { return region()->CreatePolygonRegion(triangle, three); }},
        {VT_FAULT_CREATE_REGION, [&] { return region()->CreatePolyPolygonRegion(triangle, &three, 1); }},
    };
    for (const auto& [kind, call] : cases) {
        Manager::InjectFault(kind, 1);
        EXPECT_EQ(std::vector({call(), call(), call()}), std::vector({true, false, true})) << kind;
    }
    // Kinds are independent, and ClearFaults disarms them all.
    Manager::InjectFault(VT_FAULT_NEW_IMAGE);
    EXPECT_NE(graphics(), nullptr);
    Manager::ClearFaults();
    EXPECT_NE(image(), nullptr);
}

TEST(ManagerTest, ObjectsMayBeDestroyedOnAnotherThreadThanTheOneThatMadeThem)
{
    Owned<VtGraphics> window(Manager::CreateWindowGraphics(8, 8, 32));
    const auto memoryGraphics = [&] {
        Owned<VtGraphics> memory(Manager::NewGraphics(0));
        memory->CreateCompatibleGraphics(window.get());
        return memory;
    };
    const auto image = [] { return MakeImage(4, 4, 32); };
    const auto pen = [] { return Owned<VtPen>(Manager::NewPen(0)); };
    const auto brush = [] { return Owned<VtBrush>(Manager::NewBrush(0)); };
    const auto region = [] { return MakeRegion(ZedaRect(0, 0, 2, 2)); };
    const int before = Manager::GetLiveObjectCount();
    // Made on one thread and destroyed on another, which keeps their memory
    // until it ends: nothing is lost or given back twice, and the counts are kept.
    {
        auto objects = std::make_tuple(memoryGraphics(), image(), pen(), brush(), region());
        EXPECT_EQ(Manager::GetLiveObjectCount(), before + 5);
        std::thread([&] { objects = {}; }).join();
        EXPECT_EQ(Manager::GetLiveObjectCount(), before);
    }
    // Their memory, kept by that thread, went back to the heap when it ended;
    // the next objects of every kind are made as well.
    auto again = std::make_tuple(memoryGraphics(), image(), pen(), brush(), region());
    EXPECT_EQ(Manager::GetLiveObjectCount(), before + 5);
}

TEST(ManagerTest, SurfacesAnswerTheirKindDeviceStateAndWhetherTheyReadBack)
{
    TempDir dir;
    auto target = MakeImage(5, 5, 32);
    const std::tuple<VtGraphics*, int, bool, bool, bool> cases[] = {  // kind, printing, recording, read back
        {Manager::CreateWindowGraphics(8, 6, 32), VT_SURFACE_WINDOW, false, false, true},
        {Manager::NewGraphics(0), VT_SURFACE_MEMORY, false, false, false},  // no image selected
        {Manager::CreatePrintGraphics(2100, 2970, 100), VT_SURFACE_PRINTER, true, false, true},
        {Manager::CreateVectorGraphics(dir / "a.svg", VT_VECTOR_SVG, 8, 6, true), VT_SURFACE_VECTOR, true, false,
         false},
        {Manager::CreateVectorGraphics(dir / "b.pdf", VT_VECTOR_PDF, 8, 6, false), VT_SURFACE_VECTOR, false, false,
         false},
        {Manager::CreateRecordingGraphics(8, 6, 24), VT_SURFACE_RECORDING, false, true, true},
        {Manager::CreateNativeGradientGraphics(8, 6, 32), VT_SURFACE_NATIVE_GRADIENT, false, false, true},
        {Manager::CreateImageGraphics(target.get()), VT_SURFACE_IMAGE, false, false, true},
    };
    Owned<VtGraphics> reader(Manager::CreateWindowGraphics(4, 4, 24));
    for (const auto& [made, kind, printing, recording, readsBack] : cases) {
        Owned<VtGraphics> graphics(made);
        ASSERT_NE(graphics, nullptr);
        EXPECT_EQ(std::tuple(graphics->GetSurfaceKind(), graphics->IsPrinting(), graphics->IsRecording()),
                  std::tuple(kind, printing, recording));
        EXPECT_EQ(reader->BitBlt(0, 0, 4, 4, graphics.get(), 0, 0, VT_ROP_COPY), readsBack) << kind;
        EXPECT_TRUE(kind != VT_SURFACE_PRINTER || graphics->GetDeviceSize() == ZedaSize(827, 1169));  // A4, 100 dpi
    }
    Manager::SetCurGraphicsType(VT_SURFACE_IMAGE);
    EXPECT_EQ(Owned<VtGraphics>(Manager::NewGraphics(0))->GetSurfaceKind(), VT_SURFACE_IMAGE);
    Manager::SetCurGraphicsType(VT_SURFACE_MEMORY);

    TakeLog();
    EXPECT_EQ(Manager::CreateWindowGraphics(8, 6, 8), nullptr);
    EXPECT_EQ(Manager::CreatePrintGraphics(0, 10, 300), nullptr);
    EXPECT_EQ(Manager::NewPen(1), nullptr);
    Owned<VtImage> image(Manager::NewImage(0));
    EXPECT_FALSE(image->CreateImage(4, 4, 1, 12, nullptr, nullptr));
    EXPECT_FALSE(image->CreateCompatibleImage(nullptr, 4, 4));
    EXPECT_FALSE(image->SavePng(dir / "never.png"));
    EXPECT_EQ(TakeLog(), (std::vector<std::string>{"300 GMg002", "300 GMg002", "300 GMg001", "300 GIm002",
                                                   "300 GIm001", "300 GIm003"}));
    // Images past the limit are refused before any memory is asked for, and
    // so are pages whose pixels would be: a row's padding counts.
    const int rows = static_cast<int>(VtImage::kMaxPixelBytes / (4 * 65536));
    EXPECT_FALSE(image->CreateImage(65536, rows + 1, 1, 32, nullptr, nullptr));
    EXPECT_FALSE(image->CreateImage(1431655765, 3, 1, 8, nullptr, nullptr));  // 2^32 - 1 bytes before padding
    Owned<VtGraphics> window(Manager::CreateWindowGraphics(4, 4, 32));
    EXPECT_FALSE(image->CreateCompatibleImage(window.get(), 65536, rows + 1));
    EXPECT_FALSE(image->CreateImage(INT_MAX, INT_MAX, 1, 32, nullptr, nullptr));
    EXPECT_EQ(Manager::CreatePrintGraphics(100000, 100000, 600), nullptr);  // 10 m square
    EXPECT_EQ(TakeLog(), (std::vector<std::string>{"300 GIm006", "300 GIm006", "300 GIm006", "300 GIm006",
                                                   "300 GMg003"}));
    EXPECT_FALSE(image->IsCreated());
}

}  // namespace
}  // namespace VTC::test
