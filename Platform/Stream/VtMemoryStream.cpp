#include "VtMemoryStream.h"

#include <algorithm>
#include <cstring>

namespace VTC {

namespace {

bool IsValidDirection(int direction) { return direction >= VT_STREAM_WRITE && direction <= VT_STREAM_READWRITE; }

}  // namespace

VtMemoryStream::VtMemoryStream() = default;

VtMemoryStream::~VtMemoryStream() = default;

bool VtMemoryStream::Open(int direction, long long initialSize)
{
    Close();
    if (!IsValidDirection(direction))
        return false;
    data_.reserve(static_cast<std::size_t>(std::max(initialSize, 0LL)));
    direction_ = direction;
    return true;
}

bool VtMemoryStream::Open(const unsigned char* bytes, long long count, int direction)
{
    Close();
    if (!IsValidDirection(direction) || count < 0 || (count > 0 && !bytes))
        return false;
    data_.assign(bytes, bytes + count);
    direction_ = direction;
    return true;
}

void VtMemoryStream::Close()
{
    data_ = {};
    position_ = 0;
    direction_ = 0;
    ClearFailed();
}

const unsigned char* VtMemoryStream::GetData() const { return data_.data(); }

unsigned long VtMemoryStream::Save(const unsigned char* bytes, unsigned long count)
{
    if (!IsOpen() || direction_ == VT_STREAM_READ || (count > 0 && !bytes)) {
        SetFailed();
        return 0;
    }
    const auto start = static_cast<std::size_t>(position_);
    if (start + count > data_.size())
        data_.resize(start + count);
    std::copy_n(bytes, count, data_.begin() + static_cast<std::ptrdiff_t>(start));
    position_ += static_cast<long long>(count);
    return count;
}

unsigned long VtMemoryStream::Load(unsigned char* bytes, unsigned long count)
{
    if (!IsOpen() || direction_ == VT_STREAM_WRITE || IsFailed() ||
        static_cast<unsigned long long>(GetRemaining()) < count || (count > 0 && !bytes)) {
        SetFailed();
        return 0;
    }
    std::copy_n(data_.begin() + static_cast<std::ptrdiff_t>(position_), count, bytes);
    position_ += static_cast<long long>(count);
    return count;
}

long long VtMemoryStream::GetPosition() const { return position_; }

bool VtMemoryStream::SetPosition(long long offset, int whence)
{
    if (!IsOpen())
        return false;
    long long target = 0;
    if (!ResolvePosition(position_, GetLength(), offset, whence, target))
        return false;
    position_ = target;
    ClearFailed();
    return true;
}

long long VtMemoryStream::GetLength() const { return static_cast<long long>(data_.size()); }

bool VtMemoryStream::IsOpen() const { return direction_ != 0; }

}  // namespace VTC
