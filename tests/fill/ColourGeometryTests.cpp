#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "LqToolkit.h"
#include "VtEspecialFill.h"

using VTC::VtEspecialFill;
using ZEDA::ZedaPoint;
using ZEDA::ZedaRect;
using std::numbers::pi;

namespace {

unsigned int ColourAt(ZedaPoint start, ZedaPoint end, unsigned int from, unsigned int to, ZedaPoint point)
{
    unsigned int colour = 0;
    VtEspecialFill::GetColor(start, end, from, to, point, colour);
    return colour;
}

ZedaPoint Vertical(ZedaPoint p1, ZedaPoint p2, ZedaPoint point)
{
    VtEspecialFill::GetVerticalPoint(p1, p2, point);
    return point;
}

ZedaPoint Section(ZedaPoint p1, ZedaPoint p2, ZedaPoint point)
{
    VtEspecialFill::GetSectionPoint(p1, p2, point);
    return point;
}

struct Axis {
    ZedaPoint start, end;
};

Axis AxisOf(double angle, const ZedaRect& rect)
{
    Axis axis;
    VtEspecialFill::GetEndPointOfColor(angle, rect, axis.start, axis.end);
    return axis;
}

}  // namespace

TEST(ColourGeometry, ScreenSizeIsAtLeast1024Square)
{
    VTC::VtToolkit::SetScreenSize(800, 600);
    EXPECT_EQ(VtEspecialFill::GetScreenSize(), ZEDA::ZedaSize(1024, 1024));
    VTC::VtToolkit::SetScreenSize(1920, 1080);
    EXPECT_EQ(VtEspecialFill::GetScreenSize(), ZEDA::ZedaSize(1920, 1080));
    VTC::VtToolkit::SetScreenSize(1280, 800);
    EXPECT_EQ(VtEspecialFill::GetScreenSize(), ZEDA::ZedaSize(1280, 1024));
    VTC::VtToolkit::ResetScreenSize();
}

TEST(ColourGeometry, AzimuthKeepsDeviceY)
{
    EXPECT_DOUBLE_EQ(VtEspecialFill::CalAzimuth({1, 0}, {0, 0}), 0.0);
    EXPECT_DOUBLE_EQ(VtEspecialFill::CalAzimuth({0, 1}, {0, 0}), pi / 2);
    EXPECT_DOUBLE_EQ(VtEspecialFill::CalAzimuth({0, 0}, {1, 1}), -3 * pi / 4);
    EXPECT_DOUBLE_EQ(VtEspecialFill::CalAzimuth({-5, 0}, {0, 0}), pi);
}

TEST(ColourGeometry, ColourInterpolatesByDistanceAndTruncatesTowardTheStart)
{
    const unsigned int from = ZEDARGBA(200, 0, 100, 7);
    const unsigned int to = ZEDARGBA(100, 254, 100, 9);
    EXPECT_EQ(ColourAt({0, 0}, {3, 0}, from, to, {0, 0}), ZEDARGB(200, 0, 100));
    EXPECT_EQ(ColourAt({0, 0}, {3, 0}, from, to, {1, 0}), ZEDARGB(167, 84, 100));
    EXPECT_EQ(ColourAt({0, 0}, {3, 0}, from, to, {2, 0}), ZEDARGB(134, 169, 100));
    EXPECT_EQ(ColourAt({0, 0}, {3, 0}, from, to, {9, 0}), ZEDARGB(100, 254, 100));
    // The distance is not a projection: a point off the axis counts by its radius.
    EXPECT_EQ(ColourAt({0, 0}, {3, 0}, from, to, {0, -3}), ZEDARGB(100, 254, 100));
    // Coincident ends give the end colour.
    EXPECT_EQ(ColourAt({4, 4}, {4, 4}, from, to, {4, 4}), ZEDARGB(100, 254, 100));
    EXPECT_EQ(ColourAt({4, 4}, {4, 4}, from, to, {0, 0}), ZEDARGB(100, 254, 100));
    // Going down, a fraction rounds up toward the start; going up, down toward it.
    EXPECT_EQ(ZEDAREDVAL(ColourAt({0, 0}, {4, 0}, ZEDARGB(0, 0, 0), ZEDARGB(255, 0, 0), {1, 0})), 63);
    EXPECT_EQ(ZEDAREDVAL(ColourAt({0, 0}, {4, 0}, ZEDARGB(255, 0, 0), ZEDARGB(0, 0, 0), {1, 0})), 192);
}

