#include <cstring>
#include <tuple>

#include "GraphicsTestSupport.h"

namespace VTC::test {
namespace {

using ZEDA::ZedaPoint;
using ZEDA::ZedaRect;

// Every drawing call on an image of each raster depth, through an
// image-backed graphics (scale 1, origin 0).
class DrawingTest : public ::testing::TestWithParam<int> {
protected:
    void SetUp() override
    {
        image_ = MakeImage(24, 20, GetParam());
        image_->Fill(kWhite);
        graphics_ = GraphicsOn(image_.get());
    }

    void Use(unsigned int penColour, double width, int penStyle, unsigned int brushColour, int brushStyle)
    {
        pen_ = MakePen(penColour, width, penStyle);
        brush_ = MakeBrush(brushColour, brushStyle);
        graphics_->SelectPen(pen_.get());
        graphics_->SelectBrush(brush_.get());
    }

    Owned<VtImage> image_;
    Owned<VtGraphics> graphics_;
    Owned<VtPen> pen_;
    Owned<VtBrush> brush_;
};

TEST_P(DrawingTest, RectangleCoversLeftToRightMinusOne)
{
    Use(kRed, 0, VT_PEN_SOLID, kBlue, VT_BRUSH_SOLID);
    graphics_->DrawRectangle({2, 3, 9, 8});
    EXPECT_EQ(ColourBounds(*image_, kRed), ZedaRect(2, 3, 9, 8));
    EXPECT_EQ(CountColour(*image_, kRed), 2 * (7 + 5) - 4);
    EXPECT_EQ(ColourBounds(*image_, kBlue), ZedaRect(3, 4, 8, 7));
    EXPECT_EQ(CountColour(*image_, kBlue), 5 * 3);

    // Corners given the other way round draw the same rectangle.
    image_->Fill(kWhite);
    graphics_->DrawRectangle({9, 8, 2, 3});
    EXPECT_EQ(ColourBounds(*image_, kRed), ZedaRect(2, 3, 9, 8));
}

TEST_P(DrawingTest, WidePensAreCentredOnTheEdgePixelsOfTheRectangle)
{
    // Odd pens reach out as far as in; even ones one pixel further up and left.
    for (const auto& [width, inked, inside] : {std::tuple{1, ZedaRect(3, 3, 20, 16), ZedaRect(4, 4, 19, 15)},
                                               {3, ZedaRect(2, 2, 21, 17), ZedaRect(5, 5, 18, 14)},
                                               {5, ZedaRect(1, 1, 22, 18), ZedaRect(6, 6, 17, 13)},
                                               {4, ZedaRect(1, 1, 21, 17), ZedaRect(5, 5, 17, 13)}}) {
        image_->Fill(kWhite);
        Use(kRed, width, VT_PEN_SOLID, kBlue, VT_BRUSH_SOLID);
        graphics_->DrawRectangle({3, 3, 20, 16});
        EXPECT_EQ(ColourBounds(*image_, kRed), inked) << width;
        EXPECT_EQ(ColourBounds(*image_, kBlue), inside) << width;
        EXPECT_EQ(CountColour(*image_, kBlue), inside.Width() * inside.Height()) << width;
    }
    // A pen closing the hole covers one box: 4 x 3 grown by 2 each way.
    image_->Fill(kWhite);
    Use(kRed, 5, VT_PEN_SOLID, kBlue, VT_BRUSH_SOLID);
    graphics_->DrawRectangle({10, 8, 14, 11});
    EXPECT_EQ(ColourBounds(*image_, kRed), ZedaRect(8, 6, 16, 13));
    EXPECT_EQ(CountColour(*image_, kRed), 8 * 7);
}

TEST_P(DrawingTest, NullPenFillsOnlyAndNullBrushOutlinesOnly)
{
    Use(kRed, 0, VT_PEN_NULL, kBlue, VT_BRUSH_SOLID);
    graphics_->DrawRectangle({2, 3, 9, 8});
    EXPECT_EQ(CountColour(*image_, kRed), 0);
    EXPECT_EQ(ColourBounds(*image_, kBlue), ZedaRect(2, 3, 9, 8));
    EXPECT_EQ(CountColour(*image_, kBlue), 7 * 5);

    image_->Fill(kWhite);
    Use(kRed, 2, VT_PEN_SOLID, kBlue, VT_BRUSH_NULL);
    graphics_->DrawRectangle({2, 3, 12, 13});
    graphics_->DrawEllipse({12, 0, 24, 12});
    EXPECT_EQ(CountColour(*image_, kBlue), 0);
    EXPECT_EQ(image_->GetPixelColour(7, 8), kWhite);
    EXPECT_EQ(image_->GetPixelColour(18, 6), kWhite);
    // The two-pixel pen reaches one pixel past the left and top edges of the rectangle.
    EXPECT_EQ(ColourBounds(*image_, kRed), ZedaRect(1, 0, 24, 13));
}

TEST_P(DrawingTest, LinesRunFromTheFirstPointUpToTheLast)
{
    Use(kRed, 0, VT_PEN_SOLID, kBlue, VT_BRUSH_SOLID);
    graphics_->DrawLine({1, 5}, {8, 5});
    EXPECT_EQ(ColourBounds(*image_, kRed), ZedaRect(1, 5, 8, 6));
    image_->Fill(kWhite);
    graphics_->DrawLine({8, 5}, {1, 5});
    EXPECT_EQ(ColourBounds(*image_, kRed), ZedaRect(2, 5, 9, 6));

    image_->Fill(kWhite);
    Use(kGreen, 3, VT_PEN_SOLID, kBlue, VT_BRUSH_SOLID);
    graphics_->DrawLine({10, 0}, {10, 10});
    EXPECT_EQ(ColourBounds(*image_, kGreen), ZedaRect(9, 0, 12, 10));
    EXPECT_EQ(CountColour(*image_, kGreen), 30);

    // Bands of a pen as wide as their spacing meet without gaps or overlap.
    image_->Fill(kWhite);
    Use(kBlue, 2, VT_PEN_SOLID, kBlue, VT_BRUSH_SOLID);
    for (int y = 0; y <= 20; y += 2) {
        graphics_->DrawLine({-1, y}, {25, y});
    }
    EXPECT_EQ(CountColour(*image_, kBlue), 24 * 20);
}

TEST_P(DrawingTest, EllipseAndWholeArcFillTheirBounds)
{
    Use(kRed, 0, VT_PEN_SOLID, kBlue, VT_BRUSH_SOLID);
    graphics_->DrawEllipse({0, 0, 21, 15});
    const ZedaRect inked = ColourBounds(*image_, kRed);
    EXPECT_EQ(inked, ZedaRect(0, 0, 21, 15));
    EXPECT_EQ(image_->GetPixelColour(10, 7), kBlue);
    EXPECT_EQ(image_->GetPixelColour(0, 0), kWhite);
    EXPECT_EQ(image_->GetPixelColour(20, 14), kWhite);

    // An arc from a point back to itself is the whole outline, not filled;
    // a pen of 3 on it covers a pixel each side of the edge pixels.
    image_->Fill(kWhite);
    Use(kGreen, 3, VT_PEN_SOLID, kBlue, VT_BRUSH_SOLID);
    graphics_->DrawArc({2, 2, 18, 18}, {10, 10}, {10, 10});
    EXPECT_EQ(ColourBounds(*image_, kGreen), ZedaRect(1, 1, 19, 19));
    EXPECT_EQ(CountColour(*image_, kBlue), 0);
    EXPECT_EQ(ColourMap(*image_, kGreen)[9], ".###............###.....");
    EXPECT_EQ(ColourMap(*image_, kGreen)[2], ".....##########.........");
}

TEST_P(DrawingTest, ArcGoesCounterClockwiseFromStartToEnd)
{
    Use(kRed, 1, VT_PEN_SOLID, kBlue, VT_BRUSH_SOLID);
    // From the east to the north: the upper right quarter only.
    graphics_->DrawArc({0, 0, 20, 20}, {20, 10}, {10, 0});
    const ZedaRect quarter = ColourBounds(*image_, kRed);
    EXPECT_GE(quarter.left, 9);
    EXPECT_LE(quarter.bottom, 11);
    EXPECT_EQ(quarter.right, 20);
    EXPECT_EQ(quarter.top, 0);
    // From the north to the east: the other three quarters.
    image_->Fill(kWhite);
    graphics_->DrawArc({0, 0, 20, 20}, {10, 0}, {20, 10});
    EXPECT_EQ(ColourBounds(*image_, kRed), ZedaRect(0, 0, 20, 20));
    EXPECT_EQ(image_->GetPixelColour(16, 3), kWhite);
}

TEST_P(DrawingTest, PolygonIsFilledThenOutlined)
{
    Use(kRed, 0, VT_PEN_NULL, kBlue, VT_BRUSH_SOLID);
    const ZedaPoint square[] = {{2, 2}, {12, 2}, {12, 12}, {2, 12}};
    graphics_->DrawPolygon(square, 4);
    EXPECT_EQ(ColourBounds(*image_, kBlue), ZedaRect(2, 2, 12, 12));
    EXPECT_EQ(CountColour(*image_, kBlue), 100);

    image_->Fill(kWhite);
    Use(kRed, 0, VT_PEN_SOLID, kBlue, VT_BRUSH_SOLID);
    const ZedaPoint triangle[] = {{2, 2}, {20, 2}, {2, 18}};
    graphics_->DrawPolygon(triangle, 3);
    EXPECT_EQ(image_->GetPixelColour(5, 5), kBlue);
    EXPECT_EQ(image_->GetPixelColour(2, 10), kRed);
    EXPECT_EQ(image_->GetPixelColour(10, 2), kRed);
    EXPECT_EQ(image_->GetPixelColour(18, 16), kWhite);
}

INSTANTIATE_TEST_SUITE_P(Depths, DrawingTest, ::testing::Values(16, 24, 32));

TEST(DrawingOnImagesTest, ThirtyTwoBitDrawingKeepsTheFourthByteElsewhere)
{
    auto image = MakeImage(4, 1, 32);
    image->Fill(ZEDARGBA(1, 2, 3, 0x12));
    auto graphics = GraphicsOn(image.get());
    auto pen = MakePen(kRed, 0);
    graphics->SelectPen(pen.get());
    graphics->DrawLine({0, 0}, {2, 0});
    EXPECT_EQ(image->GetPixelColour(1, 0), kRed);
    EXPECT_EQ(image->GetPixelColour(2, 0), ZEDARGBA(1, 2, 3, 0x12));
    EXPECT_EQ(image->GetPixelColour(3, 0), ZEDARGBA(1, 2, 3, 0x12));
}

TEST(DrawingOnImagesTest, RedFirstAndMonoImagesTakeTheRightBytes)
{
    Owned<VtGraphics> printer(VtGraphicsManager::CreatePrintGraphics(100, 100, 254));
    Owned<VtImage> image(VtGraphicsManager::NewImage(0));
    ASSERT_TRUE(image->CreateCompatibleImage(printer.get(), 4, 4));
    auto graphics = GraphicsOn(image.get());
    auto brush = MakeBrush(ZEDARGB(200, 100, 50));
    auto pen = MakePen(kBlack, 0, VT_PEN_NULL);
    graphics->SelectBrush(brush.get());
    graphics->SelectPen(pen.get());
    graphics->DrawRectangle({0, 0, 2, 2});
    EXPECT_EQ(image->GetBitsPointer()[0], 200);
    EXPECT_EQ(image->GetBitsPointer()[2], 50);

    auto mono = MakeImage(16, 2, 1);
    auto monoGraphics = GraphicsOn(mono.get());
    auto white = MakeBrush(ZEDARGB(250, 250, 250));
    monoGraphics->SelectBrush(white.get());
    monoGraphics->SelectPen(pen.get());
    monoGraphics->DrawRectangle({4, 0, 12, 1});
    EXPECT_EQ(mono->GetBitsPointer()[0], 0x0F);
    EXPECT_EQ(mono->GetBitsPointer()[1], 0xF0);
    EXPECT_EQ(mono->GetBitsPointer()[4], 0x00);
}

}  // namespace
}  // namespace VTC::test
