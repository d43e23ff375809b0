#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <variant>
#include <vector>

#include "StreamTestSupport.h"
#include "VtMemoryStream.h"

using lqtest::BytesOf;
using lqtest::OpenOver;
using VTC::VtMemoryStream;
using ZEDA::ZedaUnicodeString;

namespace {

using Value = std::variant<int, long long, std::u16string>;

Value ValueFrom(int kind, int i, long long l, const std::u16string& s)
{
    switch (kind % 3) {
    case 0: return i;
    case 1: return l;
    default: return s;
    }
}

rc::Gen<Value> AnyValue()
{
    return rc::gen::apply(&ValueFrom, rc::gen::inRange(0, 3), rc::gen::arbitrary<int>(),
                          rc::gen::arbitrary<long long>(),
                          rc::gen::container<std::u16string>(rc::gen::arbitrary<char16_t>()));
}

void Write(VTC::VtStream& stream, const Value& value)
{
    if (const int* i = std::get_if<int>(&value))
        stream.WriteInt(*i);
    else if (const long long* l = std::get_if<long long>(&value))
        stream.WriteInt64(*l);
    else
        stream << ZedaUnicodeString(std::get<std::u16string>(value));
}

constexpr int kIntSentinel = 0x5A5A5A5A;
constexpr long long kInt64Sentinel = 0x5A5A5A5A5A5A5A5ALL;

// Reads a value of the same kind as `like` into a target preset to a sentinel,
// so that a failed read shows whether it touched its target.
bool Read(VTC::VtStream& stream, const Value& like, Value& out)
{
    if (std::holds_alternative<int>(like)) {
        int i = kIntSentinel;
        const bool ok = stream.ReadInt(i);
        out = i;
        return ok;
    }
    if (std::holds_alternative<long long>(like)) {
        long long l = kInt64Sentinel;
        const bool ok = stream.ReadInt64(l);
        out = l;
        return ok;
    }
    ZedaUnicodeString s(u"sentinel");
    stream >> s;
    out = s.Str();
    return !stream.IsFailed();
}

std::vector<unsigned char> Encode(const std::vector<Value>& values)
{
    VtMemoryStream stream;
    stream.Open(VTC::VT_STREAM_WRITE);
    for (const Value& value : values)
        Write(stream, value);
    return BytesOf(stream);
}

}  // namespace

RC_GTEST_PROP(VtStreamProperties, AnySequenceReadsBackIdentically, ())
{
    const auto values = *rc::gen::container<std::vector<Value>>(AnyValue());
    VtMemoryStream stream;
    OpenOver(stream, Encode(values));
    for (const Value& expected : values) {
        Value got;
        RC_ASSERT(Read(stream, expected, got));
        RC_ASSERT(got == expected);
    }
    RC_ASSERT(stream.GetRemaining() == 0);
    RC_ASSERT(!stream.IsFailed());
}

// Cutting a valid image anywhere: every value before the cut still reads
// back, the value at the cut fails without touching its target, and the
// stream stays failed for everything after it.
RC_GTEST_PROP(VtStreamProperties, TruncatedImagesFailCleanly, ())
{
    const auto values = *rc::gen::nonEmpty(rc::gen::container<std::vector<Value>>(AnyValue()));
    const std::vector<unsigned char> image = Encode(values);
    const auto cut = *rc::gen::inRange<std::size_t>(0, image.size());
    VtMemoryStream stream;
    OpenOver(stream, std::vector<unsigned char>(image.begin(), image.begin() + static_cast<long>(cut)));

    bool failed = false;
    for (const Value& expected : values) {
        Value got;
        const bool ok = Read(stream, expected, got);
        if (ok) {
            RC_ASSERT(!failed);
            RC_ASSERT(got == expected);
            continue;
        }
        failed = true;
        RC_ASSERT(stream.IsFailed());
        RC_ASSERT(got == ValueFrom(static_cast<int>(expected.index()), kIntSentinel, kInt64Sentinel, u""));
    }
    RC_ASSERT(failed);
}

// Arbitrary bytes read as arbitrary kinds never read beyond the data.
RC_GTEST_PROP(VtStreamProperties, GarbageNeverReadsOutOfBounds, (const std::vector<unsigned char>& bytes))
{
    const auto kinds = *rc::gen::container<std::vector<int>>(rc::gen::inRange(0, 3));
    VtMemoryStream stream;
    OpenOver(stream, bytes);
    for (const int kind : kinds) {
        Value got;
        Read(stream, ValueFrom(kind, 0, 0, u""), got);
        RC_ASSERT(stream.GetPosition() <= static_cast<long long>(bytes.size()));
    }
}
