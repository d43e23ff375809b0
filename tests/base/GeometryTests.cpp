#include <gtest/gtest.h>

#include "ZedaColour.h"
#include "ZedaGeometry.h"

using ZEDA::ZedaRect;

TEST(ZedaRect, NormalizeSwapsInvertedEdges)
{
    ZedaRect rect(10, 20, 0, 5);
    EXPECT_TRUE(rect.IsEmpty());
    rect.Normalize();
    EXPECT_EQ(rect, ZedaRect(0, 5, 10, 20));
    EXPECT_EQ(rect.Width(), 10);
    ZedaRect already(1, 2, 3, 4);
    already.Normalize();
    EXPECT_EQ(already, ZedaRect(1, 2, 3, 4));
}

TEST(ZedaRect, IntersectionKeepsOnlyTheOverlap)
{
    ZedaRect rect(0, 0, 10, 10);
    EXPECT_TRUE(rect.Intersection(ZedaRect(5, -5, 20, 7)));
    EXPECT_EQ(rect, ZedaRect(5, 0, 10, 7));

    ZedaRect touching(0, 0, 10, 10);
    EXPECT_FALSE(touching.Intersection(ZedaRect(10, 0, 20, 10)));  // right edge is exclusive
    EXPECT_EQ(touching, ZedaRect());

    ZedaRect apart(0, 0, 10, 10);
    EXPECT_FALSE(apart.Intersection(ZedaRect(20, 20, 30, 30)));
    EXPECT_EQ(apart, ZedaRect());

    // An inverted rectangle is empty and so overlaps nothing, even where its
    // normalised form would.
    ZedaRect inverted(10, 10, 0, 0);
    EXPECT_FALSE(inverted.Intersection(ZedaRect(0, 0, 10, 10)));
    EXPECT_EQ(inverted, ZedaRect());
    ZedaRect full(0, 0, 10, 10);
    EXPECT_FALSE(full.Intersection(ZedaRect(10, 10, 0, 0)));
    EXPECT_EQ(full, ZedaRect());
}

TEST(ZedaColour, PacksChannelsAndKnowsHostOrder)
{
    const unsigned int colour = ZEDARGBA(0x12, 0x34, 0x56, 0x78);
    EXPECT_EQ(colour, 0x78123456u);
    EXPECT_EQ(ZEDAREDVAL(colour), 0x12);
    EXPECT_EQ(ZEDAGREENVAL(colour), 0x34);
    EXPECT_EQ(ZEDABLUEVAL(colour), 0x56);
    EXPECT_EQ(ZEDAALPHAVAL(colour), 0x78);
    EXPECT_EQ(ZEDAALPHAVAL(ZEDARGB(1, 2, 3)), 255);
    EXPECT_EQ(ZEDA::un_bigendina, 1u);
    EXPECT_EQ(*reinterpret_cast<const unsigned char*>(&ZEDA::un_bigendina), 1);  // x86-64 and arm64 are little-endian
}
