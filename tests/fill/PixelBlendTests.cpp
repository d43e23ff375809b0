#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

#include "VtEspecialFill.h"
#include "VtEspecialFillBlend.h"

using VTC::VtEspecialFill;
namespace detail = VTC::EspecialFillDetail;

namespace {

// The blend as the renderer defines it, in doubles.
unsigned char DoubleBlend(unsigned s, unsigned d, int t)
{
    const int o = 100 - t;
    return static_cast<unsigned char>(static_cast<int>(s * o / 100.0 + d * t / 100.0));
}

unsigned char DoubleFill(unsigned old, unsigned colour, int t)
{
    const double k = colour * (100 - t) / 100.0;
    return static_cast<unsigned char>(static_cast<int>(old * t / 100.0 + k));
}

std::uint16_t Load16(const unsigned char* p) { return static_cast<std::uint16_t>(p[0] | (p[1] << 8)); }

void Store16(unsigned char* p, unsigned v)
{
    p[0] = static_cast<unsigned char>(v);
    p[1] = static_cast<unsigned char>(v >> 8);
}

}  // namespace

TEST(PixelAccess, ThirtyTwoAndTwentyFourBitLayouts)
{
    unsigned char pixel[4] = {};
    VtEspecialFill::SetPixel(32, pixel, 1, 2, 3, 4);
    unsigned int value = 0;
    std::memcpy(&value, pixel, 4);
    EXPECT_EQ(value, ZEDARGBA(3, 2, 1, 4));
    unsigned char b = 0, g = 0, r = 0, a = 0;
    VtEspecialFill::GetPixel(32, pixel, b, g, r, a);
    EXPECT_EQ((std::array{b, g, r, a}), (std::array<unsigned char, 4>{1, 2, 3, 4}));

    unsigned char bytes[4] = {9, 9, 9, 9};
    VtEspecialFill::SetPixel(24, bytes, 10, 20, 30, 40);
    EXPECT_EQ((std::array{bytes[0], bytes[1], bytes[2], bytes[3]}), (std::array<unsigned char, 4>{10, 20, 30, 9}));
    a = 77;
    VtEspecialFill::GetPixel(24, bytes, b, g, r, a);
    EXPECT_EQ((std::array{b, g, r, a}), (std::array<unsigned char, 4>{10, 20, 30, 77}));
}

TEST(PixelAccess, SixteenBitsKeepBlueHighAndRedLow)
{
    unsigned char pixel[2] = {0xFF, 0xFF};
    VtEspecialFill::SetPixel(16, pixel, 0, 0, 0, 0);
    EXPECT_EQ(Load16(pixel), 0x0000);
    VtEspecialFill::SetPixel(16, pixel, 31, 0, 0, 0);
    EXPECT_EQ(Load16(pixel), 0xF800);
    VtEspecialFill::SetPixel(16, pixel, 0, 63, 0, 0);
    EXPECT_EQ(Load16(pixel), 0x07E0);
    VtEspecialFill::SetPixel(16, pixel, 0, 0, 31, 0);
    EXPECT_EQ(Load16(pixel), 0x001F);
    // Only the low five bits of blue and red and six of green survive.
    VtEspecialFill::SetPixel(16, pixel, 0x3F, 0xC1, 0xE2, 0);
    EXPECT_EQ(Load16(pixel), (0x1F << 11) | (0x01 << 5) | 0x02);

    for (unsigned v = 0; v < 0x10000; ++v) {
        unsigned char packed[2];
        Store16(packed, v);
        unsigned char b = 0, g = 0, r = 0, a = 5;
        VtEspecialFill::GetPixel(16, packed, b, g, r, a);
        ASSERT_EQ(b, v >> 11);
        ASSERT_EQ(g, (v >> 5) & 0x3F);
        ASSERT_EQ(r, v & 0x1F);
        ASSERT_EQ(a, 5);
        unsigned char again[2] = {static_cast<unsigned char>(~packed[0]), static_cast<unsigned char>(~packed[1])};
        VtEspecialFill::SetPixel(16, again, b, g, r, a);
        ASSERT_EQ(Load16(again), v);
    }
}

