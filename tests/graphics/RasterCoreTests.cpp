// The raster core against independent oracles: cairo filling the same
// polygon without anti-aliasing, and exact per-pixel predicates.

#include <cairo.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <cstdint>
#include <functional>
#include <numbers>
#include <random>
#include <tuple>
#include <vector>

#include "VtPixelBuffer.h"
#include "VtRasterCoreTesting.h"

namespace {

using namespace VTC::gfx::raster;
using ZEDA::ZedaPoint;
using ZEDA::ZedaRect;

constexpr int kWidth = 61;
constexpr int kHeight = 47;
constexpr double kShift = 1.0 / 128;

using Coverage = std::vector<uint8_t>;  // one byte per pixel, row by row

// A 32-bit raster that starts with a pattern the shapes never write.
struct Raster {
    int width, height, bpp;
    std::vector<unsigned char> bytes;

    Raster(int w, int h, int bits = 32) : width(w), height(h), bpp(bits), bytes(static_cast<std::size_t>(Stride() * h))
    {
        for (std::size_t i = 0; i < bytes.size(); ++i)
            bytes[i] = static_cast<unsigned char>(0x5A ^ (i * 7));
    }
    int Stride() const { return (width * bpp + 31) / 32 * 4; }
    Pixels View() { return {bytes.data(), width, height, Stride(), bpp}; }
    // Which pixels differ from the starting pattern.
    Coverage Changed() const
    {
        Coverage c(static_cast<std::size_t>(width * height));
        Raster blank(width, height, bpp);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                const std::size_t bit = static_cast<std::size_t>(y * Stride()) * 8 + static_cast<std::size_t>(x * bpp);
                bool differs = false;
                for (int b = 0; b < bpp; ++b) {
                    const std::size_t at = bit + static_cast<std::size_t>(b);
                    differs = differs || (((bytes[at / 8] ^ blank.bytes[at / 8]) >> (7 - at % 8)) & 1) != 0;  // high bit first
                }
                c[static_cast<std::size_t>(y * width + x)] = differs;
            }
        return c;
    }
};

// What a raster-core call covers on a raster of `bpp` bits, with an optional
// clip: painted twice, with raw values that differ from each other in every
// bit, so that no pixel can keep its starting value by chance both times.
Coverage Painted(const std::function<void(SpanWriter&)>& paint, const cairo_region_t* clip = nullptr, int bpp = 32,
                 int w = kWidth, int h = kHeight)
{
    Coverage changed(static_cast<std::size_t>(w * h));
    for (uint32_t raw : {0xA5A5A5A5u, 0x5A5A5A5Au}) {
        Raster raster(w, h, bpp);
        SpanWriter out(raster.View(), raw, clip);
        paint(out);
        const Coverage c = raster.Changed();
        for (std::size_t i = 0; i < c.size(); ++i)
            changed[i] = changed[i] || c[i];
    }
    return changed;
}

// cairo's own non-antialiased fill of a path (even-odd), or its stroke.
Coverage CairoFill(const std::function<void(cairo_t*)>& path, bool stroke = false, int w = kWidth, int h = kHeight)
{
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_A8, w, h);
    cairo_t* cr = cairo_create(surface);
    cairo_set_antialias(cr, CAIRO_ANTIALIAS_NONE);
    cairo_set_fill_rule(cr, CAIRO_FILL_RULE_EVEN_ODD);
    path(cr);
    if (stroke)
        cairo_stroke(cr);
    else
        cairo_fill(cr);
    cairo_destroy(cr);
    cairo_surface_flush(surface);
    Coverage c(static_cast<std::size_t>(w * h));
    const unsigned char* data = cairo_image_surface_get_data(surface);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            c[static_cast<std::size_t>(y * w + x)] = data[y * cairo_image_surface_get_stride(surface) + x] != 0;
    cairo_surface_destroy(surface);
    return c;
}

void TraceFixed(cairo_t* cr, const std::vector<FixedPoint>& points)
{
    for (const FixedPoint& p : points)
        cairo_line_to(cr, p.x / 256.0, p.y / 256.0);
    cairo_close_path(cr);
}

