// The platform's shortcuts (recycled pixel memory, blits without an
// intermediate copy, released clips) give what the general paths give.

#include <cairo.h>
#include <malloc.h>

#include <algorithm>
#include <array>
#include <random>
#include <cmath>
#include <string>
#include <tuple>
#include <vector>

#include "GraphicsTestSupport.h"

namespace VTC::test {
namespace {

using ZEDA::ZedaPoint;
using ZEDA::ZedaRect;

std::vector<unsigned char> BitsOf(const VtImage& image)
{
    std::vector<unsigned char> bytes(static_cast<std::size_t>(image.GetRowBytes() * image.GetHeight()));
    image.GetBits(static_cast<long long>(bytes.size()), bytes.data());
    return bytes;
}

TEST(ImagePoolTest, RecycledPixelMemoryStartsZeroedOrHoldsTheGivenBits)
{
    // Large enough to be recycled; each size reuses the block the last image
    // of that size gave back, so stale bytes would show here.
    for (const auto& [width, height, bpp] : {std::tuple{700, 400, 32}, {1000, 300, 24}, {600, 500, 16}}) {
        for (int round = 0; round < 3; ++round) {
            auto image = MakeImage(width, height, bpp);
            const std::vector<unsigned char> bytes = BitsOf(*image);
            ASSERT_TRUE(std::all_of(bytes.begin(), bytes.end(), [](unsigned char b) { return b == 0; }))
                << width << 'x' << height << ", round " << round;
            image->Fill(ZEDARGB(255, 255, 255));
        }
    }
    // A smaller image than the block kept still sees only its own bytes.
    auto big = MakeImage(800, 800, 32);
    big->Fill(ZEDARGB(9, 9, 9));
    big.reset();
    std::vector<unsigned char> given(static_cast<std::size_t>(640 * 4 * 700));
    for (std::size_t i = 0; i < given.size(); ++i)
        given[i] = static_cast<unsigned char>(i * 7 + 1);
    Owned<VtImage> copy(VtGraphicsManager::NewImage(0));
    ASSERT_TRUE(copy->CreateImage(640, 700, 1, 32, nullptr, given.data()));
    EXPECT_EQ(BitsOf(*copy), given);
    auto zeroed = MakeImage(640, 700, 32);
    EXPECT_EQ(CountColour(*zeroed, ZEDARGB(0, 0, 0)), 640 * 700);
}

// A reference blit, pixel by pixel through GetPixelColour.
void ExpectCopied(const VtImage& target, const std::vector<uint32_t>& before, const VtImage& source, int dx, int dy,
                  const ZedaRect& area)
{
    for (int y = 0; y < target.GetHeight(); ++y)
        for (int x = 0; x < target.GetWidth(); ++x) {
            const bool inside = area.PtInRect({x, y});
            const uint32_t expected = inside ? source.GetPixelColour(x - dx, y - dy)
                                             : before[static_cast<std::size_t>(y * target.GetWidth() + x)];
            ASSERT_EQ(target.GetPixelColour(x, y), expected) << x << ',' << y;
        }
}

std::vector<uint32_t> ColoursOf(const VtImage& image)
{
    std::vector<uint32_t> colours;
    for (int y = 0; y < image.GetHeight(); ++y)
        for (int x = 0; x < image.GetWidth(); ++x)
            colours.push_back(image.GetPixelColour(x, y));
    return colours;
}

TEST(DirectBlitTest, CopiesBetweenImagesLandExactlyAtEveryDepth)
{
    for (int bpp : {1, 8, 16, 24, 32}) {
        auto source = MakeImage(13, 11, bpp);
        auto target = MakeImage(17, 9, bpp);
        for (int y = 0; y < 11; ++y)
            for (int x = 0; x < 13; ++x)
                source->SetPixelColour(x, y, ZEDARGB(x * 19, y * 23, (x ^ y) * 15));
        target->Fill(ZEDARGB(40, 80, 120));
        auto sourceGraphics = GraphicsOn(source.get());
        auto targetGraphics = GraphicsOn(target.get());
        const std::vector<uint32_t> before = ColoursOf(*target);
        // Target (3, -1) takes source (1, 2): shifted by (2, -3), cut by both images.
        ASSERT_TRUE(targetGraphics->BitBlt(3, -1, 30, 30, sourceGraphics.get(), 1, 2, VT_ROP_COPY));
        ExpectCopied(*target, before, *source, 2, -3, ZedaRect(3, 0, 15, 8));
    }
}

TEST(DirectBlitTest, OverlappingCopiesWithinOneImageReadTheOldPixels)
{
    for (const ZedaPoint shift : {ZedaPoint(1, 0), ZedaPoint(-1, 0), ZedaPoint(0, 1), ZedaPoint(3, -2)}) {
        auto image = MakeImage(12, 10, 24);
        for (int y = 0; y < 10; ++y)
            for (int x = 0; x < 12; ++x)
                image->SetPixelColour(x, y, ZEDARGB(x * 20, y * 25, 7));
        const std::vector<uint32_t> before = ColoursOf(*image);
        auto graphics = GraphicsOn(image.get());
        ASSERT_TRUE(graphics->BitBlt(2 + shift.x, 2 + shift.y, 6, 5, graphics.get(), 2, 2, VT_ROP_COPY));
        for (int y = 0; y < 10; ++y)
            for (int x = 0; x < 12; ++x) {
                const bool moved = ZedaRect(2, 2, 8, 7).PtInRect({x - shift.x, y - shift.y});
                const int from = moved ? (y - shift.y) * 12 + x - shift.x : y * 12 + x;
                ASSERT_EQ(image->GetPixelColour(x, y), before[static_cast<std::size_t>(from)]) << x << ',' << y;
            }
    }
}

// The documented rule, restated geometrically: a pixel is covered when its
// centre, moved 1/128 pixel down and right against the shapes' shift, lies
// inside the shape. Lines are butt-capped, through pixel centres, pulled
// back by 1/32 pixel so that the first pixel is in and the last is out.
bool LineCovers(ZedaPoint from, ZedaPoint to, int width, int x, int y)
{
    const double bias = 1.0 / 128, pull = 1.0 / 32;
    const double length = std::hypot(to.x - from.x, to.y - from.y);
    const double ux = (to.x - from.x) / length, uy = (to.y - from.y) / length;
    const double px = x + 0.5 + bias - (from.x + 0.5 - ux * pull);
    const double py = y + 0.5 + bias - (from.y + 0.5 - uy * pull);
    const double along = px * ux + py * uy;
    const double across = -px * uy + py * ux;
    return along >= 0 && along <= length && std::abs(across) <= width / 2.0;
}

// A rectangle's outline runs through the centres of its edge pixels, half a
// pixel inside the bounds, and the pen is centred on it.
bool RectangleOutlineCovers(const ZedaRect& r, int pen, int x, int y)
{
    const double cx = x + 0.5 + 1.0 / 128, cy = y + 0.5 + 1.0 / 128;
    const double out = pen / 2.0 - 0.5, in = pen / 2.0 + 0.5;
    const bool inOuter = cx > r.left - out && cx < r.right + out && cy > r.top - out && cy < r.bottom + out;
    const bool inHole = cx > r.left + in && cx < r.right - in && cy > r.top + in && cy < r.bottom - in;
    return inOuter && !inHole;
}

constexpr unsigned int kInk = ZEDARGB(200, 30, 90);

// kInk as an image of `bpp` bits stores it.
uint32_t StoredInk(int bpp)
{
    auto pixel = MakeImage(1, 1, bpp);
    pixel->SetPixelColour(0, 0, kInk);
    return pixel->GetPixelColour(0, 0);
}

template <typename Covers>
void ExpectCoverage(const VtImage& image, const VtRgn* clip, Covers&& covers, const std::string& what)
{
    const uint32_t ink = StoredInk(image.GetBitsPerPixel());
    for (int y = 0; y < image.GetHeight(); ++y)
        for (int x = 0; x < image.GetWidth(); ++x) {
            const bool expected = covers(x, y) && (clip == nullptr || clip->PtInRegion(x, y));
            const bool inked = image.GetPixelColour(x, y) == ink;
            ASSERT_EQ(inked, expected) << what << " at " << x << ',' << y;
        }
}

TEST(BoxSpanTest, AxisParallelLinesCoverWhatTheRuleSays)
{
    // 1 and 24 bits take the mask, 16 and 32 the direct path; all fill boxes.
    for (int bpp : {1, 16, 24, 32})
        for (int width = 1; width <= 6; ++width)
            for (const auto& [from, to] : {std::pair{ZedaPoint(2, 7), ZedaPoint(15, 7)}, {ZedaPoint(15, 7), ZedaPoint(2, 7)},
                                           {ZedaPoint(8, 1), ZedaPoint(8, 13)}, {ZedaPoint(8, 13), ZedaPoint(8, 1)},
                                           {ZedaPoint(-3, 0), ZedaPoint(30, 0)}}) {
                auto image = MakeImage(18, 15, bpp);
                auto graphics = GraphicsOn(image.get());
                auto pen = MakePen(bpp == 1 ? kWhite : kInk, width);
                graphics->SelectPen(pen.get());
                graphics->DrawLine(from, to);
                const std::string what = std::to_string(bpp) + " bits, width " + std::to_string(width) + " from " +
                                         std::to_string(from.x) + ',' + std::to_string(from.y);
                if (bpp == 1) {
                    for (int y = 0; y < 15; ++y)
                        for (int x = 0; x < 18; ++x)
                            ASSERT_EQ(image->GetPixelColour(x, y) == kWhite, LineCovers(from, to, width, x, y))
                                << what << " at " << x << ',' << y;
                } else {
                    ExpectCoverage(*image, nullptr, [&](int x, int y) { return LineCovers(from, to, width, x, y); },
                                   what);
                }
            }
}

TEST(BoxSpanTest, RectanglesAndTheirOutlinesThroughAPolygonClip)
{
    const ZedaPoint diamond[] = {{10, -2}, {22, 10}, {10, 22}, {-2, 10}};
    Owned<VtRgn> clip(VtGraphicsManager::NewRgn(0));
    ASSERT_TRUE(clip->CreatePolygonRegion(diamond, 4));
    for (int bpp : {8, 16, 24, 32})
        for (const ZedaRect& rect : {ZedaRect(2, 3, 17, 16), ZedaRect(-4, 5, 9, 25), ZedaRect(6, 6, 9, 8)})
            for (int pen = 1; pen <= 5; ++pen) {
                auto image = MakeImage(20, 20, bpp);
                image->Fill(kWhite);
                auto graphics = GraphicsOn(image.get());
                graphics->SelectClipRegion(clip.get(), VT_CLIP_REPLACE);
                auto outline = MakePen(kInk, pen);
                auto hollow = MakeBrush(kInk, VT_BRUSH_NULL);
                graphics->SelectPen(outline.get());
                graphics->SelectBrush(hollow.get());
                graphics->DrawRectangle(rect);
                const std::string what = std::to_string(bpp) + " bits, pen " + std::to_string(pen) + ", rect " +
                                         std::to_string(rect.left) + ',' + std::to_string(rect.top);
                ExpectCoverage(*image, clip.get(), [&](int x, int y) { return RectangleOutlineCovers(rect, pen, x, y); },
                               what + " outline");

                // Filled without a pen: the interior from left to right - 1.
                image->Fill(kWhite);
                auto noPen = MakePen(kInk, 0, VT_PEN_NULL);
                auto solid = MakeBrush(kInk);
                graphics->SelectPen(noPen.get());
                graphics->SelectBrush(solid.get());
                graphics->DrawRectangle(rect);
                ExpectCoverage(*image, clip.get(), [&](int x, int y) { return rect.PtInRect({x, y}); }, what + " fill");
                graphics->SelectPen(nullptr);
                graphics->SelectBrush(nullptr);
            }
}

// cairo's own non-antialiased rasterisation of a path shifted as the
// platform shifts shapes: the reference every painter must equal.
template <typename Trace>
std::vector<bool> CairoCoverage(int width, int height, cairo_fill_rule_t rule, Trace&& trace)
{
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_A8, width, height);
    cairo_t* cr = cairo_create(surface);
    cairo_set_antialias(cr, CAIRO_ANTIALIAS_NONE);
    cairo_set_fill_rule(cr, rule);
    cairo_translate(cr, -1.0 / 128, -1.0 / 128);
    trace(cr);
    cairo_surface_flush(surface);
    std::vector<bool> covered;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            covered.push_back(cairo_image_surface_get_data(surface)[y * cairo_image_surface_get_stride(surface) + x] != 0);
    cairo_destroy(cr);
    cairo_surface_destroy(surface);
    return covered;
}

std::vector<bool> InkedPixels(const VtImage& image)
{
    const uint32_t ink = StoredInk(image.GetBitsPerPixel());
    std::vector<bool> inked;
    for (int y = 0; y < image.GetHeight(); ++y)
        for (int x = 0; x < image.GetWidth(); ++x)
            inked.push_back(image.GetPixelColour(x, y) == ink);
    return inked;
}

TEST(PolygonScanTest, InteriorsAndRegionsEqualCairosRasterisation)
{
    // Random polygons, many reaching past the image: shallow and steep edges,
    // self-intersections, slivers one pixel apart and shared vertices.
    std::mt19937 random(7);
    const auto coordinate = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(random); };
    constexpr int kSide = 48;
    for (int round = 0; round < 400; ++round) {
        std::vector<ZedaPoint> points(static_cast<std::size_t>(coordinate(3, 8)));
        const int reach = round % 4 == 0 ? 12 : kSide + 20;
        for (auto& p : points)
            p = ZedaPoint(coordinate(-10, reach), coordinate(-10, reach));
        const auto trace = [&](cairo_t* cr) {
            cairo_move_to(cr, points[0].x, points[0].y);
            for (const ZedaPoint& p : points)
                cairo_line_to(cr, p.x, p.y);
            cairo_close_path(cr);
            cairo_fill(cr);
        };
        const std::vector<bool> expected = CairoCoverage(kSide, kSide, CAIRO_FILL_RULE_EVEN_ODD, trace);

        const int bpp = std::array{8, 16, 24, 32}[static_cast<std::size_t>(round % 4)];
        auto image = MakeImage(kSide, kSide, bpp);
        image->Fill(kWhite);
        auto graphics = GraphicsOn(image.get());
        auto noPen = MakePen(kInk, 0, VT_PEN_NULL);
        auto brush = MakeBrush(kInk);
        graphics->SelectPen(noPen.get());
        graphics->SelectBrush(brush.get());
        graphics->DrawPolygon(points.data(), static_cast<int>(points.size()));
        ASSERT_EQ(InkedPixels(*image), expected) << "polygon of round " << round << " on " << bpp << " bits";

        // Regions are not limited by any image, so a larger reference sees all of them.
        Owned<VtRgn> region(VtGraphicsManager::NewRgn(0));
        ASSERT_TRUE(region->CreatePolygonRegion(points.data(), static_cast<int>(points.size())));
        const auto shifted = [&](cairo_t* cr) {
            cairo_translate(cr, 10, 10);
            trace(cr);
        };
        const std::vector<bool> wide = CairoCoverage(kSide + 40, kSide + 40, CAIRO_FILL_RULE_EVEN_ODD, shifted);
        std::vector<bool> got;
        for (int y = -10; y < kSide + 30; ++y)
            for (int x = -10; x < kSide + 30; ++x)
                got.push_back(region->PtInRegion(x, y));
        ASSERT_EQ(got, wide) << "region of round " << round;
    }
}

