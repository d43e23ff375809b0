#pragma once

// The byte arithmetic of the transparent blits and fills. The byte loop runs
// on the widest instruction set the processor has, chosen once
// (VtBlendKernelSet_p.h); the results are the same on every one.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "LqBase.h"

namespace VTC::EspecialFillDetail {

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
// tests), so every blend works in integers. The sum never exceeds 25500,
// where (x * 5243) >> 19 is exactly x / 100.
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

// target[i] = blend(source[i], target[i]) AND the byte of keepMask (a 4-byte
// pattern in memory order) at i mod 4. `count` bytes from a pixel boundary.
void BlendBytes(const unsigned char* source, unsigned char* target, std::size_t count, unsigned transparency,
                std::uint32_t keepMask);

// A colour blended over pixels: each byte becomes
// truncate(old * t / 100.0 + c * o / 100.0) for the colour byte c of its place
// in a pixel, which is the blend of c over old, then ANDed with the keep mask.
class ConstantBlend {
public:
    // 96 bytes hold a whole number of 3- and 4-byte pixels and of vectors;
    // the colour is repeated over up to 32 of them, so that a row of up to
    // 768 32-bit pixels is one kernel call.
    static constexpr std::size_t kPeriodBytes = 96;
    static constexpr std::size_t kPatternBytes = 32 * kPeriodBytes;

    // pixel: the colour bytes of one pixel (3 or 4) in memory order; span:
    // how many bytes the calls of Apply mostly cover (the pattern is made no
    // longer than needed).
    ConstantBlend(const unsigned char* pixel, std::size_t pixelBytes, unsigned transparency, std::uint32_t keepMask,
                  std::size_t span = kPatternBytes)
        : transparency_(transparency), keepMask_(keepMask),
          length_(std::clamp((span + kPeriodBytes - 1) / kPeriodBytes, std::size_t{1}, kPatternBytes / kPeriodBytes) *
                  kPeriodBytes)
    {
        for (std::size_t i = 0; i < pixelBytes; ++i)
            pattern_[i] = pixel[i];
        for (std::size_t filled = pixelBytes; filled < length_; filled *= 2)
            std::memcpy(pattern_ + filled, pattern_, std::min(filled, length_ - filled));
    }

    // Blends `count` bytes starting at a pixel boundary.
    void Apply(unsigned char* target, std::size_t count) const
    {
        for (std::size_t i = 0; i < count; i += length_)
            BlendBytes(pattern_, target + i, std::min(length_, count - i), transparency_, keepMask_);
    }

private:
    unsigned transparency_;
    std::uint32_t keepMask_;
    std::size_t length_;  // a whole number of periods
    unsigned char pattern_[kPatternBytes];
};

// The 16-bit layout of the blits: blue in bits 11-15, green in bits 5-10, red
// in bits 0-4. Each field becomes (s * o) / 100 + (d * t) / 100.
void BlendPixels16(const unsigned char* source, unsigned char* target, std::size_t pixels, unsigned transparency);

// A 5-6-5 colour (high, middle, low field) blended over 16-bit pixels: each
// field becomes truncate(old * t / 100.0 + c * o / 100.0).
void FillPixels16(unsigned char* target, std::size_t pixels, unsigned high, unsigned middle, unsigned low,
                  unsigned transparency);

}  // namespace VTC::EspecialFillDetail
