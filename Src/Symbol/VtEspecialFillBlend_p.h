#pragma once

// Internals shared by the gradient and the transparency halves of
// VtEspecialFill: logging, surface questions and the pixel blend kernels.
// Not installed; the tests and benchmarks of the build tree include it.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

#include "LqBase.h"

namespace VTC {

class VtGraphics;
class VtRgn;
struct VtImageInfo;

namespace EspecialFillDetail {

// A surface that is neither printing nor recording is bound to the screen.
// IsRecording is asked only when IsPrinting is false.
bool IsScreenSurface(VtGraphics* graphics);

// The record GetImageInfo fills, set up the way every caller must set it.
void ResetImageInfo(VtImageInfo& info);

// (0, 0) to the screen size of VtEspecialFill::GetScreenSize.
ZEDA::ZedaRect ScreenRect();

// Intersects the region with the screen; false (and the region destroyed,
// the failure logged) when the screen region cannot be made.
bool ClipRegionToScreen(VtRgn* region);

// The region of a polygon given in logical units, or null: `noRegionCode` is
// logged when no region object can be had, "EFd009" when the points give no
// region.
VtRgn* NewPolygonRegion(VtGraphics* graphics, const ZEDA::ZedaPoint* points, int count, const char* noRegionCode);

// The same for polyCount polygons of counts[i] points each.
VtRgn* NewPolyPolygonRegion(VtGraphics* graphics, const ZEDA::ZedaPoint* points, const int* counts, int polyCount,
                            const char* noRegionCode);

// An opaque rectangle of the colour without an outline; false (logged) when
// the brush or the pen cannot be made.
bool DrawOpaqueRectangle(VtGraphics* graphics, const ZEDA::ZedaRect& rect, unsigned int colour);

// Half away from zero, then truncated.
inline int RoundAway(double value)
{
    return static_cast<int>(value > 0 ? value + 0.5 : value - 0.5);
}

// True when the host stores integers little-endian (ZEDA::un_bigendina).
inline bool IsLittleEndianHost()
{
    return reinterpret_cast<const unsigned char*>(&ZEDA::un_bigendina)[0] == 1;
}

// The 4-byte pattern, in memory order, that keeps the three colour bytes of a
// blended 32-bit pixel and forces the fourth channel to 0: byte 3 on a
// little-endian host, byte 0 otherwise.
inline std::uint32_t ColourBytesMask32()
{
    const unsigned char keep[4] = {static_cast<unsigned char>(IsLittleEndianHost() ? 0xFF : 0x00), 0xFF, 0xFF,
                                   static_cast<unsigned char>(IsLittleEndianHost() ? 0x00 : 0xFF)};
    std::uint32_t mask;
    std::memcpy(&mask, keep, 4);
    return mask;
}

// truncate(a * o / 100.0 + b * t / 100.0) equals (a * o + b * t) / 100 for
// every pair of bytes and every o + t = 100 (checked exhaustively by the
// tests), so every blend below works in integers. The sum never exceeds
// 25500, where (x * 5243) >> 19 is exactly x / 100.
constexpr unsigned kDivideBy100Multiplier = 5243;
constexpr unsigned kDivideBy100Shift = 19;

inline unsigned DivideBy100(unsigned value)
{
    return (value * kDivideBy100Multiplier) >> kDivideBy100Shift;
}

inline unsigned char BlendByte(unsigned source, unsigned target, unsigned opacity, unsigned transparency)
{
    return static_cast<unsigned char>(DivideBy100(source * opacity + target * transparency));
}

namespace Kernels {

// Byte i from `from` on: the formula itself.
inline void BlendBytesFrom(std::size_t from, const unsigned char* source, unsigned char* target, std::size_t count,
                           unsigned transparency, std::uint32_t keepMask)
{
    unsigned char maskBytes[4];
    std::memcpy(maskBytes, &keepMask, 4);
    const unsigned opacity = 100 - transparency;
    for (std::size_t i = from; i < count; ++i)
        target[i] = BlendByte(source[i], target[i], opacity, transparency) & maskBytes[i % 4];
}

#if defined(__SSE2__)
// 16 bytes a step: widen to 16-bit lanes, s * o + d * t, divide by 100
// with the multiply-high, narrow.
inline std::size_t BlendBytesSse2(std::size_t from, const unsigned char* source, unsigned char* target,
                                  std::size_t count, unsigned transparency, std::uint32_t keepMask)
{
    const __m128i zero = _mm_setzero_si128();
    const __m128i o = _mm_set1_epi16(static_cast<short>(100 - transparency));
    const __m128i t = _mm_set1_epi16(static_cast<short>(transparency));
    const __m128i divisor = _mm_set1_epi16(static_cast<short>(kDivideBy100Multiplier));
    const __m128i mask = _mm_set1_epi32(static_cast<int>(keepMask));
    std::size_t i = from;
    for (; i + 16 <= count; i += 16) {
        const __m128i s = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source + i));
        const __m128i d = _mm_loadu_si128(reinterpret_cast<const __m128i*>(target + i));
        __m128i lo = _mm_add_epi16(_mm_mullo_epi16(_mm_unpacklo_epi8(s, zero), o),
                                   _mm_mullo_epi16(_mm_unpacklo_epi8(d, zero), t));
        __m128i hi = _mm_add_epi16(_mm_mullo_epi16(_mm_unpackhi_epi8(s, zero), o),
                                   _mm_mullo_epi16(_mm_unpackhi_epi8(d, zero), t));
        lo = _mm_srli_epi16(_mm_mulhi_epu16(lo, divisor), kDivideBy100Shift - 16);
        hi = _mm_srli_epi16(_mm_mulhi_epu16(hi, divisor), kDivideBy100Shift - 16);
        _mm_storeu_si128(reinterpret_cast<__m128i*>(target + i), _mm_and_si128(_mm_packus_epi16(lo, hi), mask));
    }
    return i;
}

// 32 bytes a step: source and target bytes interleaved, so that one
// multiply-add of (o, t) byte pairs gives s * o + d * t in each 16-bit lane.
__attribute__((target("avx2"))) inline std::size_t BlendBytesAvx2(const unsigned char* source,
                                                                   unsigned char* target, std::size_t count,
                                                                   unsigned transparency, std::uint32_t keepMask)
{
    const __m256i weights = _mm256_set1_epi16(static_cast<short>((transparency << 8) | (100 - transparency)));
    const __m256i divisor = _mm256_set1_epi16(static_cast<short>(kDivideBy100Multiplier));
    const __m256i mask = _mm256_set1_epi32(static_cast<int>(keepMask));
    std::size_t i = 0;
    for (; i + 32 <= count; i += 32) {
        const __m256i s = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(source + i));
        const __m256i d = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(target + i));
        __m256i lo = _mm256_maddubs_epi16(_mm256_unpacklo_epi8(s, d), weights);
        __m256i hi = _mm256_maddubs_epi16(_mm256_unpackhi_epi8(s, d), weights);
        lo = _mm256_srli_epi16(_mm256_mulhi_epu16(lo, divisor), kDivideBy100Shift - 16);
        hi = _mm256_srli_epi16(_mm256_mulhi_epu16(hi, divisor), kDivideBy100Shift - 16);
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(target + i),
                            _mm256_and_si256(_mm256_packus_epi16(lo, hi), mask));
    }
    return i;
}

