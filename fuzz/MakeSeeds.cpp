// Writes the seed corpora of the harnesses from files the program itself
// writes: libraries of both kinds in both forms, their group records, their
// resource caches, and containers edited as a hostile writer would.
//   lq_fuzz_seeds OUTPUT_DIRECTORY

#include <sqlite3.h>

#include <filesystem>
#include <functional>

#include "FuzzSupport.h"
#include "LineSymbolLib.h"
#include "LqStream.h"
#include "MarkerSymbolLib.h"
#include "VtSymbolGroup.h"

namespace {

namespace fs = std::filesystem;
using namespace LqExample;
using ZEDA::ZedaUnicodeString;

fs::path g_output;

void WriteSeed(const std::string& target, const std::string& name, const lqfuzz::Bytes& bytes)
{
    fs::create_directories(g_output / target);
    lqfuzz::WriteFile((g_output / target / name).string(), bytes.data(), bytes.size());
}

lqfuzz::Bytes Prefixed(std::uint8_t first, const lqfuzz::Bytes& bytes)
{
    lqfuzz::Bytes prefixed{first};
    prefixed.insert(prefixed.end(), bytes.begin(), bytes.end());
    return prefixed;
}

RasterImage Picture(int width, int height, unsigned int seed)
{
    RasterImage image(width, height);
    for (std::size_t i = 0; i < image.pixels.size(); ++i)
        image.pixels[i] = seed * 2654435761u ^ static_cast<unsigned int>(i * 40503);
    return image;
}

// A few symbols in a small tree: nested groups, an empty group, a symbol in
// no group, one without a picture, a name outside the BMP.
template <typename Library>
void Fill(Library& lib, int count, const std::function<ResourceSymbol*(int)>& make)
{
    VTC::VtSymbolGroup* outer = lib.GetRootGroup()->CreateChildGroup(u"Outer");
    VTC::VtSymbolGroup* inner = outer->CreateChildGroup(u"Inner \U0001F600");
    lib.GetRootGroup()->CreateChildGroup(u"Empty");
    for (int id = 1; id <= count; ++id) {
        lib.AddSymbol(make(id), id % 3 == 0 ? nullptr : id % 3 == 1 ? outer : inner);
        if (id != 2)
            lib.SetSymbolImage(id, Picture(1 + id % 3, 2, static_cast<unsigned int>(id)));
    }
}

void FillMarkers(MarkerSymbolLib& lib, int count)
{
    Fill(lib, count, [](int id) {
        auto* marker = new MarkerSymbol(id, u"marker", static_cast<MarkerShape>(id % markerShapeCount), 4 + id,
                                        0xFF102030u * static_cast<unsigned int>(id), id * 15.0);
        return marker;
    });
}

void FillLines(LineSymbolLib& lib, int count)
{
    Fill(lib, count, [](int id) {
        return new LineSymbol(id, u"line", 0.5 * id, 0xFF405060u, id % 2 ? std::vector<int>{4, 2, 1, 2} : std::vector<int>{});
    });
}

lqfuzz::Bytes StreamOf(ResourceSymbolLib& lib, unsigned int version)
{
    VTC::VtMemoryStream stream;
    stream.Open(VTC::VT_STREAM_WRITE);
    lib.SaveToStream(stream, version, 1);
    return lqfuzz::Bytes(stream.GetData(), stream.GetData() + stream.GetLength());
}

lqfuzz::Bytes GroupRecordOf(ResourceSymbolLib& lib, unsigned int version)
{
    VTC::VtMemoryStream stream;
    stream.Open(VTC::VT_STREAM_WRITE);
    lib.GetRootGroup()->Save(stream, version, 7);
    return lqfuzz::Bytes(stream.GetData(), stream.GetData() + stream.GetLength());
}

// The resource cache harness's input: index length, index, data.
lqfuzz::Bytes CacheSeedOf(const ResourceSymbolLib& lib)
{
    const ZedaUnicodeString base = lib.GetCachePath();
    const lqfuzz::Bytes index = lqfuzz::ReadFile(ResourceCache::IndexPath(base).ToUtf8());
    const lqfuzz::Bytes data = lqfuzz::ReadFile(ResourceCache::DataPath(base).ToUtf8());
    const auto length = static_cast<std::uint32_t>(index.size());
    lqfuzz::Bytes seed{static_cast<unsigned char>(length), static_cast<unsigned char>(length >> 8),
                       static_cast<unsigned char>(length >> 16), static_cast<unsigned char>(length >> 24)};
    seed.insert(seed.end(), index.begin(), index.end());
    seed.insert(seed.end(), data.begin(), data.end());
    return seed;
}

// A container of the library, compacted so that seeds stay small.
lqfuzz::Bytes ContainerOf(ResourceSymbolLib& lib, const std::string& sql)
{
    const std::string path = lqfuzz::WorkPath("seed.lqc");
    fs::remove(path);
    lib.SaveToFile(ZedaUnicodeString::FromUtf8(path), VTC::VtSymbolLib::containerVersion);
    lib.SetExternalStorage(nullptr);
    sqlite3* db = nullptr;
    sqlite3_open(path.c_str(), &db);
    sqlite3_exec(db, ("VACUUM; " + sql).c_str(), nullptr, nullptr, nullptr);
    sqlite3_close(db);
    return lqfuzz::ReadFile(path);
}

template <typename Library>
void WriteLibrarySeeds(const std::string& kind, const std::function<void(Library&, int)>& fill)
{
    for (const int count : {0, 1, 4}) {
        Library lib;
        fill(lib, count);
        const std::string name = kind + std::to_string(count);
        // With and without the legacy value in the group records.
        for (const unsigned int version : {20050302u, 20200101u}) {
            const lqfuzz::Bytes stream = StreamOf(lib, version);
            const std::string versioned = name + "-" + std::to_string(version);
            WriteSeed(kind + "_stream", versioned, stream);
            WriteSeed("lqsymbol", versioned + "-tree", Prefixed(0, stream));
            WriteSeed("lqsymbol", versioned + "-export", Prefixed(3, stream));
            WriteSeed("lqsymbol", versioned + "-convert", Prefixed(4, stream));
            WriteSeed("group_record", versioned, Prefixed(version == 20050302u ? 0 : 1, GroupRecordOf(lib, version)));
        }
        if (count > 0)
            WriteSeed("resource_cache", name, CacheSeedOf(lib));
        const lqfuzz::Bytes container = ContainerOf(lib, "");
        WriteSeed("container", name, container);
        WriteSeed("lqsymbol", name + "-info.lqc", Prefixed(2, container));
        WriteSeed("lqsymbol", name + "-stream.lqc", Prefixed(5, container));
    }
    // Containers edited at the database level: each must be refused or read
    // without running anything its schema brings.
    Library lib;
    fill(lib, 2);
    const std::pair<const char*, const char*> edits[] = {
        {"generated", "DROP TABLE entries; CREATE TABLE entries(key TEXT PRIMARY KEY NOT NULL, stored BLOB,"
                      " value BLOB AS (zeroblob(900000000))); INSERT INTO entries(key) VALUES('SymbolStoreInCF');"},
        {"trigger", "CREATE TRIGGER t AFTER INSERT ON entries BEGIN DELETE FROM meta; END;"},
        {"view", "CREATE VIEW v AS SELECT * FROM entries;"},
        {"text-value", "UPDATE entries SET value = CAST(value AS TEXT);"},
        {"no-pictures", "DELETE FROM entries WHERE key LIKE 'SymbolRes%';"},
        {"wal", "PRAGMA journal_mode = WAL;"},
    };
    for (const auto& [name, sql] : edits)
        WriteSeed("container", kind + "-" + name, ContainerOf(lib, sql));
}

void WriteUnicodeSeeds()
{
    const std::string texts[] = {"RootGroup", "Ünïcødé ✓", "\xF0\x9F\x98\x80 outside the BMP", "\x1b[31mred",
                                 "bad \xC3\x28 and \xED\xA0\x80 surrogate", std::string("\0\0\0\0", 4)};
    int index = 0;
    for (const std::string& text : texts) {
        WriteSeed("unicode", "utf8-" + std::to_string(index), lqfuzz::Bytes(text.begin(), text.end()));
        VTC::VtMemoryStream stream;
        stream.Open(VTC::VT_STREAM_WRITE);
        stream << ZedaUnicodeString::FromUtf8(text);
        WriteSeed("unicode", "record-" + std::to_string(index++),
                  lqfuzz::Bytes(stream.GetData(), stream.GetData() + stream.GetLength()));
    }
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: lq_fuzz_seeds OUTPUT_DIRECTORY\n");
        return 2;
    }
    g_output = argv[1];
    lqfuzz::UsePrivateTemporaryDirectory();
    WriteLibrarySeeds<MarkerSymbolLib>("marker", FillMarkers);
    WriteLibrarySeeds<LineSymbolLib>("line", FillLines);
    WriteUnicodeSeeds();
    return 0;
}