TEST(ColourGeometry, PointsMoveOntoTheLine)
{
    EXPECT_EQ(Section({0, 0}, {10, 5}, {4, 100}), ZedaPoint(4, 2));     // shallow: x kept
    EXPECT_EQ(Section({0, 0}, {5, 10}, {100, 4}), ZedaPoint(2, 4));     // steep: y kept
    EXPECT_EQ(Section({0, 0}, {10, 10}, {3, 99}), ZedaPoint(3, 3));     // 45 degrees: x kept
    EXPECT_EQ(Section({0, 0}, {10, -5}, {3, 0}), ZedaPoint(3, -1));     // truncated toward zero
    EXPECT_EQ(Section({7, 2}, {7, 9}, {1, 5}), ZedaPoint(7, 5));        // vertical line
    EXPECT_EQ(Section({1, 3}, {8, 3}, {5, -4}), ZedaPoint(5, 3));       // horizontal line
    EXPECT_EQ(Section({6, 6}, {6, 6}, {1, 2}), ZedaPoint(6, 2));        // one point
}

TEST(ColourGeometry, PerpendicularFeet)
{
    EXPECT_EQ(Vertical({0, 0}, {10, 10}, {10, 0}), ZedaPoint(5, 5));
    EXPECT_EQ(Vertical({0, 0}, {10, -10}, {10, 0}), ZedaPoint(5, -5));
    // Steep lines take y first and derive x from it: (0.38, 1.92) becomes (0, 1).
    EXPECT_EQ(Vertical({0, 0}, {2, 10}, {10, 0}), ZedaPoint(0, 1));
    // Shallow lines take x first: (1.92, 0.38) becomes (1, 0).
    EXPECT_EQ(Vertical({0, 0}, {10, 2}, {0, 10}), ZedaPoint(1, 0));
    EXPECT_EQ(Vertical({7, 2}, {7, 9}, {1, 5}), ZedaPoint(7, 5));
    EXPECT_EQ(Vertical({1, 3}, {8, 3}, {5, -4}), ZedaPoint(5, 3));
    EXPECT_EQ(Vertical({6, 6}, {6, 6}, {1, 2}), ZedaPoint(6, 2));
}

TEST(ColourGeometry, AxisOfEveryOctant)
{
    const ZedaRect rect(0, 0, 100, 50);
    const struct {
        double angle;
        ZedaPoint start, end;
    } cases[] = {
        {0, {0, 0}, {100, 0}},
        {pi / 4, {0, 50}, {75, -25}},
        {pi / 2, {0, 50}, {0, 0}},
        {3 * pi / 4, {100, 50}, {25, -25}},
        {pi, {100, 0}, {0, 0}},
        {5 * pi / 4, {100, 0}, {25, 75}},
        {3 * pi / 2, {0, 0}, {0, 50}},
        {7 * pi / 4, {0, 0}, {75, 75}},
        {-0.5, {0, 0}, {100, 0}},
        {7.0, {0, 0}, {100, 0}},
        {2 * pi - 0.0005, {0, 0}, {100, 0}},
        {pi / 2 + 0.0009, {0, 50}, {0, 0}},
    };
    for (const auto& c : cases) {
        const Axis axis = AxisOf(c.angle, rect);
        EXPECT_EQ(axis.start, c.start) << c.angle;
        EXPECT_EQ(axis.end, c.end) << c.angle;
    }
}

TEST(ColourGeometry, AxisSpansTheRectangleAtEveryAngle)
{
    const ZedaRect rect(10, 20, 310, 120);
    const ZedaPoint corners[] = {{10, 20}, {310, 20}, {10, 120}, {310, 120}};
    for (double angle = 0.01; angle < 2 * pi; angle += 0.01) {
        const Axis axis = AxisOf(angle, rect);
        const double ux = std::cos(angle), uy = -std::sin(angle);
        const double length = (axis.end.x - axis.start.x) * ux + (axis.end.y - axis.start.y) * uy;
        // The axis points in the angle's direction and ends where the last corner projects.
        EXPECT_NEAR(std::hypot(axis.end.x - axis.start.x, axis.end.y - axis.start.y), length, 2.5) << angle;
        double farthest = 0;
        for (const ZedaPoint& corner : corners) {
            const double along = (corner.x - axis.start.x) * ux + (corner.y - axis.start.y) * uy;
            EXPECT_GE(along, -1e-9) << angle;
            farthest = std::max(farthest, along);
        }
        EXPECT_NEAR(length, farthest, 2.5) << angle;
    }
}
