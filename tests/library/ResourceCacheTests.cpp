// The resource cache: cache names in the temporary directory, what may be
// deleted, the cache section's bytes, and chunked copies of large files.

#include <memory>

#include "LibraryTestSupport.h"

namespace {

using lqtest::CacheLibrary;
using lqtest::LibraryFileTest;
using lqtest::ReadBytes;
using lqtest::StreamBytes;
using lqtest::U;
using lqtest::Utf8;
using lqtest::WriteText;
using VTC::VtFile;
using VTC::VtMemoryStream;
using ZEDA::ZedaUnicodeString;
namespace fs = std::filesystem;

using Bytes = std::vector<unsigned char>;

constexpr long long kChunk = 2 * 1024 * 1024;

Bytes Int64(long long value)
{
    Bytes bytes;
    for (int i = 0; i < 8; ++i)
        bytes.push_back(static_cast<unsigned char>(static_cast<unsigned long long>(value) >> (8 * i)));
    return bytes;
}

Bytes Text(const std::string& ascii)
{
    return {ascii.begin(), ascii.end()};
}

// A stream string: 32-bit count, then UTF-16LE units.
Bytes StreamString(const std::string& ascii)
{
    Bytes bytes{static_cast<unsigned char>(ascii.size()), 0, 0, 0};
    for (const char c : ascii) {
        bytes.push_back(static_cast<unsigned char>(c));
        bytes.push_back(0);
    }
    return bytes;
}

Bytes Join(std::initializer_list<Bytes> parts)
{
    Bytes joined;
    for (const auto& part : parts)
        joined.insert(joined.end(), part.begin(), part.end());
    return joined;
}

Bytes Utf16Bytes(const std::string& ascii)
{
    Bytes bytes = StreamString(ascii);
    return {bytes.begin() + 4, bytes.end()};
}

// A memory stream that records the size of every raw read and write.
class RecordingStream : public VtMemoryStream {
public:
    unsigned long Save(const unsigned char* bytes, unsigned long count) override
    {
        saves.push_back(count);
        return VtMemoryStream::Save(bytes, count);
    }
    unsigned long Load(unsigned char* bytes, unsigned long count) override
    {
        loads.push_back(count);
        return VtMemoryStream::Load(bytes, count);
    }
    std::vector<unsigned long> saves;
    std::vector<unsigned long> loads;
};

std::unique_ptr<VtMemoryStream> ReadStream(const Bytes& bytes)
{
    auto stream = std::make_unique<VtMemoryStream>();
    stream->Open(bytes.data(), static_cast<long long>(bytes.size()), VTC::VT_STREAM_READWRITE);
    return stream;
}

// Gives `lib` a fresh temporary cache holding the three cache files.
ZedaUnicodeString MakeCache(CacheLibrary& lib, const std::string& first, const std::string& second)
{
    const ZedaUnicodeString cache = lib.GetAvailableCachePath();
    lib.SetCachePath(cache);
    WriteText(Utf8(VtFile::ChangeExt(cache, u"lock")), "any");
    WriteText(Utf8(VtFile::ChangeExt(cache, u"sc")), first);
    WriteText(Utf8(VtFile::ChangeExt(cache, u"sc00")), second);
    return cache;
}

std::string FileText(const ZedaUnicodeString& path)
{
    const Bytes bytes = ReadBytes(Utf8(path));
    return {bytes.begin(), bytes.end()};
}

TEST_F(LibraryFileTest, CacheNamesAreFreshAndInTheTemporaryDirectory)
{
    CacheLibrary lib;
    const ZedaUnicodeString first = lib.GetAvailableCachePath();
    const ZedaUnicodeString second = lib.GetAvailableCachePath();
    EXPECT_NE(first, second);
    EXPECT_EQ(first.Find(VtFile::GetTemporaryPath()), 0);
    EXPECT_EQ(Utf8(first).substr(Utf8(first).size() - 3), ".sc");
    EXPECT_TRUE(VtFile::IsExist(VtFile::ChangeExt(first, u"tmp")));
    EXPECT_EQ(lib.DeleteCacheFile(first), 1);
    EXPECT_EQ(lib.DeleteCacheFile(second), 1);
}

TEST_F(LibraryFileTest, DeleteCacheFileTouchesOnlyTheTemporaryDirectory)
{
    CacheLibrary lib;
    const char16_t* const extensions[] = {u"lock", u"sc", u"sc00", u"tmp"};
    EXPECT_EQ(lib.DeleteCacheFile(VTC::g_stStringBlank), 1);

    const ZedaUnicodeString outside = U(Work("lib.sc"));
    for (const char16_t* extension : extensions)
        WriteText(Utf8(VtFile::ChangeExt(outside, extension)), "keep");
    EXPECT_EQ(lib.DeleteCacheFile(outside), 1);
    for (const char16_t* extension : extensions)
        EXPECT_TRUE(VtFile::IsExist(VtFile::ChangeExt(outside, extension)));

    // Missing files are no failure.
    const ZedaUnicodeString partial = lib.GetAvailableCachePath();
    WriteText(Utf8(VtFile::ChangeExt(partial, u"sc00")), "x");
    EXPECT_EQ(lib.DeleteCacheFile(partial), 1);
    EXPECT_TRUE(lqtest::TemporaryFiles().empty());

    // The first failed deletion stops the rest.
    const ZedaUnicodeString blocked = lib.GetAvailableCachePath();
    WriteText(Utf8(VtFile::ChangeExt(blocked, u"lock")), "x");
    fs::create_directory(Utf8(VtFile::ChangeExt(blocked, u"sc")));
    WriteText(Utf8(VtFile::ChangeExt(blocked, u"sc")) + "/inside", "x");
    WriteText(Utf8(VtFile::ChangeExt(blocked, u"sc00")), "x");
    EXPECT_EQ(lib.DeleteCacheFile(blocked), 0);
    EXPECT_FALSE(VtFile::IsExist(VtFile::ChangeExt(blocked, u"lock")));
    EXPECT_TRUE(VtFile::IsExist(VtFile::ChangeExt(blocked, u"sc00")));
    EXPECT_TRUE(VtFile::IsExist(VtFile::ChangeExt(blocked, u"tmp")));
    fs::remove_all(Utf8(VtFile::ChangeExt(blocked, u"sc")));
    EXPECT_EQ(lib.DeleteCacheFile(blocked), 1);
}

TEST_F(LibraryFileTest, CacheSectionBytesCarryTheTruncatedStamp)
{
    const Bytes files = Join({Int64(3), Text("abc"), Int64(4), Text("defg")});
    const struct {
        int libType;
        Bytes stamp;
    } kinds[] = {
        {0, Join({Int64(6), Utf16Bytes("Mar")})},
        {1, Join({Int64(4), Utf16Bytes("Li")})},
        {5, Int64(0)},
    };
    for (const auto& kind : kinds) {
        SCOPED_TRACE(kind.libType);
        CacheLibrary lib(kind.libType);
        MakeCache(lib, "abc", "defg");
        VtMemoryStream stream;
        stream.Open(VTC::VT_STREAM_WRITE);
        lib.SaveCacheToLib(stream, 20050302);
        EXPECT_EQ(StreamBytes(stream), Join({StreamString("Cache"), kind.stamp, files}));
    }

    // Without all three files nothing is written.
    CacheLibrary lib;
    const ZedaUnicodeString cache = MakeCache(lib, "abc", "defg");
    VtFile::Delete(VtFile::ChangeExt(cache, u"lock"));
    VtMemoryStream stream;
    stream.Open(VTC::VT_STREAM_WRITE);
    lib.SaveCacheToLib(stream, 0);
    EXPECT_EQ(stream.GetLength(), 0);
}

TEST_F(LibraryFileTest, EitherKindReadsTheOthersSection)
{
    for (const int writer : {0, 1}) {
        Bytes section;
        {
            CacheLibrary lib(writer);
            MakeCache(lib, "first", "second");
            VtMemoryStream stream;
            stream.Open(VTC::VT_STREAM_WRITE);
            lib.SaveCacheToLib(stream, 0);
            section = StreamBytes(stream);
        }
        for (const int reader : {0, 1}) {
            SCOPED_TRACE(std::to_string(writer) + " read by " + std::to_string(reader));
            CacheLibrary lib(reader);
            lib.SetLibPath(U(Work("lib.sym")));
            const auto stream = ReadStream(section);
            lib.LoadCacheFromLib(*stream);
            EXPECT_EQ(stream->GetPosition(), stream->GetLength());
            const ZedaUnicodeString cache = lib.GetCachePath();
            EXPECT_EQ(cache.Find(VtFile::GetTemporaryPath()), 0);
            EXPECT_EQ(FileText(VtFile::ChangeExt(cache, u"sc")), "first");
            EXPECT_EQ(FileText(VtFile::ChangeExt(cache, u"sc00")), "second");
            EXPECT_EQ(ReadBytes(Utf8(VtFile::ChangeExt(cache, u"lock"))), StreamString("lock"));
        }
    }
}

TEST_F(LibraryFileTest, AWholeStampOfTheOtherKindIsRefused)
{
    const Bytes rest = Join({Int64(1), Text("a"), Int64(1), Text("b")});
    const struct {
        int libType;
        std::string stamp;
        bool accepted;
    } cases[] = {{0, "Line", false}, {1, "Marker", false}, {0, "Marker", true}, {1, "Line", true}, {0, "Lin", true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.stamp + " read by " + std::to_string(c.libType));
        const Bytes section =
            Join({StreamString("Cache"), Int64(static_cast<long long>(2 * c.stamp.size())), Utf16Bytes(c.stamp), rest});
        CacheLibrary lib(c.libType);
        const auto stream = ReadStream(section);
        lib.LoadCacheFromLib(*stream);
        const ZedaUnicodeString cache = lib.GetCachePath();
        EXPECT_EQ(cache.Find(VtFile::GetTemporaryPath()), 0);
        if (c.accepted) {
            EXPECT_EQ(stream->GetPosition(), stream->GetLength());
            EXPECT_EQ(FileText(VtFile::ChangeExt(cache, u"sc00")), "b");
        } else {
            EXPECT_EQ(stream->GetPosition(), 0);
            EXPECT_EQ(fs::file_size(Utf8(VtFile::ChangeExt(cache, u"lock"))), 0u);
            EXPECT_FALSE(VtFile::IsExist(VtFile::ChangeExt(cache, u"sc")));
        }
    }
}

TEST_F(LibraryFileTest, ShortOrForeignTailsAreNoCacheSection)
{
    const ZedaUnicodeString libPath = U(Work("lib.sym"));
    const Bytes image = Text("image");
    auto load = [&](const Bytes& tail, long long& position) {
        CacheLibrary lib;
        lib.SetLibPath(libPath);
        const ZedaUnicodeString previous = MakeCache(lib, "x", "y");
        const auto stream = ReadStream(Join({image, tail}));
        stream->SetPosition(static_cast<long long>(image.size()), 0);
        lib.LoadCacheFromLib(*stream);
        EXPECT_FALSE(VtFile::IsExist(VtFile::ChangeExt(previous, u"sc"))) << "old cache kept";
        position = stream->GetPosition();
        return lib.GetCachePath();
    };
    long long position = 0;

    // Nothing left: the marker is probed, the stream rewound.
    EXPECT_EQ(load({}, position), libPath);
    EXPECT_EQ(position, 5);
    // 1 to 10 bytes: a fresh cache, unless one sits next to the library file.
    EXPECT_EQ(load(Bytes(10, 1), position).Find(VtFile::GetTemporaryPath()), 0);
    EXPECT_EQ(position, 5);
    WriteText(Work("lib.sc"), "beside");
    EXPECT_EQ(load(Bytes(1, 1), position), libPath);
    // More than 10 bytes that are not a cache section.
    EXPECT_EQ(load(Join({StreamString("Other"), Int64(0)}), position), libPath);
    EXPECT_EQ(position, 5);
    EXPECT_EQ(load(Bytes(11, 0xFF), position), libPath);
    EXPECT_EQ(position, 5);
}

TEST_F(LibraryFileTest, LargeCacheFilesMoveInTwoMebibyteChunks)
{
    for (const long long size : {kChunk, kChunk + 1}) {
        SCOPED_TRACE(size);
        Bytes contents(static_cast<std::size_t>(size));
        for (std::size_t i = 0; i < contents.size(); ++i)
            contents[i] = static_cast<unsigned char>(i * 31 + i / 4096);
        ZedaUnicodeString source = U(Work("source.sc"));
        lqtest::WriteBytes(Utf8(source), contents);

        CacheLibrary lib;
        RecordingStream stream;
        stream.Open(VTC::VT_STREAM_READWRITE);
        lib.CopyCacheToStream(stream, source);
        std::vector<unsigned long> expected{8, static_cast<unsigned long>(kChunk)};
        if (size > kChunk)
            expected.push_back(1);
        EXPECT_EQ(stream.saves, expected);
        EXPECT_EQ(StreamBytes(stream), Join({Int64(size), contents}));

        stream.SetPosition(0, 2);
        stream.Save(reinterpret_cast<const unsigned char*>("tail"), 4);
        stream.SetPosition(0, 0);
        ZedaUnicodeString target = U(Work("target.sc"));
        lib.CopyStreamToCache(stream, target);
        EXPECT_EQ(stream.loads, expected);
        EXPECT_EQ(stream.GetPosition(), size + 8);
        EXPECT_EQ(ReadBytes(Utf8(target)), contents);
    }
}

TEST_F(LibraryFileTest, CopiesSkipWhatCannotBeOpened)
{
    CacheLibrary lib;
    ZedaUnicodeString missing = U(Work("missing.sc"));
    ZedaUnicodeString empty = U(Work("empty.sc"));
    WriteText(Utf8(empty), "");
    VtMemoryStream out;
    out.Open(VTC::VT_STREAM_WRITE);
    lib.CopyCacheToStream(out, missing);
    lib.CopyCacheToStream(out, empty);
    EXPECT_EQ(out.GetLength(), 0);

    // An unwritable target reads nothing from the stream.
    ZedaUnicodeString unwritable = U(Work("no/folder/x.sc"));
    const auto in = ReadStream(Join({Int64(6), Utf16Bytes("Mar")}));
    lib.CopyStreamToCache(*in, unwritable);
    EXPECT_EQ(in->GetPosition(), 0);
    EXPECT_EQ(lib.LoadLockFileFromStream(*in, unwritable), 1);
    EXPECT_EQ(in->GetPosition(), 0);
}

// Lengths that the stream cannot hold are cut to what it holds: no huge
// allocation, no endless copy, no crash.
TEST_F(LibraryFileTest, DamagedSectionsStayBounded)
{
    const long long huge = 0x7fffffffffffffffLL;
    const Bytes sections[] = {
        Join({StreamString("Cache"), Int64(huge), Text("abcdefgh")}),
        Join({StreamString("Cache"), Int64(-8), Int64(2), Text("ab")}),
        Join({StreamString("Cache"), Int64(6), Utf16Bytes("Mar"), Int64(huge), Text("xyz")}),
        Join({StreamString("Cache"), Int64(6), Utf16Bytes("Mar"), Int64(1), Text("x"), Int64(-1)}),
        Join({StreamString("Cache"), Int64(100), Utf16Bytes("Marker"), Int64(3)}),
    };
    for (const auto& section : sections) {
        CacheLibrary lib;
        const auto stream = ReadStream(section);
        lib.LoadCacheFromLib(*stream);
        EXPECT_LE(stream->GetPosition(), stream->GetLength());
        const ZedaUnicodeString cache = lib.GetCachePath();
        for (const char16_t* extension : {u"sc", u"sc00"}) {
            const ZedaUnicodeString file = VtFile::ChangeExt(cache, extension);
            if (VtFile::IsExist(file)) {
                EXPECT_LE(fs::file_size(Utf8(file)), section.size());
            }
        }
    }
}

}  // namespace