// Whether the outline of a circle in `bounds`, drawn with a pen of `pen`,
// covers pixel (x, y): 1 surely, -1 surely not, 0 within cairo's curve
// tolerance of an edge. The path runs half a pixel inside the bounds and
// the pen is centred on it; a pen reaching past the centre leaves no hole.
int CircleOutlineCovers(const ZedaRect& bounds, int pen, int x, int y)
{
    const double radius = bounds.Width() / 2.0 - 0.5, half = pen / 2.0;
    const double d = std::hypot(x + 0.5 + 1.0 / 128 - (bounds.left + bounds.right) / 2.0,
                                y + 0.5 + 1.0 / 128 - (bounds.top + bounds.bottom) / 2.0);
    const double inner = half > radius ? -1.0 : radius - half, outer = radius + half;
    constexpr double kSlack = 0.2;
    if (d < outer - kSlack && d > inner + kSlack)
        return 1;
    return d > outer + kSlack || d < inner - kSlack ? -1 : 0;
}

// Pixels not left white.
std::vector<bool> Drawn(const VtImage& image)
{
    std::vector<bool> drawn;
    for (int y = 0; y < image.GetHeight(); ++y)
        for (int x = 0; x < image.GetWidth(); ++x)
            drawn.push_back(((image.GetPixelColour(x, y) ^ kWhite) & 0xFFFFFFu) != 0);
    return drawn;
}

