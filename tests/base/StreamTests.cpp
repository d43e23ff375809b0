// The stream contract: the byte encoding, what a failed read leaves behind,
// and file streams that behave like a plain buffer whatever their buffer size.

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <climits>
#include <fstream>
#include <variant>
#include <vector>

#include "LqTestSupport.h"
#include "VtFileStream.h"
#include "VtMemoryStream.h"

using VTC::VtMemoryStream;
using ZEDA::ZedaUnicodeString;
using Bytes = std::vector<unsigned char>;

namespace {

Bytes BytesOf(const VtMemoryStream& stream)
{
    return {stream.GetData(), stream.GetData() + stream.GetLength()};
}

void OpenOver(VtMemoryStream& stream, const Bytes& bytes)
{
    stream.Open(bytes.data(), static_cast<long long>(bytes.size()), VTC::VT_STREAM_READ);
}

}  // namespace

TEST(VtStream, IntegersAndStringsAreLittleEndian)
{
    VtMemoryStream stream;
    ASSERT_TRUE(stream.Open(VTC::VT_STREAM_WRITE));
    EXPECT_TRUE(stream.WriteInt(0x01020304) && stream.WriteInt(-2));
    EXPECT_TRUE(stream.WriteInt64(0x0102030405060708LL) && stream.WriteInt64(-1));
    stream << ZedaUnicodeString(u"A\u00E9\U0001F600");
    const Bytes expected = {
        0x04, 0x03, 0x02, 0x01, 0xFE, 0xFF, 0xFF, 0xFF,                                  // 0x01020304, -2
        0x08, 0x07, 0x06, 0x05, 0x04, 0x03, 0x02, 0x01, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF,  // int64s
        0x04, 0x00, 0x00, 0x00, 0x41, 0x00, 0xE9, 0x00, 0x3D, 0xD8, 0x00, 0xDE,          // four code units
    };
    EXPECT_EQ(BytesOf(stream), expected);
}

TEST(VtStream, AFailedReadLeavesItsTargetAndTheStreamFailed)
{
    VtMemoryStream stream;
    OpenOver(stream, {1, 2, 3});
    int value = 77;
    EXPECT_FALSE(stream.ReadInt(value));
    EXPECT_EQ(value, 77);
    EXPECT_EQ(stream.GetPosition(), 0);
    // Once failed, even a read that would fit returns nothing, until a seek succeeds.
    unsigned char byte = 9;
    EXPECT_EQ(stream.Load(&byte, 1), 0u);
    EXPECT_TRUE(stream.SetPosition(1, 0));
    EXPECT_EQ(stream.Load(&byte, 1), 1u);
    EXPECT_EQ(byte, 2);
    // A string count that is negative, too large or cut short reads as empty.
    for (const Bytes& bytes : {Bytes{0xFF, 0xFF, 0xFF, 0xFF, 0x41, 0}, Bytes{0xFF, 0xFF, 0xFF, 0x7F, 0x41, 0},
                               Bytes{2, 0, 0, 0, 0x41, 0, 0x42}, Bytes{1, 0}}) {
        OpenOver(stream, bytes);
        ZedaUnicodeString text(u"previous");
        stream >> text;
        EXPECT_TRUE(text.IsEmpty() && stream.IsFailed());
    }
    // Nor does a read-only stream take writes, or seeks beyond its ends; a closed one takes nothing.
    EXPECT_FALSE(stream.WriteInt(5));
    for (const auto& [offset, whence] : {std::pair{3LL, 0}, {LLONG_MAX, 1}, {0LL, 3}})
        EXPECT_FALSE(stream.SetPosition(offset, whence)) << offset;
    VtMemoryStream closed;
    EXPECT_FALSE(closed.IsOpen() || closed.SetPosition(0, 0) || closed.Open(7));
    EXPECT_EQ(closed.Save(stream.GetData(), 2), 0u);
}

// ---- Properties over any sequence of values ----

