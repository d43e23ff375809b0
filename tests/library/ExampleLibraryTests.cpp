// The example marker and line libraries: round trips of both library forms
// with their pictures, self-contained containers, appending, and damaged files.

#include <algorithm>
#include <climits>
#include <filesystem>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "LineSymbolLib.h"
#include "LqCompactFile.h"
#include "LqStream.h"
#include "LqTestSupport.h"
#include "LqToolkit.h"
#include "MarkerSymbolLib.h"
#include "VtSymbolGroup.h"

namespace {

namespace fs = std::filesystem;
using namespace LqExample;
using VTC::VtSymbolGroup;
using ZEDA::ZedaUnicodeString;
using lqtest::ReadFileBytes;

constexpr unsigned int containerForm = VTC::VtSymbolLib::containerVersion;
constexpr unsigned int oldStreamForm = 20050302;  // group records carry the legacy value
constexpr unsigned int newStreamForm = 20200101;

ZedaUnicodeString U(const std::string& text)
{
    return ZedaUnicodeString::FromUtf8(text);
}

// TMPDIR points into a private directory, so the cache files that libraries
// make and delete there can be counted. Made before any test runs: the
// temporary directory tests read TMPDIR too.
const lqtest::PrivateTmpdir& PrivateFolder()
{
    static const lqtest::PrivateTmpdir folder("lq-examples-");
    return folder;
}

[[maybe_unused]] const lqtest::PrivateTmpdir& madeAtStart = PrivateFolder();

// Files in the library's own folder inside that directory.
std::size_t TemporaryFileCount()
{
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(VTC::VtFile::GetTemporaryPath().ToUtf8()), fs::directory_iterator()));
}

// A picture whose every pixel depends on the seed.
RasterImage Picture(int width, int height, unsigned int seed)
{
    RasterImage image(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.At(x, y) = (seed * 2654435761u) ^ static_cast<unsigned int>(x * 40503 + y * 9973);
    return image;
}

// Markers 1..6: two at the root, the others in Geometric{Round, Angular}
// and Signs; symbol 5 has no picture.
void FillMarkers(MarkerSymbolLib& lib)
{
    VtSymbolGroup* root = lib.GetRootGroup();
    VtSymbolGroup* geometric = root->CreateChildGroup(u"Geometric");
    VtSymbolGroup* round = geometric->CreateChildGroup(u"Round");
    VtSymbolGroup* angular = geometric->CreateChildGroup(u"Angular");
    VtSymbolGroup* signs = root->CreateChildGroup(u"Signs");
    const struct {
        int id;
        const char* name;
        MarkerShape shape;
        VtSymbolGroup* group;
    } markers[] = {{1, "dot", MarkerShape::Circle, round},        {2, "box", MarkerShape::Square, angular},
                   {3, "warning", MarkerShape::Triangle, signs},  {4, "plain", MarkerShape::Star, nullptr},
                   {5, "no picture", MarkerShape::Cross, signs},  {6, "Ünïcødé ✓", MarkerShape::Arrow, nullptr}};
    for (const auto& m : markers) {
        auto* marker = new MarkerSymbol(m.id, U(m.name), m.shape, 8 + m.id * 3, ZEDARGB(m.id * 40, 10, 200),
                                        m.id * 12.5);
        marker->outlineColour = ZEDARGB(0, m.id, 0);
        lib.AddSymbol(marker, m.group);
        if (m.id != 5) {
            ASSERT_TRUE(lib.SetSymbolImage(m.id, Picture(marker->size + 2, marker->size + 2, m.id)))
                << lib.GetLastError();
        }
    }
}

// Each group as "path: items", depth first.
std::vector<std::string> TreeLines(const VtSymbolGroup& group, const std::string& path = "")
{
    std::string line = path + group.GetGroupName().ToUtf8() + ":";
    for (int i = 0; i < group.GetItemCount(); ++i)
        line += " " + std::to_string(group.GetItemID(i));
    std::vector<std::string> lines{line};
    for (int i = 0; i < group.GetChildGroupCount(); ++i) {
        const auto below = TreeLines(*group.GetChildGroup(i), path + group.GetGroupName().ToUtf8() + "/");
        lines.insert(lines.end(), below.begin(), below.end());
    }
    return lines;
}

void ExpectSameMarkers(const MarkerSymbolLib& expected, const MarkerSymbolLib& actual)
{
    ASSERT_EQ(expected.GetSymbolCount(), actual.GetSymbolCount());
    for (int i = 0; i < expected.GetSymbolCount(); ++i) {
        const int id = expected.GetIDAt(i);
        ASSERT_EQ(id, actual.GetIDAt(i));
        const MarkerSymbol* a = expected.GetMarker(id);
        const MarkerSymbol* b = actual.GetMarker(id);
        ASSERT_NE(b, nullptr);
        EXPECT_EQ(a->name, b->name);
        EXPECT_EQ(a->shape, b->shape);
        EXPECT_EQ(a->size, b->size);
        EXPECT_EQ(a->colour, b->colour);
        EXPECT_EQ(a->outlineColour, b->outlineColour);
        EXPECT_EQ(a->rotation, b->rotation);
        ASSERT_EQ(expected.HasSymbolImage(id), actual.HasSymbolImage(id)) << "symbol " << id;
        if (expected.HasSymbolImage(id)) {
            RasterImage original;
            RasterImage loaded;
            ASSERT_TRUE(expected.GetSymbolImage(id, original)) << expected.GetLastError();
            ASSERT_TRUE(actual.GetSymbolImage(id, loaded)) << actual.GetLastError();
            EXPECT_EQ(original, loaded) << "picture of symbol " << id;
        }
    }
    EXPECT_EQ(TreeLines(*expected.GetRootGroup()), TreeLines(*actual.GetRootGroup()));
}

class ExampleLibraryTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        work = lqtest::MakeFolder(PrivateFolder().Root(), "work-").string();
    }
    void TearDown() override
    {
        EXPECT_EQ(TemporaryFileCount(), 0u) << "cache files left in the temporary directory";
        std::error_code ignored;
        fs::remove_all(work, ignored);
        for (const auto& entry : fs::directory_iterator(VTC::VtFile::GetTemporaryPath().ToUtf8()))
            fs::remove_all(entry, ignored);
    }
    std::string Work(const std::string& name) const { return work + "/" + name; }

    std::string work;
};

