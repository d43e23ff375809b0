#include <cstdint>
#include <functional>
#include <string>
#include <vector>
#include <cstring>
#include <numbers>

#include "FillTestSupport.h"
#include "VtBlendKernelsTesting.h"

using namespace FillTest;
using std::numbers::pi;
namespace detail = EspecialFillDetail;

TEST(ColourGeometry, ScreenSizeIsAtLeast1024SquareAndAzimuthKeepsDeviceY)
{
    const std::tuple<int, int, ZedaSize> screens[] = {{800, 600, {1024, 1024}}, {1920, 1080, {1920, 1080}},
                                                      {1280, 800, {1280, 1024}}};
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
        {3 * pi / 2, {0, 0}, {0, 50}}, {7 * pi / 4, {0, 0}, {75, 75}}, {-0.5, {0, 0}, {100, 0}},
        {7.0, {0, 0}, {100, 0}}, {2 * pi - 0.0005, {0, 0}, {100, 0}}, {pi / 2 + 0.0009, {0, 50}, {0, 0}}};
    for (const auto& [angle, start, end] : cases) {
        ZedaPoint axisStart, axisEnd;
        VtEspecialFill::GetEndPointOfColor(angle, ZedaRect(0, 0, 100, 50), axisStart, axisEnd);
        EXPECT_EQ(axisStart, start) << angle;
        EXPECT_EQ(axisEnd, end) << angle;
    }
}

static unsigned Load16(const unsigned char* p) { return p[0] | (p[1] << 8); }
static void Store16(unsigned char* p, unsigned v) { p[0] = v & 0xFF, p[1] = (v >> 8) & 0xFF; }

TEST(PixelAccess, EveryLayout)
{
    unsigned char pixel[4] = {9, 9, 9, 9}, b = 7, g = 7, r = 7, a = 7;
    VtEspecialFill::SetPixel(24, pixel, 10, 20, 30, 40);
    VtEspecialFill::GetPixel(24, pixel, b, g, r, a);
    EXPECT_EQ((Bytes{pixel[0], pixel[1], pixel[2], pixel[3], b, g, r, a}), (Bytes{10, 20, 30, 9, 10, 20, 30, 7}));
    VtEspecialFill::SetPixel(32, pixel, 1, 2, 3, 4);
    const unsigned int value = ZEDARGBA(3, 2, 1, 4);
    VtEspecialFill::GetPixel(32, pixel, b, g, r, a);
    EXPECT_EQ((Bytes{b, g, r, a, static_cast<unsigned char>(std::memcmp(pixel, &value, 4))}), (Bytes{1, 2, 3, 4, 0}));
    // 16 bits: blue high, red low; only five bits of blue and red and six of green survive.
    VtEspecialFill::SetPixel(16, pixel, 0x3F, 0xC1, 0xE2, 0);
    EXPECT_EQ(Load16(pixel), (0x1Fu << 11) | (0x01u << 5) | 0x02u);
    a = 5;
    for (unsigned v = 0; v < 0x10000; ++v) {
        unsigned char packed[2], again[2];
        Store16(packed, v);
        Store16(again, ~v);
        VtEspecialFill::GetPixel(16, packed, b, g, r, a);
        ASSERT_EQ(b * 2048u + g * 32u + r + (a << 16), v + (5u << 16));
        VtEspecialFill::SetPixel(16, again, b, g, r, a);
        ASSERT_EQ(Load16(again), v);
    }
}

TEST(BlendKernels, EveryPathMatchesTheFormulaAndForcesTheFourthByte)
{
    // Every instruction set this processor runs, each finished by the
    // portable formula, and the table chosen for BlendBytes.
    namespace k = detail::Kernels;
    using Kernel = std::function<void(const unsigned char*, unsigned char*, std::size_t, unsigned, std::uint32_t)>;
    std::vector<std::pair<std::string, Kernel>> kernels = {{"dispatched", detail::BlendBytes}};
    for (const k::BlendTable& table : k::RunnableTables())
        kernels.emplace_back(table.name, [&table](auto... a) { k::BlendBytesWith(table, a...); });
    EXPECT_EQ(std::string(k::ChosenTable().name), kernels[1].first);
    const std::uint32_t keep = detail::ColourBytesMask32();
    unsigned char keepBytes[4];
    std::memcpy(keepBytes, &keep, 4);
    // Every (source, target) byte pair once, plus a tail that is not a whole vector.
    constexpr std::size_t kCount = 65536 + 28;
    Bytes source(kCount), original(kCount);
    for (std::size_t i = 0; i < kCount; ++i)
        source[i] = static_cast<unsigned char>(i), original[i] = static_cast<unsigned char>((i >> 8) ^ (i * 7));
    for (const auto& [name, kernel] : kernels)
        for (int t = 0; t <= 100; ++t) {
            Bytes colour = original, all = original;
            kernel(source.data(), colour.data(), kCount, static_cast<unsigned>(t), keep);
            kernel(source.data(), all.data(), kCount, static_cast<unsigned>(t), 0xFFFFFFFFu);
            for (std::size_t i = 0; i < kCount; ++i) {
                const unsigned char expected = Blend(source[i], original[i], t);
                ASSERT_EQ(all[i], expected) << name << ' ' << t << ' ' << i;
                ASSERT_EQ(colour[i], expected & keepBytes[i % 4]) << name << ' ' << t << ' ' << i;
            }
        }
}

