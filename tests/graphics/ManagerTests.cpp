#include "GraphicsTestSupport.h"

namespace VTC::test {
namespace {

class ManagerTest : public ::testing::Test {
protected:
    void TearDown() override
    {
        VtGraphicsManager::ClearFaults();
        VtGraphicsManager::SetCurGraphicsType(VT_SURFACE_MEMORY);
    }
};

TEST_F(ManagerTest, CountsEveryObjectItMadeUntilItIsDestroyed)
{
    const int before = VtGraphicsManager::GetLiveObjectCount();
    {
        Owned<VtGraphics> graphics(VtGraphicsManager::NewGraphics(0));
        Owned<VtImage> image(VtGraphicsManager::NewImage(0));
        Owned<VtPen> pen(VtGraphicsManager::NewPen(0));
        Owned<VtBrush> brush(VtGraphicsManager::NewBrush(0));
        Owned<VtRgn> region(VtGraphicsManager::NewRgn(0));
        Owned<VtGraphics> window(VtGraphicsManager::CreateWindowGraphics(4, 4, 32));
        EXPECT_EQ(VtGraphicsManager::GetLiveObjectCount(), before + 6);

        // Clips the graphics keeps for itself are not the caller's objects.
        ASSERT_TRUE(region->CreateRectRegion(0, 0, 2, 2));
        window->SelectClipRegion(region.get(), VT_CLIP_REPLACE);
        VtRgn* previous = window->SelectClipRegion(region.get(), VT_CLIP_INTERSECT);
        EXPECT_NE(previous, nullptr);
        EXPECT_EQ(VtGraphicsManager::GetLiveObjectCount(), before + 6);
        image.reset();
        EXPECT_EQ(VtGraphicsManager::GetLiveObjectCount(), before + 5);
    }
    EXPECT_EQ(VtGraphicsManager::GetLiveObjectCount(), before);
}

TEST_F(ManagerTest, InjectedFaultFailsTheChosenCallOnce)
{
    VtGraphicsManager::InjectFault(VT_FAULT_NEW_PEN, 2);
    Owned<VtPen> first(VtGraphicsManager::NewPen(0));
    Owned<VtPen> second(VtGraphicsManager::NewPen(0));
    Owned<VtPen> third(VtGraphicsManager::NewPen(0));
    Owned<VtPen> fourth(VtGraphicsManager::NewPen(0));
    EXPECT_NE(first, nullptr);
    EXPECT_NE(second, nullptr);
    EXPECT_EQ(third, nullptr);
    EXPECT_NE(fourth, nullptr);

    // Kinds are independent, and ClearFaults disarms all of them.
    VtGraphicsManager::InjectFault(VT_FAULT_NEW_IMAGE);
    VtGraphicsManager::InjectFault(VT_FAULT_NEW_BRUSH);
    Owned<VtGraphics> graphics(VtGraphicsManager::NewGraphics(0));
    EXPECT_NE(graphics, nullptr);
    EXPECT_EQ(Owned<VtImage>(VtGraphicsManager::NewImage(0)), nullptr);
    VtGraphicsManager::ClearFaults();
    EXPECT_NE(Owned<VtBrush>(VtGraphicsManager::NewBrush(0)), nullptr);
}

TEST_F(ManagerTest, EveryFaultKindReachesItsCall)
{
    Owned<VtGraphics> window(VtGraphicsManager::CreateWindowGraphics(4, 4, 24));
    const ZEDA::ZedaPoint triangle[] = {{0, 0}, {4, 0}, {0, 4}};
    const int three = 3;
    struct Case {
        VtFaultKind kind;
        std::function<bool()> call;
    };
    const Case cases[] = {
        {VT_FAULT_NEW_GRAPHICS, [] { return Owned<VtGraphics>(VtGraphicsManager::NewGraphics(0)) != nullptr; }},
        {VT_FAULT_NEW_IMAGE, [] { return Owned<VtImage>(VtGraphicsManager::NewImage(0)) != nullptr; }},
        {VT_FAULT_NEW_PEN, [] { return Owned<VtPen>(VtGraphicsManager::NewPen(0)) != nullptr; }},
        {VT_FAULT_NEW_BRUSH, [] { return Owned<VtBrush>(VtGraphicsManager::NewBrush(0)) != nullptr; }},
        {VT_FAULT_NEW_RGN, [] { return Owned<VtRgn>(VtGraphicsManager::NewRgn(0)) != nullptr; }},
        {VT_FAULT_COMPATIBLE_GRAPHICS,
         [&] { return Owned<VtGraphics>(VtGraphicsManager::NewGraphics(0))->CreateCompatibleGraphics(window.get()); }},
        {VT_FAULT_COMPATIBLE_IMAGE,
         [&] { return Owned<VtImage>(VtGraphicsManager::NewImage(0))->CreateCompatibleImage(window.get(), 2, 2); }},
        {VT_FAULT_CREATE_IMAGE,
         [] { return Owned<VtImage>(VtGraphicsManager::NewImage(0))->CreateImage(2, 2, 1, 32, nullptr, nullptr); }},
        {VT_FAULT_CREATE_REGION,
         [&] { return Owned<VtRgn>(VtGraphicsManager::NewRgn(0))->CreatePolygonRegion(triangle, three); }},
        {VT_FAULT_CREATE_REGION,
         [&] { return Owned<VtRgn>(VtGraphicsManager::NewRgn(0))->CreatePolyPolygonRegion(triangle, &three, 1); }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.kind);
        VtGraphicsManager::InjectFault(c.kind, 1);
        EXPECT_TRUE(c.call());
        EXPECT_FALSE(c.call());
        EXPECT_TRUE(c.call());
    }
}

TEST_F(ManagerTest, NewGraphicsFollowsTheCurrentGraphicsType)
{
    EXPECT_EQ(VtGraphicsManager::GetCurGraphicsType(), VT_SURFACE_MEMORY);
    Owned<VtGraphics> memory(VtGraphicsManager::NewGraphics(0));
    EXPECT_EQ(memory->GetSurfaceKind(), VT_SURFACE_MEMORY);
    VtGraphicsManager::SetCurGraphicsType(VT_SURFACE_IMAGE);
    Owned<VtGraphics> imageBacked(VtGraphicsManager::NewGraphics(0));
    EXPECT_EQ(imageBacked->GetSurfaceKind(), VT_SURFACE_IMAGE);
    EXPECT_EQ(imageBacked->GetTargetImage(), nullptr);
    auto image = MakeImage(3, 3, 24);
    imageBacked->SelectImage(image.get());
    EXPECT_EQ(imageBacked->GetTargetImage(), image.get());
}

TEST_F(ManagerTest, PensAndBrushesAreDefinedOnceUntilReleased)
{
    Owned<VtPen> pen(VtGraphicsManager::NewPen(0));
    EXPECT_FALSE(pen->CreatePen(3, kRed, 0, 0, 1.0));
    EXPECT_TRUE(pen->CreatePen(VT_PEN_SOLID, kRed, 0, 0, 2.5));
    EXPECT_FALSE(pen->CreatePen(VT_PEN_SOLID, kBlue, 0, 0, 1.0));
    EXPECT_EQ(pen->GetColour(), kRed);
    EXPECT_EQ(pen->GetWidth(), 2.5);
    pen->ReleasePen();
    EXPECT_FALSE(pen->IsCreated());
    EXPECT_TRUE(pen->CreatePen(VT_PEN_NULL, kBlue, 0, 0, 0.0));

    Owned<VtBrush> brush(VtGraphicsManager::NewBrush(0));
    EXPECT_FALSE(brush->CreateBrush(7, kRed, 100, 0, {0, 0}, 0));
    EXPECT_TRUE(brush->CreateBrush(VT_BRUSH_NULL, kRed, 100, 0, {0, 0}, 0));
    EXPECT_FALSE(brush->CreateBrush(VT_BRUSH_SOLID, kRed, 100, 0, {0, 0}, 0));
    brush->ReleaseBrush();
    EXPECT_TRUE(brush->CreateBrush(VT_BRUSH_SOLID, kBlue, 100, 0, {0, 0}, 0));
    EXPECT_EQ(brush->GetStyle(), VT_BRUSH_SOLID);
}

TEST_F(ManagerTest, SurfacesAnswerTheirKindAndDeviceState)
{
    TempDir dir;
    auto target = MakeImage(5, 5, 32);
    const struct {
        Owned<VtGraphics> graphics;
        int kind;
        bool printing;
        bool recording;
    } cases[] = {
        {Owned<VtGraphics>(VtGraphicsManager::CreateWindowGraphics(8, 6, 32)), 1, false, false},
        {Owned<VtGraphics>(VtGraphicsManager::NewGraphics(0)), 2, false, false},
        {Owned<VtGraphics>(VtGraphicsManager::CreatePrintGraphics(2100, 2970, 100)), 3, true, false},
        {Owned<VtGraphics>(VtGraphicsManager::CreateVectorGraphics(dir / "a.svg", VT_VECTOR_SVG, 8, 6, true)), 4,
         true, false},
        {Owned<VtGraphics>(VtGraphicsManager::CreateVectorGraphics(dir / "b.pdf", VT_VECTOR_PDF, 8, 6, false)), 4,
         false, false},
        {Owned<VtGraphics>(VtGraphicsManager::CreateRecordingGraphics(8, 6, 24)), 6, false, true},
        {Owned<VtGraphics>(VtGraphicsManager::CreateNativeGradientGraphics(8, 6, 32)), 8, false, false},
        {Owned<VtGraphics>(VtGraphicsManager::CreateImageGraphics(target.get())), 9, false, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.kind);
        ASSERT_NE(c.graphics, nullptr);
        EXPECT_EQ(c.graphics->GetSurfaceKind(), c.kind);
        EXPECT_EQ(c.graphics->IsPrinting(), c.printing);
        EXPECT_EQ(c.graphics->IsRecording(), c.recording);
    }
    // A4 at 100 dpi.
    EXPECT_EQ(cases[2].graphics->GetDeviceSize(), ZEDA::ZedaSize(827, 1169));
    EXPECT_EQ(cases[2].graphics->GetBitsPerPixel(), 24);

    EXPECT_EQ(VtGraphicsManager::CreateWindowGraphics(8, 6, 8), nullptr);
    EXPECT_EQ(VtGraphicsManager::CreateImageGraphics(nullptr), nullptr);
    EXPECT_EQ(VtGraphicsManager::CreatePrintGraphics(0, 10, 300), nullptr);
}

TEST_F(ManagerTest, CompatibleMemoryGraphicsTakesTheReferenceFormatAndState)
{
    Owned<VtGraphics> printer(VtGraphicsManager::CreatePrintGraphics(100, 100, 254));
    Owned<VtGraphics> memory(VtGraphicsManager::NewGraphics(0));
    ASSERT_TRUE(memory->CreateCompatibleGraphics(printer.get()));
    EXPECT_TRUE(memory->IsPrinting());
    EXPECT_TRUE(memory->IsRedFirst());
    Owned<VtImage> image(VtGraphicsManager::NewImage(0));
    ASSERT_TRUE(image->CreateCompatibleImage(memory.get(), 2, 2));
    EXPECT_TRUE(image->IsRedFirst());
    EXPECT_EQ(memory->GetScale(), 1.0);

    Owned<VtGraphics> window(VtGraphicsManager::CreateWindowGraphics(4, 4, 16));
    EXPECT_FALSE(window->CreateCompatibleGraphics(printer.get()));
    EXPECT_FALSE(memory->CreateCompatibleGraphics(nullptr));

    // Only image-backed graphics can be marked as printing.
    auto target = MakeImage(2, 2, 24);
    Owned<VtGraphics> imageBacked(VtGraphicsManager::CreateImageGraphics(target.get()));
    EXPECT_FALSE(imageBacked->IsRedFirst());
    imageBacked->SetPrinting(true);
    EXPECT_TRUE(imageBacked->IsPrinting());
    EXPECT_TRUE(imageBacked->IsRedFirst());
    window->SetPrinting(true);
    EXPECT_FALSE(window->IsPrinting());
}

}  // namespace
}  // namespace VTC::test
