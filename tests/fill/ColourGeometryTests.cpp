#include <gtest/gtest.h>

#include <numbers>

#include "LqToolkit.h"
#include "VtEspecialFill.h"

using VTC::VtEspecialFill;
using ZEDA::ZedaPoint;
using ZEDA::ZedaRect;
using ZEDA::ZedaSize;
using std::numbers::pi;

TEST(ColourGeometry, ScreenSizeIsAtLeast1024SquareAndAzimuthKeepsDeviceY)
{
    const struct {
        int width, height;
        ZedaSize expected;
    } screens[] = {{800, 600, {1024, 1024}}, {1920, 1080, {1920, 1080}}, {1280, 800, {1280, 1024}}};
    for (const auto& s : screens) {
        VTC::VtToolkit::SetScreenSize(s.width, s.height);
        EXPECT_EQ(VtEspecialFill::GetScreenSize(), s.expected) << s.width;
    }
    VTC::VtToolkit::ResetScreenSize();
    EXPECT_DOUBLE_EQ(VtEspecialFill::CalAzimuth({0, 1}, {0, 0}), pi / 2);
    EXPECT_DOUBLE_EQ(VtEspecialFill::CalAzimuth({0, 0}, {1, 1}), -3 * pi / 4);
    EXPECT_DOUBLE_EQ(VtEspecialFill::CalAzimuth({-5, 0}, {0, 0}), pi);
}

TEST(ColourGeometry, ColourInterpolatesByDistanceAndTruncates)
{
    const unsigned int from = ZEDARGBA(200, 0, 100, 7), to = ZEDARGBA(100, 254, 100, 9);
    const struct {
        ZedaPoint start, end, point;
        unsigned int expected;
    } cases[] = {
        {{0, 0}, {3, 0}, {0, 0}, ZEDARGB(200, 0, 100)},
        {{0, 0}, {3, 0}, {1, 0}, ZEDARGB(167, 84, 100)},  // each channel truncated toward its start
        {{0, 0}, {3, 0}, {2, 0}, ZEDARGB(134, 169, 100)},
        {{0, 0}, {3, 0}, {9, 0}, ZEDARGB(100, 254, 100)},   // beyond the end
        {{0, 0}, {3, 0}, {0, -3}, ZEDARGB(100, 254, 100)},  // by radius, not by projection
        {{4, 4}, {4, 4}, {4, 4}, ZEDARGB(100, 254, 100)},   // coincident ends
        {{4, 4}, {4, 4}, {0, 0}, ZEDARGB(100, 254, 100)},
    };
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
        {section, {0, 0}, {10, 5}, {4, 100}, {4, 2}},   // shallow: x kept
        {section, {0, 0}, {5, 10}, {100, 4}, {2, 4}},   // steep: y kept
        {section, {0, 0}, {10, 10}, {3, 99}, {3, 3}},   // 45 degrees: x kept
        {section, {0, 0}, {10, -5}, {3, 0}, {3, -1}},   // truncated toward zero
        {section, {7, 2}, {7, 9}, {1, 5}, {7, 5}},      // vertical line
        {section, {1, 3}, {8, 3}, {5, -4}, {5, 3}},     // horizontal line
        {section, {6, 6}, {6, 6}, {1, 2}, {6, 2}},      // one point
        {foot, {0, 0}, {10, 10}, {10, 0}, {5, 5}},
        {foot, {0, 0}, {10, -10}, {10, 0}, {5, -5}},
        {foot, {0, 0}, {2, 10}, {10, 0}, {0, 1}},  // steep: y first, (0.38, 1.92) becomes (0, 1)
        {foot, {0, 0}, {10, 2}, {0, 10}, {1, 0}},  // shallow: x first, (1.92, 0.38) becomes (1, 0)
        {foot, {7, 2}, {7, 9}, {1, 5}, {7, 5}},
        {foot, {1, 3}, {8, 3}, {5, -4}, {5, 3}},
        {foot, {6, 6}, {6, 6}, {1, 2}, {6, 2}},
    };
    for (const auto& c : cases) {
        ZedaPoint point = c.point;
        c.onto(c.p1, c.p2, point);
        EXPECT_EQ(point, c.expected) << (c.onto == section ? "section " : "foot ") << c.p2.x << ',' << c.p2.y;
    }
}

TEST(ColourGeometry, AxisOfEveryOctantAndOfAnglesOutOfRange)
{
    const ZedaRect rect(0, 0, 100, 50);
    const struct {
        double angle;
        ZedaPoint start, end;
    } cases[] = {
        {0, {0, 0}, {100, 0}},
        {pi / 6, {0, 50}, {96, -5}},  // sine and cosine differ: the diagonal's foot, truncated
        {pi / 4, {0, 50}, {75, -25}},
        {pi / 2, {0, 50}, {0, 0}},
        {3 * pi / 4, {100, 50}, {25, -25}},
        {pi, {100, 0}, {0, 0}},
        {4.0, {100, 0}, {33, 77}},
        {5 * pi / 4, {100, 0}, {25, 75}},
        {3 * pi / 2, {0, 0}, {0, 50}},
        {7 * pi / 4, {0, 0}, {75, 75}},
        {-0.5, {0, 0}, {100, 0}},
        {7.0, {0, 0}, {100, 0}},
        {2 * pi - 0.0005, {0, 0}, {100, 0}},
        {pi / 2 + 0.0009, {0, 50}, {0, 0}},
    };
    for (const auto& c : cases) {
        ZedaPoint start, end;
        VtEspecialFill::GetEndPointOfColor(c.angle, rect, start, end);
        EXPECT_EQ(start, c.start) << c.angle;
        EXPECT_EQ(end, c.end) << c.angle;
    }
}