TEST_F(ExampleLibraryTest, MarkersSurviveBothFormsWithTheirPictures)
{
    MarkerSymbolLib original;
    FillMarkers(original);
    for (const unsigned int form : {containerForm, oldStreamForm, newStreamForm}) {
        SCOPED_TRACE(form);
        const std::string path = Work("markers-" + std::to_string(form) + ".lqm");
        ASSERT_EQ(original.SaveToFile(U(path), form), 1) << original.GetLastError();

        MarkerSymbolLib loaded;
        ASSERT_EQ(loaded.LoadFromFile(U(path)), 1) << loaded.GetLastError();
        EXPECT_EQ(loaded.GetVersion(), form);
        EXPECT_EQ(loaded.GetReport().containerForm, form == containerForm);
        EXPECT_EQ(loaded.GetReport().cacheSection, form != containerForm);
        EXPECT_EQ(loaded.GetReport().stamp, form == containerForm ? "" : "Mar");
        ExpectSameMarkers(original, loaded);
    }
    // The stream form keeps the library path; the pictures stay readable
    // after every save, from whatever cache the library moved to.
    RasterImage picture;
    EXPECT_TRUE(original.GetSymbolImage(6, picture)) << original.GetLastError();
    EXPECT_EQ(picture, Picture(28, 28, 6));
}

TEST_F(ExampleLibraryTest, ContainerHoldsTheCacheAndIsSelfContained)
{
    const std::string saved = Work("saved.lqm");
    const std::string elsewhere = Work("moved.lqm");
    auto original = std::make_unique<MarkerSymbolLib>();
    FillMarkers(*original);
    ASSERT_EQ(original->SaveToFile(U(saved), containerForm), 1);
    {
        VTC::VtCompactFile container;
        ASSERT_EQ(container.Open(U(saved), u"", VTC::VT_CF_MODE_READ), 0);
        const auto keys = container.GetKeys();
        EXPECT_EQ(keys, (std::vector<ZedaUnicodeString>{u"SymbolRes.sc", u"SymbolRes.sc00", u"SymbolStoreInCF"}));
    }
    MarkerSymbolLib reference;
    FillMarkers(reference);
    original.reset();  // takes its cache files away
    fs::copy_file(saved, elsewhere);
    fs::remove(saved);
    ASSERT_EQ(TemporaryFileCount(), 4u);  // only the reference library's cache remains

    MarkerSymbolLib loaded;
    ASSERT_EQ(loaded.LoadFromFile(U(elsewhere)), 1) << loaded.GetLastError();
    ExpectSameMarkers(reference, loaded);
}

