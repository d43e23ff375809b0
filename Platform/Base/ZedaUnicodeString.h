#pragma once

#include <compare>
#include <string>
#include <string_view>

#include "LqExport.h"

namespace ZEDA {

// A UTF-16 string with value semantics. Lengths and positions count UTF-16
// code units; -1 means "not found".
class LQ_EXPORT ZedaUnicodeString {
public:
    ZedaUnicodeString() = default;
    ZedaUnicodeString(const char16_t* text);  // null is taken as ""
    ZedaUnicodeString(const char16_t* text, int count);
    explicit ZedaUnicodeString(std::u16string text);
    explicit ZedaUnicodeString(std::u16string_view text);

    // Invalid UTF-8 sequences become U+FFFD; unpaired surrogates likewise on the way out.
    static ZedaUnicodeString FromUtf8(std::string_view utf8);
    std::string ToUtf8() const;

    int GetLength() const;
    bool IsEmpty() const;
    const char16_t* Cstr() const;
    operator const char16_t*() const;
    const std::u16string& Str() const { return text_; }
    char16_t operator[](int index) const;  // checked: throws std::out_of_range

    // 0 when equal ignoring case (full Unicode simple case mapping); <0 / >0 otherwise.
    int CompareNoCase(const ZedaUnicodeString& other) const;
    int Find(const ZedaUnicodeString& text, int start = 0) const;
    // Searches backwards from `start` (-1 = from the last unit).
    int ReverseFind(char16_t ch, int start = -1) const;
    ZedaUnicodeString Left(int count) const;
    ZedaUnicodeString Mid(int start, int count = -1) const;
    ZedaUnicodeString& Append(const char16_t* text, int count);
    ZedaUnicodeString& Append(const ZedaUnicodeString& text);
    // printf-style formatting into this string; the format is UTF-16, narrow
    // %s arguments are taken as UTF-8. Returns the new length.
    int Format(const char16_t* format, ...);

    ZedaUnicodeString& operator+=(const ZedaUnicodeString& text);
    ZedaUnicodeString& operator+=(const char16_t* text);
    ZedaUnicodeString& operator+=(char16_t ch);

    friend LQ_EXPORT ZedaUnicodeString operator+(const ZedaUnicodeString& a, const ZedaUnicodeString& b);
    friend LQ_EXPORT ZedaUnicodeString operator+(const ZedaUnicodeString& a, const char16_t* b);
    friend LQ_EXPORT ZedaUnicodeString operator+(const char16_t* a, const ZedaUnicodeString& b);

    // Exact, case-sensitive comparison by code units.
    friend bool operator==(const ZedaUnicodeString& a, const ZedaUnicodeString& b) { return a.text_ == b.text_; }
    friend bool operator==(const ZedaUnicodeString& a, const char16_t* b) { return a == ZedaUnicodeString(b); }
    friend std::strong_ordering operator<=>(const ZedaUnicodeString& a, const ZedaUnicodeString& b)
    {
        return a.text_ <=> b.text_;
    }

private:
    std::u16string text_;
};

}  // namespace ZEDA
