#include <gtest/gtest.h>

#include <stdexcept>

#include "ZedaUnicodeString.h"

using ZEDA::ZedaUnicodeString;

TEST(ZedaUnicodeString, ConvertsSurrogatePairsBothWays)
{
    // U+1F600 is two UTF-16 units and four UTF-8 bytes.
    const ZedaUnicodeString face = ZedaUnicodeString::FromUtf8("a\xF0\x9F\x98\x80z");
    EXPECT_EQ(face.GetLength(), 4);
    EXPECT_EQ(face, u"a\U0001F600z");
    EXPECT_EQ(face.ToUtf8(), "a\xF0\x9F\x98\x80z");
    EXPECT_EQ(ZedaUnicodeString(u"Gr\u00FC\u00DFe").ToUtf8(), "Gr\xC3\xBC\xC3\x9F" "e");
}

TEST(ZedaUnicodeString, ReplacesInvalidInputWithReplacementCharacter)
{
    EXPECT_EQ(ZedaUnicodeString::FromUtf8("a\xFF" "b"), u"a\uFFFDb");
    EXPECT_EQ(ZedaUnicodeString::FromUtf8("ab\xE2\x82"), u"ab\uFFFD");            // truncated sequence
    EXPECT_EQ(ZedaUnicodeString::FromUtf8("\xC0\xAF"), u"\uFFFD");                // overlong '/'
    EXPECT_EQ(ZedaUnicodeString::FromUtf8("\xED\xA0\x80x"), u"\uFFFDx");          // encoded surrogate
    EXPECT_EQ(ZedaUnicodeString(u"x\xD800y").ToUtf8(), "x\xEF\xBF\xBDy");          // lone high surrogate
    EXPECT_EQ(ZedaUnicodeString(u"\xDC00").ToUtf8(), "\xEF\xBF\xBD");              // lone low surrogate
    EXPECT_EQ(ZedaUnicodeString(u"\xD800").ToUtf8(), "\xEF\xBF\xBD");              // high surrogate at the end
}

TEST(ZedaUnicodeString, ConstructionAndAccess)
{
    EXPECT_TRUE(ZedaUnicodeString(static_cast<const char16_t*>(nullptr)).IsEmpty());
    EXPECT_EQ(ZedaUnicodeString(u"abcdef", 3), u"abc");
    EXPECT_TRUE(ZedaUnicodeString(u"abc", -2).IsEmpty());
    const ZedaUnicodeString text(u"xyz");
    EXPECT_EQ(text[2], u'z');
    EXPECT_THROW(text[3], std::out_of_range);
    EXPECT_THROW(text[-1], std::out_of_range);
    EXPECT_EQ(text.Cstr()[3], u'\0');
}

TEST(ZedaUnicodeString, CompareNoCaseFoldsBeyondAscii)
{
    EXPECT_EQ(ZedaUnicodeString(u"Stra\u00DFE").CompareNoCase(u"STRA\u00DFe"), 0);
    EXPECT_EQ(ZedaUnicodeString(u"\u00C4\u00D6\u00DC").CompareNoCase(u"\u00E4\u00F6\u00FC"), 0);
    EXPECT_EQ(ZedaUnicodeString(u"\u041C\u041E\u0421\u041A\u0412\u0410").CompareNoCase(u"\u043C\u043E\u0441\u043A\u0432\u0430"), 0);
    EXPECT_EQ(ZedaUnicodeString(u"\u03A3\u0399\u0393\u039C\u0391").CompareNoCase(u"\u03C3\u03B9\u03B3\u03BC\u03B1"), 0);
    // Deseret letters live beyond the BMP, as surrogate pairs.
    EXPECT_EQ(ZedaUnicodeString(u"\U00010400").CompareNoCase(u"\U00010428"), 0);
    EXPECT_LT(ZedaUnicodeString(u"apple").CompareNoCase(u"BANANA"), 0);
    EXPECT_GT(ZedaUnicodeString(u"Banana").CompareNoCase(u"apple"), 0);
    EXPECT_LT(ZedaUnicodeString(u"ab").CompareNoCase(u"ABC"), 0);
    EXPECT_GT(ZedaUnicodeString(u"ABC").CompareNoCase(u"ab"), 0);
    EXPECT_NE(ZedaUnicodeString(u"\u00E4").CompareNoCase(u"a"), 0);
    EXPECT_NE(ZedaUnicodeString(u"Abc"), ZedaUnicodeString(u"abc"));
}

