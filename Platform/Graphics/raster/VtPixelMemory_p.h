#pragma once

// Memory for pixel rows and pixel buffers, recycled by the platform itself.

#include <cstddef>

namespace VTC::gfx::raster {

// Blocks of 64 KiB and more are mapped by the platform and kept when given
// back (the most recently given first, up to kKeptBlocks blocks and
// kKeptBytes bytes), so that repeated calls of one size find their memory
// mapped, faulted in and warm, whatever thresholds the C library's allocator
// works with. Smaller blocks come from the allocator and are kept as well, up
// to kKeptSmallBlocks of them. Nothing is zeroed.
class PixelMemory {
public:
    static constexpr std::size_t kSmallest = std::size_t{64} << 10;
    static constexpr std::size_t kKeptBlocks = 8;
    static constexpr std::size_t kKeptBytes = std::size_t{160} << 20;
    static constexpr std::size_t kKeptSmallBlocks = 16;

    // At least `size` bytes (a kept block may be up to half as large again),
    // with its capacity; null when out of memory. `fresh` tells whether the
    // block was newly mapped, and so all 0.
    static unsigned char* Take(std::size_t size, std::size_t& capacity, bool& fresh);
    static void Give(unsigned char* block, std::size_t capacity);
};

}  // namespace VTC::gfx::raster
