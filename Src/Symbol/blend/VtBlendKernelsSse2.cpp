#include "VtBlendKernelSet_p.h"

#if defined(__x86_64__)

#include <emmintrin.h>

#include "VtBlendKernels_p.h"

namespace VTC::EspecialFillDetail {

// 16 bytes a step: widen to 16-bit lanes, s * o + d * t, divide by 100 with
// the multiply-high, narrow.
std::size_t Kernels::BlendBytesSse2(std::size_t from, const unsigned char* source, unsigned char* target,
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

}  // namespace VTC::EspecialFillDetail

#endif