TEST(OutlineTest, CurvedOutlinesAreCentredOnTheirPathAtEveryDepth)
{
    // 1, 8 and 24 bits take the mask, 16 and 32 the direct path. Circles of
    // odd and even size, whole arcs and ellipses; the last one eccentric.
    constexpr int kSide = 40;
    const ZedaRect shapes[] = {{19, 19, 21, 21}, {18, 18, 21, 21}, {16, 16, 24, 24}, {12, 11, 29, 28}, {5, 17, 35, 22}};
    for (const ZedaRect& bounds : shapes)
        for (int pen : {1, 2, 3, 5, 8, 13})
            for (bool arc : {false, true}) {
                const std::string what = "pen " + std::to_string(pen) + (arc ? " arc in " : " ellipse in ") +
                                         std::to_string(bounds.left) + ',' + std::to_string(bounds.top) + ',' +
                                         std::to_string(bounds.right) + ',' + std::to_string(bounds.bottom);
                std::vector<bool> direct;
                for (int bpp : {32, 16, 24, 8, 1}) {
                    auto image = MakeImage(kSide, kSide, bpp);
                    image->Fill(kWhite);
                    auto graphics = GraphicsOn(image.get());
                    auto outline = MakePen(kBlack, pen);
                    auto hollow = MakeBrush(kBlack, VT_BRUSH_NULL);
                    graphics->SelectPen(outline.get());
                    graphics->SelectBrush(hollow.get());
                    if (arc) {
                        graphics->DrawArc(bounds, {0, 0}, {0, 0});
                    } else {
                        graphics->DrawEllipse(bounds);
                    }
                    const std::vector<bool> drawn = Drawn(*image);
                    if (bpp == 32)
                        direct = drawn;
                    ASSERT_EQ(drawn, direct) << what << " on " << bpp << " bits";
                }
                // cairo strokes a ring of radius 1 with a one-pixel pen solid: so
                // small a circle flattens to a few chords.
                if (bounds.Width() != bounds.Height() || (bounds.Width() == 3 && pen == 1))
                    continue;
                for (int y = 0; y < kSide; ++y)
                    for (int x = 0; x < kSide; ++x) {
                        const int covers = CircleOutlineCovers(bounds, pen, x, y);
                        if (covers != 0) {
                            ASSERT_EQ(direct[static_cast<std::size_t>(y * kSide + x)], covers > 0)
                                << what << " at " << x << ',' << y;
                        }
                    }
            }
}

