#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "StreamTestSupport.h"
#include "VtMemoryStream.h"

using lqtest::BytesOf;
using lqtest::OpenOver;
using VTC::VtMemoryStream;
using ZEDA::ZedaUnicodeString;
using Bytes = std::vector<unsigned char>;

TEST(VtStreamEncoding, IntegersAndStringsAreLittleEndian)
{
    VtMemoryStream stream;
    ASSERT_TRUE(stream.Open(VTC::VT_STREAM_WRITE));
    EXPECT_TRUE(stream.WriteInt(0x01020304));
    EXPECT_TRUE(stream.WriteInt(-2));
    EXPECT_TRUE(stream.WriteInt64(0x0102030405060708LL));
    EXPECT_TRUE(stream.WriteInt64(-1));
    stream << ZedaUnicodeString(u"A\u00E9\U0001F600");
    const Bytes expected = {
        0x04, 0x03, 0x02, 0x01,                          // int
        0xFE, 0xFF, 0xFF, 0xFF,                          // -2
        0x08, 0x07, 0x06, 0x05, 0x04, 0x03, 0x02, 0x01,  // int64
        0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,  // -1
        0x04, 0x00, 0x00, 0x00,                          // four code units
        0x41, 0x00, 0xE9, 0x00, 0x3D, 0xD8, 0x00, 0xDE,  // A, e-acute, surrogate pair
    };
    EXPECT_EQ(BytesOf(stream), expected);

    VtMemoryStream empty;
    empty.Open(VTC::VT_STREAM_WRITE);
    empty << ZedaUnicodeString();
    EXPECT_EQ(BytesOf(empty), (Bytes{0, 0, 0, 0}));
}

TEST(VtStreamEncoding, ValuesReadBackIdentically)
{
    VtMemoryStream stream;
    ASSERT_TRUE(stream.Open(VTC::VT_STREAM_READWRITE, 16));
    stream.WriteInt(INT_MIN);
    stream.WriteInt64(LLONG_MIN);
    stream << ZedaUnicodeString(u"x\xD800y");  // an unpaired surrogate survives the stream
    stream.WriteInt(INT_MAX);
    ASSERT_TRUE(stream.SetPosition(0, 0));

    int i = 0;
    long long l = 0;
    ZedaUnicodeString s;
    int last = 0;
    EXPECT_TRUE(stream.ReadInt(i));
    EXPECT_TRUE(stream.ReadInt64(l));
    stream >> s;
    EXPECT_TRUE(stream.ReadInt(last));
    EXPECT_EQ(i, INT_MIN);
    EXPECT_EQ(l, LLONG_MIN);
    EXPECT_EQ(s, u"x\xD800y");
    EXPECT_EQ(last, INT_MAX);
    EXPECT_FALSE(stream.IsFailed());
    EXPECT_EQ(stream.GetRemaining(), 0);
}

TEST(VtStreamFailure, ReadPastTheEndLeavesTargetAndSetsFailed)
{
    VtMemoryStream stream;
    OpenOver(stream, {1, 2, 3});
    int value = 77;
    EXPECT_FALSE(stream.ReadInt(value));
    EXPECT_EQ(value, 77);
    EXPECT_TRUE(stream.IsFailed());
    EXPECT_EQ(stream.GetPosition(), 0);

    // Once failed, even a read that would fit returns nothing.
    unsigned char byte = 9;
    EXPECT_EQ(stream.Load(&byte, 1), 0u);
    EXPECT_EQ(byte, 9);

    // A successful seek clears the failed state; a bad one does not.
    EXPECT_FALSE(stream.SetPosition(4, 0));
    EXPECT_TRUE(stream.IsFailed());
    EXPECT_TRUE(stream.SetPosition(1, 0));
    EXPECT_FALSE(stream.IsFailed());
    EXPECT_EQ(stream.Load(&byte, 1), 1u);
    EXPECT_EQ(byte, 2);

    long long big = 5;
    EXPECT_FALSE(stream.ReadInt64(big));
    EXPECT_EQ(big, 5);
}

TEST(VtStreamFailure, ImplausibleStringCountsReadNothing)
{
    const Bytes negative = {0xFF, 0xFF, 0xFF, 0xFF, 0x41, 0x00};
    const Bytes huge = {0xFF, 0xFF, 0xFF, 0x7F, 0x41, 0x00};   // INT_MAX units
    const Bytes oneShort = {0x02, 0x00, 0x00, 0x00, 0x41, 0x00, 0x42};
    const Bytes countCut = {0x01, 0x00};
    for (const Bytes& bytes : {negative, huge, oneShort, countCut}) {
        VtMemoryStream stream;
        OpenOver(stream, bytes);
        ZedaUnicodeString text(u"previous");
        stream >> text;
        EXPECT_TRUE(text.IsEmpty());
        EXPECT_TRUE(stream.IsFailed());
        ZedaUnicodeString next(u"keep");
        stream >> next;
        EXPECT_TRUE(next.IsEmpty());
    }

    // A string ending exactly at the end of the stream is fine.
    VtMemoryStream exact;
    OpenOver(exact, {0x01, 0x00, 0x00, 0x00, 0x41, 0x00});
    ZedaUnicodeString text;
    exact >> text;
    EXPECT_EQ(text, u"A");
    EXPECT_FALSE(exact.IsFailed());
}

TEST(VtMemoryStream, DirectionsAreEnforced)
{
    const Bytes data = {1, 2, 3, 4};
    VtMemoryStream reader;
    OpenOver(reader, data);
    EXPECT_FALSE(reader.WriteInt(5));
    EXPECT_TRUE(reader.IsFailed());
    EXPECT_EQ(BytesOf(reader), data);

    VtMemoryStream writer;
    writer.Open(VTC::VT_STREAM_WRITE);
    writer.WriteInt(1);
    writer.SetPosition(0, 0);
    int value = 0;
    EXPECT_FALSE(writer.ReadInt(value));
    EXPECT_TRUE(writer.IsFailed());

    VtMemoryStream closed;
    EXPECT_FALSE(closed.IsOpen());
    EXPECT_EQ(closed.Save(data.data(), 4), 0u);
    EXPECT_FALSE(closed.SetPosition(0, 0));
    EXPECT_FALSE(closed.Open(7));
    EXPECT_FALSE(closed.Open(data.data(), -1));
}

TEST(VtMemoryStream, SeeksAndOverwritesInPlace)
{
    VtMemoryStream stream;
    stream.Open(VTC::VT_STREAM_READWRITE);
    stream.WriteInt(1);
    stream.WriteInt(2);
    EXPECT_TRUE(stream.SetPosition(-4, 2));
    stream.WriteInt(0x7F);
    EXPECT_TRUE(stream.SetPosition(-8, 1));
    EXPECT_EQ(stream.GetPosition(), 0);
    EXPECT_FALSE(stream.SetPosition(-1, 1));
    EXPECT_FALSE(stream.SetPosition(1, 2));
    EXPECT_FALSE(stream.SetPosition(LLONG_MAX, 1));
    EXPECT_FALSE(stream.SetPosition(0, 3));
    EXPECT_EQ(stream.GetPosition(), 0);
    EXPECT_EQ(BytesOf(stream), (Bytes{1, 0, 0, 0, 0x7F, 0, 0, 0}));
    EXPECT_TRUE(stream.SetPosition(8, 0));  // the end itself is a valid position
}
