// Each depth has its own painter (spans, polygon scan, cairo on 16 and 32 bits, else a mask); all agree.

#include <cairo.h>

#include <array>
#include <cmath>
#include <random>

#include "GraphicsTestSupport.h"

namespace VTC::test {
namespace {

constexpr double kBias = 1.0 / 128;
constexpr unsigned int kGrey = ZEDARGB(8, 8, 8);  // exact from 8 bits up; black and white are at any depth

TEST(DrawingTest, EllipsesArcsAndPolygonsWithAndWithoutPenOrBrush)
{
    const ZedaPoint triangle[] = {{2, 2}, {20, 2}, {2, 18}};
    for (int bpp : {16, 24, 32}) {
        SCOPED_TRACE(bpp);
        auto image = MakeImage(24, 20, bpp);
        auto graphics = GraphicsOn(image.get());
        auto tools = Use(*graphics, MakePen(kRed, 1), MakeBrush(kBlue));
        const auto drawn = [&](auto draw) { image->Fill(kWhite); draw(); return ColourBounds(*image, kRed); };
        EXPECT_EQ(drawn([&] { graphics->DrawEllipse({0, 0, 21, 15}); }), ZedaRect(0, 0, 21, 15));
        EXPECT_EQ(ColoursAt(*image, {{10, 7}, {20, 14}}), (std::vector{kBlue, kWhite}));
        drawn([&] { graphics->DrawPolygon(triangle, 3); });
        EXPECT_EQ(ColoursAt(*image, {{2, 10}, {10, 2}, {11, 10}, {5, 5}, {18, 16}}),
                  (std::vector{kRed, kRed, kRed, kBlue, kWhite}));
        // Arcs run counter-clockwise (east to north: a quarter) and are not filled.
        const ZedaRect quarter = drawn([&] { graphics->DrawArc({0, 0, 20, 20}, {20, 10}, {10, 0}); });
        EXPECT_TRUE(quarter.left >= 9 && quarter.bottom <= 11 && quarter.right == 20 && quarter.top == 0);
        EXPECT_EQ(ColourBounds(*image, kBlue), ZedaRect());
        EXPECT_EQ(drawn([&] { graphics->DrawArc({0, 0, 20, 20}, {10, 0}, {20, 10}); }), ZedaRect(0, 0, 20, 20));
        EXPECT_EQ(image->GetPixelColour(16, 3), kWhite);

        for (const bool penless : {true, false}) {
            tools = penless ? Use(*graphics, MakePen(kRed, 1, VT_PEN_NULL), MakeBrush(kBlue))
                            : Use(*graphics, MakePen(kRed, 2), MakeBrush(kBlue, VT_BRUSH_NULL));
            drawn([&] { graphics->DrawEllipse({0, 0, 21, 15}); graphics->DrawPolygon(triangle, 3); });
            EXPECT_EQ(ColourBounds(*image, penless ? kRed : kBlue), ZedaRect()) << penless;
            EXPECT_EQ(ColoursAt(*image, {{10, 7}, {0, 7}}),
                      (std::vector{penless ? kBlue : kWhite, penless ? kBlue : kRed}));
        }
    }
}

// Past cairo's 32767-pixel limit a raster is drawn through the mask painter; it
// must give the pixels a small raster gives.
TEST(DrawingTest, RastersWiderThanCairosLimitDrawAsSmallOnes)
{
    constexpr int offset = 33000;
    auto wide = MakeImage(offset + 24, 20, 32, kWhite);
    auto small = MakeImage(24, 20, 32, kWhite);
    for (auto* image : {wide.get(), small.get()}) {
        auto graphics = GraphicsOn(image);
        auto tools = Use(*graphics, MakePen(kRed, 3), MakeBrush(kBlue));
        const int dx = image == wide.get() ? offset : 0;
        graphics->DrawEllipse({dx + 2, 1, dx + 21, 17});
    }
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 24; ++x)
            ASSERT_EQ(wide->GetPixelColour(offset + x, y), small->GetPixelColour(x, y)) << x << "," << y;
}

// Butt caps through pixel centres, pulled back 1/32 pixel: the first pixel in, the last out.
bool LineCovers(ZedaPoint from, ZedaPoint to, int width, int x, int y)
{
    const double length = std::hypot(to.x - from.x, to.y - from.y), pull = 1.0 / 32;
    const double ux = (to.x - from.x) / length, uy = (to.y - from.y) / length;
    const double px = x + 0.5 + kBias - (from.x + 0.5 - ux * pull);
    const double py = y + 0.5 + kBias - (from.y + 0.5 - uy * pull);
    const double along = px * ux + py * uy;
    return along >= 0 && along <= length && std::abs(-px * uy + py * ux) <= width / 2.0;
}

TEST(DrawingTest, AxisParallelLinesCoverWhatTheRuleSays)
{
    for (int bpp : {1, 16, 24, 32})
        for (int width = 1; width <= 6; ++width)
            for (const auto& [from, to] : {std::pair{ZedaPoint(2, 7), ZedaPoint(15, 7)},
                                           {ZedaPoint(15, 7), ZedaPoint(2, 7)}, {ZedaPoint(8, 1), ZedaPoint(8, 13)},
                                           {ZedaPoint(8, 13), ZedaPoint(8, 1)}, {ZedaPoint(-3, 0), ZedaPoint(30, 0)}}) {
                auto image = MakeImage(18, 15, bpp);
                auto graphics = GraphicsOn(image.get());
                const Tools tools = Use(*graphics, MakePen(kWhite, width), nullptr);
                graphics->DrawLine(from, to);
                const auto covered = Grid(18, 15, [&](int x, int y) { return LineCovers(from, to, width, x, y); });
                ASSERT_EQ(ColourMask(*image, kWhite), covered)
                    << bpp << " bits, width " << width << " from " << from.x << ',' << from.y;
            }
}

// A rectangle's outline runs half a pixel inside the bounds, the pen centred on it.
bool RectangleOutlineCovers(const ZedaRect& r, int pen, int x, int y)
{
    const double cx = x + 0.5 + kBias, cy = y + 0.5 + kBias;
    const double out = pen / 2.0 - 0.5, in = pen / 2.0 + 0.5;
    const bool inOuter = cx > r.left - out && cx < r.right + out && cy > r.top - out && cy < r.bottom + out;
    return inOuter && !(cx > r.left + in && cx < r.right - in && cy > r.top + in && cy < r.bottom - in);
}

TEST(DrawingTest, RectanglesFillTheirBoundsUnderTheirPenThroughAPolygonClip)
{
    auto clip = MakeRegion({{10, -2}, {22, 10}, {10, 22}, {-2, 10}});
    for (int bpp : {8, 16, 24, 32})
        for (const ZedaRect& given : {ZedaRect(2, 3, 17, 16), ZedaRect(9, 25, -4, 5), ZedaRect(6, 6, 9, 8)})
            for (int pen = 0; pen <= 5; ++pen)  // 0: no outline
                for (const int brushStyle : {VT_BRUSH_SOLID, VT_BRUSH_NULL}) {
                    auto image = MakeImage(20, 20, bpp, kBlack);
                    auto graphics = GraphicsOn(image.get());
                    graphics->SelectClipRegion(clip.get(), VT_CLIP_REPLACE);
                    const Tools tools = Use(*graphics, MakePen(kWhite, pen, pen == 0 ? VT_PEN_NULL : VT_PEN_SOLID),
                                            MakeBrush(kGrey, brushStyle));
                    graphics->DrawRectangle(given);
                    ZedaRect rect = given;
                    rect.Normalize();
                    const auto expected = [&](int x, int y) {
                        if (!clip->PtInRegion(x, y))
                            return kBlack;
                        if (pen > 0 && RectangleOutlineCovers(rect, pen, x, y))
                            return kWhite;
                        return brushStyle == VT_BRUSH_SOLID && rect.PtInRect({x, y}) ? kGrey : kBlack;
                    };
                    ASSERT_EQ(ColoursOf(*image), Grid(20, 20, expected))
                        << bpp << " bits, pen " << pen << ", brush " << brushStyle << ", rect " << rect.left;
                }
}

// cairo's own rasterisation of the polygon, shifted as shapes are and `offset` pixels in.
std::vector<bool> CairoCoverage(int side, int offset, const std::vector<ZedaPoint>& points)
{
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_A8, side, side);
    cairo_t* cr = cairo_create(surface);
    cairo_set_antialias(cr, CAIRO_ANTIALIAS_NONE);
    cairo_set_fill_rule(cr, CAIRO_FILL_RULE_EVEN_ODD);
    cairo_translate(cr, offset - kBias, offset - kBias);
    for (const ZedaPoint& p : points)
        cairo_line_to(cr, p.x, p.y);
    cairo_fill(cr);
    cairo_surface_flush(surface);
    const unsigned char* data = cairo_image_surface_get_data(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    auto covered = Grid(side, side, [&](int x, int y) { return data[y * stride + x] != 0; });
    cairo_destroy(cr);
    cairo_surface_destroy(surface);
    return covered;
}

TEST(DrawingTest, PolygonInteriorsAndRegionsEqualCairosRasterisation)
{
    // Shallow and steep edges, self-intersections, slivers and shared vertices, often past the image.
    std::mt19937 random(7);
    const auto coordinate = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(random); };
    constexpr int kSide = 48;
    for (int round = 0; round < 400; ++round) {
        std::vector<ZedaPoint> points(static_cast<std::size_t>(coordinate(3, 8)));
        const int reach = round % 4 == 0 ? 12 : kSide + 20;
        for (auto& p : points)
            p = ZedaPoint(coordinate(-10, reach), coordinate(-10, reach));
        const int bpp = std::array{8, 16, 24, 32}[static_cast<std::size_t>(round % 4)];
        auto image = MakeImage(kSide, kSide, bpp);
        auto graphics = GraphicsOn(image.get());
        const Tools tools = Use(*graphics, MakePen(kWhite, 0, VT_PEN_NULL), MakeBrush(kWhite));
        graphics->DrawPolygon(points.data(), static_cast<int>(points.size()));
        ASSERT_EQ(ColourMask(*image, kWhite), CairoCoverage(kSide, 0, points)) << "round " << round;

        // Regions are not limited by any image, so a larger reference sees all of them.
        auto region = MakeRegion(points);
        ASSERT_EQ(Grid(kSide + 40, kSide + 40, [&](int x, int y) { return region->PtInRegion(x - 10, y - 10); }),
                  CairoCoverage(kSide + 40, 10, points))
            << "region of round " << round;
    }
}

