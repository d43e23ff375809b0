#include "VtPixelBuffer.h"

#include <cstring>
#include <utility>

#include "VtPixelMemory_p.h"

namespace VTC {

using gfx::raster::PixelMemory;

VtPixelBuffer::VtPixelBuffer(std::size_t size, bool zeroed)
{
    bool fresh = false;
    data_ = PixelMemory::Take(size, capacity_, fresh);
    if (data_ == nullptr) {
        return;
    }
    size_ = size;
    if (zeroed && !fresh) {
        std::memset(data_, 0, size);
    }
}

VtPixelBuffer::VtPixelBuffer(VtPixelBuffer&& other) noexcept
    : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)),
      capacity_(std::exchange(other.capacity_, 0))
{
}

VtPixelBuffer& VtPixelBuffer::operator=(VtPixelBuffer&& other) noexcept
{
    if (this != &other) {
        PixelMemory::Give(data_, capacity_);
        data_ = std::exchange(other.data_, nullptr);
        size_ = std::exchange(other.size_, 0);
        capacity_ = std::exchange(other.capacity_, 0);
    }
    return *this;
}

VtPixelBuffer::~VtPixelBuffer() { PixelMemory::Give(data_, capacity_); }

}  // namespace VTC
