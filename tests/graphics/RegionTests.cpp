#include "GraphicsTestSupport.h"

namespace VTC::test {
namespace {

using ZEDA::ZedaPoint;
using ZEDA::ZedaRect;

Owned<VtRgn> NewRegion() { return Owned<VtRgn>(VtGraphicsManager::NewRgn(0)); }

TEST(RegionTest, RectangleRegionExcludesRightAndBottom)
{
    auto region = NewRegion();
    EXPECT_TRUE(region->IsEmpty());
    EXPECT_TRUE(region->GetBoundingRect().IsEmpty());
    ASSERT_TRUE(region->CreateRectRegion(10, 8, -3, 2));
    EXPECT_EQ(region->GetBoundingRect(), ZedaRect(-3, 2, 10, 8));
    EXPECT_TRUE(region->PtInRegion(-3, 2));
    EXPECT_TRUE(region->PtInRegion(9, 7));
    EXPECT_FALSE(region->PtInRegion(10, 7));
    EXPECT_FALSE(region->PtInRegion(9, 8));
}

TEST(RegionTest, PolygonsUseTheEvenOddRule)
{
    // A square with a square hole, as two polygons.
    const ZedaPoint rings[] = {{0, 0}, {10, 0}, {10, 10}, {0, 10}, {3, 3}, {7, 3}, {7, 7}, {3, 7}};
    const int counts[] = {4, 4};
    auto holed = NewRegion();
    ASSERT_TRUE(holed->CreatePolyPolygonRegion(rings, counts, 2));
    EXPECT_EQ(holed->GetBoundingRect(), ZedaRect(0, 0, 10, 10));
    EXPECT_TRUE(holed->PtInRegion(1, 1));
    EXPECT_TRUE(holed->PtInRegion(2, 5));
    EXPECT_FALSE(holed->PtInRegion(3, 3));
    EXPECT_FALSE(holed->PtInRegion(6, 6));
    EXPECT_TRUE(holed->PtInRegion(7, 7));

    // A five-pointed star drawn in one stroke leaves its centre out.
    const ZedaPoint star[] = {{50, 0}, {79, 90}, {2, 35}, {98, 35}, {21, 90}};
    auto starRegion = NewRegion();
    ASSERT_TRUE(starRegion->CreatePolygonRegion(star, 5));
    EXPECT_FALSE(starRegion->PtInRegion(50, 50));
    EXPECT_TRUE(starRegion->PtInRegion(50, 10));
    EXPECT_TRUE(starRegion->PtInRegion(10, 37));
}

TEST(RegionTest, PixelCentresDecideCoverage)
{
    const ZedaPoint triangle[] = {{0, 0}, {10, 0}, {0, 10}};
    auto region = NewRegion();
    ASSERT_TRUE(region->CreatePolygonRegion(triangle, 3));
    EXPECT_TRUE(region->PtInRegion(4, 4));    // centre (4.5, 4.5) inside
    EXPECT_FALSE(region->PtInRegion(5, 5));   // centre (5.5, 5.5) outside
    EXPECT_TRUE(region->PtInRegion(0, 8));
    EXPECT_FALSE(region->PtInRegion(-1, 0));
    // A centre exactly on a right or lower edge lies outside.
    EXPECT_FALSE(region->PtInRegion(0, 9));
    EXPECT_EQ(region->GetBoundingRect(), ZedaRect(0, 0, 9, 9));
}

TEST(RegionTest, DegeneratePolygonsGiveEmptyRegionsAndOnlyMissingPointsFail)
{
    const ZedaPoint line[] = {{0, 0}, {5, 5}, {10, 10}};
    auto region = NewRegion();
    ASSERT_TRUE(region->CreateRectRegion(0, 0, 4, 4));
    EXPECT_TRUE(region->CreatePolygonRegion(line, 3));
    EXPECT_TRUE(region->IsEmpty());
    EXPECT_TRUE(region->CreatePolygonRegion(line, 1));
    EXPECT_TRUE(region->GetBoundingRect().IsEmpty());
    EXPECT_FALSE(region->CreatePolygonRegion(nullptr, 3));
    EXPECT_FALSE(region->CreatePolygonRegion(line, 0));
    const int counts[] = {3};
    EXPECT_FALSE(region->CreatePolyPolygonRegion(line, counts, 0));
    EXPECT_FALSE(region->CreatePolyPolygonRegion(line, nullptr, 1));
}

TEST(RegionTest, RegionsReachAnyCoordinate)
{
    const ZedaPoint negative[] = {{-20, -10}, {-5, -10}, {-5, -2}, {-20, -2}};
    auto region = NewRegion();
    ASSERT_TRUE(region->CreatePolygonRegion(negative, 4));
    EXPECT_EQ(region->GetBoundingRect(), ZedaRect(-20, -10, -5, -2));
    EXPECT_TRUE(region->PtInRegion(-20, -10));

    // Larger than one rasterising tile in every direction.
    const ZedaPoint big[] = {{-6000, -5000}, {7000, -5000}, {7000, 9000}, {-6000, 9000}};
    ASSERT_TRUE(region->CreatePolygonRegion(big, 4));
    EXPECT_EQ(region->GetBoundingRect(), ZedaRect(-6000, -5000, 7000, 9000));
    for (const ZedaPoint p : {ZedaPoint(-1905, -905), ZedaPoint(-1904, -904), ZedaPoint(6999, 8999)}) {
        EXPECT_TRUE(region->PtInRegion(p.x, p.y)) << p.x << "," << p.y;
    }
    EXPECT_FALSE(region->PtInRegion(7000, 0));
}

TEST(RegionTest, CombineIntersectsIntoAnyOfTheThree)
{
    auto a = NewRegion();
    auto b = NewRegion();
    auto result = NewRegion();
    ASSERT_TRUE(a->CreateRectRegion(0, 0, 10, 10));
    const ZedaPoint triangle[] = {{5, -5}, {20, 10}, {5, 25}};
    ASSERT_TRUE(b->CreatePolygonRegion(triangle, 3));
    ASSERT_TRUE(result->CombineRegion(a.get(), b.get(), 1));
    EXPECT_EQ(result->GetBoundingRect(), ZedaRect(5, 0, 10, 10));
    EXPECT_TRUE(a->CombineRegion(a.get(), b.get(), 1));
    EXPECT_EQ(a->GetBoundingRect(), ZedaRect(5, 0, 10, 10));

    auto far = NewRegion();
    ASSERT_TRUE(far->CreateRectRegion(100, 100, 110, 110));
    EXPECT_TRUE(b->CombineRegion(far.get(), b.get(), 1));
    EXPECT_TRUE(b->IsEmpty());
    EXPECT_FALSE(result->CombineRegion(nullptr, a.get(), 1));

    result->CopyFrom(*far);
    EXPECT_EQ(result->GetBoundingRect(), ZedaRect(100, 100, 110, 110));
}

}  // namespace
}  // namespace VTC::test
