// Built with AVX-512 (F and VL) and BMI2 enabled; run only where the processor
// has them (ChosenStretchWriter).

#include "VtRasterStretch_p.h"

#if defined(__x86_64__)

#include <immintrin.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace VTC::gfx::raster {

namespace {

constexpr int kLanes = 8;

// Where q = floor(v / dy) for 0 <= v < 8 dy, lane by lane: v less q dy, and q.
struct Division {
    __m256i rest, quotient;
};

Division DivideBelowEight(__m256i v, __m256i dy)
{
    __m256i quotient = _mm256_setzero_si256();
    for (int shift = 2; shift >= 0; --shift) {
        const __m256i less = _mm256_sub_epi32(v, _mm256_slli_epi32(dy, shift));
        const __m256i fits = _mm256_cmpgt_epi32(less, _mm256_set1_epi32(-1));
        v = _mm256_blendv_epi8(v, less, fits);
        quotient = _mm256_add_epi32(quotient, _mm256_and_si256(fits, _mm256_set1_epi32(1 << shift)));
    }
    return {v, quotient};
}

// An edge in eight lanes, lane i at the i-th row from here on: x plus
// kSampleBelowTop (so that a shift gives the pixel) and the remainder less
// dy, in [-dy, 0), both advanced eight rows a step.
class LaneEdge {
public:
    explicit LaneEdge(const EdgeSteps& e) : dy_(_mm256_set1_epi32(static_cast<int>(e.dy)))
    {
        const __m256i lane = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
        // Lane i: x + i stepX + floor((remainder + i stepRemainder) / dy), as i single steps give.
        const Division start = DivideBelowEight(
            _mm256_add_epi32(_mm256_set1_epi32(static_cast<int>(e.remainder)),
                             _mm256_mullo_epi32(lane, _mm256_set1_epi32(static_cast<int>(e.stepRemainder)))),
            dy_);
        x_ = _mm256_add_epi32(
            _mm256_add_epi32(_mm256_set1_epi32(static_cast<int>(e.x + kSampleBelowTop)),
                             _mm256_mullo_epi32(lane, _mm256_set1_epi32(static_cast<int>(e.stepX)))),
            start.quotient);
        remainder_ = _mm256_sub_epi32(start.rest, dy_);
        // Eight rows: 8 stepX + floor(8 stepRemainder / dy), and what remains
        // (one 32-bit division, under way while the lanes are worked out).
        const auto eightRemainders = static_cast<int32_t>(8 * e.stepRemainder), dy = static_cast<int32_t>(e.dy);
        const int32_t carries = eightRemainders / dy;
        stepX_ = _mm256_set1_epi32(static_cast<int>(8 * e.stepX + carries));
        stepRemainder_ = _mm256_set1_epi32(eightRemainders - carries * dy);
    }

    __m256i Pixels() const { return _mm256_srai_epi32(x_, 8); }

    void Step()
    {
        remainder_ = _mm256_add_epi32(remainder_, stepRemainder_);
        const __m256i carry = _mm256_cmpgt_epi32(remainder_, _mm256_set1_epi32(-1));
        x_ = _mm256_sub_epi32(_mm256_add_epi32(x_, stepX_), carry);
        remainder_ = _mm256_sub_epi32(remainder_, _mm256_and_si256(carry, dy_));
    }