TEST(BlendKernels, ConstantColourMatchesTheFormulaAtEveryLengthAndPatternSpan)
{
    const std::uint32_t keep = detail::ColourBytesMask32();
    unsigned char keepBytes[4];
    std::memcpy(keepBytes, &keep, 4);
    const unsigned char colour[4] = {250, 7, 128, 99};
    constexpr std::size_t kLongest = 3 * detail::ConstantBlend::kPatternBytes + 300;
    Bytes original(kLongest);
    for (std::size_t i = 0; i < kLongest; ++i)
        original[i] = static_cast<unsigned char>(i * 13 + (i >> 7));
    for (const std::size_t pixelBytes : {3u, 4u})
        for (const std::size_t span : {std::size_t{0}, std::size_t{5}, std::size_t{96}, std::size_t{97},
                                       std::size_t{2000}, detail::ConstantBlend::kPatternBytes, kLongest})
            for (const std::size_t pixels : {std::size_t{1}, std::size_t{31}, std::size_t{64}, std::size_t{1025},
                                             kLongest / pixelBytes})
                for (const int t : {1, 40, 99}) {
                    const std::uint32_t mask = pixelBytes == 4 ? keep : 0xFFFFFFFFu;
                    const detail::ConstantBlend blend(colour, pixelBytes, static_cast<unsigned>(t), mask, span);
                    Bytes target = original;
                    const std::size_t count = pixels * pixelBytes;
                    blend.Apply(target.data(), count);
                    for (std::size_t i = 0; i < kLongest; ++i) {
                        const unsigned char blended = Blend(colour[i % pixelBytes], original[i], t);
                        const unsigned char expected =
                            i >= count ? original[i] : (pixelBytes == 4 ? blended & keepBytes[i % 4] : blended);
                        ASSERT_EQ(target[i], expected) << pixelBytes << ' ' << span << ' ' << pixels << ' ' << i;
                    }
                }
}

TEST(BlendKernels, SixteenBitFieldsBlendSeparately)
{
    constexpr std::size_t kPixels = 65536;
    Bytes source(2 * kPixels), original(2 * kPixels);
    for (std::size_t i = 0; i < kPixels; ++i)
        Store16(&source[2 * i], static_cast<unsigned>(i)), Store16(&original[2 * i], static_cast<unsigned>(i * 40503u));
    for (int t : {0, 1, 33, 40, 50, 67, 99, 100}) {
        const auto field = [&](unsigned s, unsigned d) { return s * (100 - t) / 100 + d * t / 100; };
        Bytes blended = original, filled = original;
        detail::BlendPixels16(source.data(), blended.data(), kPixels, static_cast<unsigned>(t));
        detail::FillPixels16(filled.data(), kPixels, 31, 17, 5, static_cast<unsigned>(t));
        for (std::size_t i = 0; i < kPixels; ++i) {
            const unsigned s = Load16(&source[2 * i]), d = Load16(&original[2 * i]);
            ASSERT_EQ(Load16(&blended[2 * i]), (field(s >> 11, d >> 11) << 11) |
                                                   (field((s >> 5) & 63, (d >> 5) & 63) << 5) | field(s & 31, d & 31))
                << t << ' ' << i;
            ASSERT_EQ(Load16(&filled[2 * i]),
                      (Blend(31, d >> 11, t) << 11) | (Blend(17, (d >> 5) & 63, t) << 5) | Blend(5, d & 31, t))
                << t << ' ' << i;
        }
    }
}