inline bool HasAvx2()
{
    static const bool avx2 = [] {
        __builtin_cpu_init();
        return __builtin_cpu_supports("avx2") != 0;
    }();
    return avx2;
}
#endif

}  // namespace Kernels

// target[i] = blend(source[i], target[i]) AND the byte of keepMask (a 4-byte
// pattern in memory order) at i mod 4. `count` bytes from a pixel boundary.
inline void BlendBytes(const unsigned char* source, unsigned char* target, std::size_t count, unsigned transparency,
                       std::uint32_t keepMask)
{
    std::size_t done = 0;
#if defined(__SSE2__)
    if (Kernels::HasAvx2())
        done = Kernels::BlendBytesAvx2(source, target, count, transparency, keepMask);
    done = Kernels::BlendBytesSse2(done, source, target, count, transparency, keepMask);
#endif
    Kernels::BlendBytesFrom(done, source, target, count, transparency, keepMask);
}

// A colour blended over pixels: each byte becomes
// truncate(old * t / 100.0 + c * o / 100.0) for the colour byte c of its place
// in a pixel, which is the blend of c over old, then ANDed with the keep mask.
class ConstantBlend {
public:
    // 96 bytes hold a whole number of 3- and 4-byte pixels and of vectors.
    static constexpr std::size_t kPatternBytes = 96;