namespace {

// A value of the stream, or none (what a failed read must leave).
using Value = std::variant<std::monostate, int, long long, std::u16string>;

rc::Gen<Value> AnyValue()
{
    return rc::gen::oneOf(rc::gen::cast<Value>(rc::gen::arbitrary<int>()),
                          rc::gen::cast<Value>(rc::gen::arbitrary<long long>()),
                          rc::gen::cast<Value>(rc::gen::container<std::u16string>(rc::gen::arbitrary<char16_t>())));
}

Bytes Encode(const std::vector<Value>& values)
{
    VtMemoryStream stream;
    stream.Open(VTC::VT_STREAM_WRITE);
    for (const Value& value : values) {
        if (const int* i = std::get_if<int>(&value))
            stream.WriteInt(*i);
        else if (const long long* l = std::get_if<long long>(&value))
            stream.WriteInt64(*l);
        else
            stream << ZedaUnicodeString(std::get<std::u16string>(value));
    }
    return BytesOf(stream);
}

// Reads a value of the kind of `like` into a target preset to a sentinel;
// none when the read failed and left the sentinel (strings: empty) alone.
Value Read(VTC::VtStream& stream, const Value& like)
{
    if (std::holds_alternative<int>(like)) {
        int i = 0x5A5A5A5A;
        return stream.ReadInt(i) || i != 0x5A5A5A5A ? Value(i) : Value();
    }
    if (std::holds_alternative<long long>(like)) {
        long long l = 0x5A5A5A5A5A5A5A5ALL;
        return stream.ReadInt64(l) || l != 0x5A5A5A5A5A5A5A5ALL ? Value(l) : Value();
    }
    ZedaUnicodeString s(u"sentinel");
    stream >> s;
    return !stream.IsFailed() || !s.IsEmpty() ? Value(s.Str()) : Value();
}

}  // namespace

// Cut anywhere, or not at all, an image reads back every value that ends
// before the cut; the reads from the cut on fail and leave their targets.
RC_GTEST_PROP(VtStreamProperties, ImagesReadBackUpToWhereTheyAreCut, ())
{
    const auto values = *rc::gen::container<std::vector<Value>>(AnyValue());
    const Bytes image = Encode(values);
    const auto cut = *rc::gen::inRange<std::size_t>(0, image.size() + 1);
    VtMemoryStream stream;
    OpenOver(stream, Bytes(image.begin(), image.begin() + static_cast<long>(cut)));
    std::size_t end = 0;
    for (const Value& expected : values) {
        end += Encode({expected}).size();
        RC_ASSERT(Read(stream, expected) == (end <= cut ? expected : Value()));
    }
}

// Any mix of writes, reads and seeks on a file stream behaves, whatever the
// buffer size, as the same operations on a plain byte array.
RC_GTEST_PROP(VtFileStreamProperties, BehavesLikeAPlainBuffer, ())
{
    const auto steps = *rc::gen::container<std::vector<std::pair<int, int>>>(
        rc::gen::pair(rc::gen::inRange(0, 3), rc::gen::inRange(0, 100)));
    for (const int bufferSize : {1, 4, 16, 64}) {
        lqtest::TempDir dir;
        VTC::VtFileStream stream;
        RC_ASSERT(stream.Open(dir.Unicode("f"), VTC::VT_STREAM_READWRITE, bufferSize));
        Bytes model;
        std::size_t position = 0;
        bool failed = false;
        for (const auto& [operation, amount] : steps) {
            const auto count = static_cast<std::size_t>(amount);
            Bytes bytes(count);
            for (std::size_t i = 0; i < count; ++i)
                bytes[i] = static_cast<unsigned char>(position * 7 + i * 13 + count);
            if (operation == 0) {
                RC_ASSERT(stream.Save(bytes.data(), count) == count);
                model.resize(std::max(model.size(), position + count));
                std::copy(bytes.begin(), bytes.end(), model.begin() + static_cast<long>(position));
                position += count;
            } else if (operation == 1) {
                const bool fits = !failed && position + count <= model.size();
                RC_ASSERT(stream.Load(bytes.data(), count) == (fits ? count : 0));
                if (fits && count > 0)  // RC_ASSERT would not short-circuit
                    RC_ASSERT(std::equal(bytes.begin(), bytes.end(), model.begin() + static_cast<long>(position)));
                position += fits ? count : 0;
                failed = !fits;
            } else {  // from the start, the position or the end; a seek outside the data is refused
                const long long offset = amount / 3 - 16;
                const long long target = offset + (amount % 3 == 0 ? 0 : amount % 3 == 1 ? position : model.size());
                const bool inside = target >= 0 && target <= static_cast<long long>(model.size());
                RC_ASSERT(stream.SetPosition(offset, amount % 3) == inside);
                position = inside ? static_cast<std::size_t>(target) : position;
                failed = failed && !inside;
            }
            RC_ASSERT(stream.GetPosition() == static_cast<long long>(position));
            RC_ASSERT(stream.GetLength() == static_cast<long long>(model.size()));
        }
        RC_ASSERT(stream.Close());
        std::ifstream in(dir.Path("f"), std::ios::binary);
        RC_ASSERT(Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()) == model);
    }
}
