// Container files: the compact file's entry operations, and both example
// libraries loading from a container, on any file that SQLite may be handed.
// Besides libFuzzer's byte mutations, a mutator at the database level edits
// the entries, the marker rows and the schema of a real container, so that
// runs reach past SQLite's own checks into our loaders.

#include <sqlite3.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

#include "FuzzSupport.h"
#include "LineSymbolLib.h"
#include "LqCompactFile.h"
#include "MarkerSymbolLib.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace {

using VTC::VtCompactFile;
using ZEDA::ZedaUnicodeString;

void ReadEveryEntry(VtCompactFile& file)
{
    const long long fileBytes = lqfuzz::FileBytes(file.GetFullPath().ToUtf8());
    for (const ZedaUnicodeString& key : file.GetKeys()) {
        VTC::VtByteArray bytes;
        long long size = -1;
        if (file.Lookup(key, bytes, size, 0) == VTC::VT_CF_OK)
            lqfuzz::Require(size == bytes.GetSize(), "an entry's size differs from its bytes");
        const std::string copy = lqfuzz::WorkPath("entry");
        if (file.LookupToFile(key, ZedaUnicodeString::FromUtf8(copy)) == VTC::VT_CF_OK)
            lqfuzz::Require(lqfuzz::FileBytes(copy) <= fileBytes, "an entry larger than its file");
        unlink(copy.c_str());
    }
}

template <typename Library>
void LoadLibrary(const std::string& path)
{
    Library lib;
    if (lib.LoadFromFile(ZedaUnicodeString::FromUtf8(path)))
        for (int i = 0; i < lib.GetSymbolCount(); ++i) {
            LqExample::RasterImage picture;
            if (lib.HasSymbolImage(lib.GetIDAt(i)))
                lib.GetSymbolImage(lib.GetIDAt(i), picture);
        }
}

// ---- the database-level mutator

struct DbCloser {
    void operator()(sqlite3* db) const { sqlite3_close(db); }
};
using Db = std::unique_ptr<sqlite3, DbCloser>;

// An in-memory database over a copy of the bytes; null when SQLite will not.
Db Deserialize(const std::uint8_t* data, std::size_t size)
{
    sqlite3* raw = nullptr;
    if (sqlite3_open(":memory:", &raw) != SQLITE_OK) {
        sqlite3_close(raw);
        return nullptr;
    }
    Db db(raw);
    // A seed's own schema may compute huge values (a generated column): the
    // mutator's edits stay small.
    sqlite3_limit(raw, SQLITE_LIMIT_LENGTH, 1 << 20);
    auto* copy = static_cast<unsigned char*>(sqlite3_malloc64(size));
    if (!copy)
        return nullptr;
    std::memcpy(copy, data, size);
    if (sqlite3_deserialize(raw, "main", copy, static_cast<sqlite3_int64>(size), static_cast<sqlite3_int64>(size),
                            SQLITE_DESERIALIZE_FREEONCLOSE | SQLITE_DESERIALIZE_RESIZEABLE) != SQLITE_OK)
        return nullptr;
    return db;
}

// Runs libFuzzer's byte mutation over one entry's value.
bool MutateEntry(sqlite3* db, unsigned int seed)
{
    sqlite3_stmt* select = nullptr;
    const std::string sql = "SELECT key, value FROM entries ORDER BY key LIMIT 1 OFFSET " + std::to_string(seed % 3);
    if (sqlite3_prepare_v2(db, sql.c_str(), -1, &select, nullptr) != SQLITE_OK || sqlite3_step(select) != SQLITE_ROW) {
        sqlite3_finalize(select);
        return false;
    }
    const std::string key(reinterpret_cast<const char*>(sqlite3_column_text(select, 0)));
    const auto* value = static_cast<const std::uint8_t*>(sqlite3_column_blob(select, 1));
    lqfuzz::Bytes bytes(value, value + sqlite3_column_bytes(select, 1));
    sqlite3_finalize(select);
    const std::size_t room = bytes.size() + 64;
    bytes.resize(room);
    bytes.resize(LLVMFuzzerMutate(bytes.data(), room - 64, room));
    sqlite3_stmt* update = nullptr;
    const bool done = sqlite3_prepare_v2(db, "UPDATE entries SET value = ?2 WHERE key = ?1", -1, &update, nullptr) == SQLITE_OK &&
                      sqlite3_bind_text(update, 1, key.c_str(), -1, SQLITE_TRANSIENT) == SQLITE_OK &&
                      sqlite3_bind_blob(update, 2, bytes.data(), static_cast<int>(bytes.size()), SQLITE_TRANSIENT) == SQLITE_OK &&
                      sqlite3_step(update) == SQLITE_DONE;
    sqlite3_finalize(update);
    return done;
}

