#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <numeric>
#include <vector>

#include "TempDir.h"
#include "VtFileStream.h"

using lqtest::TempDir;
using VTC::VtFileStream;
using ZEDA::ZedaUnicodeString;
using Bytes = std::vector<unsigned char>;

namespace {

Bytes ReadWholeFile(const std::filesystem::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

Bytes Pattern(std::size_t size)
{
    Bytes bytes(size);
    for (std::size_t i = 0; i < size; ++i)
        bytes[i] = static_cast<unsigned char>((i * 7 + i / 251) & 0xFF);
    return bytes;
}

}  // namespace

TEST(VtFileStream, DataLargerThanTheBufferRoundTrips)
{
    TempDir dir;
    const Bytes data = Pattern(100000);
    {
        VtFileStream out;
        ASSERT_TRUE(out.Open(dir.Unicode("big.bin"), VTC::VT_STREAM_WRITE, 64));
        // Mixed sizes: below, at and above the buffer size.
        std::size_t written = 0;
        for (std::size_t chunk = 1; written < data.size(); chunk = chunk * 3 % 200 + 1) {
            const std::size_t n = std::min(chunk, data.size() - written);
            ASSERT_EQ(out.Save(data.data() + written, n), n);
            written += n;
        }
        EXPECT_EQ(out.GetLength(), 100000);
        EXPECT_TRUE(out.Close());
    }
    EXPECT_EQ(ReadWholeFile(dir.Path("big.bin")), data);

    VtFileStream in;
    ASSERT_TRUE(in.Open(dir.Unicode("big.bin"), VTC::VT_STREAM_READ, 64));
    EXPECT_EQ(in.GetLength(), 100000);
    Bytes back(data.size());
    std::size_t read = 0;
    for (std::size_t chunk = 5; read < back.size(); chunk = chunk * 5 % 300 + 1) {
        const std::size_t n = std::min(chunk, back.size() - read);
        ASSERT_EQ(in.Load(back.data() + read, n), n);
        read += n;
    }
    EXPECT_EQ(back, data);
    unsigned char extra = 42;
    EXPECT_EQ(in.Load(&extra, 1), 0u);
    EXPECT_EQ(extra, 42);
    EXPECT_TRUE(in.IsFailed());
}

TEST(VtFileStream, MixedReadsWritesAndSeeksInReadWriteMode)
{
    TempDir dir;
    const ZedaUnicodeString path = dir.Unicode("mixed.bin");
    std::vector<unsigned char> model;  // what the file must hold
    VtFileStream stream;
    ASSERT_TRUE(stream.Open(path, VTC::VT_STREAM_READWRITE, 16));
    const Bytes first = Pattern(40);
    stream.Save(first.data(), 40);
    model = first;

    // Read across the end of the pending writes.
    ASSERT_TRUE(stream.SetPosition(10, 0));
    Bytes got(20);
    ASSERT_EQ(stream.Load(got.data(), 20), 20u);
    EXPECT_TRUE(std::equal(got.begin(), got.end(), model.begin() + 10));

    // Overwrite in the middle, right after a read that filled the cache.
    const Bytes patch = {0xAA, 0xBB, 0xCC};
    ASSERT_EQ(stream.Save(patch.data(), 3), 3u);
    std::copy(patch.begin(), patch.end(), model.begin() + 30);
    ASSERT_TRUE(stream.SetPosition(28, 0));
    Bytes around(6);
    ASSERT_EQ(stream.Load(around.data(), 6), 6u);
    EXPECT_TRUE(std::equal(around.begin(), around.end(), model.begin() + 28));

    // Extend past the end, then read it back through a seek from the end.
    ASSERT_TRUE(stream.SetPosition(0, 2));
    EXPECT_TRUE(stream.WriteInt(0x11223344));
    model.insert(model.end(), {0x44, 0x33, 0x22, 0x11});
    EXPECT_EQ(stream.GetLength(), 44);
    ASSERT_TRUE(stream.SetPosition(-4, 1));
    int value = 0;
    EXPECT_TRUE(stream.ReadInt(value));
    EXPECT_EQ(value, 0x11223344);

    // A large write straight past the buffer, then a small one after it.
    const Bytes large = Pattern(50);
    ASSERT_TRUE(stream.SetPosition(2, 0));
    ASSERT_EQ(stream.Save(large.data(), 50), 50u);
    ASSERT_EQ(stream.Save(patch.data(), 1), 1u);
    model.resize(53);
    std::copy(large.begin(), large.end(), model.begin() + 2);
    model[52] = 0xAA;
    EXPECT_EQ(stream.GetLength(), 53);
    ASSERT_TRUE(stream.Close());
    EXPECT_EQ(ReadWholeFile(dir.Path("mixed.bin")), model);

    // Mode 3 keeps what is there.
    ASSERT_TRUE(stream.Open(path, VTC::VT_STREAM_READWRITE));
    EXPECT_EQ(stream.GetLength(), 53);
}

TEST(VtFileStream, DirectionsAndMissingFiles)
{
    TempDir dir;
    VtFileStream stream;
    EXPECT_FALSE(stream.Open(dir.Unicode("absent"), VTC::VT_STREAM_READ));
    EXPECT_FALSE(stream.IsOpen());
    EXPECT_FALSE(stream.Open(dir.Dir(), VTC::VT_STREAM_READ));
    EXPECT_FALSE(stream.Open(dir.Unicode("x"), 0));

    const ZedaUnicodeString path = dir.Unicode("\u00FCber \u6587.bin");  // non-ASCII names are UTF-8 on disk
    ASSERT_TRUE(stream.Open(path, VTC::VT_STREAM_WRITE));
    stream << ZedaUnicodeString(u"lock");
    int value = 0;
    EXPECT_FALSE(stream.ReadInt(value));  // write-only
    stream.Close();
    EXPECT_TRUE(std::filesystem::exists(dir.Path("\xC3\xBC" "ber \xE6\x96\x87.bin")));

    ASSERT_TRUE(stream.Open(path, VTC::VT_STREAM_READ));
    EXPECT_EQ(stream.WriteInt(1), false);
    EXPECT_TRUE(stream.IsFailed());
    EXPECT_TRUE(stream.SetPosition(0, 0));
    ZedaUnicodeString text;
    stream >> text;
    EXPECT_EQ(text, u"lock");
    stream.Close();
    EXPECT_EQ(std::filesystem::file_size(dir.Path("\xC3\xBC" "ber \xE6\x96\x87.bin")), 12u);

    // Direction 1 truncates.
    ASSERT_TRUE(stream.Open(path, VTC::VT_STREAM_WRITE));
    EXPECT_EQ(stream.GetLength(), 0);
}

TEST(VtFileStream, ImplausibleCountsInAFileReadNothing)
{
    TempDir dir;
    {
        std::ofstream out(dir.Path("bad.bin"), std::ios::binary);
        out.write("\xFF\xFF\xFF\x7F" "A\0", 6);  // claims INT_MAX code units
    }
    VtFileStream stream;
    ASSERT_TRUE(stream.Open(dir.Unicode("bad.bin"), VTC::VT_STREAM_READ, 4));
    ZedaUnicodeString text(u"old");
    stream >> text;
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_TRUE(stream.IsFailed());
    long long value = 9;
    ASSERT_TRUE(stream.SetPosition(0, 0));
    EXPECT_FALSE(stream.ReadInt64(value));
    EXPECT_EQ(value, 9);
    EXPECT_EQ(stream.GetPosition(), 0);
}