Coverage Predicate(const std::function<bool(long double, long double)>& inside, int w = kWidth, int h = kHeight)
{
    Coverage c(static_cast<std::size_t>(w * h));
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            c[static_cast<std::size_t>(y * w + x)] = inside(x + 0.5L - kShift, y + 0.5L - kShift);
    return c;
}

int Count(const Coverage& c)
{
    int n = 0;
    for (uint8_t v : c)
        n += v;
    return n;
}

int Differences(const Coverage& a, const Coverage& b)
{
    int n = 0;
    for (std::size_t i = 0; i < a.size(); ++i)
        n += a[i] != b[i];
    return n;
}

Coverage Intersect(Coverage a, const Coverage& b)
{
    for (std::size_t i = 0; i < a.size(); ++i)
        a[i] = a[i] && b[i];
    return a;
}

// A clip of three rectangles with a hole between them.
cairo_region_t* ThreeRectClip()
{
    const cairo_rectangle_int_t rects[] = {{3, 2, 20, 15}, {30, 2, 25, 30}, {0, 35, 61, 8}};
    return cairo_region_create_rectangles(rects, 3);
}

// A clip of one rectangle narrower and lower than the surface: shapes are
// then scanned within its columns and rows alone, without a per-span test.
cairo_region_t* NarrowClip()
{
    const cairo_rectangle_int_t rect{17, 9, 13, 25};
    return cairo_region_create_rectangle(&rect);
}

Coverage RegionCoverage(const cairo_region_t* region)
{
    Coverage c(static_cast<std::size_t>(kWidth * kHeight));
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            c[static_cast<std::size_t>(y * kWidth + x)] = cairo_region_contains_point(region, x, y);
    return c;
}

class RasterCore : public testing::Test {
protected:
    std::mt19937 random{20261125};
    int Between(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(random); }
};

TEST_F(RasterCore, PolygonsCoverWhatCairoFillsAtEveryDepthAndThroughClips)
{
    cairo_region_t* clip = ThreeRectClip();
    const Coverage clipCoverage = RegionCoverage(clip);
    cairo_region_t* narrow = NarrowClip();
    const Coverage narrowCoverage = RegionCoverage(narrow);
    for (int round = 0; round < 400; ++round) {
        // Sub-pixel vertices, some far off the surface, self-crossing polygons among them.
        std::vector<FixedPoint> points(static_cast<std::size_t>(Between(3, 8)));
        const int reach = round % 4 == 0 ? 4000 : 80;
        const int grid = round % 3 == 0 ? 256 : 1;  // whole pixels or any 1/256
        for (FixedPoint& p : points)
            p = {Between(-reach * 256, (kWidth + reach) * 256) / grid * grid,
                 Between(-reach * 256, (kHeight + reach) * 256) / grid * grid};
        if (round % 7 == 0)  // a sliver thinner than a pixel
            points = {{256 * 5 + 3, 256 * 2}, {256 * 50, 256 * 40 + 17}, {256 * 50 + 90, 256 * 40 + 60}};
        const int count = static_cast<int>(points.size());
        const auto fill = [&](SpanWriter& out) { FillPolygon(out, points.data(), count); };
        const Coverage expected = CairoFill([&](cairo_t* cr) { TraceFixed(cr, points); });
        ASSERT_EQ(Painted(fill), expected) << "round " << round;
        ASSERT_EQ(Painted(fill, clip), Intersect(expected, clipCoverage)) << "round " << round;
        // Triangles: rows of polygons that cross themselves join runs less than
        // two pixels apart after the crossings are held within the limits.
        if (count == 3) {
            ASSERT_EQ(Painted(fill, narrow), Intersect(expected, narrowCoverage)) << "round " << round;
        }
        for (int bpp : {1, 8, 16, 24})
            ASSERT_EQ(Painted(fill, nullptr, bpp), expected) << "round " << round << " bpp " << bpp;
    }
    cairo_region_destroy(narrow);
    cairo_region_destroy(clip);
}