TEST(DirectPaintTest, RastersTooWideForCairoStillTakeShapes)
{
    // cairo's image surfaces end at 32767 pixels a side; such rasters fall
    // back to a coverage mask of the shape's own size, and agree with 24 bits.
    std::vector<std::vector<bool>> inked;
    for (int bpp : {32, 16, 24}) {
        auto image = MakeImage(33000, 6, bpp);
        auto graphics = GraphicsOn(image.get());
        auto pen = MakePen(kInk, 2);
        graphics->SelectPen(pen.get());
        graphics->DrawLine({32970, 0}, {32999, 5});
        graphics->DrawArc(ZedaRect(32900, 0, 32960, 6), {32930, 0}, {32930, 0});
        inked.push_back(InkedPixels(*image));
    }
    EXPECT_GT(std::count(inked[0].begin(), inked[0].end(), true), 40);
    EXPECT_EQ(inked[0], inked[2]);
    EXPECT_EQ(inked[1], inked[2]);
}

// Bytes the allocator has handed out and not taken back.
std::size_t HeapInUse() { return mallinfo2().uordblks; }

TEST(ClipStackTest, SelectedBackClipsAreReleasedAtTheNextChange)
{
    Owned<VtGraphics> window(VtGraphicsManager::CreateWindowGraphics(40, 40, 32));
    Owned<VtRgn> outer(VtGraphicsManager::NewRgn(0));
    Owned<VtRgn> inner(VtGraphicsManager::NewRgn(0));
    ASSERT_TRUE(outer->CreateRectRegion(0, 0, 30, 30));
    const ZedaPoint triangle[] = {{0, 0}, {40, 0}, {0, 40}};
    ASSERT_TRUE(inner->CreatePolygonRegion(triangle, 3));

    // Nested twice; every clip handed back is still readable when selected back.
    window->SelectClipRegion(outer.get(), VT_CLIP_REPLACE);
    VtRgn* level1 = window->SelectClipRegion(inner.get(), VT_CLIP_INTERSECT);
    VtRgn* level2 = window->SelectClipRegion(outer.get(), VT_CLIP_INTERSECT);
    EXPECT_EQ(level1->GetBoundingRect(), ZedaRect(0, 0, 30, 30));
    EXPECT_EQ(level2->GetBoundingRect(), window->GetClipRegion()->GetBoundingRect());
    VtRgn* innermost = window->SelectClipRegion(level2, VT_CLIP_REPLACE);
    EXPECT_EQ(innermost->GetBoundingRect(), level2->GetBoundingRect());
    EXPECT_TRUE(level1->PtInRegion(29, 29));
    VtRgn* middle = window->SelectClipRegion(level1, VT_CLIP_REPLACE);
    EXPECT_FALSE(middle->PtInRegion(29, 29));
    EXPECT_TRUE(level1->PtInRegion(29, 29));
    EXPECT_TRUE(window->GetClipRegion()->PtInRegion(29, 29));

    // Many nested fills on one long-lived surface keep memory flat; without
    // a clip, null is what is selected back.
    window->SelectClipRegion(nullptr, VT_CLIP_REPLACE);
    const auto nest = [&] {
        VtRgn* previous = window->SelectClipRegion(inner.get(), VT_CLIP_INTERSECT);
        window->SelectClipRegion(previous, VT_CLIP_REPLACE);
    };
    for (int i = 0; i < 100; ++i)
        nest();
    const std::size_t before = HeapInUse();
    for (int i = 0; i < 20000; ++i)
        nest();
    if (before > 0) {  // sanitizers keep their own heap and report nothing here
        EXPECT_LT(HeapInUse(), before + 64 * 1024);
    }
    EXPECT_EQ(window->GetClipRegion(), nullptr);
}

}  // namespace
}  // namespace VTC::test
