#include "ZedaUnicodeString.h"

#include <locale.h>
#include <wctype.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <iterator>
#include <stdexcept>
#include <vector>

#include <utf8.h>

namespace ZEDA {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool IsHighSurrogate(char16_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsLowSurrogate(char16_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

// Decodes the code point at `pos` and advances past it; an unpaired surrogate
// becomes U+FFFD.
char32_t NextCodePoint(std::u16string_view text, std::size_t& pos)
{
    const char16_t unit = text[pos++];
    if (IsHighSurrogate(unit) && pos < text.size() && IsLowSurrogate(text[pos])) {
        const char16_t low = text[pos++];
        return 0x10000 + ((char32_t(unit) - 0xD800) << 10) + (char32_t(low) - 0xDC00);
    }
    if (IsHighSurrogate(unit) || IsLowSurrogate(unit))
        return kReplacement;
    return unit;
}

std::string Utf16ToUtf8(std::u16string_view text)
{
    std::string result;
    result.reserve(text.size());
    for (std::size_t pos = 0; pos < text.size();)
        utf8::append(NextCodePoint(text, pos), std::back_inserter(result));
    return result;
}

// The C.UTF-8 locale carries the full simple case mapping of Unicode, whatever
// the process locale is; made once, kept for the life of the process.
locale_t CaseMappingLocale()
{
    static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", static_cast<locale_t>(nullptr));
    return locale;
}

char32_t ToLower(char32_t cp)
{
    const locale_t locale = CaseMappingLocale();
    const auto wide = static_cast<wint_t>(cp);
    return static_cast<char32_t>(locale ? towlower_l(wide, locale) : towlower(wide));
}

int ClampedLength(std::size_t length) { return static_cast<int>(std::min<std::size_t>(length, INT32_MAX)); }

}  // namespace

ZedaUnicodeString::ZedaUnicodeString(const char16_t* text) : text_(text ? text : u"") {}

ZedaUnicodeString::ZedaUnicodeString(const char16_t* text, int count)
{
    if (text && count > 0)
        text_.assign(text, static_cast<std::size_t>(count));
}

ZedaUnicodeString::ZedaUnicodeString(std::u16string text) : text_(std::move(text)) {}

ZedaUnicodeString::ZedaUnicodeString(std::u16string_view text) : text_(text) {}

ZedaUnicodeString ZedaUnicodeString::FromUtf8(std::string_view utf8)
{
    std::string valid;
    valid.reserve(utf8.size());
    utf8::replace_invalid(utf8.begin(), utf8.end(), std::back_inserter(valid), kReplacement);
    std::u16string units;
    units.reserve(valid.size());
    utf8::unchecked::utf8to16(valid.begin(), valid.end(), std::back_inserter(units));
    return ZedaUnicodeString(std::move(units));
}

std::string ZedaUnicodeString::ToUtf8() const { return Utf16ToUtf8(text_); }

int ZedaUnicodeString::GetLength() const { return ClampedLength(text_.size()); }

bool ZedaUnicodeString::IsEmpty() const { return text_.empty(); }

const char16_t* ZedaUnicodeString::Cstr() const { return text_.c_str(); }

ZedaUnicodeString::operator const char16_t*() const { return text_.c_str(); }

char16_t ZedaUnicodeString::operator[](int index) const
{
    if (index < 0 || index >= GetLength())
        throw std::out_of_range("ZedaUnicodeString index out of range");
    return text_[static_cast<std::size_t>(index)];
}

int ZedaUnicodeString::CompareNoCase(const ZedaUnicodeString& other) const
{
    const std::u16string_view a = text_;
    const std::u16string_view b = other.text_;
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < a.size() && j < b.size()) {
        const char32_t ca = ToLower(NextCodePoint(a, i));
        const char32_t cb = ToLower(NextCodePoint(b, j));
        if (ca != cb)
            return ca < cb ? -1 : 1;
    }
    if (i < a.size())
        return 1;
    return j < b.size() ? -1 : 0;
}

int ZedaUnicodeString::Find(const ZedaUnicodeString& text, int start) const
{
    if (start < 0)
        start = 0;
    if (start > GetLength())
        return -1;
    const std::size_t found = text_.find(text.text_, static_cast<std::size_t>(start));
    return found == std::u16string::npos ? -1 : static_cast<int>(found);
}

int ZedaUnicodeString::ReverseFind(char16_t ch, int start) const
{
    if (text_.empty() || start < -1)
        return -1;
    const std::size_t from =
        (start == -1 || start >= GetLength()) ? text_.size() - 1 : static_cast<std::size_t>(start);
    const std::size_t found = text_.rfind(ch, from);
    return found == std::u16string::npos ? -1 : static_cast<int>(found);
}

ZedaUnicodeString ZedaUnicodeString::Left(int count) const
{
    if (count <= 0)
        return {};
    return ZedaUnicodeString(text_.substr(0, static_cast<std::size_t>(count)));
}

ZedaUnicodeString ZedaUnicodeString::Mid(int start, int count) const
{
    if (start < 0)
        start = 0;
    if (start >= GetLength() || count == 0 || count < -1)
        return {};
    const std::size_t length = count == -1 ? std::u16string::npos : static_cast<std::size_t>(count);
    return ZedaUnicodeString(text_.substr(static_cast<std::size_t>(start), length));
}

ZedaUnicodeString& ZedaUnicodeString::Append(const char16_t* text, int count)
{
    if (text && count > 0)
        text_.append(text, static_cast<std::size_t>(count));
    return *this;
}

ZedaUnicodeString& ZedaUnicodeString::Append(const ZedaUnicodeString& text)
{
    text_.append(text.text_);
    return *this;
}

int ZedaUnicodeString::Format(const char16_t* format, ...)
{
    const std::string narrowFormat = Utf16ToUtf8(format ? format : u"");

    va_list args;
    va_start(args, format);
    va_list measureArgs;
    va_copy(measureArgs, args);
    const int needed = std::vsnprintf(nullptr, 0, narrowFormat.c_str(), measureArgs);
    va_end(measureArgs);
    if (needed < 0) {
        va_end(args);
        text_.clear();
        return 0;
    }
    std::vector<char> buffer(static_cast<std::size_t>(needed) + 1);
    std::vsnprintf(buffer.data(), buffer.size(), narrowFormat.c_str(), args);
    va_end(args);

    *this = FromUtf8(std::string_view(buffer.data(), static_cast<std::size_t>(needed)));
    return GetLength();
}

ZedaUnicodeString& ZedaUnicodeString::operator+=(const ZedaUnicodeString& text) { return Append(text); }

ZedaUnicodeString& ZedaUnicodeString::operator+=(const char16_t* text)
{
    if (text)
        text_.append(text);
    return *this;
}

ZedaUnicodeString& ZedaUnicodeString::operator+=(char16_t ch)
{
    text_.push_back(ch);
    return *this;
}

ZedaUnicodeString operator+(const ZedaUnicodeString& a, const ZedaUnicodeString& b)
{
    ZedaUnicodeString result(a);
    result += b;
    return result;
}

ZedaUnicodeString operator+(const ZedaUnicodeString& a, const char16_t* b)
{
    ZedaUnicodeString result(a);
    result += b;
    return result;
}

ZedaUnicodeString operator+(const char16_t* a, const ZedaUnicodeString& b)
{
    ZedaUnicodeString result(a);
    result += b;
    return result;
}

}  // namespace ZEDA
