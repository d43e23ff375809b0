#include <cstdint>
#include <cstring>

#include "FillTestSupport.h"
#include "VtEspecialFillBlend.h"

using namespace FillTest;
namespace detail = EspecialFillDetail;

namespace {

// The fill as the renderer defines it, in doubles.
unsigned char DoubleFill(unsigned old, unsigned colour, int t)
{
    return static_cast<unsigned char>(static_cast<int>(old * t / 100.0 + colour * (100 - t) / 100.0));
}

unsigned Load16(const unsigned char* p) { return p[0] | (p[1] << 8); }
void Store16(unsigned char* p, unsigned v) { p[0] = static_cast<unsigned char>(v), p[1] = static_cast<unsigned char>(v >> 8); }

}  // namespace

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
    using Kernel = void (*)(const unsigned char*, unsigned char*, std::size_t, unsigned, std::uint32_t);
    namespace k = detail::Kernels;
    std::vector<std::pair<const char*, Kernel>> kernels = {
        {"portable", [](auto s, auto d, auto n, auto t, auto keep) { k::BlendBytesFrom(0, s, d, n, t, keep); }},
        {"dispatched", detail::BlendBytes}};
#if defined(__SSE2__)
    kernels.emplace_back("sse2", [](auto s, auto d, auto n, auto t, auto keep) {
        k::BlendBytesFrom(k::BlendBytesSse2(0, s, d, n, t, keep), s, d, n, t, keep);
    });
    if (k::HasAvx2())
        kernels.emplace_back("avx2", [](auto s, auto d, auto n, auto t, auto keep) {
            k::BlendBytesFrom(k::BlendBytesAvx2(s, d, n, t, keep), s, d, n, t, keep);
        });
#endif
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
            ASSERT_EQ(Load16(&blended[2 * i]),
                      (field(s >> 11, d >> 11) << 11) | (field((s >> 5) & 63, (d >> 5) & 63) << 5) | field(s & 31, d & 31))
                << t << ' ' << i;
            ASSERT_EQ(Load16(&filled[2 * i]),
                      (DoubleFill(d >> 11, 31, t) << 11) | (DoubleFill((d >> 5) & 63, 17, t) << 5) | DoubleFill(d & 31, 5, t))
                << t << ' ' << i;
        }
    }
}
