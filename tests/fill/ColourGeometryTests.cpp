#include <gtest/gtest.h>

#include <numbers>
#include <tuple>

#include "LqToolkit.h"
#include "VtEspecialFill.h"

using VTC::VtEspecialFill;
using ZEDA::ZedaPoint;
using ZEDA::ZedaRect;
using ZEDA::ZedaSize;
using std::numbers::pi;

TEST(ColourGeometry, ScreenSizeIsAtLeast1024SquareAndAzimuthKeepsDeviceY)
{
    for (const auto& [width, height, expected] :
         {std::tuple{800, 600, ZedaSize(1024, 1024)}, std::tuple{1920, 1080, ZedaSize(1920, 1080)},
          std::tuple{1280, 800, ZedaSize(1280, 1024)}}) {
        VTC::VtToolkit::SetScreenSize(width, height);
        EXPECT_EQ(VtEspecialFill::GetScreenSize(), expected) << width;
    }
    VTC::VtToolkit::ResetScreenSize();
    EXPECT_DOUBLE_EQ(VtEspecialFill::CalAzimuth({0, 1}, {0, 0}), pi / 2);
    EXPECT_DOUBLE_EQ(VtEspecialFill::CalAzimuth({0, 0}, {1, 1}), -3 * pi / 4);
    EXPECT_DOUBLE_EQ(VtEspecialFill::CalAzimuth({-5, 0}, {0, 0}), pi);
}

TEST(ColourGeometry, ColourInterpolatesByDistanceAndTruncates)
{
    const unsigned int from = ZEDARGBA(200, 0, 100, 7), to = ZEDARGBA(100, 254, 100, 9), end = ZEDARGB(100, 254, 100);
    // The distance is a radius, not a projection; beyond the end, and with
    // coincident ends, the end colour. Each channel is truncated toward its start.
    const struct {
        ZedaPoint start, end, point;
        unsigned int expected;
    } cases[] = {{{0, 0}, {3, 0}, {0, 0}, ZEDARGB(200, 0, 100)}, {{0, 0}, {3, 0}, {1, 0}, ZEDARGB(167, 84, 100)},
                 {{0, 0}, {3, 0}, {2, 0}, ZEDARGB(134, 169, 100)}, {{0, 0}, {3, 0}, {9, 0}, end},
                 {{0, 0}, {3, 0}, {0, -3}, end}, {{4, 4}, {4, 4}, {4, 4}, end}, {{4, 4}, {4, 4}, {0, 0}, end}};
    for (const auto& c : cases) {
        unsigned int colour = 0;
        VtEspecialFill::GetColor(c.start, c.end, from, to, c.point, colour);
        EXPECT_EQ(colour, c.expected) << c.point.x << ',' << c.point.y;
    }
}

TEST(ColourGeometry, SectionPointsAndPerpendicularFeet)
{
    const auto section = &VtEspecialFill::GetSectionPoint;
    const auto foot = &VtEspecialFill::GetVerticalPoint;
    const struct {
        void (*onto)(const ZedaPoint&, const ZedaPoint&, ZedaPoint&);
        ZedaPoint p1, p2, point, expected;
    } cases[] = {
        // Shallow lines keep x, steep ones y, 45 degrees x; truncated toward zero.
        {section, {0, 0}, {10, 5}, {4, 100}, {4, 2}},   {section, {0, 0}, {5, 10}, {100, 4}, {2, 4}},
        {section, {0, 0}, {10, 10}, {3, 99}, {3, 3}},   {section, {0, 0}, {10, -5}, {3, 0}, {3, -1}},
        {section, {7, 2}, {7, 9}, {1, 5}, {7, 5}},      {section, {1, 3}, {8, 3}, {5, -4}, {5, 3}},
        {section, {6, 6}, {6, 6}, {1, 2}, {6, 2}},      {foot, {6, 6}, {6, 6}, {1, 2}, {6, 2}},
        {foot, {0, 0}, {10, 10}, {10, 0}, {5, 5}},      {foot, {0, 0}, {10, -10}, {10, 0}, {5, -5}},
        // Steep lines take y first, shallow ones x: (0.38, 1.92) becomes (0, 1), (1.92, 0.38) becomes (1, 0).
        {foot, {0, 0}, {2, 10}, {10, 0}, {0, 1}},       {foot, {0, 0}, {10, 2}, {0, 10}, {1, 0}},
    };
    for (const auto& c : cases) {
        ZedaPoint point = c.point;
        c.onto(c.p1, c.p2, point);
        EXPECT_EQ(point, c.expected) << (c.onto == section ? "section " : "foot ") << c.p2.x << ',' << c.p2.y;
    }
}

TEST(ColourGeometry, AxisOfEveryOctantAndOfAnglesOutOfRange)
{
    const struct {
        double angle;
        ZedaPoint start, end;
    } cases[] = {
        {0, {0, 0}, {100, 0}}, {pi / 6, {0, 50}, {96, -5}}, {pi / 4, {0, 50}, {75, -25}}, {pi / 2, {0, 50}, {0, 0}},
        {3 * pi / 4, {100, 50}, {25, -25}}, {pi, {100, 0}, {0, 0}}, {4.0, {100, 0}, {33, 77}},
        {3 * pi / 2, {0, 0}, {0, 50}}, {7 * pi / 4, {0, 0}, {75, 75}}, {-0.5, {0, 0}, {100, 0}}, {7.0, {0, 0}, {100, 0}},
        {2 * pi - 0.0005, {0, 0}, {100, 0}}, {pi / 2 + 0.0009, {0, 50}, {0, 0}},
    };
    for (const auto& c : cases) {
        ZedaPoint start, end;
        VtEspecialFill::GetEndPointOfColor(c.angle, ZedaRect(0, 0, 100, 50), start, end);
        EXPECT_EQ(start, c.start) << c.angle;
        EXPECT_EQ(end, c.end) << c.angle;
    }
}
