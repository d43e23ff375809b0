#include <gtest/gtest.h>

#include <stdexcept>
#include <tuple>

#include "ZedaUnicodeString.h"

using ZEDA::ZedaUnicodeString;

TEST(ZedaUnicodeString, ConvertsUtf8BothWaysAndReplacesWhatIsInvalid)
{
    // U+1F600 is two UTF-16 units and four UTF-8 bytes.
    const ZedaUnicodeString text = ZedaUnicodeString::FromUtf8("a\xC3\xBC\xF0\x9F\x98\x80z");
    EXPECT_EQ(text.GetLength(), 5);
    EXPECT_EQ(text, u"a\u00FC\U0001F600z");
    EXPECT_EQ(text.ToUtf8(), "a\xC3\xBC\xF0\x9F\x98\x80z");
    // Stray, truncated, overlong and encoded-surrogate bytes; unpaired surrogates.
    for (const char* invalid : {"\xFF", "\xE2\x82", "\xC0\xAF", "\xED\xA0\x80"})
        EXPECT_EQ(ZedaUnicodeString::FromUtf8(std::string("x") + invalid + "y"), u"x\uFFFDy") << invalid;
    for (const char16_t* lone : {u"x\xD800y", u"x\xDC00y"})
        EXPECT_EQ(ZedaUnicodeString(lone).ToUtf8(), "x\xEF\xBF\xBDy");
}

TEST(ZedaUnicodeString, ComparesSearchesAndCuts)
{
    const std::tuple<const char16_t*, const char16_t*, int> compared[] = {
        {u"Stra\u00DFE", u"STRA\u00DFe", 0}, {u"\u041C\u041E\u0421\u041A\u0412\u0410", u"\u043C\u043E\u0441\u043A\u0432\u0430", 0},
        {u"\U00010400", u"\U00010428", 0}, {u"apple", u"BANANA", -1}, {u"ABC", u"ab", 1}, {u"\u00E4", u"a", 1}};
    for (const auto& [a, b, sign] : compared) {
        const int result = ZedaUnicodeString(a).CompareNoCase(b);
        EXPECT_EQ((result > 0) - (result < 0), sign) << ZedaUnicodeString(a).ToUtf8();
    }
    const ZedaUnicodeString text(u"/a_b/c_d");
    const std::tuple<const char16_t*, int, int> found[] = {
        {u"_", 0, 2}, {u"_", 3, 6}, {u"_", 7, -1}, {u"", 8, 8}, {u"", 9, -1}, {u"/a", -5, 0}};
    for (const auto& [needle, start, expected] : found)
        EXPECT_EQ(text.Find(needle, start), expected) << start;
    // Backwards from `start`; -1 and anything past the end mean from the last unit.
    const std::tuple<int, int> reverse[] = {{-1, 6}, {6, 6}, {5, 2}, {1, -1}, {99, 6}, {-2, -1}};
    for (const auto& [start, expected] : reverse)
        EXPECT_EQ(text.ReverseFind(u'_', start), expected) << start;
    EXPECT_EQ(text.Left(2) + text.Left(-3) + text.Mid(6, 100), u"/a_d");
    EXPECT_EQ(text[7], u'd');
    EXPECT_THROW(text[8], std::out_of_range);
    ZedaUnicodeString built(u"ab");
    built.Append(u"cdef", 2).Append(u"zz", 0).Append(nullptr, 4);
    built += u'!';
    EXPECT_EQ(u"<" + built + ZedaUnicodeString(u">"), u"<abcd!>");
}

TEST(ZedaUnicodeString, FormatProducesUtf16)
{
    ZedaUnicodeString text(u"old");
    EXPECT_EQ(text.Format(u"%d", -42), 3);
    EXPECT_EQ(text, u"-42");
    text.Format(u"\u00DF%s", "\xC3\xA9t\xC3\xA9");  // UTF-8 arguments
    EXPECT_EQ(text, u"\u00DF\u00E9t\u00E9");
    const std::string longArgument(5000, 'x');
    EXPECT_EQ(text.Format(u"[%s]", longArgument.c_str()), 5002);
}
