#include <numbers>

#include "FillTestSupport.h"

using namespace FillTest;
using std::numbers::pi;

TEST(ColourGeometry, ScreenSizeIsAtLeast1024SquareAndAzimuthKeepsDeviceY)
{
    const std::tuple<int, int, ZedaSize> screens[] = {
        {800, 600, {1024, 1024}}, {1920, 1080, {1920, 1080}}, {1280, 800, {1280, 1024}}};
    for (const auto& [width, height, expected] : screens) {
        VtToolkit::SetScreenSize(width, height);
        EXPECT_EQ(VtEspecialFill::GetScreenSize(), expected) << width;
    }
    VtToolkit::ResetScreenSize();
    EXPECT_DOUBLE_EQ(VtEspecialFill::CalAzimuth({0, 1}, {0, 0}), pi / 2);
    EXPECT_DOUBLE_EQ(VtEspecialFill::CalAzimuth({0, 0}, {1, 1}), -3 * pi / 4);
    EXPECT_DOUBLE_EQ(VtEspecialFill::CalAzimuth({-5, 0}, {0, 0}), pi);
}

TEST(ColourGeometry, ColourInterpolatesByDistanceAndTruncates)
{
    const unsigned int from = ZEDARGBA(200, 0, 100, 7), to = ZEDARGBA(100, 254, 100, 9), end = ZEDARGB(100, 254, 100);
    // Start, end, point: each channel truncated toward its start; the distance
    // is a radius, not a projection; beyond the end or with coincident ends, the end colour.
    const std::tuple<ZedaPoint, ZedaPoint, ZedaPoint, unsigned int> cases[] = {
        {{0, 0}, {3, 0}, {0, 0}, ZEDARGB(200, 0, 100)}, {{0, 0}, {3, 0}, {1, 0}, ZEDARGB(167, 84, 100)},
        {{0, 0}, {3, 0}, {2, 0}, ZEDARGB(134, 169, 100)}, {{0, 0}, {3, 0}, {9, 0}, end},
        {{0, 0}, {3, 0}, {0, -3}, end}, {{4, 4}, {4, 4}, {4, 4}, end}, {{4, 4}, {4, 4}, {0, 0}, end}};
    for (const auto& [start, stop, point, expected] : cases) {
        unsigned int colour = 0;
        VtEspecialFill::GetColor(start, stop, from, to, point, colour);
        EXPECT_EQ(colour, expected) << point.x << ',' << point.y;
    }
}

TEST(ColourGeometry, SectionPointsAndPerpendicularFeet)
{
    using Onto = void (*)(const ZedaPoint&, const ZedaPoint&, ZedaPoint&);
    const Onto section = &VtEspecialFill::GetSectionPoint, foot = &VtEspecialFill::GetVerticalPoint;
    const std::tuple<Onto, ZedaPoint, ZedaPoint, ZedaPoint, ZedaPoint> cases[] = {
        // Shallow lines keep x, steep ones y, 45 degrees x; truncated toward zero.
        {section, {0, 0}, {10, 5}, {4, 100}, {4, 2}},   {section, {0, 0}, {5, 10}, {100, 4}, {2, 4}},
        {section, {0, 0}, {10, 10}, {3, 99}, {3, 3}},   {section, {0, 0}, {10, -5}, {3, 0}, {3, -1}},
        {section, {7, 2}, {7, 9}, {1, 5}, {7, 5}},      {section, {1, 3}, {8, 3}, {5, -4}, {5, 3}},
        {section, {6, 6}, {6, 6}, {1, 2}, {6, 2}},      {foot, {6, 6}, {6, 6}, {1, 2}, {6, 2}},
        {foot, {0, 0}, {10, 10}, {10, 0}, {5, 5}},      {foot, {0, 0}, {10, -10}, {10, 0}, {5, -5}},
        // Steep lines take y first, shallow ones x: (0.38, 1.92) becomes (0, 1), (1.92, 0.38) becomes (1, 0).
        {foot, {0, 0}, {2, 10}, {10, 0}, {0, 1}},       {foot, {0, 0}, {10, 2}, {0, 10}, {1, 0}},
    };
    for (const auto& [onto, p1, p2, start, expected] : cases) {
        ZedaPoint point = start;
        onto(p1, p2, point);
        EXPECT_EQ(point, expected) << (onto == section ? "section " : "foot ") << p2.x << ',' << p2.y;
    }
}

TEST(ColourGeometry, AxisOfEveryOctantAndOfAnglesOutOfRange)
{
    const std::tuple<double, ZedaPoint, ZedaPoint> cases[] = {
        {0, {0, 0}, {100, 0}}, {pi / 6, {0, 50}, {96, -5}}, {pi / 4, {0, 50}, {75, -25}}, {pi / 2, {0, 50}, {0, 0}},
        {3 * pi / 4, {100, 50}, {25, -25}}, {pi, {100, 0}, {0, 0}}, {4.0, {100, 0}, {33, 77}},
        {3 * pi / 2, {0, 0}, {0, 50}}, {7 * pi / 4, {0, 0}, {75, 75}}, {-0.5, {0, 0}, {100, 0}}, {7.0, {0, 0}, {100, 0}},
        {2 * pi - 0.0005, {0, 0}, {100, 0}}, {pi / 2 + 0.0009, {0, 50}, {0, 0}}};
    for (const auto& [angle, start, end] : cases) {
        ZedaPoint axisStart, axisEnd;
        VtEspecialFill::GetEndPointOfColor(angle, ZedaRect(0, 0, 100, 50), axisStart, axisEnd);
        EXPECT_EQ(axisStart, start) << angle;
        EXPECT_EQ(axisEnd, end) << angle;
    }
}
