#include <malloc.h>

#include <climits>

#include "GraphicsTestSupport.h"

namespace VTC::test {
namespace {

// Which of `points` lie in the region: '#' in, '.' out.
std::string Members(const VtRgn& region, std::initializer_list<ZedaPoint> points)
{
    std::string members;
    for (const ZedaPoint& p : points)
        members += region.PtInRegion(p.x, p.y) ? '#' : '.';
    return members;
}

TEST(RegionTest, PolygonsAreEvenOddReachAnyCoordinateAndIntersect)
{
    // A square with a square hole, as two polygons.
    const ZedaPoint rings[] = {{0, 0}, {10, 0}, {10, 10}, {0, 10}, {3, 3}, {7, 3}, {7, 7}, {3, 7}};
    const int counts[] = {4, 4};
    auto region = MakeRegion(ZedaRect(10, 8, -3, 2));
    EXPECT_EQ(region->GetBoundingRect(), ZedaRect(-3, 2, 10, 8));
    ASSERT_TRUE(region->CreatePolyPolygonRegion(rings, counts, 2));
    EXPECT_EQ(region->GetBoundingRect(), ZedaRect(0, 0, 10, 10));
    EXPECT_EQ(Members(*region, {{2, 5}, {3, 3}, {6, 6}, {7, 7}, {9, 9}}), "#..##");

    // Larger than one rasterising tile in every direction.
    region = MakeRegion({{-6000, -5000}, {7000, -5000}, {7000, 9000}, {-6000, 9000}});
    EXPECT_EQ(region->GetBoundingRect(), ZedaRect(-6000, -5000, 7000, 9000));
    EXPECT_EQ(Members(*region, {{-1905, -905}, {-1904, -904}, {6999, 8999}, {7000, 0}}), "###.");

    // A polygon without area is an empty region; only missing points fail.
    const ZedaPoint line[] = {{0, 0}, {5, 5}, {10, 10}};
    EXPECT_TRUE(region->CreatePolygonRegion(line, 3));
    EXPECT_TRUE(region->IsEmpty() && region->GetBoundingRect().IsEmpty());
    TakeLog();
    EXPECT_FALSE(region->CreatePolygonRegion(nullptr, 3));
    EXPECT_FALSE(region->CreatePolygonRegion(line, 0));
    EXPECT_FALSE(region->CreatePolyPolygonRegion(line, nullptr, 1));
    EXPECT_EQ(TakeLog(), (std::vector<std::string>{"300 GRg001", "300 GRg001", "300 GRg001"}));

    auto a = MakeRegion(ZedaRect(0, 0, 10, 10));
    auto b = MakeRegion({{5, -5}, {20, 10}, {5, 25}});
    auto result = MakeRegion(ZedaRect());
    ASSERT_TRUE(result->CombineRegion(a.get(), b.get(), 1));
    EXPECT_EQ(result->GetBoundingRect(), ZedaRect(5, 0, 10, 10));
    EXPECT_TRUE(a->CombineRegion(a.get(), b.get(), 1));
    EXPECT_EQ(a->GetBoundingRect(), ZedaRect(5, 0, 10, 10));
    EXPECT_TRUE(b->CombineRegion(MakeRegion(ZedaRect(100, 100, 110, 110)).get(), b.get(), 1));
    EXPECT_TRUE(b->IsEmpty());
    EXPECT_FALSE(result->CombineRegion(nullptr, a.get(), 1));
}

TEST(RegionTest, PolygonsSpanningBillionsOfRowsAreScannedOnlyWithinTheRegionSpace)
{
    // A slanted band ten pixels wide from row -2e9 to row 2e9: every row a
    // different run, so a scan of all its rows would never end. A separate
    // ctest entry runs this with a short timeout.
    constexpr int kReach = 1 << 20;
    auto band = MakeRegion({{-2000000000, -2000000000}, {-1999999990, -2000000000}, {2000000010, 2000000000},
                            {2000000000, 2000000000}});
    EXPECT_EQ(band->GetBoundingRect(), ZedaRect(-kReach, -kReach, kReach, kReach));
    EXPECT_EQ(Members(*band, {{-1, 0}, {0, 0}, {9, 0}, {10, 0}, {-kReach, -kReach}, {-kReach + 9, -kReach},
                              {kReach - 1, kReach - 1}, {kReach, kReach}, {-kReach - 1, -kReach - 1}}),
              ".##.###..");

    // The whole int plane is the whole region space.
    auto plane = MakeRegion({{INT_MIN, INT_MIN}, {INT_MAX, INT_MIN}, {INT_MAX, INT_MAX}, {INT_MIN, INT_MAX}});
    EXPECT_EQ(plane->GetBoundingRect(), ZedaRect(-kReach, -kReach, kReach, kReach));
    EXPECT_EQ(Members(*plane, {{0, 0}, {-kReach, kReach - 1}, {kReach, 0}}), "##.");
}

TEST(ClipTest, IntersectAndReplaceHandBackThePreviousClip)
{
    Owned<VtGraphics> window(Manager::CreateWindowGraphics(20, 20, 32));
    const auto paint = [&](unsigned int colour) {
        FillRect(*window, {0, 0, 20, 20}, colour);
        return ColourBounds(*window->GetTargetImage(), colour);
    };
    auto outer = MakeRegion(ZedaRect(5, 5, 15, 15));
    EXPECT_EQ(window->SelectClipRegion(outer.get(), VT_CLIP_REPLACE), nullptr);
    outer.reset();  // the graphics keeps its own copy
    EXPECT_EQ(paint(kRed), ZedaRect(5, 5, 15, 15));
    auto right = MakeRegion(ZedaRect(10, 0, 20, 20));
    VtRgn* previous = window->SelectClipRegion(right.get(), VT_CLIP_INTERSECT);
    ASSERT_NE(previous, nullptr);
    EXPECT_EQ(paint(kBlue), ZedaRect(10, 5, 15, 15));

    // Putting the previous clip back; both handed-back clips stay readable.
    VtRgn* narrowed = window->SelectClipRegion(previous, VT_CLIP_REPLACE);
    EXPECT_EQ(paint(kGreen), ZedaRect(5, 5, 15, 15));
    EXPECT_EQ(narrowed->GetBoundingRect(), ZedaRect(10, 5, 15, 15));
    EXPECT_EQ(previous->GetBoundingRect(), ZedaRect(5, 5, 15, 15));
    EXPECT_NE(window->SelectClipRegion(nullptr, VT_CLIP_REPLACE), nullptr);
    EXPECT_EQ(window->SelectClipRegion(right.get(), 3), nullptr);
    EXPECT_EQ(window->GetClipRegion(), nullptr);
    EXPECT_EQ(paint(kBlack), ZedaRect(0, 0, 20, 20));
}

TEST(ClipTest, SelectedBackClipsAreReleasedAtTheNextChange)
{
    Owned<VtGraphics> window(Manager::CreateWindowGraphics(40, 40, 32));
    auto outer = MakeRegion(ZedaRect(0, 0, 30, 30));
    auto inner = MakeRegion({{0, 0}, {40, 0}, {0, 40}});
    // Nested twice; every clip handed back is still readable when selected back.
    window->SelectClipRegion(outer.get(), VT_CLIP_REPLACE);
    VtRgn* level1 = window->SelectClipRegion(inner.get(), VT_CLIP_INTERSECT);
    VtRgn* level2 = window->SelectClipRegion(outer.get(), VT_CLIP_INTERSECT);
    EXPECT_EQ(window->SelectClipRegion(level2, VT_CLIP_REPLACE)->GetBoundingRect(), level2->GetBoundingRect());
    EXPECT_EQ(Members(*level1, {{29, 29}}), "#");
    EXPECT_EQ(Members(*window->SelectClipRegion(level1, VT_CLIP_REPLACE), {{29, 29}, {10, 10}}), ".#");
    EXPECT_EQ(Members(*window->GetClipRegion(), {{29, 29}}), "#");

    // Nested fills on a long-lived surface keep memory flat, also selecting back null.
    window->SelectClipRegion(nullptr, VT_CLIP_REPLACE);
    const auto nest = [&](int times) {
        for (int i = 0; i < times; ++i)
            window->SelectClipRegion(window->SelectClipRegion(inner.get(), VT_CLIP_INTERSECT), VT_CLIP_REPLACE);
    };
    nest(100);
    const std::size_t before = mallinfo2().uordblks;
    nest(20000);
    // Sanitizers keep their own heap and report nothing here.
    EXPECT_TRUE(before == 0 || mallinfo2().uordblks < before + 64 * 1024) << mallinfo2().uordblks - before;
    EXPECT_EQ(window->GetClipRegion(), nullptr);
}

TEST(MappingTest, DeviceIsLogicalTimesScalePlusOriginRoundedHalfUpForShapesPensAndBlits)
{
    Owned<VtGraphics> window(Manager::CreateWindowGraphics(30, 30, 16));
    EXPECT_EQ(window->SetOrigin({7, -3}), ZedaPoint(0, 0));
    window->SetScale(0.5);
    window->SetScale(-2.0);  // refused
    ZedaPoint points[] = {{3, -3}, {-5, 4}};
    window->LogicalToDevicePoints(points, 2);
    // 1.5 + 7 = 8.5 -> 9; -1.5 - 3 = -4.5 -> -4; -2.5 + 7 = 4.5 -> 5; 2 - 3 = -1
    EXPECT_EQ(std::vector(points, points + 2), (std::vector{ZedaPoint(9, -4), ZedaPoint(5, -1)}));
    window->DeviceToLogicalPoints(points, 1);
    EXPECT_EQ(points[0], ZedaPoint(4, -2));
    ZedaSize size{9, -5};
    window->LogicalToDeviceSize(size);
    window->DeviceToLogicalSize(size);
    EXPECT_EQ(size, ZedaSize(10, -4));  // (5, -2) in between
    // At scale 1 only the origin moves points, held within the int range.
    window->SetScale(1.0);
    ZedaPoint far[] = {{INT_MAX - 3, INT_MIN + 1}, {-9, 5}};
    window->LogicalToDevicePoints(far, 2);
    EXPECT_EQ(std::vector(far, far + 2), (std::vector{ZedaPoint(INT_MAX, INT_MIN), ZedaPoint(-2, 2)}));
    window->SetScale(0.5);

    // (3, 4, 23, 20) outlined by a pen of 2 x 2 pixels centred on its edge pixels.
    window->SetScale(2.0);
    window->SetOrigin({3, 4});
    auto tools = Use(*window, MakePen(kRed, 2), MakeBrush(kBlue));
    window->DrawRectangle({0, 0, 10, 8});
    const VtImage& pixels = *window->GetTargetImage();
    EXPECT_EQ(ColourBounds(pixels, kRed), ZedaRect(1, 2, 24, 21));
    EXPECT_EQ(ColourBounds(pixels, kBlue), ZedaRect(5, 6, 20, 17));
    // A blit maps each end with its own graphics: logical (12, 12) here, (6, 6) there.
    auto source = PaintedImage(4, 4, 32, [](int x, int y) { return x + y == 6 ? kGreen : kWhite; });
    auto memory = MemoryOn(window.get(), source.get());
    memory->SetOrigin({-3, -3});
    ASSERT_TRUE(window->BitBlt(12, 12, 1, 1, memory.get(), 6, 6, VT_ROP_COPY));
    EXPECT_EQ(ColourBounds(pixels, kGreen), ZedaRect(27, 28, 28, 29));

    // Mode 0 is plain device pixels, for pens too; scale and origin are kept for when it returns.
    EXPECT_EQ(window->SetCoordinateMode(0), 1);
    window->GetTargetImage()->Fill(kWhite);
    window->DrawRectangle({3, 4, 23, 20});
    EXPECT_EQ(ColourBounds(pixels, kRed), ZedaRect(2, 3, 23, 20));
    EXPECT_EQ(std::pair(window->GetOrigin(), window->GetScale()), std::pair(ZedaPoint(3, 4), 2.0));
}

}  // namespace
}  // namespace VTC::test