// The rectangle of a butt-capped line through pixel centres, pulled back 1/32
// along its direction and moved 1/128 up and left.
std::vector<FixedPoint> LineRectangle(ZedaPoint from, ZedaPoint to, int width)
{
    const double dx = to.x - from.x, dy = to.y - from.y, length = std::sqrt(dx * dx + dy * dy);
    const double ux = dx / length, uy = dy / length, nx = -uy * width / 2, ny = ux * width / 2;
    const double ax = from.x + 0.5 - kShift - ux / 32, ay = from.y + 0.5 - kShift - uy / 32;
    const double bx = to.x + 0.5 - kShift - ux / 32, by = to.y + 0.5 - kShift - uy / 32;
    return {ToFixed(ax + nx, ay + ny), ToFixed(bx + nx, by + ny), ToFixed(bx - nx, by - ny), ToFixed(ax - nx, ay - ny)};
}

TEST_F(RasterCore, LinesCoverTheCentresInsideTheirRectangle)
{
    cairo_region_t* clip = ThreeRectClip();
    const Coverage clipCoverage = RegionCoverage(clip);
    cairo_region_t* narrow = NarrowClip();
    const Coverage narrowCoverage = RegionCoverage(narrow);
    for (int round = 0; round < 400; ++round) {
        const ZedaPoint from{Between(-30, kWidth + 30), Between(-30, kHeight + 30)};
        ZedaPoint to{Between(-30, kWidth + 30), Between(-30, kHeight + 30)};
        if (round % 5 == 0)
            (round % 10 == 0 ? to.x : to.y) = round % 10 == 0 ? from.x : from.y;  // horizontal and vertical
        if (to == from)
            continue;
        const int width = round % 3 == 0 ? 1 : (round % 3 == 1 ? Between(2, 9) : Between(30, 120));
        const auto line = [&](SpanWriter& out) { StrokeLine(out, from, to, width); };
        const std::vector<FixedPoint> rectangle = LineRectangle(from, to, width);
        const Coverage expected = CairoFill([&](cairo_t* cr) { TraceFixed(cr, rectangle); });
        ASSERT_EQ(Painted(line), expected) << round << ": " << from.x << ',' << from.y << " " << to.x << ',' << to.y
                                           << " w " << width;
        ASSERT_EQ(Painted(line, clip), Intersect(expected, clipCoverage)) << round;
        ASSERT_EQ(Painted(line, narrow), Intersect(expected, narrowCoverage)) << round;
        ASSERT_EQ(Painted(line, nullptr, 24), expected) << round;
    }
    // A one-pixel line covers its first pixel and not its last, one per step.
    const Coverage diagonal = Painted([](SpanWriter& out) { StrokeLine(out, {2, 3}, {12, 13}, 1); });
    EXPECT_EQ(Count(diagonal), 10);
    EXPECT_TRUE(diagonal[3 * kWidth + 2] && !diagonal[13 * kWidth + 12]);
    // Nothing for a line of no length; a line far beyond the surface both ways
    // covers, across the surface, the centres within half its width.
    EXPECT_EQ(Count(Painted([](SpanWriter& out) { StrokeLine(out, {7, 7}, {7, 7}, 9); })), 0);
    const ZedaPoint far1{-2000000000, -1000000000}, far2{2000000000, 1000000020};
    const Coverage huge = Painted([&](SpanWriter& out) { StrokeLine(out, far1, far2, 5); });
    const long double ux = 4e9L, uy = 2000000020.0L, length = std::hypot(ux, uy);
    int unsure = 0;
    const Coverage near = Predicate([&](long double x, long double y) {
        const long double across = ((x - far1.x - 0.5L) * uy - (y - far1.y - 0.5L) * ux) / length;
        unsure += std::fabs(std::fabs(across) - 2.5L) < 1.0L / 64;
        return std::fabs(across) < 2.5L;
    });
    EXPECT_LE(Differences(huge, near), unsure);
    EXPECT_GT(Count(huge), kWidth * 4);
    cairo_region_destroy(narrow);
    cairo_region_destroy(clip);
}

// cairo's stroke of the closed polygon, for a shape-level comparison.
Coverage CairoStroke(const std::vector<ZedaPoint>& points, int width)
{
    return CairoFill(
        [&](cairo_t* cr) {
            for (const ZedaPoint& p : points)
                cairo_line_to(cr, p.x + 0.5 - kShift, p.y + 0.5 - kShift);
            cairo_close_path(cr);
            cairo_set_line_width(cr, width);
            cairo_set_line_join(cr, CAIRO_LINE_JOIN_MITER);
            cairo_set_line_cap(cr, CAIRO_LINE_CAP_BUTT);
        },
        true);
}