TEST(ZedaUnicodeString, FindHonoursStart)
{
    const ZedaUnicodeString text(u"abcabc");
    EXPECT_EQ(text.Find(u"bc"), 1);
    EXPECT_EQ(text.Find(u"bc", 2), 4);
    EXPECT_EQ(text.Find(u"bc", 5), -1);
    EXPECT_EQ(text.Find(u"x"), -1);
    EXPECT_EQ(text.Find(u"", 6), 6);
    EXPECT_EQ(text.Find(u"", 7), -1);
    EXPECT_EQ(text.Find(u"a", 100), -1);
    EXPECT_EQ(text.Find(u"abc", -5), 0);
    EXPECT_EQ(ZedaUnicodeString().Find(u"a"), -1);
}

TEST(ZedaUnicodeString, ReverseFindSearchesBackwardsFromStart)
{
    const ZedaUnicodeString path(u"/a.b/c.d");
    EXPECT_EQ(path.ReverseFind(u'.'), 6);
    EXPECT_EQ(path.ReverseFind(u'.', -1), 6);
    EXPECT_EQ(path.ReverseFind(u'.', 6), 6);
    EXPECT_EQ(path.ReverseFind(u'.', 5), 2);
    EXPECT_EQ(path.ReverseFind(u'/', 0), 0);
    EXPECT_EQ(path.ReverseFind(u'.', 1), -1);
    EXPECT_EQ(path.ReverseFind(u'.', 99), 6);
    EXPECT_EQ(path.ReverseFind(u'.', -2), -1);
    EXPECT_EQ(path.ReverseFind(u'x'), -1);
    EXPECT_EQ(ZedaUnicodeString().ReverseFind(u'x'), -1);
}

TEST(ZedaUnicodeString, LeftMidAndAppendClampCounts)
{
    const ZedaUnicodeString text(u"hello");
    EXPECT_EQ(text.Left(2), u"he");
    EXPECT_EQ(text.Left(0), u"");
    EXPECT_EQ(text.Left(-3), u"");
    EXPECT_EQ(text.Left(50), u"hello");
    EXPECT_EQ(text.Mid(1, 3), u"ell");
    EXPECT_EQ(text.Mid(3), u"lo");
    EXPECT_EQ(text.Mid(3, 100), u"lo");
    EXPECT_EQ(text.Mid(5), u"");
    EXPECT_EQ(text.Mid(-2, 2), u"he");

    ZedaUnicodeString built(u"ab");
    built.Append(u"cdef", 2).Append(u"zz", 0).Append(nullptr, 4);
    built += u'!';
    built += ZedaUnicodeString(u"?");
    EXPECT_EQ(built, u"abcd!?");
    EXPECT_EQ(u"<" + built + u">", u"<abcd!?>");
}

TEST(ZedaUnicodeString, FormatProducesUtf16)
{
    ZedaUnicodeString text(u"old");
    EXPECT_EQ(text.Format(u"%d", -42), 3);
    EXPECT_EQ(text, u"-42");
    text.Format(u"\u00DF%s|%05.1f|%lld", "\xC3\xA9t\xC3\xA9", 2.25, 1LL << 40);
    EXPECT_EQ(text, u"\u00DF\u00E9t\u00E9|002.2|1099511627776");
    const std::string longArgument(5000, 'x');
    EXPECT_EQ(text.Format(u"[%s]", longArgument.c_str()), 5002);
    EXPECT_EQ(text.Format(u""), 0);
    EXPECT_TRUE(text.IsEmpty());
}
