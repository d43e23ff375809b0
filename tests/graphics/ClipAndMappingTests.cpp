#include "GraphicsTestSupport.h"

namespace VTC::test {
namespace {

using ZEDA::ZedaPoint;
using ZEDA::ZedaRect;
using ZEDA::ZedaSize;

Owned<VtRgn> RectRegion(int l, int t, int r, int b)
{
    Owned<VtRgn> region(VtGraphicsManager::NewRgn(0));
    EXPECT_TRUE(region->CreateRectRegion(l, t, r, b));
    return region;
}

class ClipTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        window_.reset(VtGraphicsManager::CreateWindowGraphics(20, 20, 32));
        graphics_ = window_.get();
        pen_ = MakePen(kBlack, 0, VT_PEN_NULL);
        graphics_->SelectPen(pen_.get());
    }

    // Fills the whole window in `colour` and reports what it covered.
    ZedaRect Paint(unsigned int colour)
    {
        auto brush = MakeBrush(colour);
        graphics_->SelectBrush(brush.get());
        graphics_->DrawRectangle({0, 0, 20, 20});
        graphics_->SelectBrush(nullptr);
        return ColourBounds(*graphics_->GetTargetImage(), colour);
    }

    Owned<VtGraphics> window_;
    VtGraphics* graphics_ = nullptr;
    Owned<VtPen> pen_;
};

TEST_F(ClipTest, IntersectAndReplaceHandBackThePreviousClip)
{
    auto outer = RectRegion(5, 5, 15, 15);
    EXPECT_EQ(graphics_->SelectClipRegion(outer.get(), VT_CLIP_REPLACE), nullptr);
    outer.reset();  // the graphics keeps its own copy
    EXPECT_EQ(Paint(kRed), ZedaRect(5, 5, 15, 15));

    auto right = RectRegion(10, 0, 20, 20);
    VtRgn* previous = graphics_->SelectClipRegion(right.get(), VT_CLIP_INTERSECT);
    ASSERT_NE(previous, nullptr);
    EXPECT_EQ(previous->GetBoundingRect(), ZedaRect(5, 5, 15, 15));
    EXPECT_EQ(graphics_->GetClipRegion()->GetBoundingRect(), ZedaRect(10, 5, 15, 15));
    EXPECT_EQ(Paint(kBlue), ZedaRect(10, 5, 15, 15));

    // Putting the previous clip back; both handed-back clips stay valid.
    VtRgn* narrowed = graphics_->SelectClipRegion(previous, VT_CLIP_REPLACE);
    EXPECT_EQ(Paint(kGreen), ZedaRect(5, 5, 15, 15));
    EXPECT_EQ(narrowed->GetBoundingRect(), ZedaRect(10, 5, 15, 15));
    EXPECT_EQ(previous->GetBoundingRect(), ZedaRect(5, 5, 15, 15));

    EXPECT_NE(graphics_->SelectClipRegion(nullptr, VT_CLIP_REPLACE), nullptr);
    EXPECT_EQ(graphics_->GetClipRegion(), nullptr);
    EXPECT_EQ(Paint(kWhite), ZedaRect(0, 0, 20, 20));
    EXPECT_EQ(graphics_->SelectClipRegion(right.get(), 3), nullptr);
    EXPECT_EQ(graphics_->GetClipRegion(), nullptr);
}

TEST_F(ClipTest, PolygonClipLimitsEveryDrawingCall)
{
    const ZedaPoint triangle[] = {{0, 0}, {20, 0}, {0, 20}};
    Owned<VtRgn> region(VtGraphicsManager::NewRgn(0));
    ASSERT_TRUE(region->CreatePolygonRegion(triangle, 3));
    graphics_->SelectClipRegion(region.get(), VT_CLIP_REPLACE);
    Paint(kBlue);
    auto red = MakePen(kRed, 3);
    graphics_->SelectPen(red.get());
    graphics_->DrawLine({0, 10}, {20, 10});
    const VtImage& pixels = *graphics_->GetTargetImage();
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 20; ++x) {
            if (!region->PtInRegion(x, y)) {
                EXPECT_EQ(pixels.GetPixelColour(x, y), kWhite) << x << "," << y;
            }
        }
    }
    EXPECT_EQ(pixels.GetPixelColour(2, 2), kBlue);
    EXPECT_EQ(ColourBounds(pixels, kRed), ZedaRect(0, 9, 10, 12));
}