TEST_F(RasterCore, PolygonOutlinesAreEdgeBandsAndMitredCorners)
{
    // A turned square: its edge bands and corner wedges, each filled by cairo,
    // give exactly the outline; cairo's own stroke differs by a few rounded
    // boundary pixels at most.
    const std::vector<ZedaPoint> square{{30, 5}, {50, 22}, {33, 42}, {13, 25}};
    for (int width : {1, 2, 3, 6, 15, 40}) {
        const Coverage outline = Painted([&](SpanWriter& out) { StrokePolygon(out, square.data(), 4, width); });
        const Coverage stroked = CairoStroke(square, width);
        EXPECT_LE(Differences(outline, stroked), 4 + Count(stroked) / 200) << width;
        // Independently: centres within half the pen of some edge, across its length,
        // or in the square's outer corner region.
        int unsure = 0;
        const long double h = width / 2.0L;
        const Coverage near = Predicate([&](long double x, long double y) {
            bool inside = false;
            for (std::size_t i = 0; i < 4; ++i) {
                const ZedaPoint a = square[i], b = square[(i + 1) % 4];
                const long double ex = b.x - a.x, ey = b.y - a.y, length = std::hypot(ex, ey);
                const long double along = ((x - a.x - 0.5L) * ex + (y - a.y - 0.5L) * ey) / length;
                const long double across = ((x - a.x - 0.5L) * ey - (y - a.y - 0.5L) * ex) / length;
                // At right-angled corners the miter completes the square of the
                // offset lines: each band reaches h past its ends.
                const bool onEdge = std::fabs(std::fabs(across) - h) < 1.0L / 64;
                const bool onEnd = std::fabs(along + h) < 1.0L / 64 || std::fabs(along - length - h) < 1.0L / 64;
                unsure += onEdge || onEnd;
                inside = inside || (std::fabs(across) < h && along > -h && along < length + h);
            }
            return inside;
        });
        EXPECT_LE(Differences(outline, near), unsure) << width;
    }
    // Through a narrow clip, pieces whose corners lie beside it at every
    // distance (left out unworked) change nothing within it.
    cairo_region_t* narrow = NarrowClip();
    const Coverage narrowCoverage = RegionCoverage(narrow);
    for (int round = 0; round < 300; ++round) {
        const int cx = Between(-5, 65), cy = Between(-5, 50), k = Between(1, 30), width = Between(1, 12);
        const int turn = Between(-k, k);
        const std::vector<ZedaPoint> turned{
            {cx - k, cy + turn}, {cx - turn, cy - k}, {cx + k, cy - turn}, {cx + turn, cy + k}};
        const auto stroke = [&](SpanWriter& out) { StrokePolygon(out, turned.data(), 4, width); };
        ASSERT_EQ(Painted(stroke, narrow), Intersect(Painted(stroke), narrowCoverage)) << round;
    }
    cairo_region_destroy(narrow);
    // Corners sharper than the miter limit are bevelled: the tip stays short.
    const std::vector<ZedaPoint> spike{{5, 20}, {55, 23}, {5, 26}};
    const Coverage spiky = Painted([&](SpanWriter& out) { StrokePolygon(out, spike.data(), 3, 6); });
    EXPECT_LE(Differences(spiky, CairoStroke(spike, 6)), 6);
    for (int x = 59; x < kWidth; ++x)
        EXPECT_FALSE(spiky[23 * kWidth + x]) << x;
    // Repeated vertices change nothing; a polygon of one point paints the pen's square.
    const std::vector<ZedaPoint> repeated{{30, 5}, {30, 5}, {50, 22}, {33, 42}, {13, 25}, {13, 25}, {30, 5}};
    EXPECT_EQ(Painted([&](SpanWriter& out) { StrokePolygon(out, repeated.data(), 7, 6); }),
              Painted([&](SpanWriter& out) { StrokePolygon(out, square.data(), 4, 6); }));
    for (int width : {1, 4, 5}) {
        const ZedaPoint dot[] = {{20, 20}, {20, 20}, {20, 20}, {20, 20}};
        const Coverage painted = Painted([&](SpanWriter& out) { StrokePolygon(out, dot, 4, width); });
        const auto [left, right] = PenBand(20, width);
        EXPECT_EQ(painted, Predicate([&](long double x, long double y) {
                      return x > left && x < right && y > left && y < right;
                  }))
            << width;
    }
}