TEST_F(ExampleLibraryTest, ContainerRewrittenInPlaceTakesNewPictures)
{
    const std::string path = Work("inplace.lqm");
    {
        MarkerSymbolLib lib;
        FillMarkers(lib);
        ASSERT_EQ(lib.SaveToFile(U(path), containerForm), 1);
    }
    MarkerSymbolLib lib;
    ASSERT_EQ(lib.LoadFromFile(U(path)), 1) << lib.GetLastError();
    ASSERT_TRUE(lib.SetSymbolImage(5, Picture(7, 3, 55)));
    ASSERT_TRUE(lib.SetSymbolImage(1, Picture(4, 4, 11)));
    ASSERT_EQ(lib.SaveToFile(U(path), containerForm), 1);  // the open container, in place

    MarkerSymbolLib reloaded;
    ASSERT_EQ(reloaded.LoadFromFile(U(path)), 1) << reloaded.GetLastError();
    ExpectSameMarkers(lib, reloaded);
    RasterImage picture;
    ASSERT_TRUE(reloaded.GetSymbolImage(5, picture));
    EXPECT_EQ(picture, Picture(7, 3, 55));
}

// A stream file without a cache section reads its pictures from cache files
// lying next to it, and never writes to them.
TEST_F(ExampleLibraryTest, CacheNextToTheLibraryFileIsReadButNotWritten)
{
    MarkerSymbolLib original;
    FillMarkers(original);
    const std::string path = Work("shipped.lqm");
    ASSERT_EQ(original.SaveToFile(U(path), newStreamForm), 1);
    std::vector<unsigned char> bytes = ReadFileBytes(path);
    const std::vector<unsigned char> marker{5, 0, 0, 0, 'C', 0, 'a', 0, 'c', 0, 'h', 0, 'e', 0};
    const auto section = std::find_end(bytes.begin(), bytes.end(), marker.begin(), marker.end());
    ASSERT_NE(section, bytes.end());
    bytes.erase(section, bytes.end());
    lqtest::WriteFile(path, bytes);
    const ZedaUnicodeString cache = original.GetCachePath();
    for (const char* extension : {"lock", "sc", "sc00"})
        fs::copy_file(VTC::VtFile::ChangeExt(cache, U(extension)).ToUtf8(), Work(std::string("shipped.") + extension));
    const std::vector<unsigned char> shippedData = ReadFileBytes(Work("shipped.sc"));

    MarkerSymbolLib lib;
    ASSERT_EQ(lib.LoadFromFile(U(path)), 1) << lib.GetLastError();
    EXPECT_FALSE(lib.GetReport().cacheSection);
    EXPECT_EQ(lib.GetCachePath(), U(path));
    ExpectSameMarkers(original, lib);

    ASSERT_TRUE(lib.SetSymbolImage(5, Picture(9, 9, 5))) << lib.GetLastError();
    EXPECT_NE(lib.GetCachePath(), U(path));  // moved to a copy in the temporary directory
    EXPECT_EQ(ReadFileBytes(Work("shipped.sc")), shippedData);
    RasterImage picture;
    ASSERT_TRUE(lib.GetSymbolImage(5, picture));
    EXPECT_EQ(picture, Picture(9, 9, 5));
    ASSERT_TRUE(lib.GetSymbolImage(6, picture));
    EXPECT_EQ(picture, Picture(28, 28, 6));

    // Without the files next to it, the same stream has pictures and nowhere to take them from.
    fs::remove(Work("shipped.sc00"));
    MarkerSymbolLib orphan;
    EXPECT_EQ(orphan.LoadFromFile(U(path)), 0);
    EXPECT_NE(orphan.GetLastError().find("missing"), std::string::npos) << orphan.GetLastError();
}

