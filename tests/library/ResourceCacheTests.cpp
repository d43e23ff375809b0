// The resource cache: cache names in the temporary directory, what may be
// deleted, the cache section's bytes, and chunked copies of large files.

#include <tuple>

#include "LibraryTestSupport.h"
#include "VtCacheSection.h"

namespace lqtest {
namespace {

using VTC::VtCacheSection;
using VTC::VtCacheSectionLayout;

constexpr long long kChunk = 2 * 1024 * 1024;

// Bytes as the stream writes them: little-endian integers, strings as a
// 32-bit count and UTF-16LE units.
struct Section {
    Bytes data;

    Section& Int64(long long value)
    {
        for (int i = 0; i < 8; ++i)
            data.push_back(static_cast<unsigned char>(static_cast<unsigned long long>(value) >> (8 * i)));
        return *this;
    }
    Section& Units(const std::string& ascii)
    {
        for (const char c : ascii)
            data.insert(data.end(), {static_cast<unsigned char>(c), 0});
        return *this;
    }
    Section& Str(const std::string& ascii)
    {
        data.insert(data.end(), {static_cast<unsigned char>(ascii.size()), 0, 0, 0});
        return Units(ascii);
    }
    // A cache file: its length, then its bytes.
    Section& File(const std::string& contents)
    {
        Int64(static_cast<long long>(contents.size())).data.insert(data.end(), contents.begin(), contents.end());
        return *this;
    }
};

// A memory stream that records the size of every raw read and write.
class RecordingStream : public VtMemoryStream {
public:
    unsigned long Save(const unsigned char* bytes, unsigned long count) override
    {
        sizes.push_back(count);
        return VtMemoryStream::Save(bytes, count);
    }
    unsigned long Load(unsigned char* bytes, unsigned long count) override
    {
        sizes.push_back(count);
        return VtMemoryStream::Load(bytes, count);
    }
    std::vector<unsigned long> sizes;
};

Bytes SavedSection(const CacheLibrary& lib)
{
    VtMemoryStream stream;
    stream.Open(VTC::VT_STREAM_WRITE);
    lib.SaveCacheToLib(stream, 20050302);
    return {stream.GetData(), stream.GetData() + stream.GetLength()};
}

struct ReadStream : VtMemoryStream {
    explicit ReadStream(const Bytes& bytes) { Open(bytes.data(), static_cast<long long>(bytes.size()), VTC::VT_STREAM_READWRITE); }
};

TEST_F(LibraryFileTest, CacheFilesAreNamedAndDeletedOnlyInTheTemporaryDirectory)
{
    CacheLibrary lib;
    const ZedaUnicodeString first = lib.GetAvailableCachePath();
    const ZedaUnicodeString second = lib.GetAvailableCachePath();
    EXPECT_TRUE(first != second && first.Find(VtFile::GetTemporaryPath()) == 0);
    EXPECT_EQ(lib.DeleteCacheFile(VTC::g_stStringBlank), 1);
    for (const char16_t* extension : {u"lock", u"sc", u"sc00", u"tmp"})
        WriteFile(VtFile::ChangeExt(Work("lib.sc"), extension), "keep");
    EXPECT_EQ(lib.DeleteCacheFile(Work("lib.sc")), 1);
    EXPECT_EQ(std::distance(fs::directory_iterator(work), {}), 4);
    // Missing files are no failure; the first failed deletion (of "sc", a folder) stops the rest.
    EXPECT_EQ(lib.DeleteCacheFile(first), 1);
    fs::create_directories(VtFile::ChangeExt(second, u"sc").ToUtf8() + "/inside");
    WriteFile(VtFile::ChangeExt(second, u"sc00"), "x");
    EXPECT_EQ(lib.DeleteCacheFile(second), 0);
    EXPECT_TRUE(VtFile::IsExist(VtFile::ChangeExt(second, u"sc00")) && VtFile::IsExist(VtFile::ChangeExt(second, u"tmp")));
    fs::remove_all(VtFile::ChangeExt(second, u"sc").ToUtf8());
    EXPECT_EQ(lib.DeleteCacheFile(second), 1);
}

TEST_F(LibraryFileTest, CacheSectionsCarryHalfTheStampAndEitherKindReadsThem)
{
    // Only the first half of the stamp's bytes is written: "Mar" for "Marker", "Li" for "Line".
    for (const auto& [writer, length, half] : {std::tuple{0, 6, "Mar"}, {1, 4, "Li"}, {5, 0, ""}}) {
        CacheLibrary writing(writer);
        MakeCache(writing, "x");
        const Bytes section = SavedSection(writing);
        EXPECT_EQ(section, Section().Str("Cache").Int64(length).Units(half).File("x.sc").File("x.sc00").data);
        for (const int reader : {0, 1}) {
            SCOPED_TRACE(std::to_string(writer) + " read by " + std::to_string(reader));
            CacheLibrary lib(reader);
            lib.SetLibPath(Work("lib.sym"));
            ReadStream stream(section);
            lib.LoadCacheFromLib(stream);
            EXPECT_EQ(stream.GetPosition(), stream.GetLength());
            EXPECT_EQ(lib.GetCachePath().Find(VtFile::GetTemporaryPath()), 0);
            EXPECT_EQ(ReadFileText(VtFile::ChangeExt(lib.GetCachePath(), u"sc")), "x.sc");
            EXPECT_EQ(ReadFileText(VtFile::ChangeExt(lib.GetCachePath(), u"sc00")), "x.sc00");
            EXPECT_EQ(ReadFileBytes(VtFile::ChangeExt(lib.GetCachePath(), u"lock").ToUtf8()), Section().Str("lock").data);
        }
    }
    // Without all three files nothing is written.
    CacheLibrary lib;
    VtFile::Delete(VtFile::ChangeExt(MakeCache(lib, "x"), u"lock"));
    EXPECT_TRUE(SavedSection(lib).empty());
}

// The section's reader gives its fields without copying the files, only for
// a section that is there in full, and leaves the stream where it was.
TEST_F(LibraryFileTest, ScanReadsTheFieldsOfCompleteSectionsOnly)
{
    const Bytes section = Section().Str("Cache").Int64(6).Units("Mar").File("data").File("index!").data;
    Bytes stream{'i', 'm', 'g'};
    stream.insert(stream.end(), section.begin(), section.end());
    for (std::size_t cut = 3; cut <= stream.size(); ++cut) {
        SCOPED_TRACE(cut);
        ReadStream reader(Bytes(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(cut)));
        reader.SetPosition(3, 0);
        VtCacheSectionLayout layout;
        EXPECT_EQ(VtCacheSection::Scan(reader, layout), cut == stream.size());
        EXPECT_EQ(reader.GetPosition(), 3);
        EXPECT_FALSE(reader.IsFailed());
        if (cut == stream.size()) {
            EXPECT_EQ(layout.stamp, ZedaUnicodeString(u"Mar"));
            EXPECT_EQ(layout.firstLength, 4);
            EXPECT_EQ(layout.secondLength, 6);
            EXPECT_EQ(layout.bytes, static_cast<long long>(section.size()));
        }
    }
    // Another marker, an empty file or a negative length is no section either.
    for (const Bytes& bad : {Section().Str("Cachf").Int64(0).File("a").File("b").data,
                             Section().Str("Cache").Int64(0).File("").File("b").data,
                             Section().Str("Cache").Int64(-2).File("a").File("b").data}) {
        ReadStream reader(bad);
        VtCacheSectionLayout layout;
        EXPECT_FALSE(VtCacheSection::Scan(reader, layout));
        EXPECT_EQ(reader.GetPosition(), 0);
    }
}

// Whatever follows the image, the old cache goes; only a section whose stamp
// is not wholly the other kind's is read, and the stream is left as it was otherwise.
TEST_F(LibraryFileTest, TailsAfterTheImageAreReadOnlyAsSectionsOfTheRightKind)
{
    // Whether the stream is kept at the image's end or read on, where the cache then is, and its "sc00" file.
    const auto load = [this](int libType, const Bytes& tail) {
        CacheLibrary lib(libType);
        lib.SetLibPath(Work("lib.sym"));
        MakeCache(lib, "x");  // the fixture sees that the old cache goes
        Bytes bytes{'i', 'm', 'a', 'g', 'e'};
        bytes.insert(bytes.end(), tail.begin(), tail.end());
        ReadStream stream(bytes);
        stream.SetPosition(5, 0);
        lib.LoadCacheFromLib(stream);
        const ZedaUnicodeString cache = lib.GetCachePath();
        const bool fresh = cache.Find(VtFile::GetTemporaryPath()) == 0;
        const long long stop = stream.GetPosition();
        return std::string(stop == 5 ? "kept " : stop == stream.GetLength() ? "read " : "? ") +
               (fresh ? "fresh " : cache == Work("lib.sym") ? "beside " : "? ") + ReadFileText(VtFile::ChangeExt(cache, u"sc00"));
    };
    const auto section = [](const std::string& stamp) {
        return Section().Str("Cache").Int64(2 * static_cast<long long>(stamp.size())).Units(stamp).File("a").File("b").data;
    };
    const std::tuple<int, Bytes, std::string> cases[] = {
        {0, section("Marker"), "read fresh b"},
        {1, section("Line"), "read fresh b"},
        {0, section("Lin"), "read fresh b"},
        {0, section("Line"), "kept fresh "},
        {1, section("Marker"), "kept fresh "},
        {0, {}, "kept beside "},  // nothing left: the marker is probed and the stream rewound
        {0, Bytes(10, 1), "kept fresh "},  // too short for a section
        {0, Section().Str("Other").Int64(0).data, "kept beside "},
        {0, Bytes(11, 0xFF), "kept beside "},
    };
    for (const auto& [libType, tail, expected] : cases)
        EXPECT_EQ(load(libType, tail), expected) << tail.size();
    WriteFile(Work("lib.sc"), "beside");  // a short tail keeps a cache next to the library file
    EXPECT_EQ(load(0, Bytes(1, 1)), "kept beside ");
}

TEST_F(LibraryFileTest, LargeCacheFilesMoveInTwoMebibyteChunks)
{
    for (const long long size : {kChunk, kChunk + 1}) {
        SCOPED_TRACE(size);
        Bytes contents(static_cast<std::size_t>(size));
        for (std::size_t i = 0; i < contents.size(); ++i)
            contents[i] = static_cast<unsigned char>(i * 31 + i / 4096);
        ZedaUnicodeString source = Work("source.sc");
        WriteFile(source.ToUtf8(), contents);

        CacheLibrary lib;
        RecordingStream stream;
        stream.Open(VTC::VT_STREAM_READWRITE);
        lib.CopyCacheToStream(stream, source);
        std::vector<unsigned long> expected{8, static_cast<unsigned long>(kChunk)};
        if (size > kChunk)
            expected.push_back(1);
        EXPECT_EQ(stream.sizes, expected);
        EXPECT_EQ(stream.GetLength(), size + 8);

        stream.Save(reinterpret_cast<const unsigned char*>("tail"), 4);
        stream.SetPosition(0, 0);
        stream.sizes.clear();
        ZedaUnicodeString target = Work("target.sc");
        lib.CopyStreamToCache(stream, target);
        EXPECT_EQ(stream.sizes, expected);
        EXPECT_EQ(stream.GetPosition(), size + 8);
        EXPECT_EQ(ReadFileBytes(target.ToUtf8()), contents);
    }
}

// Files that cannot be opened are skipped, and lengths that the stream cannot
// hold are cut to what it holds: no huge allocation, no endless copy.
TEST_F(LibraryFileTest, UnopenableFilesAndDamagedSectionsStayBounded)
{
    CacheLibrary lib;
    WriteFile(Work("empty.sc"), "");
    VtMemoryStream out;
    out.Open(VTC::VT_STREAM_WRITE);
    for (ZedaUnicodeString path : {Work("missing.sc"), Work("empty.sc")})
        lib.CopyCacheToStream(out, path);
    EXPECT_EQ(out.GetLength(), 0);
    // An unwritable target reads nothing from the stream.
    ZedaUnicodeString unwritable = Work("no/folder/x.sc");
    ReadStream in(Section().Int64(6).Units("Mar").data);
    lib.CopyStreamToCache(in, unwritable);
    EXPECT_EQ(lib.LoadLockFileFromStream(in, unwritable), 1);
    EXPECT_EQ(in.GetPosition(), 0);

    const long long huge = 0x7fffffffffffffffLL;
    const Bytes sections[] = {
        Section().Str("Cache").Int64(huge).Units("abcd").data,
        Section().Str("Cache").Int64(-8).File("ab").data,
        Section().Str("Cache").Int64(6).Units("Mar").Int64(huge).Units("xyz").data,
        Section().Str("Cache").Int64(6).Units("Mar").File("x").Int64(-1).data,
    };
    for (const auto& section : sections) {
        CacheLibrary damaged;
        ReadStream stream(section);
        damaged.LoadCacheFromLib(stream);
        for (const char16_t* extension : {u"sc", u"sc00"})
            EXPECT_LE(VtFile::GetLength(VtFile::ChangeExt(damaged.GetCachePath(), extension)), static_cast<long long>(section.size()));
    }
}

}  // namespace
}  // namespace lqtest
