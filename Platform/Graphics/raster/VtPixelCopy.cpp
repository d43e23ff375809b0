#include "VtPixelCopy_p.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace VTC::gfx::raster {

namespace {

#if defined(__SSE2__)
// SSE2 is part of every x86-64 processor.
void Stream(unsigned char* target, const unsigned char* source, std::size_t n)
{
    const std::size_t head = std::min(n, (16 - reinterpret_cast<std::uintptr_t>(target) % 16) % 16);
    std::memcpy(target, source, head);
    std::size_t i = head;
    for (; i + 64 <= n; i += 64) {
        const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source + i));
        const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source + i + 16));
        const __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source + i + 32));
        const __m128i d = _mm_loadu_si128(reinterpret_cast<const __m128i*>(source + i + 48));
        _mm_stream_si128(reinterpret_cast<__m128i*>(target + i), a);
        _mm_stream_si128(reinterpret_cast<__m128i*>(target + i + 16), b);
        _mm_stream_si128(reinterpret_cast<__m128i*>(target + i + 32), c);
        _mm_stream_si128(reinterpret_cast<__m128i*>(target + i + 48), d);
    }
    std::memcpy(target + i, source + i, n - i);
}

void Fence() { _mm_sfence(); }
#else
// Elsewhere plain copies.
void Stream(unsigned char* target, const unsigned char* source, std::size_t n) { std::memcpy(target, source, n); }
void Fence() {}
#endif

}  // namespace

void CopyBytes(unsigned char* target, const unsigned char* source, std::size_t n)
{
    RowCopier copier(n);
    copier.Copy(target, source, n);
}

void RowCopier::Copy(unsigned char* target, const unsigned char* source, std::size_t n) const
{
    if (streaming_) {
        Stream(target, source, n);
    } else {
        std::memcpy(target, source, n);
    }
}

void RowCopier::Finish()
{
    if (streaming_) {
        Fence();
        streaming_ = false;
    }
}

}  // namespace VTC::gfx::raster
