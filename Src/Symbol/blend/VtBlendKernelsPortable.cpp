#include "VtBlendKernelSet_p.h"
#include "VtBlendKernels_p.h"

namespace VTC::EspecialFillDetail {

std::size_t Kernels::BlendBytesPortable(std::size_t from, const unsigned char* source, unsigned char* target,
                                        std::size_t count, unsigned transparency, std::uint32_t keepMask)
{
    unsigned char maskBytes[4];
    std::memcpy(maskBytes, &keepMask, 4);
    const unsigned opacity = 100 - transparency;
    for (std::size_t i = from; i < count; ++i)
        target[i] = BlendByte(source[i], target[i], opacity, transparency) & maskBytes[i % 4];
    return count;
}

void BlendPixels16(const unsigned char* source, unsigned char* target, std::size_t pixels, unsigned transparency)
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

void FillPixels16(unsigned char* target, std::size_t pixels, unsigned high, unsigned middle, unsigned low,
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

}  // namespace VTC::EspecialFillDetail
