// Built with AVX2 enabled; run only where the processor has it (ChosenTable).

#include "VtBlendKernelSet_p.h"

#if defined(__x86_64__)

#include <immintrin.h>

#include "VtBlendKernels_p.h"

namespace VTC::EspecialFillDetail {

// 32 bytes a step: source and target bytes interleaved, so that one
// multiply-add of (o, t) byte pairs gives s * o + d * t in each 16-bit lane.
std::size_t Kernels::BlendBytesAvx2(std::size_t from, const unsigned char* source, unsigned char* target,
                                    std::size_t count, unsigned transparency, std::uint32_t keepMask)
{
    const __m256i weights = _mm256_set1_epi16(static_cast<short>((transparency << 8) | (100 - transparency)));
    const __m256i divisor = _mm256_set1_epi16(static_cast<short>(kDivideBy100Multiplier));
    const __m256i mask = _mm256_set1_epi32(static_cast<int>(keepMask));
    std::size_t i = from;
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

}  // namespace VTC::EspecialFillDetail

#endif
