#pragma once

#include <cstddef>

#include "LqBase.h"

namespace VTC {

// Bytes for pixel rows, recycled by the graphics platform: blocks stay with
// it when freed (those of 64 KiB and more mapped) and are handed to the next
// buffer or image of about their size, so that repeated calls fault nothing
// in and churn no heap, whatever thresholds the C library's allocator works
// with. The bytes are not initialised unless asked.
class LQ_EXPORT VtPixelBuffer {
public:
    VtPixelBuffer() = default;
    // Empty (false) when out of memory. `zeroed`: all bytes 0.
    explicit VtPixelBuffer(std::size_t size, bool zeroed = false);
    VtPixelBuffer(VtPixelBuffer&& other) noexcept;
    VtPixelBuffer& operator=(VtPixelBuffer&& other) noexcept;
    VtPixelBuffer(const VtPixelBuffer&) = delete;
    VtPixelBuffer& operator=(const VtPixelBuffer&) = delete;
    ~VtPixelBuffer();

    unsigned char* Data() const { return data_; }
    std::size_t Size() const { return size_; }
    explicit operator bool() const { return data_ != nullptr; }

private:
    unsigned char* data_ = nullptr;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

}  // namespace VTC
