#include "VtStream.h"

#include <array>
#include <cstdint>
#include <string>

namespace VTC {

namespace {

template <typename Unsigned, std::size_t N>
std::array<unsigned char, N> EncodeLittleEndian(Unsigned value)
{
    std::array<unsigned char, N> bytes{};
    for (std::size_t i = 0; i < N; ++i)
        bytes[i] = static_cast<unsigned char>(value >> (8 * i));
    return bytes;
}

template <typename Unsigned, std::size_t N>
Unsigned DecodeLittleEndian(const std::array<unsigned char, N>& bytes)
{
    Unsigned value = 0;
    for (std::size_t i = 0; i < N; ++i)
        value |= static_cast<Unsigned>(bytes[i]) << (8 * i);
    return value;
}

}  // namespace

VtStream::~VtStream() = default;

long long VtStream::GetRemaining() const
{
    const long long remaining = GetLength() - GetPosition();
    return remaining > 0 ? remaining : 0;
}

bool VtStream::ReadExactly(unsigned char* bytes, unsigned long count)
{
    if (failed_ || static_cast<unsigned long long>(GetRemaining()) < count) {
        SetFailed();
        return false;
    }
    return Load(bytes, count) == count;
}

bool VtStream::ResolvePosition(long long position, long long length, long long offset, int whence,
                               long long& target)
{
    long long base = 0;
    switch (whence) {
    case 0: base = 0; break;
    case 1: base = position; break;
    case 2: base = length; break;
    default: return false;
    }
    long long resolved = 0;
    if (__builtin_add_overflow(base, offset, &resolved) || resolved < 0 || resolved > length)
        return false;
    target = resolved;
    return true;
}

bool VtStream::WriteInt(const int& value)
{
    const auto bytes = EncodeLittleEndian<std::uint32_t, 4>(static_cast<std::uint32_t>(value));
    return Save(bytes.data(), bytes.size()) == bytes.size();
}

bool VtStream::ReadInt(int& value)
{
    std::array<unsigned char, 4> bytes{};
    if (!ReadExactly(bytes.data(), bytes.size()))
        return false;
    value = static_cast<int>(DecodeLittleEndian<std::uint32_t>(bytes));
    return true;
}

bool VtStream::WriteInt64(const long long& value)
{
    const auto bytes = EncodeLittleEndian<std::uint64_t, 8>(static_cast<std::uint64_t>(value));
    return Save(bytes.data(), bytes.size()) == bytes.size();
}

bool VtStream::ReadInt64(long long& value)
{
    std::array<unsigned char, 8> bytes{};
    if (!ReadExactly(bytes.data(), bytes.size()))
        return false;
    value = static_cast<long long>(DecodeLittleEndian<std::uint64_t>(bytes));
    return true;
}

VtStream& VtStream::operator<<(const ZedaUnicodeString& text)
{
    const std::u16string& units = text.Str();
    std::string bytes;
    bytes.reserve(units.size() * 2);
    for (const char16_t unit : units) {
        bytes.push_back(static_cast<char>(unit & 0xFF));
        bytes.push_back(static_cast<char>(unit >> 8));
    }
    if (WriteInt(text.GetLength()))
        Save(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<unsigned long>(bytes.size()));
    return *this;
}

VtStream& VtStream::operator>>(ZedaUnicodeString& text)
{
    text = ZedaUnicodeString();
    int count = 0;
    if (!ReadInt(count))
        return *this;
    // The count comes from the data: check it before it sizes anything.
    if (count < 0 || static_cast<long long>(count) * 2 > GetRemaining()) {
        SetFailed();
        return *this;
    }
    std::string bytes(static_cast<std::size_t>(count) * 2, '\0');
    if (!ReadExactly(reinterpret_cast<unsigned char*>(bytes.data()), static_cast<unsigned long>(bytes.size())))
        return *this;
    std::u16string units(static_cast<std::size_t>(count), u'\0');
    for (std::size_t i = 0; i < units.size(); ++i) {
        const auto low = static_cast<unsigned char>(bytes[2 * i]);
        const auto high = static_cast<unsigned char>(bytes[2 * i + 1]);
        units[i] = static_cast<char16_t>(low | (high << 8));
    }
    text = ZedaUnicodeString(std::move(units));
    return *this;
}

}  // namespace VTC