// Edits a database as a hostile writer would: values of other types and
// lengths, missing and extra rows, other marker rows, schema additions.
bool MutateDatabase(sqlite3* db, unsigned int seed)
{
    static const char* const edits[] = {
        "UPDATE entries SET value = substr(value, 1, length(value) / 2)",
        "UPDATE entries SET value = 'text' WHERE key = 'SymbolStoreInCF'",
        "UPDATE entries SET value = zeroblob(100000) WHERE key = 'SymbolRes.sc'",
        "DELETE FROM entries WHERE key = 'SymbolRes.sc00'",
        "INSERT OR REPLACE INTO entries VALUES('SymbolRes.sc', x'4C5153430100000000')",
        "UPDATE entries SET key = key || 'x' WHERE key LIKE 'SymbolRes%'",
        "UPDATE meta SET value = 2 WHERE name = 'version'",
        "PRAGMA application_id = 0",
        "CREATE TRIGGER t AFTER INSERT ON entries BEGIN DELETE FROM meta; END",
        "CREATE VIEW v AS SELECT * FROM entries",
        "CREATE INDEX i ON entries(value)",
        "ALTER TABLE entries ADD COLUMN extra AS (zeroblob(1000000))",
        "PRAGMA page_size = 512; VACUUM",
        "PRAGMA journal_mode = WAL",
    };
    constexpr unsigned int editCount = sizeof edits / sizeof edits[0];
    if (seed % (editCount + 4) >= editCount)
        return MutateEntry(db, seed / 7);
    return sqlite3_exec(db, edits[seed % (editCount + 4)], nullptr, nullptr, nullptr) == SQLITE_OK;
}

std::size_t Serialize(sqlite3* db, std::uint8_t* data, std::size_t maxSize)
{
    sqlite3_int64 size = 0;
    unsigned char* bytes = sqlite3_serialize(db, "main", &size, 0);
    std::size_t written = 0;
    if (bytes && size > 0 && static_cast<std::size_t>(size) <= maxSize) {
        std::memcpy(data, bytes, static_cast<std::size_t>(size));
        written = static_cast<std::size_t>(size);
    }
    sqlite3_free(bytes);
    return written;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    lqfuzz::UsePrivateTemporaryDirectory();
    return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned int seed)
{
    if (seed % 2 == 0) {
        if (Db db = Deserialize(data, size); db && MutateDatabase(db.get(), seed / 2))
            if (const std::size_t written = Serialize(db.get(), data, maxSize))
                return written;
    }
    return LLVMFuzzerMutate(data, size, maxSize);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    lqfuzz::ClearLog();
    const std::string path = lqfuzz::WorkPath("input.lqc");
    lqfuzz::WriteFile(path, data, size);
    for (const int mode : {VTC::VT_CF_MODE_READ, VTC::VT_CF_MODE_READWRITE}) {
        VtCompactFile file;
        if (file.Open(ZedaUnicodeString::FromUtf8(path), u"", mode) == VTC::VT_CF_OK) {
            ReadEveryEntry(file);
            file.Close();
        }
    }
    LoadLibrary<LqExample::MarkerSymbolLib>(path);
    LoadLibrary<LqExample::LineSymbolLib>(path);
    // Reading, in either mode, and loading leave the file as it was.
    const lqfuzz::Bytes after = lqfuzz::ReadFile(path);
    lqfuzz::Require(after.size() == size && std::equal(after.begin(), after.end(), data),
                    "reading a container changed its file");
    lqfuzz::RequireNoTemporaryFiles();
    for (const char* side : {"-journal", "-wal", "-shm"})
        unlink((path + side).c_str());
    return 0;
}