TEST_F(ExampleLibraryTest, ConversionsBetweenFormsKeepEverything)
{
    MarkerSymbolLib original;
    FillMarkers(original);
    ASSERT_EQ(original.SaveToFile(U(Work("a.lqm")), containerForm), 1);

    MarkerSymbolLib converter;
    ASSERT_EQ(converter.LoadFromFile(U(Work("a.lqm"))), 1);
    ASSERT_EQ(converter.SaveToFile(U(Work("b.lqm")), newStreamForm), 1);  // container -> stream
    MarkerSymbolLib second;
    ASSERT_EQ(second.LoadFromFile(U(Work("b.lqm"))), 1) << second.GetLastError();
    ASSERT_EQ(second.SaveToFile(U(Work("c.lqm")), containerForm), 1);  // stream -> container
    MarkerSymbolLib third;
    ASSERT_EQ(third.LoadFromFile(U(Work("c.lqm"))), 1) << third.GetLastError();
    ExpectSameMarkers(original, third);
}

TEST_F(ExampleLibraryTest, LineLibraryRoundTripsAndCarriesItsStamp)
{
    LineSymbolLib lines;
    VtSymbolGroup* dashed = lines.GetRootGroup()->CreateChildGroup(u"Dashed");
    lines.AddSymbol(new LineSymbol(-1, u"solid", 1.5, ZEDARGB(0, 0, 0)), nullptr);
    lines.AddSymbol(new LineSymbol(-1, u"dash", 2.0, ZEDARGB(200, 0, 0), {6, 3}), dashed);
    lines.AddSymbol(new LineSymbol(-1, u"dot dash", 0.25, ZEDARGB(0, 0, 200), {1, 2, 6, 2}), dashed);
    ASSERT_TRUE(lines.SetSymbolImage(2, Picture(40, 6, 2)));

    for (const unsigned int form : {containerForm, oldStreamForm}) {
        SCOPED_TRACE(form);
        const std::string path = Work("lines-" + std::to_string(form) + ".lql");
        ASSERT_EQ(lines.SaveToFile(U(path), form), 1) << lines.GetLastError();
        LineSymbolLib loaded;
        ASSERT_EQ(loaded.LoadFromFile(U(path)), 1) << loaded.GetLastError();
        ASSERT_EQ(loaded.GetSymbolCount(), 3);
        for (int id = 1; id <= 3; ++id) {
            EXPECT_EQ(loaded.GetLine(id)->width, lines.GetLine(id)->width);
            EXPECT_EQ(loaded.GetLine(id)->colour, lines.GetLine(id)->colour);
            EXPECT_EQ(loaded.GetLine(id)->dashes, lines.GetLine(id)->dashes);
        }
        EXPECT_EQ(TreeLines(*loaded.GetRootGroup()), TreeLines(*lines.GetRootGroup()));
        RasterImage picture;
        ASSERT_TRUE(loaded.GetSymbolImage(2, picture)) << loaded.GetLastError();
        EXPECT_EQ(picture, Picture(40, 6, 2));
        EXPECT_EQ(loaded.GetReport().stamp, form == containerForm ? "" : "Li");
    }
    // Neither kind takes the other's files.
    MarkerSymbolLib markers;
    EXPECT_EQ(markers.LoadFromFile(U(Work("lines-20050302.lql"))), 0);
    EXPECT_NE(markers.GetLastError().find("magic"), std::string::npos);
    EXPECT_EQ(markers.GetSymbolCount(), 0);
}

