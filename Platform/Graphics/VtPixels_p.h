#pragma once

// Raw pixel access shared by images, surfaces and blits.

#include <cstddef>
#include <cstdint>

#include "VtPalette.h"

namespace VTC::gfx {

using ZEDA::ZedaRect;

struct PixelFormat {
    int bpp = 32;
    bool redFirst = false;  // 24 bits only: bytes red, green, blue
    friend bool operator==(const PixelFormat&, const PixelFormat&) = default;
};

bool IsSupportedDepth(int bpp);
// Bytes per row, a multiple of 4; -1 when the row would not fit an int.
int StrideFor(int width, int bpp);

// A window onto pixel rows owned by someone else.
struct RasterView {
    unsigned char* data = nullptr;
    int width = 0;
    int height = 0;
    int stride = 0;
    PixelFormat format;
    const VtPalette* palette = nullptr;  // 8 bits only

    bool IsValid() const { return data != nullptr && width > 0 && height > 0; }
    ZedaRect Bounds() const { return {0, 0, width, height}; }
    unsigned char* Row(int y) const { return data + static_cast<std::ptrdiff_t>(y) * stride; }
};

// A raw pixel is the stored value: 1 bit (most significant bit of a byte
// first), a palette index, a 5-6-5 value, three bytes (byte 0 lowest) or a
// 32-bit value.
uint32_t ReadRaw(const RasterView& view, int x, int y);
void WriteRaw(const RasterView& view, int x, int y, uint32_t raw);
void FillSpan(const RasterView& view, int y, int x0, int x1, uint32_t raw);

// Conversions between raw pixels and ZEDARGBA colours. 1 bit: 1 is white;
// a colour becomes 1 when its luminance is at least half.
uint32_t RawToColour(const RasterView& view, uint32_t raw);
uint32_t ColourToRaw(const RasterView& view, uint32_t colour);
// What drawing with `colour` stores: opaque on 32 bits.
uint32_t DrawingRaw(const RasterView& view, uint32_t colour);

bool IsKnownRop(uint32_t rop);
uint32_t ApplyRop(uint32_t rop, uint32_t source, uint32_t target);

// Turns raw pixels of one format into raw pixels of another. Colour into
// 1 bit gives 1 where red, green and blue equal `background`; 1 bit into
// colour gives white for 1 and black for 0.
class PixelConverter {
public:
    PixelConverter(const RasterView& source, const RasterView& target, uint32_t background);
    bool IsIdentity() const { return identity_; }
    uint32_t operator()(uint32_t raw) const;

private:
    const RasterView& source_;
    const RasterView& target_;
    uint32_t background_;
    bool identity_;
};

}  // namespace VTC::gfx
