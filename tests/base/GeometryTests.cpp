#include <gtest/gtest.h>

#include <tuple>

#include "ZedaGeometry.h"
#include "ZedaGradient.h"

using ZEDA::ZedaRect;

TEST(ZedaRect, NormalizeAndIntersection)
{
    ZedaRect rect(10, 20, 0, 5);
    rect.Normalize();
    EXPECT_EQ(rect, ZedaRect(0, 5, 10, 20));
    // Right and bottom edges are exclusive; an inverted rectangle is empty and
    // overlaps nothing, even where its normalised form would.
    const std::tuple<ZedaRect, ZedaRect, ZedaRect> cases[] = {
        {{0, 0, 10, 10}, {5, -5, 20, 7}, {5, 0, 10, 7}}, {{0, 0, 10, 10}, {10, 0, 20, 10}, {}},
        {{0, 0, 10, 10}, {20, 20, 30, 30}, {}}, {{10, 10, 0, 0}, {0, 0, 10, 10}, {}}, {{0, 0, 10, 10}, {10, 10, 0, 0}, {}}};
    for (auto [a, b, expected] : cases) {
        EXPECT_EQ(a.Intersection(b), !expected.IsEmpty());
        EXPECT_EQ(a, expected);
    }
}

TEST(GradientRules, CentreAndAxisInWholeAndExactPixels)
{
    using ZEDA::ExactPixels;
    using ZEDA::WholePixels;
    using ZEDA::ZedaPoint;
    // Whole pixels truncate each term on its own: 50 + 33 and 25 + 16, where
    // the exact centre is (83.83, 42.33). A positive offsetY moves it up.
    const ZedaRect rect(0, 0, 101, 51);
    EXPECT_EQ(ZEDA::GradientCentre<WholePixels>(rect, 33, -33), ZedaPoint(83, 41));
    const ExactPixels::Point exact = ZEDA::GradientCentre<ExactPixels>(rect, 33, -33);
    EXPECT_DOUBLE_EQ(exact.x, 50.5 + 101 * 0.33);
    EXPECT_DOUBLE_EQ(exact.y, 25.5 + 51 * 0.33);
    EXPECT_EQ(ZEDA::GradientCentre<WholePixels>(rect, 0, 100), ZedaPoint(50, -26));
    // Edges at the ends of the int range: the middle is exact, the width wraps to -1.
    EXPECT_EQ(ZEDA::GradientCentre<WholePixels>(ZedaRect(-2147483647 - 1, 0, 2147483647, 2), 100, 0),
              ZedaPoint(-1, 1));

    // The axis enters at the corner it points away from; a zero component counts as positive.
    const std::tuple<double, double, ZedaPoint, ZedaPoint> axes[] = {
        {1, 0, {0, 0}, {101, 51}},    {0, -1, {0, 51}, {101, 0}},  {-1, 0, {101, 0}, {0, 51}},
        {0, 1, {0, 0}, {101, 51}},    {0.5, -0.5, {0, 51}, {101, 0}}, {-0.5, -0.5, {101, 51}, {0, 0}},
        {-0.5, 0.5, {101, 0}, {0, 51}}, {0.5, 0.5, {0, 0}, {101, 51}}};
    for (const auto& [dx, dy, entry, opposite] : axes) {
        const ZEDA::GradientAxisCorners corners = ZEDA::GradientAxisCornersOf(rect, dx, dy);
        EXPECT_EQ(corners.entry, entry) << dx << ',' << dy;
        EXPECT_EQ(corners.opposite, opposite) << dx << ',' << dy;
    }
    // The offsets move the colours back towards the start by a percentage of the axis.
    EXPECT_EQ(ZEDA::GradientAxisShift<WholePixels>({0, 50}, {75, -25}, 50, -50), ZedaPoint(-37, -37));
    const ExactPixels::Point shift = ZEDA::GradientAxisShift<ExactPixels>({0, 50}, {75, -25}, 50, -50);
    EXPECT_DOUBLE_EQ(shift.x, -37.5);
    EXPECT_DOUBLE_EQ(shift.y, -37.5);
}
