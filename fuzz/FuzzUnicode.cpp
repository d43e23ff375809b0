// UTF-8 and UTF-16 conversion of text from files: any bytes as UTF-8, any
// byte pairs as UTF-16 code units (as the stream's strings carry them), and
// the stream's string record.

#include <utf8.h>

#include <string_view>

#include "FuzzSupport.h"
#include "LqStream.h"
#include "ZedaUnicodeString.h"

namespace {

using ZEDA::ZedaUnicodeString;

bool HasLoneSurrogate(const std::u16string& units)
{
    for (std::size_t i = 0; i < units.size(); ++i) {
        const char16_t unit = units[i];
        if (unit >= 0xD800 && unit <= 0xDBFF && i + 1 < units.size() && units[i + 1] >= 0xDC00 && units[i + 1] <= 0xDFFF)
            ++i;
        else if (unit >= 0xD800 && unit <= 0xDFFF)
            return true;
    }
    return false;
}

// Bytes taken as UTF-8: valid input comes back unchanged, anything else as
// valid UTF-8 with replacement characters.
void CheckUtf8(std::string_view bytes)
{
    const ZedaUnicodeString text = ZedaUnicodeString::FromUtf8(bytes);
    const std::string back = text.ToUtf8();
    lqfuzz::Require(utf8::is_valid(back.begin(), back.end()), "UTF-8 from UTF-8 is not valid");
    if (utf8::is_valid(bytes.begin(), bytes.end()))
        lqfuzz::Require(back == bytes, "valid UTF-8 does not survive a round trip");
    lqfuzz::Require(back.size() <= 3 * bytes.size(), "UTF-8 grew more than threefold");
}

// Code units taken as UTF-16: a lone surrogate becomes one U+FFFD, so the
// length in units is kept; without one the text survives a round trip.
void CheckUtf16(const std::u16string& units)
{
    const ZedaUnicodeString text(units);
    const std::string utf8 = text.ToUtf8();
    lqfuzz::Require(utf8::is_valid(utf8.begin(), utf8.end()), "UTF-8 from UTF-16 is not valid");
    const std::u16string back = ZedaUnicodeString::FromUtf8(utf8).Str();
    lqfuzz::Require(back.size() == units.size(), "a round trip changed the number of code units");
    if (!HasLoneSurrogate(units))
        lqfuzz::Require(back == units, "valid UTF-16 does not survive a round trip");
    lqfuzz::Require(text.CompareNoCase(ZedaUnicodeString(back)) == 0 || HasLoneSurrogate(units),
                    "a text differs from its own round trip ignoring case");
}

// The stream's string record: a count, then that many UTF-16LE units.
void CheckStreamString(const std::uint8_t* data, std::size_t size)
{
    VTC::VtMemoryStream in;
    in.Open(data, static_cast<long long>(size));
    ZedaUnicodeString text;
    in >> text;
    if (in.IsFailed())
        return;
    VTC::VtMemoryStream out;
    out.Open(VTC::VT_STREAM_WRITE);
    out << text;
    const long long used = in.GetPosition();
    lqfuzz::Require(out.GetLength() == used && std::equal(data, data + used, out.GetData()),
                    "a string record is written back differently");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    lqfuzz::ClearLog();
    CheckUtf8(std::string_view(reinterpret_cast<const char*>(data), size));
    std::u16string units(size / 2, u'\0');
    for (std::size_t i = 0; i < units.size(); ++i)
        units[i] = static_cast<char16_t>(data[2 * i] | data[2 * i + 1] << 8);
    CheckUtf16(units);
    CheckStreamString(data, size);
    return 0;
}