// Points strictly inside the ellipse of centre (cx, cy) and semi-axes a, b
// (all in half pixels here, so the products are exact).
bool InEllipse(long double x, long double y, long double cx, long double cy, long double a, long double b)
{
    if (a <= 0 || b <= 0)
        return false;
    const long double dx = x - cx, dy = y - cy;
    return dx * dx * b * b + dy * dy * a * a < a * a * b * b;
}

// Pixel centres, not moved: ellipses keep their symmetry.
Coverage CentrePredicate(const std::function<bool(long double, long double)>& inside)
{
    return Predicate([&](long double x, long double y) { return inside(x + kShift, y + kShift); });
}

TEST_F(RasterCore, EllipsesAndRingsCoverTheCentresBetweenTheirEllipses)
{
    cairo_region_t* clip = ThreeRectClip();
    const Coverage clipCoverage = RegionCoverage(clip);
    cairo_region_t* narrow = NarrowClip();
    const Coverage narrowCoverage = RegionCoverage(narrow);
    for (int round = 0; round < 300; ++round) {
        ZedaRect b{Between(-40, kWidth), Between(-40, kHeight), 0, 0};
        b.right = b.left + (round % 4 == 0 ? Between(1, 3) : Between(1, 120));
        b.bottom = b.top + (round % 2 == 0 ? b.right - b.left : Between(1, 90));  // circles and ellipses
        const int width = round % 5 == 0 ? Between(30, 100) : Between(1, 8);
        const long double cx = (b.left + b.right) / 2.0L, cy = (b.top + b.bottom) / 2.0L;
        const long double a = (b.right - b.left - 1) / 2.0L, bb = (b.bottom - b.top - 1) / 2.0L, h = width / 2.0L;
        const bool hole = a > h && bb > h;
        const Coverage ring = CentrePredicate([&](long double x, long double y) {
            return InEllipse(x, y, cx, cy, a + h, bb + h) && !(hole && InEllipse(x, y, cx, cy, a - h, bb - h));
        });
        const auto stroke = [&](SpanWriter& out) { EXPECT_TRUE(StrokeEllipse(out, b, width)); };
        ASSERT_EQ(Painted(stroke), ring) << round;
        ASSERT_EQ(Painted(stroke, clip), Intersect(ring, clipCoverage)) << round;
        ASSERT_EQ(Painted(stroke, narrow), Intersect(ring, narrowCoverage)) << round;
        ASSERT_EQ(Painted(stroke, nullptr, 16), ring) << round;
        const Coverage disc = CentrePredicate([&](long double x, long double y) {
            return InEllipse(x, y, cx, cy, (b.right - b.left) / 2.0L, (b.bottom - b.top) / 2.0L);
        });
        ASSERT_EQ(Painted([&](SpanWriter& out) { EXPECT_TRUE(FillEllipse(out, b)); }), disc) << round;
    }
    // A one-pixel pen on a circle follows cairo's own stroke closely.
    const Coverage circle = Painted([](SpanWriter& out) { StrokeEllipse(out, {5, 3, 45, 43}, 1); });
    const Coverage stroked = CairoFill(
        [](cairo_t* cr) {
            cairo_arc(cr, 25, 23, 19.5, 0, 2 * std::numbers::pi);
            cairo_set_line_width(cr, 1);
        },
        true);
    EXPECT_LE(Differences(circle, stroked), Count(stroked) / 10);
    // Ellipses too large to be exact are refused without a pixel written.
    const ZedaRect huge{-2000000000, 0, 2000000000, 40};
    EXPECT_EQ(Count(Painted([&](SpanWriter& out) { EXPECT_FALSE(StrokeEllipse(out, huge, 3)); })), 0);
    EXPECT_EQ(Count(Painted([&](SpanWriter& out) { EXPECT_FALSE(FillEllipse(out, huge)); })), 0);
    cairo_region_destroy(narrow);
    cairo_region_destroy(clip);
}