TEST(MappingTest, DeviceIsLogicalTimesScalePlusOriginRoundedToNearest)
{
    Owned<VtGraphics> window(VtGraphicsManager::CreateWindowGraphics(10, 10, 24));
    EXPECT_EQ(window->GetCoordinateMode(), 1);
    EXPECT_EQ(window->GetScale(), 1.0);
    EXPECT_EQ(window->GetOrigin(), ZedaPoint(0, 0));
    EXPECT_EQ(window->SetOrigin({7, -3}), ZedaPoint(0, 0));
    window->SetScale(0.5);
    ZedaPoint points[] = {{3, -3}, {-5, 4}};
    window->LogicalToDevicePoints(points, 2);
    EXPECT_EQ(points[0], ZedaPoint(9, -4));   // 1.5 + 7 = 8.5 -> 9; -1.5 - 3 = -4.5 -> -4
    EXPECT_EQ(points[1], ZedaPoint(5, -1));   // -2.5 + 7 = 4.5 -> 5; 2 - 3
    window->DeviceToLogicalPoints(points, 2);
    EXPECT_EQ(points[0], ZedaPoint(4, -2));
    ZedaRect rect{0, 0, 9, 5};
    window->LogicalToDeviceRect(rect);
    EXPECT_EQ(rect, ZedaRect(7, -3, 12, 0));
    window->DeviceToLogicalRect(rect);
    EXPECT_EQ(rect, ZedaRect(0, 0, 10, 6));
    ZedaSize size{9, -5};
    window->LogicalToDeviceSize(size);
    EXPECT_EQ(size, ZedaSize(5, -2));
    window->DeviceToLogicalSize(size);
    EXPECT_EQ(size, ZedaSize(10, -4));

    // Mode 0 is plain device pixels; the origin is kept for when it returns.
    EXPECT_EQ(window->SetCoordinateMode(0), 1);
    ZedaRect plain{1, 2, 3, 4};
    window->LogicalToDeviceRect(plain);
    EXPECT_EQ(plain, ZedaRect(1, 2, 3, 4));
    EXPECT_EQ(window->GetOrigin(), ZedaPoint(7, -3));
    EXPECT_EQ(window->SetCoordinateMode(1), 0);
    window->SetScale(-2.0);
    EXPECT_EQ(window->GetScale(), 0.5);
}

TEST(MappingTest, DrawingAndPenWidthsAreInLogicalUnits)
{
    Owned<VtGraphics> window(VtGraphicsManager::CreateWindowGraphics(30, 30, 16));
    window->SetScale(2.0);
    window->SetOrigin({3, 4});
    auto pen = MakePen(kRed, 2);
    auto brush = MakeBrush(kBlue);
    window->SelectPen(pen.get());
    window->SelectBrush(brush.get());
    window->DrawRectangle({0, 0, 10, 8});
    // (3, 4, 23, 20) outlined by a pen of 4 pixels centred on its edge pixels.
    const VtImage& pixels = *window->GetTargetImage();
    EXPECT_EQ(ColourBounds(pixels, kRed), ZedaRect(1, 2, 24, 21));
    EXPECT_EQ(ColourBounds(pixels, kBlue), ZedaRect(5, 6, 20, 17));
}

TEST(MappingTest, PrinterPageCountsTenthsOfAMillimetre)
{
    Owned<VtGraphics> printer(VtGraphicsManager::CreatePrintGraphics(1000, 500, 508));
    EXPECT_EQ(printer->GetDeviceSize(), ZedaSize(2000, 1000));
    EXPECT_EQ(printer->GetCoordinateMode(), 1);
    EXPECT_DOUBLE_EQ(printer->GetScale(), 2.0);
    ZedaSize tenMm{100, 50};
    printer->LogicalToDeviceSize(tenMm);
    EXPECT_EQ(tenMm, ZedaSize(200, 100));
    printer->SetScale(1.0);
    ZedaRect rect{10, 20, 30, 40};
    printer->LogicalToDeviceRect(rect);
    EXPECT_EQ(rect, ZedaRect(10, 20, 30, 40));
}

}  // namespace
}  // namespace VTC::test
