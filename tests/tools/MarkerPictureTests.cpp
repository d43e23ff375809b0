// The pictures of markers and lines keep the alpha of their #AARRGGBB
// colours: on nothing they are see-through by that much, and on a white sheet
// they come out as the colour mixed with white.

#include <cstdlib>

#include "ContactSheet.h"
#include "Png.h"
#include "SymbolRenderer.h"
#include "ToolTestSupport.h"

namespace {

using namespace lqtool;
using LqExample::LineSymbol;
using LqExample::MarkerShape;
using LqExample::MarkerSymbol;
using LqExample::RasterImage;

unsigned int Alpha(unsigned int pixel)
{
    return ZEDAALPHAVAL(pixel);
}

unsigned int Rgb(unsigned int pixel)
{
    return pixel & 0xFFFFFFu;
}

// How many pixels of a picture have exactly this alpha.
int CountAlpha(const RasterImage& picture, unsigned int alpha)
{
    int count = 0;
    for (const unsigned int pixel : picture.pixels)
        count += Alpha(pixel) == alpha ? 1 : 0;
    return count;
}

// Whether some pixel is within one step per channel of `colour`.
bool Shows(const RasterImage& picture, unsigned int colour)
{
    for (const unsigned int pixel : picture.pixels) {
        if (std::abs(static_cast<int>(ZEDAREDVAL(pixel)) - static_cast<int>(ZEDAREDVAL(colour))) <= 1 &&
            std::abs(static_cast<int>(ZEDAGREENVAL(pixel)) - static_cast<int>(ZEDAGREENVAL(colour))) <= 1 &&
            std::abs(static_cast<int>(ZEDABLUEVAL(pixel)) - static_cast<int>(ZEDABLUEVAL(colour))) <= 1)
            return true;
    }
    return false;
}

class MarkerPictureTest : public PerTestWorkspace {
protected:
    static void SetUpTestSuite() { MakeRoot("lq-marker-pictures-"); }
    static void TearDownTestSuite()
    {
        RemoveRoot();
        LqTool::ReleaseTextCaches();  // the sheet's labels filled them
    }

    // The picture drawn on a white contact sheet, read back.
    RasterImage OnWhite(const RasterImage& picture) const
    {
        LqTool::ContactSheet sheet("", 1, picture.width, picture.height);
        sheet.NewRow("");
        sheet.Add(picture, "");
        std::vector<std::string> pages;
        std::string error;
        EXPECT_TRUE(sheet.Save(In("sheet.png"), pages, error)) << error;
        RasterImage drawn;
        EXPECT_TRUE(LqTool::ReadPng(In("sheet.png"), drawn, error)) << error;
        return drawn;
    }
};

TEST_F(MarkerPictureTest, TranslucentFillsKeepTheirAlphaOnNothingAndOnWhite)
{
    MarkerSymbol square(1, u"quarter", MarkerShape::Square, 30, ZEDARGBA(0xFF, 0, 0, 0x40));
    square.outlineColour = square.colour;
    RasterImage picture;
    ASSERT_TRUE(LqExample::RenderMarker(square, picture));
    const unsigned int centre = picture.At(picture.width / 2, picture.height / 2);
    EXPECT_EQ(Alpha(centre), 0x40u);
    EXPECT_EQ(Rgb(centre), 0xFF0000u);
    EXPECT_EQ(Alpha(picture.At(0, 0)), 0u);
    EXPECT_EQ(CountAlpha(picture, 255), 0) << "nothing of a quarter-opaque marker is opaque";
    EXPECT_GT(CountAlpha(picture, 0x40), 20 * 20);

    // A quarter of red over white: 255, 191, 191; no pure red anywhere.
    const RasterImage sheet = OnWhite(picture);
    EXPECT_TRUE(Shows(sheet, ZEDARGB(255, 191, 191)));
    EXPECT_FALSE(Shows(sheet, ZEDARGB(255, 0, 0)));
}

TEST_F(MarkerPictureTest, AnOpaqueOutlineLiesOverATranslucentFill)
{
    MarkerSymbol circle(1, u"ring", MarkerShape::Circle, 30, ZEDARGBA(0, 0, 0xFF, 0x40));
    circle.outlineColour = ZEDARGB(0, 0, 0);
    RasterImage picture;
    ASSERT_TRUE(LqExample::RenderMarker(circle, picture));
    const int middle = picture.height / 2;
    EXPECT_EQ(picture.At(picture.width / 2, middle), ZEDARGBA(0, 0, 0xFF, 0x40));
    // Along the middle row: nothing, the black rim, then the see-through fill.
    int x = 0;
    while (x < picture.width && Alpha(picture.At(x, middle)) == 0)
        ++x;
    ASSERT_LT(x, picture.width / 2);
    EXPECT_EQ(picture.At(x, middle), ZEDARGB(0, 0, 0));
    EXPECT_EQ(picture.At(x + 3, middle), ZEDARGBA(0, 0, 0xFF, 0x40));

    // Opaque colours draw as they always did: every pixel is either empty or opaque.
    circle.colour = ZEDARGB(0, 0, 0xFF);
    ASSERT_TRUE(LqExample::RenderMarker(circle, picture));
    EXPECT_EQ(picture.At(picture.width / 2, middle), ZEDARGB(0, 0, 0xFF));
    EXPECT_EQ(CountAlpha(picture, 0x40), 0);
}

TEST_F(MarkerPictureTest, TranslucentLinesKeepTheirAlpha)
{
    const LineSymbol line(1, u"faint", 4.0, ZEDARGBA(0x20, 0x80, 0x20, 0x40), {});
    RasterImage sample;
    ASSERT_TRUE(LqExample::RenderLineSample(line, 40, sample));
    EXPECT_EQ(sample.At(20, sample.height / 2), ZEDARGBA(0x20, 0x80, 0x20, 0x40));
    EXPECT_EQ(Alpha(sample.At(20, 0)), 0u);
    EXPECT_EQ(CountAlpha(sample, 255), 0);
}

}  // namespace
