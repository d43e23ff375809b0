#pragma once

#include <string>
#include <vector>

#include "VtMemoryStream.h"

namespace lqtest {

inline std::vector<unsigned char> BytesOf(const VTC::VtMemoryStream& stream)
{
    const unsigned char* data = stream.GetData();
    return {data, data + stream.GetLength()};
}

// A memory stream opened for reading over `bytes`.
inline void OpenOver(VTC::VtMemoryStream& stream, const std::vector<unsigned char>& bytes)
{
    stream.Open(bytes.data(), static_cast<long long>(bytes.size()), VTC::VT_STREAM_READ);
}

}  // namespace lqtest