    // pixel: the colour bytes of one pixel (3 or 4) in memory order.
    ConstantBlend(const unsigned char* pixel, std::size_t pixelBytes, unsigned transparency, std::uint32_t keepMask)
        : transparency_(transparency), keepMask_(keepMask)
    {
        for (std::size_t i = 0; i < kPatternBytes; ++i)
            pattern_[i] = pixel[i % pixelBytes];
    }

    // Blends `count` bytes starting at a pixel boundary.
    void Apply(unsigned char* target, std::size_t count) const
    {
        for (std::size_t i = 0; i < count; i += kPatternBytes)
            BlendBytes(pattern_, target + i, std::min(kPatternBytes, count - i), transparency_, keepMask_);
    }

private:
    unsigned transparency_;
    std::uint32_t keepMask_;
    unsigned char pattern_[kPatternBytes];
};

// The 16-bit layout of the blits: blue in bits 11-15, green in bits 5-10, red
// in bits 0-4. Each field becomes (s * o) / 100 + (d * t) / 100.
inline void BlendPixels16(const unsigned char* source, unsigned char* target, std::size_t pixels,
                          unsigned transparency)
{
    const unsigned opacity = 100 - transparency;
    const auto field = [&](unsigned s, unsigned d) { return DivideBy100(s * opacity) + DivideBy100(d * transparency); };
    for (std::size_t i = 0; i < pixels; ++i) {
        const unsigned s = source[2 * i] | (source[2 * i + 1] << 8);
        const unsigned d = target[2 * i] | (target[2 * i + 1] << 8);
        const unsigned blue = field(s >> 11, d >> 11);
        const unsigned green = field((s >> 5) & 0x3F, (d >> 5) & 0x3F);
        const unsigned red = field(s & 0x1F, d & 0x1F);
        const unsigned value = (blue << 11) | ((green & 0x3F) << 5) | (red & 0x1F);
        target[2 * i] = static_cast<unsigned char>(value);
        target[2 * i + 1] = static_cast<unsigned char>(value >> 8);
    }
}

// A 5-6-5 colour (high, middle, low field) blended over 16-bit pixels: each
// field becomes truncate(old * t / 100.0 + c * o / 100.0).
inline void FillPixels16(unsigned char* target, std::size_t pixels, unsigned high, unsigned middle, unsigned low,
                         unsigned transparency)
{
    const unsigned opacity = 100 - transparency;
    const unsigned highShare = high * opacity, middleShare = middle * opacity, lowShare = low * opacity;
    for (std::size_t i = 0; i < pixels; ++i) {
        const unsigned d = target[2 * i] | (target[2 * i + 1] << 8);
        const unsigned h = DivideBy100((d >> 11) * transparency + highShare);
        const unsigned m = DivideBy100(((d >> 5) & 0x3F) * transparency + middleShare);
        const unsigned l = DivideBy100((d & 0x1F) * transparency + lowShare);
        const unsigned value = (h << 11) | ((m & 0x3F) << 5) | (l & 0x1F);
        target[2 * i] = static_cast<unsigned char>(value);
        target[2 * i + 1] = static_cast<unsigned char>(value >> 8);
    }
}

}  // namespace EspecialFillDetail
}  // namespace VTC
