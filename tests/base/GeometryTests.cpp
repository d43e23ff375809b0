#include <gtest/gtest.h>

#include <tuple>

#include "ZedaGeometry.h"

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