TEST(PixelAccess, UnknownDepthsTouchNothing)
{
    unsigned char pixel[4] = {1, 2, 3, 4};
    VtEspecialFill::SetPixel(8, pixel, 9, 9, 9, 9);
    EXPECT_EQ((std::array{pixel[0], pixel[1], pixel[2], pixel[3]}), (std::array<unsigned char, 4>{1, 2, 3, 4}));
    unsigned char b = 7, g = 7, r = 7, a = 7;
    VtEspecialFill::GetPixel(1, pixel, b, g, r, a);
    EXPECT_EQ((std::array{b, g, r, a}), (std::array<unsigned char, 4>{7, 7, 7, 7}));
}

// The integer forms equal the double formulas for every byte pair and every
// transparency; the kernels rest on this.
TEST(BlendArithmetic, IntegerFormsEqualTheDoubleFormulasExhaustively)
{
    for (unsigned x = 0; x <= 25500; ++x)
        ASSERT_EQ(detail::DivideBy100(x), x / 100) << x;
    for (int t = 0; t <= 100; ++t) {
        const unsigned o = 100 - static_cast<unsigned>(t);
        for (unsigned s = 0; s < 256; ++s) {
            for (unsigned d = 0; d < 256; ++d) {
                const unsigned exact = (s * o + d * static_cast<unsigned>(t)) / 100;
                ASSERT_EQ(DoubleBlend(s, d, t), exact) << t << ' ' << s << ' ' << d;
                ASSERT_EQ(DoubleFill(d, s, t), exact) << t << ' ' << s << ' ' << d;
                ASSERT_EQ(detail::BlendByte(s, d, o, static_cast<unsigned>(t)), exact);
            }
        }
    }
}

namespace {

using ByteKernel = void (*)(const unsigned char*, unsigned char*, std::size_t, unsigned, std::uint32_t);

// Each code path on its own, then the dispatcher.
std::vector<std::pair<const char*, ByteKernel>> ByteKernels()
{
    std::vector<std::pair<const char*, ByteKernel>> kernels;
    kernels.emplace_back("portable", [](const unsigned char* s, unsigned char* d, std::size_t n, unsigned t,
                                        std::uint32_t keep) { detail::Kernels::BlendBytesFrom(0, s, d, n, t, keep); });
#if defined(__SSE2__)
    kernels.emplace_back("sse2", [](const unsigned char* s, unsigned char* d, std::size_t n, unsigned t,
                                    std::uint32_t keep) {
        detail::Kernels::BlendBytesFrom(detail::Kernels::BlendBytesSse2(0, s, d, n, t, keep), s, d, n, t, keep);
    });
    if (detail::Kernels::HasAvx2())
        kernels.emplace_back("avx2", [](const unsigned char* s, unsigned char* d, std::size_t n, unsigned t,
                                        std::uint32_t keep) {
            detail::Kernels::BlendBytesFrom(detail::Kernels::BlendBytesAvx2(s, d, n, t, keep), s, d, n, t, keep);
        });
#endif
    kernels.emplace_back("dispatched", detail::BlendBytes);
    return kernels;
}

}  // namespace

TEST(BlendKernels, ByteBlendMatchesTheFormulaAndForcesTheFourthByte)
{
    // Every (source, target) byte pair once, plus a tail that is not a whole vector.
    constexpr std::size_t kCount = 65536 + 28;
    std::vector<unsigned char> source(kCount), original(kCount);
    for (std::size_t i = 0; i < kCount; ++i) {
        source[i] = static_cast<unsigned char>(i);
        original[i] = static_cast<unsigned char>((i >> 8) ^ (i * 7));
    }
    const std::uint32_t keep = detail::ColourBytesMask32();
    unsigned char keepBytes[4];
    std::memcpy(keepBytes, &keep, 4);
    EXPECT_EQ(keepBytes[1], 0xFF);
    EXPECT_EQ(keepBytes[2], 0xFF);
    EXPECT_EQ(keepBytes[0] ^ keepBytes[3], 0xFF);
    for (const auto& [name, kernel] : ByteKernels()) {
        for (int t = 0; t <= 100; ++t) {
            std::vector<unsigned char> colour = original, all = original;
            kernel(source.data(), colour.data(), kCount, static_cast<unsigned>(t), keep);
            kernel(source.data(), all.data(), kCount, static_cast<unsigned>(t), 0xFFFFFFFFu);
            for (std::size_t i = 0; i < kCount; ++i) {
                const unsigned char expected = DoubleBlend(source[i], original[i], t);
                ASSERT_EQ(all[i], expected) << name << ' ' << t << ' ' << i;
                ASSERT_EQ(colour[i], expected & keepBytes[i % 4]) << name << ' ' << t << ' ' << i;
            }
        }
    }
}

