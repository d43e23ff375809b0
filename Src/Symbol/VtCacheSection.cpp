#include "VtCacheSection.h"

#include <algorithm>
#include <string>
#include <vector>

#include "LqStream.h"

namespace VTC {

namespace {

// "Marker", the longest stamp word, in bytes.
constexpr long long longestStampBytes = 12;

}  // namespace

bool VtCacheSection::ReadMarker(VtStream& stream)
{
    ZedaUnicodeString marker;
    try {
        stream >> marker;
    } catch (...) {
        return false;
    }
    return marker == u"Cache";
}

bool VtCacheSection::ReadLength(VtStream& stream, long long& length)
{
    long long stored = 0;
    const bool read = stream.ReadInt64(stored);
    length = std::clamp(stored, 0LL, stream.GetRemaining());
    return read && length == stored;
}

ZedaUnicodeString VtCacheSection::ReadStamp(VtStream& stream, long long length)
{
    if (length > longestStampBytes || length < 0)
        return {};
    std::vector<unsigned char> bytes(static_cast<std::size_t>(length), 0);
    stream.Load(bytes.data(), static_cast<unsigned long>(length));
    std::u16string units;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
        units.push_back(static_cast<char16_t>(bytes[i] | (bytes[i + 1] << 8)));
    return ZedaUnicodeString(std::move(units));
}

bool VtCacheSection::Scan(VtStream& stream, VtCacheSectionLayout& layout)
{
    layout = {};
    const long long start = stream.GetPosition();
    long long stampLength = 0;
    bool complete = ReadMarker(stream) && ReadLength(stream, stampLength);
    if (complete) {
        const long long stampStart = stream.GetPosition();
        layout.stamp = ReadStamp(stream, stampLength);
        complete = stream.SetPosition(stampStart + stampLength, 0);
    }
    for (long long* length : {&layout.firstLength, &layout.secondLength})
        complete = complete && ReadLength(stream, *length) && *length > 0 && stream.SetPosition(*length, 1);
    layout.bytes = stream.GetPosition() - start;
    stream.SetPosition(start, 0);
    return complete;
}

}  // namespace VTC