long MinorFaults()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt;
}

// An edge from its top point down, dx across per dy down (1/256 pixel), and
// its crossing of the sample of the row `rows` below the first: the exact
// floor of the line's x there, worked out directly rather than stepped.
struct ExactEdge {
    Fixed topX, below, dx, dy;

    Fixed CrossingAt(Fixed rows) const
    {
        const __int128 numerator = static_cast<__int128>(below + rows * kFixedOne) * dx;
        __int128 whole = numerator / dy;
        if (numerator % dy != 0 && numerator < 0)
            --whole;
        return topX + static_cast<Fixed>(whole);
    }
    Fixed RemainderAt(Fixed rows) const
    {
        const __int128 numerator = static_cast<__int128>(below + rows * kFixedOne) * dx;
        return static_cast<Fixed>(numerator - static_cast<__int128>(CrossingAt(rows) - topX) * dy);
    }
    EdgeSteps Steps() const
    {
        const ExactEdge step{0, kFixedOne, dx, dy};  // one row down from 0: the step and its remainder
        return {CrossingAt(0), RemainderAt(0), dy, step.CrossingAt(0), step.RemainderAt(0)};
    }
};

TEST(RasterStretch, EveryWriterWritesTheRunsBetweenTheExactCrossings)
{
    ASSERT_FALSE(RunnableStretchWriters().empty());
    EXPECT_EQ(ChosenStretchWriter(), RunnableStretchWriters().front().write);
    std::mt19937_64 random(7);
    const auto pick = [&random](Fixed low, Fixed high) {
        return std::uniform_int_distribution<Fixed>(low, high)(random);
    };
    for (const StretchWriterChoice& writer : RunnableStretchWriters()) {
        for (int trial = 0; trial < 4000; ++trial) {
            const int width = static_cast<int>(pick(1, 90));
            const Fixed count = pick(1, 120);
            // Mostly edges within a few widths of the raster; some whose
            // values do not fit 32-bit lanes, which take the row-by-row path.
            const bool huge = trial % 10 == 0;
            const Fixed reach = huge ? Fixed{1} << 33 : 3 * width * kFixedOne;
            const auto edge = [&] {
                const Fixed dy = huge ? pick(1, Fixed{1} << 29) : pick(1, 64 * kFixedOne);
                return ExactEdge{pick(-reach, reach), pick(0, dy - 1), pick(-4 * dy, 4 * dy) + pick(-300, 300), dy};
            };
            const ExactEdge first = edge(), second = edge();
            const Fixed left = pick(0, width), right = pick(left, width);
            Raster raster(width, static_cast<int>(count));
            const Raster blank(width, static_cast<int>(count));
            constexpr uint32_t kRaw = 0xC3C3C3C3u;
            EdgeSteps a = first.Steps(), b = second.Steps();
            writer.write(a, b, count, left, right, {raster.bytes.data(), raster.Stride(), kRaw}, raster.bytes.data());
            for (Fixed row = 0; row < count; ++row) {
                const Fixed cutA = CrossingPixel(first.CrossingAt(row)), cutB = CrossingPixel(second.CrossingAt(row));
                const Fixed from = std::max(std::min(cutA, cutB), left), to = std::min(std::max(cutA, cutB), right);
                for (int x = 0; x < width; ++x) {
                    uint32_t got, before;
                    const std::size_t at = static_cast<std::size_t>(row * raster.Stride() + 4 * x);
                    std::memcpy(&got, raster.bytes.data() + at, 4);
                    std::memcpy(&before, blank.bytes.data() + at, 4);
                    ASSERT_EQ(got, x >= from && x < to ? kRaw : before)
                        << writer.name << " trial " << trial << " row " << row << " x " << x;
                }
            }
            // Both edges are left at the row after the stretch.
            for (const auto& [steps, exact] : {std::pair{a, first}, std::pair{b, second}}) {
                ASSERT_EQ(steps.x, exact.CrossingAt(count)) << writer.name << " trial " << trial;
                ASSERT_EQ(steps.remainder, exact.RemainderAt(count)) << writer.name << " trial " << trial;
            }
        }
    }
}

