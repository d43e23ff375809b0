#include "VtByteArray.h"

namespace VTC {

VtByteArray::VtByteArray(const unsigned char* bytes, long long count) { Append(bytes, count); }

void VtByteArray::Append(const unsigned char* bytes, long long count)
{
    if (bytes && count > 0)
        bytes_.insert(bytes_.end(), bytes, bytes + count);
}

void VtByteArray::SetSize(long long size) { bytes_.resize(size > 0 ? static_cast<std::size_t>(size) : 0); }

void VtByteArray::RemoveAll() { bytes_.clear(); }

}  // namespace VTC