TEST_F(ExampleLibraryTest, AppendRenumbersAndMergesGroupsWithPictures)
{
    MarkerSymbolLib source;
    FillMarkers(source);
    ASSERT_EQ(source.SaveToFile(U(Work("source.lqm")), newStreamForm), 1);

    MarkerSymbolLib target;
    VtSymbolGroup* signs = target.GetRootGroup()->CreateChildGroup(u"Signs");
    target.AddSymbol(new MarkerSymbol(3, u"mine", MarkerShape::Hexagon, 9, ZEDARGB(1, 2, 3)), signs);
    ASSERT_TRUE(target.SetSymbolImage(3, Picture(11, 11, 99)));

    ASSERT_EQ(target.AppendFromFile(U(Work("source.lqm")), 1), 1) << target.GetLastError();
    ASSERT_EQ(target.GetSymbolCount(), 7);
    // IDs 1, 2 were free; 3 was taken and became 4, which pushed the old 4 to 5 and so on.
    EXPECT_EQ(target.GetIDAt(3), 4);
    EXPECT_EQ(target.GetMarker(4)->name, U("warning"));
    EXPECT_EQ(TreeLines(*target.GetRootGroup()),
              (std::vector<std::string>{"RootGroup: 5 7", "RootGroup/Signs: 3 4 6", "RootGroup/Geometric:",
                                        "RootGroup/Geometric/Round: 1", "RootGroup/Geometric/Angular: 2"}));
    RasterImage picture;
    ASSERT_TRUE(target.GetSymbolImage(4, picture)) << target.GetLastError();
    EXPECT_EQ(picture, Picture(19, 19, 3));
    ASSERT_TRUE(target.GetSymbolImage(3, picture));
    EXPECT_EQ(picture, Picture(11, 11, 99));
    EXPECT_FALSE(target.HasSymbolImage(6));  // "no picture" kept none

    // Flag 0 files everything in the root group.
    MarkerSymbolLib flat;
    ASSERT_EQ(flat.AppendFromFile(U(Work("source.lqm")), 0), 1);
    EXPECT_EQ(TreeLines(*flat.GetRootGroup()), (std::vector<std::string>{"RootGroup: 1 2 3 4 5 6"}));
}

// An append is refused, adding nothing, when a symbol would need a new ID and
// the library holds the largest; every successful call clears the error of
// the one before.
TEST_F(ExampleLibraryTest, AppendRefusedAtTheLargestIdAndSuccessClearsTheError)
{
    MarkerSymbolLib source;
    FillMarkers(source);
    ASSERT_EQ(source.SaveToFile(U(Work("source.lqm")), newStreamForm), 1);
    MarkerSymbolLib target;
    target.AddSymbol(new MarkerSymbol(4, u"four", MarkerShape::Square, 5, 0), nullptr);
    target.AddSymbol(new MarkerSymbol(INT_MAX, u"last", MarkerShape::Square, 5, 0), nullptr);
    EXPECT_EQ(target.AppendFromFile(U(Work("source.lqm")), 0), 0);
    EXPECT_NE(target.GetLastError().find("no free ID is left for symbol 4"), std::string::npos)
        << target.GetLastError();
    EXPECT_EQ(TreeLines(*target.GetRootGroup()), (std::vector<std::string>{"RootGroup: 4 2147483647"}));
    EXPECT_EQ(target.GetSymbolCount(), 2);

    EXPECT_TRUE(target.SetSymbolImage(4, Picture(3, 3, 1)));
    EXPECT_EQ(target.GetLastError(), "");
    RasterImage picture;
    EXPECT_TRUE(target.GetSymbolImage(4, picture));
    EXPECT_EQ(picture, Picture(3, 3, 1));
    EXPECT_EQ(target.GetLastError(), "");
    EXPECT_FALSE(target.GetSymbolImage(99, picture));
    ASSERT_NE(target.GetLastError(), "");
    EXPECT_FALSE(target.GetSymbolImage(INT_MAX, picture));
    ASSERT_NE(target.GetLastError(), "");
    EXPECT_NE(target.GetResourceCache(), nullptr);
    EXPECT_EQ(target.GetLastError(), "");
    EXPECT_FALSE(target.SetSymbolImage(99, picture));
    VTC::VtMemoryStream out;
    out.Open(VTC::VT_STREAM_WRITE);
    EXPECT_EQ(target.SaveToStream(out, newStreamForm, 1), 1);
    EXPECT_EQ(target.GetLastError(), "");
}