// Whether a pen of `pen` on the circle in `bounds` covers pixel (x, y): 1 surely, -1 surely
// not, 0 within cairo's curve tolerance of an edge. A pen reaching past the centre leaves no hole.
int CircleCovers(const ZedaRect& bounds, int pen, int x, int y)
{
    const double radius = bounds.Width() / 2.0 - 0.5, half = pen / 2.0, slack = 0.2;
    const double d = std::hypot(x + 0.5 + kBias - (bounds.left + bounds.right) / 2.0,
                                y + 0.5 + kBias - (bounds.top + bounds.bottom) / 2.0);
    const double inner = half > radius ? -1.0 : radius - half, outer = radius + half;
    if (d < outer - slack && d > inner + slack)
        return 1;
    return d > outer + slack || d < inner - slack ? -1 : 0;
}

TEST(DrawingTest, CurvedOutlinesAreCentredOnTheirPathAtEveryDepthThroughAPolygonClip)
{
    // Circles of odd and even size as whole arcs and ellipses; the last shape eccentric.
    constexpr int kSide = 40;
    auto clip = MakeRegion({{-1, -1}, {41, -1}, {41, 30}, {-1, 38}});
    for (const ZedaRect& bounds : {ZedaRect(19, 19, 21, 21), ZedaRect(18, 18, 21, 21), ZedaRect(16, 16, 24, 24),
                                   ZedaRect(12, 11, 29, 28), ZedaRect(5, 17, 35, 22)})
        for (int pen : {1, 2, 3, 5, 8, 13})
            for (bool arc : {false, true}) {
                SCOPED_TRACE(testing::Message() << "pen " << pen << (arc ? " arc at " : " ellipse at ") << bounds.left);
                std::vector<bool> direct;
                for (int bpp : {32, 16, 24, 8, 1}) {
                    auto image = MakeImage(kSide, kSide, bpp, kWhite);
                    auto graphics = GraphicsOn(image.get());
                    graphics->SelectClipRegion(clip.get(), VT_CLIP_REPLACE);
                    const Tools tools = Use(*graphics, MakePen(kBlack, pen), MakeBrush(kBlack, VT_BRUSH_NULL));
                    arc ? graphics->DrawArc(bounds, {0, 0}, {0, 0}) : graphics->DrawEllipse(bounds);
                    direct = bpp == 32 ? ColourMask(*image, kBlack) : direct;
                    ASSERT_EQ(ColourMask(*image, kBlack), direct) << bpp << " bits";
                }
                // cairo flattens a circle of radius 1 to a few chords.
                if (bounds.Width() != bounds.Height() || (bounds.Width() == 3 && pen == 1))
                    continue;
                const auto model = Grid(kSide, kSide, [&](int x, int y) {
                    return clip->PtInRegion(x, y) ? CircleCovers(bounds, pen, x, y) : -1;
                });
                for (std::size_t i = 0; i < model.size(); ++i)
                    ASSERT_TRUE(model[i] == 0 || direct[i] == (model[i] > 0)) << i % kSide << ',' << i / kSide;
            }
}

}  // namespace
}  // namespace VTC::test