TEST(PixelBuffer, BlocksComeBackMappedAndAreZeroedOnlyWhenUsed)
{
    constexpr std::size_t kBytes = std::size_t{8} << 20;
    unsigned char* first = nullptr;
    {
        VTC::VtPixelBuffer block(kBytes, true);
        ASSERT_TRUE(block);
        EXPECT_EQ(block.Data()[kBytes - 1], 0);
        std::memset(block.Data(), 0x77, kBytes);
        first = block.Data();
    }
    // The same block again, its pages still there: touching it faults nothing in.
    const long faults = MinorFaults();
    VTC::VtPixelBuffer again(kBytes - 4096, false);
    ASSERT_EQ(again.Data(), first);
    std::memset(again.Data(), 0x11, again.Size());
    EXPECT_LT(MinorFaults() - faults, 16);
    // A block much smaller than a kept one is not cut from it; a zeroed one is all 0.
    VTC::VtPixelBuffer moved = std::move(again);
    EXPECT_EQ(moved.Data(), first);
    moved = VTC::VtPixelBuffer();
    VTC::VtPixelBuffer small(kBytes / 4, true);
    EXPECT_NE(small.Data(), first);
    VTC::VtPixelBuffer zeroed(kBytes, true);
    ASSERT_EQ(zeroed.Data(), first);
    EXPECT_TRUE(std::all_of(zeroed.Data(), zeroed.Data() + kBytes, [](unsigned char b) { return b == 0; }));
    // Small blocks come from the allocator and are zeroed as asked too.
    VTC::VtPixelBuffer tiny(100, true);
    EXPECT_TRUE(tiny && std::all_of(tiny.Data(), tiny.Data() + 100, [](unsigned char b) { return b == 0; }));
    // They are kept as well: the next one of about their size is the same
    // block, a much smaller one is not cut from it, and asked zeroed it is.
    unsigned char* const tinyBlock = tiny.Data();
    std::memset(tinyBlock, 0x55, 100);
    tiny = VTC::VtPixelBuffer();
    VTC::VtPixelBuffer tinier(40, false);
    EXPECT_NE(tinier.Data(), tinyBlock);
    VTC::VtPixelBuffer tinyAgain(90, true);
    ASSERT_EQ(tinyAgain.Data(), tinyBlock);
    EXPECT_TRUE(std::all_of(tinyAgain.Data(), tinyAgain.Data() + 90, [](unsigned char b) { return b == 0; }));
}

TEST(PixelCopy, LargeCopiesStreamEveryByteWhateverTheAlignment)
{
    std::vector<unsigned char> source(kStreamingBytes + 300), target(source.size());
    for (std::size_t i = 0; i < source.size(); ++i)
        source[i] = static_cast<unsigned char>(i * 131 + 7);
    for (const auto& [from, to, n] : {std::tuple<std::size_t, std::size_t, std::size_t>{0, 0, kStreamingBytes},
                                     {3, 5, kStreamingBytes + 200}, {1, 0, 100}, {7, 9, 63}}) {
        std::fill(target.begin(), target.end(), 0);
        CopyBytes(target.data() + to, source.data() + from, n);
        ASSERT_EQ(std::memcmp(target.data() + to, source.data() + from, n), 0) << from << ' ' << to << ' ' << n;
        ASSERT_EQ(std::count(target.begin(), target.end(), 0),
                  std::count(target.begin() + static_cast<long>(to), target.begin() + static_cast<long>(to + n), 0) +
                      static_cast<long>(target.size() - n))
            << "bytes outside the copy were written";
    }
    // Rows of one large operation stream too.
    std::fill(target.begin(), target.end(), 0);
    {
        RowCopier copier(kStreamingBytes);
        for (std::size_t row = 0; row < 4; ++row)
            copier.Copy(target.data() + row * 1001 + 1, source.data() + row * 999, 997);
    }
    for (std::size_t row = 0; row < 4; ++row)
        ASSERT_EQ(std::memcmp(target.data() + row * 1001 + 1, source.data() + row * 999, 997), 0) << row;
}

}  // namespace