    // Lane i back into the edge.
    void StoreLane(int i, EdgeSteps& e) const
    {
        alignas(32) int32_t x[kLanes], remainder[kLanes];
        _mm256_store_si256(reinterpret_cast<__m256i*>(x), x_);
        _mm256_store_si256(reinterpret_cast<__m256i*>(remainder), remainder_);
        e.x = Fixed{x[i]} - kSampleBelowTop;
        e.remainder = Fixed{remainder[i]} + e.dy;
    }

private:
    __m256i dy_, x_, remainder_, stepX_, stepRemainder_;
};

// `length` pixels from p on (none when it is not positive): whole vectors,
// then the rest by one masked store, so that the short runs of bands and
// sectors take no branch on their length.
void FillRun(uint32_t* p, int32_t length, __m256i narrow, __m512i value)
{
    if (length <= kLanes) {
        const auto lanes = static_cast<unsigned>(std::max(length, 0));
        _mm256_mask_storeu_epi32(p, static_cast<__mmask8>(_bzhi_u32(0xFFu, lanes)), narrow);
        return;
    }
    constexpr int32_t kWide = 16;
    for (; length > kWide; length -= kWide, p += kWide) {
        _mm512_storeu_si512(p, value);
    }
    _mm512_mask_storeu_epi32(p, static_cast<__mmask16>(_bzhi_u32(0xFFFFu, static_cast<unsigned>(length))), value);
}

// Whether every value the lanes take over `count` rows and one step beyond fits 32 bits.
bool FitsLanes(const EdgeSteps& e, Fixed count)
{
    constexpr Fixed kBound = Fixed{1} << 30;
    if (e.dy >= (Fixed{1} << 27) || std::llabs(e.x) >= kBound || std::llabs(e.stepX) >= (Fixed{1} << 24) ||
        count >= kBound) {
        return false;
    }
    return std::llabs(e.x) + (count + 2 * kLanes) * (std::llabs(e.stepX) + 1) < kBound;
}

}  // namespace

void WriteStretchAvx512(EdgeSteps& a, EdgeSteps& b, Fixed count, Fixed left, Fixed right, const Plain32Rows& rows,
                        unsigned char* row)
{
    if (count < kFewestLaneRows || !FitsLanes(a, count) || !FitsLanes(b, count)) {
        WriteStretchPortable(a, b, count, left, right, rows, row);
        return;
    }
    LaneEdge first(a), second(b);
    const Plain32Rows pixels = rows;
    const __m256i low = _mm256_set1_epi32(static_cast<int>(left));
    const __m256i high = _mm256_set1_epi32(static_cast<int>(right));
    const __m256i narrow = _mm256_set1_epi32(static_cast<int>(pixels.raw));
    const __m512i value = _mm512_set1_epi32(static_cast<int>(pixels.raw));
    // The runs of a few blocks are worked out before any is written: read
    // back at once, the lanes just stored would stall every row.
    constexpr int kBlocks = 4;
    alignas(32) int32_t from[kBlocks * kLanes], length[kBlocks * kLanes];
    for (Fixed remaining = count; remaining > 0;) {
        const int rowsHere = remaining < kBlocks * kLanes ? static_cast<int>(remaining) : kBlocks * kLanes;
        for (int block = 0; block * kLanes < rowsHere; ++block) {
            const __m256i cutA = first.Pixels(), cutB = second.Pixels();
            // Starts held within the row too, so that an empty run's address lies in it.
            const __m256i start = _mm256_min_epi32(_mm256_max_epi32(_mm256_min_epi32(cutA, cutB), low), high);
            const __m256i end = _mm256_min_epi32(_mm256_max_epi32(cutA, cutB), high);
            _mm256_store_si256(reinterpret_cast<__m256i*>(from + block * kLanes), start);
            _mm256_store_si256(reinterpret_cast<__m256i*>(length + block * kLanes), _mm256_sub_epi32(end, start));
            if (rowsHere - block * kLanes >= kLanes) {
                first.Step();
                second.Step();
            }
        }
        for (int i = 0; i < rowsHere; ++i, row += pixels.stride) {
            FillRun(reinterpret_cast<uint32_t*>(row) + from[i], length[i], narrow, value);
        }
        remaining -= rowsHere;
    }
    // Only whole blocks were stepped: row `count` is in the lane of its place in the last.
    const auto lane = static_cast<int>(count % kLanes);
    first.StoreLane(lane, a);
    second.StoreLane(lane, b);
}

}  // namespace VTC::gfx::raster

#endif