// An append that cannot be read in full adds nothing; symbols of another
// kind, or pictures that are not at hand, are refused with a reason.
TEST_F(ExampleLibraryTest, RefusedAppendsAndSavesChangeNothing)
{
    MarkerSymbolLib source;
    FillMarkers(source);
    ASSERT_EQ(source.SaveToFile(U(Work("source.lqm")), newStreamForm), 1);
    const std::vector<unsigned char> whole = ReadFileBytes(Work("source.lqm"));

    MarkerSymbolLib target;
    target.AddSymbol(new MarkerSymbol(1, u"kept", MarkerShape::Square, 5, 0), nullptr);
    const auto before = TreeLines(*target.GetRootGroup());
    for (const std::size_t length : {whole.size() / 2, whole.size() - 1, std::size_t{20}}) {
        VTC::VtMemoryStream stream;
        stream.Open(whole.data(), static_cast<long long>(length));
        EXPECT_EQ(target.AppendFromStream(stream, 1), 0) << length;
        EXPECT_EQ(target.GetSymbolCount(), 1);
        EXPECT_EQ(TreeLines(*target.GetRootGroup()), before);
    }
    // A container image carries no pictures in itself.
    VTC::VtMemoryStream image;
    image.Open(VTC::VT_STREAM_WRITE);
    ASSERT_EQ(source.SaveToStream(image, containerForm, 1), 1);
    VTC::VtMemoryStream reader;
    reader.Open(image.GetData(), image.GetLength());
    EXPECT_EQ(target.AppendFromStream(reader, 1), 0);
    EXPECT_NE(target.GetLastError().find("container"), std::string::npos) << target.GetLastError();
    EXPECT_EQ(target.GetSymbolCount(), 1);

    // A line in a marker library cannot be written as a marker.
    target.AddSymbol(new LineSymbol(7, u"stray", 1.0, 0), nullptr);
    VTC::VtMemoryStream out;
    out.Open(VTC::VT_STREAM_WRITE);
    EXPECT_EQ(target.SaveToStream(out, newStreamForm, 1), 0);
    EXPECT_NE(target.GetLastError().find("symbol 7"), std::string::npos) << target.GetLastError();
    EXPECT_FALSE(target.SetSymbolImage(7, Picture(2, 2, 7)));
    EXPECT_FALSE(target.SetSymbolImage(99, Picture(2, 2, 7)));
}

// Every prefix of a library stream, and streams with damaged bytes, either
// load completely or fail cleanly with an empty library.
TEST_F(ExampleLibraryTest, DamagedStreamsFailCleanly)
{
    MarkerSymbolLib original;
    FillMarkers(original);
    const std::string path = Work("whole.lqm");
    ASSERT_EQ(original.SaveToFile(U(path), newStreamForm), 1);
    const std::vector<unsigned char> whole = ReadFileBytes(path);

    auto load = [](const std::vector<unsigned char>& bytes, MarkerSymbolLib& lib) {
        VTC::VtMemoryStream stream;
        stream.Open(bytes.data(), static_cast<long long>(bytes.size()));
        return lib.LoadFromStream(stream, 1);
    };
    for (std::size_t length = 0; length < whole.size(); length += (length < 700 ? 1 : 37)) {
        MarkerSymbolLib lib;
        const std::vector<unsigned char> prefix(whole.begin(), whole.begin() + static_cast<long>(length));
        ASSERT_EQ(load(prefix, lib), 0) << "prefix of " << length << " bytes";
        EXPECT_EQ(lib.GetSymbolCount(), 0);
        EXPECT_FALSE(lib.GetLastError().empty());
    }
    std::mt19937 random(7);
    for (int trial = 0; trial < 300; ++trial) {
        std::vector<unsigned char> damaged = whole;
        const std::size_t at = random() % damaged.size();
        damaged[at] = static_cast<unsigned char>(random());
        MarkerSymbolLib lib;
        if (load(damaged, lib)) {
            // A change that leaves the file consistent loads; every picture still reads or reports why.
            for (int i = 0; i < lib.GetSymbolCount(); ++i) {
                RasterImage picture;
                const int id = lib.GetIDAt(i);
                if (lib.HasSymbolImage(id) && !lib.GetSymbolImage(id, picture)) {
                    EXPECT_FALSE(lib.GetLastError().empty());
                }
            }
        } else {
            EXPECT_EQ(lib.GetSymbolCount(), 0) << "byte " << at;
        }
    }
    // A count far beyond the data, and trailing garbage.
    std::vector<unsigned char> huge = whole;
    huge[8] = 0xFF, huge[9] = 0xFF, huge[10] = 0xFF, huge[11] = 0x7F;
    MarkerSymbolLib lib;
    EXPECT_EQ(load(huge, lib), 0);
    EXPECT_NE(lib.GetLastError().find("count"), std::string::npos);
    std::vector<unsigned char> trailing = whole;
    trailing.insert(trailing.end(), {1, 2, 3});
    EXPECT_EQ(load(trailing, lib), 0);
}