TEST(BlendKernels, ConstantBlendMatchesTheFormulaForThreeAndFourBytePixels)
{
    const std::uint32_t keep4 = detail::ColourBytesMask32();
    unsigned char keepBytes4[4];
    std::memcpy(keepBytes4, &keep4, 4);
    const unsigned char keepBytes3[3] = {0xFF, 0xFF, 0xFF};
    for (std::size_t pixelBytes : {std::size_t{3}, std::size_t{4}}) {
        const unsigned char* keep = pixelBytes == 3 ? keepBytes3 : keepBytes4;
        // 256 pixels whose bytes all hold the pixel's index, and a ragged tail.
        const std::size_t count = 256 * pixelBytes + 5 * pixelBytes;
        for (int t = 0; t <= 100; ++t) {
            for (unsigned c = 0; c < 256; c += 3) {
                const unsigned char colour[4] = {static_cast<unsigned char>(c), static_cast<unsigned char>(255 - c),
                                                 static_cast<unsigned char>(c ^ 0x5A), static_cast<unsigned char>(c / 2)};
                std::vector<unsigned char> pixels(count);
                for (std::size_t i = 0; i < count; ++i)
                    pixels[i] = static_cast<unsigned char>(i / pixelBytes);
                const detail::ConstantBlend blend(colour, pixelBytes, static_cast<unsigned>(t),
                                                  pixelBytes == 4 ? keep4 : 0xFFFFFFFFu);
                blend.Apply(pixels.data(), count);
                for (std::size_t i = 0; i < count; ++i) {
                    const std::size_t place = i % pixelBytes;
                    const auto old = static_cast<unsigned char>(i / pixelBytes);
                    ASSERT_EQ(pixels[i], DoubleFill(old, colour[place], t) & keep[place])
                        << pixelBytes << ' ' << t << ' ' << c << ' ' << i;
                }
            }
        }
    }
}

TEST(BlendKernels, SixteenBitFieldsBlendSeparately)
{
    constexpr std::size_t kPixels = 65536;
    std::vector<unsigned char> source(2 * kPixels), original(2 * kPixels);
    for (std::size_t i = 0; i < kPixels; ++i) {
        Store16(&source[2 * i], static_cast<unsigned>(i));
        Store16(&original[2 * i], static_cast<unsigned>(i * 40503u));
    }
    for (int t : {0, 1, 33, 40, 50, 67, 99, 100}) {
        const unsigned o = 100 - static_cast<unsigned>(t);
        const auto field = [&](unsigned s, unsigned d) { return s * o / 100 + d * static_cast<unsigned>(t) / 100; };
        std::vector<unsigned char> blended = original;
        detail::BlendPixels16(source.data(), blended.data(), kPixels, static_cast<unsigned>(t));
        std::vector<unsigned char> filled = original;
        detail::FillPixels16(filled.data(), kPixels, 31, 17, 5, static_cast<unsigned>(t));
        for (std::size_t i = 0; i < kPixels; ++i) {
            const unsigned s = Load16(&source[2 * i]), d = Load16(&original[2 * i]);
            const unsigned expected = (field(s >> 11, d >> 11) << 11) | (field((s >> 5) & 63, (d >> 5) & 63) << 5) |
                                      field(s & 31, d & 31);
            ASSERT_EQ(Load16(&blended[2 * i]), expected) << t << ' ' << i;
            const unsigned filledExpected = (DoubleFill(d >> 11, 31, t) << 11) |
                                            (DoubleFill((d >> 5) & 63, 17, t) << 5) | DoubleFill(d & 31, 5, t);
            ASSERT_EQ(Load16(&filled[2 * i]), filledExpected) << t << ' ' << i;
        }
    }
    // Source field 31 over 0 at 50 % gives 15.
    unsigned char s[2], d[2];
    Store16(s, 31u << 11);
    Store16(d, 0);
    detail::BlendPixels16(s, d, 1, 50);
    EXPECT_EQ(Load16(d), 15u << 11);
}
