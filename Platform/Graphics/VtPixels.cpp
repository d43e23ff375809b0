#include "VtPixels_p.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <limits>

#include "VtGraphicsTypes.h"

namespace VTC::gfx {

namespace {

constexpr uint32_t kWhite = ZEDARGB(255, 255, 255);
constexpr uint32_t kBlack = ZEDARGB(0, 0, 0);

uint32_t Expand5(uint32_t v) { return (v << 3) | (v >> 2); }
uint32_t Expand6(uint32_t v) { return (v << 2) | (v >> 4); }

int Luminance(uint32_t colour)
{
    return (ZEDAREDVAL(colour) * 299 + ZEDAGREENVAL(colour) * 587 + ZEDABLUEVAL(colour) * 114) / 1000;
}

int NearestPaletteIndex(const VtPalette* palette, uint32_t colour)
{
    if (palette == nullptr || palette->GetCount() == 0) {
        return Luminance(colour);
    }
    int best = 0;
    long bestDistance = std::numeric_limits<long>::max();
    for (int i = 0; i < palette->GetCount(); ++i) {
        const uint32_t entry = palette->GetColour(i);
        const long dr = long{ZEDAREDVAL(entry)} - ZEDAREDVAL(colour);
        const long dg = long{ZEDAGREENVAL(entry)} - ZEDAGREENVAL(colour);
        const long db = long{ZEDABLUEVAL(entry)} - ZEDABLUEVAL(colour);
        const long distance = dr * dr + dg * dg + db * db;
        if (distance < bestDistance) {
            bestDistance = distance;
            best = i;
        }
    }
    return best;
}

bool SamePalette(const VtPalette* a, const VtPalette* b)
{
    const int countA = a ? a->GetCount() : 0;
    const int countB = b ? b->GetCount() : 0;
    if (countA != countB) {
        return false;
    }
    for (int i = 0; i < countA; ++i) {
        if (a->GetColour(i) != b->GetColour(i)) {
            return false;
        }
    }
    return true;
}

bool SameFormat(const RasterView& a, const RasterView& b)
{
    if (a.format.bpp != b.format.bpp) {
        return false;
    }
    switch (a.format.bpp) {
    case 24:
        return a.format.redFirst == b.format.redFirst;
    case 8:
        return SamePalette(a.palette, b.palette);
    default:
        return true;
    }
}

}  // namespace

bool IsSupportedDepth(int bpp) { return bpp == 1 || bpp == 8 || bpp == 16 || bpp == 24 || bpp == 32; }

int StrideFor(int width, int bpp)
{
    const long long bits = static_cast<long long>(width) * bpp;
    const long long stride = (bits + 31) / 32 * 4;
    return stride > INT_MAX ? -1 : static_cast<int>(stride);
}

uint32_t ReadRaw(const RasterView& view, int x, int y)
{
    const unsigned char* row = view.Row(y);
    switch (view.format.bpp) {
    case 1:
        return (row[x >> 3] >> (7 - (x & 7))) & 1u;
    case 8:
        return row[x];
    case 16: {
        uint16_t v;
        std::memcpy(&v, row + 2 * x, 2);
        return v;
    }
    case 24: {
        const unsigned char* p = row + 3 * x;
        return p[0] | (uint32_t{p[1]} << 8) | (uint32_t{p[2]} << 16);
    }
    default: {
        uint32_t v;
        std::memcpy(&v, row + 4 * x, 4);
        return v;
    }
    }
}

void WriteRaw(const RasterView& view, int x, int y, uint32_t raw)
{
    unsigned char* row = view.Row(y);
    switch (view.format.bpp) {
    case 1: {
        const unsigned char bit = static_cast<unsigned char>(0x80u >> (x & 7));
        row[x >> 3] = (raw & 1u) ? (row[x >> 3] | bit) : (row[x >> 3] & ~bit);
        break;
    }
    case 8:
        row[x] = static_cast<unsigned char>(raw);
        break;
    case 16: {
        const uint16_t v = static_cast<uint16_t>(raw);
        std::memcpy(row + 2 * x, &v, 2);
        break;
    }
    case 24: {
        unsigned char* p = row + 3 * x;
        p[0] = static_cast<unsigned char>(raw);
        p[1] = static_cast<unsigned char>(raw >> 8);
        p[2] = static_cast<unsigned char>(raw >> 16);
        break;
    }
    default:
        std::memcpy(row + 4 * x, &raw, 4);
        break;
    }
}

void FillSpan(const RasterView& view, int y, int x0, int x1, uint32_t raw)
{
    if (x1 <= x0) {
        return;
    }
    unsigned char* row = view.Row(y);
    const auto count = static_cast<std::size_t>(x1 - x0);
    switch (view.format.bpp) {
    case 32: {
        // Rows start on 4-byte boundaries, so the pixels can be written as words.
        auto* p = reinterpret_cast<uint32_t*>(row) + x0;
        std::fill_n(p, count, raw);
        return;
    }
    case 16: {
        auto* p = reinterpret_cast<uint16_t*>(row) + x0;
        std::fill_n(p, count, static_cast<uint16_t>(raw));
        return;
    }
    case 8:
        std::memset(row + x0, static_cast<int>(raw & 0xFF), count);
        return;
    default:
        for (int x = x0; x < x1; ++x) {
            WriteRaw(view, x, y, raw);
        }
    }
}

uint32_t RawToColour(const RasterView& view, uint32_t raw)
{
    switch (view.format.bpp) {
    case 1:
        return raw ? kWhite : kBlack;
    case 8: {
        const auto index = static_cast<int>(raw);
        if (view.palette == nullptr || view.palette->GetCount() == 0) {
            return ZEDARGB(index, index, index);
        }
        return index < view.palette->GetCount() ? view.palette->GetColour(index) : kBlack;
    }
    case 16:
        return ZEDARGB(Expand5(raw >> 11), Expand6((raw >> 5) & 0x3F), Expand5(raw & 0x1F));
    case 24: {
        const uint32_t lo = raw & 0xFF;
        const uint32_t mid = (raw >> 8) & 0xFF;
        const uint32_t hi = (raw >> 16) & 0xFF;
        return view.format.redFirst ? ZEDARGB(lo, mid, hi) : ZEDARGB(hi, mid, lo);
    }
    default:
        return raw;
    }
}

uint32_t ColourToRaw(const RasterView& view, uint32_t colour)
{
    const uint32_t r = ZEDAREDVAL(colour);
    const uint32_t g = ZEDAGREENVAL(colour);
    const uint32_t b = ZEDABLUEVAL(colour);
    switch (view.format.bpp) {
    case 1:
        return Luminance(colour) >= 128 ? 1u : 0u;
    case 8:
        return static_cast<uint32_t>(NearestPaletteIndex(view.palette, colour));
    case 16:
        return ((r >> 3) << 11) | ((g >> 2) << 5) | (b >> 3);
    case 24:
        return view.format.redFirst ? (r | (g << 8) | (b << 16)) : (b | (g << 8) | (r << 16));
    default:
        return colour;
    }
}

uint32_t DrawingRaw(const RasterView& view, uint32_t colour)
{
    return view.format.bpp == 32 ? (colour | 0xFF000000u) : ColourToRaw(view, colour);
}

bool IsKnownRop(uint32_t rop)
{
    return rop == VT_ROP_COPY || rop == VT_ROP_AND || rop == VT_ROP_OR || rop == VT_ROP_XOR;
}

uint32_t ApplyRop(uint32_t rop, uint32_t source, uint32_t target)
{
    switch (rop) {
    case VT_ROP_AND:
        return source & target;
    case VT_ROP_OR:
        return source | target;
    case VT_ROP_XOR:
        return source ^ target;
    default:
        return source;
    }
}

PixelConverter::PixelConverter(const RasterView& source, const RasterView& target, uint32_t background)
    : source_(source), target_(target), background_(background), identity_(SameFormat(source, target))
{
}

uint32_t PixelConverter::operator()(uint32_t raw) const
{
    if (identity_) {
        return raw;
    }
    if (target_.format.bpp == 1) {
        return ((RawToColour(source_, raw) ^ background_) & 0xFFFFFFu) == 0 ? 1u : 0u;
    }
    if (source_.format.bpp == 1) {
        return ColourToRaw(target_, raw ? kWhite : kBlack);
    }
    return ColourToRaw(target_, RawToColour(source_, raw));
}

}  // namespace VTC::gfx