TEST_F(ExampleLibraryTest, DamagedPicturesAndCachesAreReported)
{
    const std::string path = Work("pictures.lqm");
    {
        MarkerSymbolLib lib;
        FillMarkers(lib);
        ASSERT_EQ(lib.SaveToFile(U(path), containerForm), 1);
    }
    // One pixel byte of the stored data file changes: the library loads, that
    // picture fails its checksum, the others read.
    {
        VTC::VtCompactFile container;
        ASSERT_EQ(container.Open(U(path), u"", VTC::VT_CF_MODE_READWRITE), 0);
        VTC::VtByteArray data;
        long long size = 0;
        ASSERT_EQ(container.Lookup(ResourceCache::dataEntryKey, data, size, 0), 0);
        data.GetData()[ResourceCache::headerBytes + ResourceCache::recordHeaderBytes + 5] ^= 0x10;
        ASSERT_EQ(container.SetAt(ResourceCache::dataEntryKey, data, 0, 0, 0), 0);
    }
    MarkerSymbolLib lib;
    ASSERT_EQ(lib.LoadFromFile(U(path)), 1) << lib.GetLastError();
    RasterImage picture;
    EXPECT_FALSE(lib.GetSymbolImage(1, picture));
    EXPECT_NE(lib.GetLastError().find("checksum"), std::string::npos) << lib.GetLastError();
    EXPECT_TRUE(lib.GetSymbolImage(2, picture)) << lib.GetLastError();

    // A data file cut short no longer matches its index: the load fails.
    {
        VTC::VtCompactFile container;
        ASSERT_EQ(container.Open(U(path), u"", VTC::VT_CF_MODE_READWRITE), 0);
        VTC::VtByteArray data;
        long long size = 0;
        ASSERT_EQ(container.Lookup(ResourceCache::dataEntryKey, data, size, 0), 0);
        data.SetSize(size - 1);
        ASSERT_EQ(container.SetAt(ResourceCache::dataEntryKey, data, 0, 0, 0), 0);
    }
    MarkerSymbolLib truncated;
    EXPECT_EQ(truncated.LoadFromFile(U(path)), 0);
    EXPECT_NE(truncated.GetLastError().find("index"), std::string::npos) << truncated.GetLastError();
    EXPECT_EQ(truncated.GetSymbolCount(), 0);

    // Without its resource entries the container's symbols point nowhere.
    {
        VTC::VtCompactFile container;
        ASSERT_EQ(container.Open(U(path), u"", VTC::VT_CF_MODE_READWRITE), 0);
        ResourceCache::RemoveFromContainer(container);
    }
    MarkerSymbolLib bare;
    EXPECT_EQ(bare.LoadFromFile(U(path)), 0);
    EXPECT_NE(bare.GetLastError().find("missing"), std::string::npos) << bare.GetLastError();
}

TEST_F(ExampleLibraryTest, CacheAppendsContinueAfterReopening)
{
    const ZedaUnicodeString base = U(Work("cache.sc"));
    ASSERT_TRUE(ResourceCache::Create(base));
    ResourceCache cache;
    std::string error;
    ASSERT_TRUE(cache.Open(base, error)) << error;
    const auto first = cache.Append(Picture(3, 2, 1));
    EXPECT_EQ(first.offset, ResourceCache::headerBytes);
    EXPECT_EQ(first.length, ResourceCache::RecordLength(3, 2));
    EXPECT_TRUE(cache.Append(RasterImage()).IsNull());  // nothing to store

    ResourceCache again;
    ASSERT_TRUE(again.Open(base, error)) << error;
    const auto second = again.Append(Picture(1, 1, 2));
    EXPECT_EQ(second.offset, first.offset + first.length);
    RasterImage picture;
    ASSERT_TRUE(again.Read(first, picture, error)) << error;
    EXPECT_EQ(picture, Picture(3, 2, 1));
    EXPECT_FALSE(again.Read({first.offset + 1, first.length}, picture, error));

    // An index entry that claims more than the data file holds.
    fs::resize_file(fs::path(ResourceCache::DataPath(base).ToUtf8()), static_cast<std::uintmax_t>(second.offset + 3));
    EXPECT_FALSE(again.Open(base, error));
    EXPECT_NE(error.find("entry 1"), std::string::npos) << error;
}

}  // namespace
