#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "VtByteArray.h"
#include "LqTestSupport.h"
#include "VtCompactFile.h"

namespace cftest {

using Bytes = std::vector<unsigned char>;
using VTC::ZedaUnicodeString;

// A fresh directory per test, removed with everything in it.
class TempDirTest : public ::testing::Test {
protected:
    std::string PathOf(const std::string& name) const { return temp_ / name; }
    ZedaUnicodeString UPathOf(const std::string& name) const { return temp_.Unicode(name); }

    lqtest::TempDir temp_{"lq-cf-"};
};

using lqtest::ReadFileBytes;
using lqtest::WriteFile;

inline VTC::VtByteArray ToArray(const Bytes& bytes)
{
    return VTC::VtByteArray(bytes.data(), static_cast<long long>(bytes.size()));
}

inline Bytes ToBytes(const VTC::VtByteArray& array)
{
    return Bytes(array.GetData(), array.GetData() + array.GetSize());
}

// Bytes that differ with seed and position, so that a shifted, cut or mixed
// value never passes for the right one; 8 bytes a step, megabytes are many.
inline Bytes Pattern(unsigned seed, std::size_t size)
{
    Bytes bytes(size);
    std::uint64_t state = seed * 0x9E3779B97F4A7C15ull + 1u;
    for (std::size_t offset = 0; offset < size; offset += sizeof state) {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        std::memcpy(bytes.data() + offset, &state, std::min(sizeof state, size - offset));
    }
    return bytes;
}

}  // namespace cftest
