#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "CompactFileTestSupport.h"
#include "VtCompactFile.h"
#include "VtLogFile.h"

using namespace VTC;
using namespace cftest;
using ZEDA::ZedaUnicodeString;

namespace {

class CompactFileTest : public TempDirTest {
protected:
    // Creates a container at `name` holding the given entries, and closes it.
    void MakeContainer(const std::string& name, const std::vector<std::pair<ZedaUnicodeString, Bytes>>& entries)
    {
        VtCompactFile file;
        ASSERT_EQ(file.Create(UPathOf(name), 32, u"", 4), VT_CF_OK);
        for (const auto& [key, value] : entries) ASSERT_EQ(file.SetAt(key, ToArray(value), 0, 0, 0), VT_CF_OK);
        ASSERT_EQ(file.Close(), VT_CF_OK);
    }

    // Runs SQL on a database of our own making, outside the container library.
    void RunSql(const std::string& name, const std::string& sql)
    {
        sqlite3* db = nullptr;
        ASSERT_EQ(sqlite3_open(PathOf(name).c_str(), &db), SQLITE_OK);
        char* error = nullptr;
        const int rc = sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &error);
        const std::string message = error ? error : "";
        sqlite3_free(error);
        sqlite3_close(db);
        ASSERT_EQ(rc, SQLITE_OK) << message;
    }

    static Bytes LookupBytes(VtCompactFile& file, const ZedaUnicodeString& key)
    {
        VtByteArray bytes;
        long long size = -1;
        EXPECT_EQ(file.Lookup(key, bytes, size, 0), VT_CF_OK);
        EXPECT_EQ(size, bytes.GetSize());
        return ToBytes(bytes);
    }

    bool SideFilesExist(const std::string& name) const
    {
        return std::ranges::any_of(std::vector<std::string>{"-journal", "-wal", "-shm"},
                                   [&](const std::string& suffix) { return std::filesystem::exists(PathOf(name + suffix)); });
    }
};

TEST_F(CompactFileTest, EntriesOfEverySizeSurviveReopening)
{
    Bytes withNuls = {0, 1, 0, 0, 255, 0, 'a', 0};
    const std::vector<std::pair<ZedaUnicodeString, Bytes>> entries = {
        {u"empty", {}},
        {u"one", {0x5A}},
        {u"nuls", withNuls},
        {u"large", Pattern(7, 5 * 1024 * 1024 + 3)},
        {u"Symbole \u00e9\u4e2d", Pattern(8, 100)},
        {u"", Pattern(9, 10)},
    };
    MakeContainer("lib.cf", entries);

    VtCompactFile file;
    ASSERT_EQ(file.Open(UPathOf("lib.cf"), u"", 4), VT_CF_OK);
    EXPECT_EQ(file.GetIndexInfo(), VT_CF_INDEX_KEYED);
    for (const auto& [key, value] : entries) EXPECT_EQ(LookupBytes(file, key), value) << key.ToUtf8();

    // Lookup replaces whatever the array held.
    VtByteArray reused = ToArray(Pattern(1, 4000));
    long long size = 0;
    ASSERT_EQ(file.Lookup(u"one", reused, size, 0), VT_CF_OK);
    EXPECT_EQ(ToBytes(reused), Bytes{0x5A});
    EXPECT_EQ(size, 1);
}

TEST_F(CompactFileTest, OverwriteRemoveAndCompact)
{
    MakeContainer("lib.cf", {{u"a", Pattern(1, 3 * 1024 * 1024)}, {u"b", Pattern(2, 50)}});
    VtCompactFile file;
    ASSERT_EQ(file.Open(UPathOf("lib.cf"), u"", 4), VT_CF_OK);
    ASSERT_EQ(file.SetAt(u"b", ToArray(Pattern(3, 10)), 0, 0, 0), VT_CF_OK);
    EXPECT_EQ(LookupBytes(file, u"b"), Pattern(3, 10));

    ASSERT_EQ(file.Remove(u"a"), VT_CF_OK);
    EXPECT_EQ(file.Remove(u"a"), VT_CF_KEY_NOT_FOUND);
    EXPECT_EQ(file.Remove(u"never"), VT_CF_KEY_NOT_FOUND);
    VtByteArray bytes;
    long long size = 0;
    EXPECT_EQ(file.Lookup(u"a", bytes, size, 0), VT_CF_KEY_NOT_FOUND);

    const auto before = std::filesystem::file_size(PathOf("lib.cf"));
    ASSERT_EQ(file.Compact(), VT_CF_OK);
    ASSERT_EQ(file.Flush(), VT_CF_OK);
    EXPECT_LT(std::filesystem::file_size(PathOf("lib.cf")), before / 4);
    ASSERT_EQ(file.Close(), VT_CF_OK);

    ASSERT_EQ(file.Open(UPathOf("lib.cf"), u"", 4), VT_CF_OK);
    EXPECT_EQ(file.GetKeys(), std::vector<ZedaUnicodeString>{u"b"});
    EXPECT_EQ(LookupBytes(file, u"b"), Pattern(3, 10));
}

TEST_F(CompactFileTest, WritesUntilFlushAreOneBatchThatAFailedWriteDoesNotSpoil)
{
    using Keys = std::vector<ZedaUnicodeString>;
    WriteFileBytes(PathOf("in"), Pattern(5, 3000));
    // A sysfs file claims 4096 bytes and holds fewer: the copy fails after
    // the value was reserved.
    const ZedaUnicodeString shortFile = u"/sys/devices/system/cpu/online";
    VtCompactFile file, reader;
    ASSERT_EQ(file.Create(UPathOf("lib.cf"), 32, u"", 4), VT_CF_OK);
    ASSERT_EQ(file.SetAt(u"a", ToArray({1}), 0, 0, 0), VT_CF_OK);
    ASSERT_EQ(file.SetAt(u"b", ToArray({2}), 0, 0, 0), VT_CF_OK);
    ASSERT_EQ(file.Flush(), VT_CF_OK);
    EXPECT_FALSE(SideFilesExist("lib.cf"));
    ASSERT_EQ(file.SetAt(u"a", ToArray({3}), 0, 0, 0), VT_CF_OK);
    EXPECT_TRUE(std::filesystem::exists(PathOf("lib.cf-journal")));  // a batch under way can be undone
    ASSERT_EQ(file.Remove(u"b"), VT_CF_OK);
    ASSERT_EQ(file.SetAtFromFile(u"c", UPathOf("in")), VT_CF_OK);
    EXPECT_EQ(file.SetAtFromFile(u"a", shortFile), VT_CF_IO_ERROR);
    EXPECT_EQ(file.SetAtFromFile(u"d", shortFile), VT_CF_IO_ERROR);

    // The writer sees its pending writes, another connection the last Flush.
    EXPECT_EQ(LookupBytes(file, u"a"), Bytes{3});
    EXPECT_EQ(file.GetKeys(), (Keys{u"a", u"c"}));
    ASSERT_EQ(file.LookupToFile(u"c", UPathOf("out")), VT_CF_OK);
    EXPECT_EQ(ReadFileBytes(PathOf("out")), Pattern(5, 3000));
    ASSERT_EQ(reader.Open(UPathOf("lib.cf"), u"", 1), VT_CF_OK);
    EXPECT_EQ(reader.GetKeys(), (Keys{u"a", u"b"}));
    EXPECT_EQ(LookupBytes(reader, u"a"), Bytes{1});
    ASSERT_EQ(file.Flush(), VT_CF_OK);
    EXPECT_EQ(reader.GetKeys(), (Keys{u"a", u"c"}));
    EXPECT_EQ(LookupBytes(reader, u"a"), Bytes{3});

    // Close commits what came after the last Flush.
    ASSERT_EQ(file.SetAt(u"e", ToArray({4}), 0, 0, 0), VT_CF_OK);
    EXPECT_EQ(reader.GetKeys(), (Keys{u"a", u"c"}));
    ASSERT_EQ(file.Close(), VT_CF_OK);
    EXPECT_EQ(LookupBytes(reader, u"e"), Bytes{4});
    EXPECT_FALSE(SideFilesExist("lib.cf"));
}

TEST_F(CompactFileTest, ABatchThatSqliteAbandonsIsReportedByTheNextFlush)
{
    VtCompactFile file;
    ASSERT_EQ(file.Create(UPathOf("lib.cf"), 32, u"", 4), VT_CF_OK);
    ASSERT_EQ(file.SetAt(u"a", ToArray({1}), 0, 0, 0), VT_CF_OK);
    // A file size limit fails the large value's spill as a full disk would.
    const auto oldHandler = signal(SIGXFSZ, SIG_IGN);
    rlimit old{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
    rlimit limited = old;
    limited.rlim_cur = std::filesystem::file_size(PathOf("lib.cf")) + 65536;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limited), 0);
    const int big = file.SetAt(u"big", ToArray(Pattern(1, 8 << 20)), 0, 0, 0);
    setrlimit(RLIMIT_FSIZE, &old);
    signal(SIGXFSZ, oldHandler);
    EXPECT_EQ(big, VT_CF_IO_ERROR);

    // "a" went with the batch: the next batch commits, and its Flush says so.
    ASSERT_EQ(file.SetAt(u"b", ToArray({2}), 0, 0, 0), VT_CF_OK);
    EXPECT_EQ(file.Flush(), VT_CF_IO_ERROR);
    EXPECT_EQ(file.Flush(), VT_CF_OK);
    EXPECT_EQ(file.GetKeys(), std::vector<ZedaUnicodeString>{u"b"});
}

TEST_F(CompactFileTest, KeysAreExactAndSortedByCodeUnits)
{
    // U+1F600 is a surrogate pair, which sorts before U+FF01 in UTF-16 but after it in UTF-8.
    MakeContainer("lib.cf", {{u"\uFF01", {1}}, {u"\U0001F600", {2}}, {u"b", {3}}, {u"B", {4}}, {u"a", {5}}});
    VtCompactFile file;
    ASSERT_EQ(file.Open(UPathOf("lib.cf"), u"", 1), VT_CF_OK);
    const std::vector<ZedaUnicodeString> expected = {u"B", u"a", u"b", u"\U0001F600", u"\uFF01"};
    EXPECT_EQ(file.GetKeys(), expected);
    EXPECT_EQ(LookupBytes(file, u"B"), Bytes{4});
    EXPECT_EQ(LookupBytes(file, u"\U0001F600"), Bytes{2});

    // A missing key leaves the caller's array alone.
    VtByteArray bytes = ToArray({9, 9});
    long long size = 0;
    EXPECT_EQ(file.Lookup(u"A", bytes, size, 0), VT_CF_KEY_NOT_FOUND);
    EXPECT_EQ(ToBytes(bytes), (Bytes{9, 9}));
}

TEST_F(CompactFileTest, ClosedObjectRefusesAndLogs)
{
    VtLogFile::GetInstance(false)->ClearRecords();
    VtCompactFile file;
    VtByteArray bytes;
    long long size = 0;
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.Lookup(u"k", bytes, size, 0), VT_CF_NOT_OPEN);
    EXPECT_EQ(file.SetAt(u"k", bytes, 0, 0, 0), VT_CF_NOT_OPEN);
    EXPECT_EQ(file.Remove(u"k"), VT_CF_NOT_OPEN);
    EXPECT_EQ(file.Compact(), VT_CF_NOT_OPEN);
    EXPECT_EQ(file.Flush(), VT_CF_NOT_OPEN);
    EXPECT_EQ(file.Close(), VT_CF_NOT_OPEN);
    EXPECT_EQ(file.SetAtFromFile(u"k", UPathOf("x")), VT_CF_NOT_OPEN);
    EXPECT_EQ(file.LookupToFile(u"k", UPathOf("x")), VT_CF_NOT_OPEN);
    EXPECT_EQ(file.GetIndexInfo(), VT_CF_INDEX_NONE);
    EXPECT_TRUE(file.GetFullPath().IsEmpty());
    EXPECT_TRUE(file.GetKeys().empty());
    EXPECT_FALSE(std::filesystem::exists(PathOf("x")));

    const auto records = VtLogFile::GetInstance(false)->GetRecords();
    ASSERT_FALSE(records.empty());
    EXPECT_EQ(records.front().code, "ECf001");
    EXPECT_EQ(records.front().source, "Platform/CompactFile/VtCompactFile");
    EXPECT_EQ(records.front().level, 300);

    // A closed object can be used again.
    ASSERT_EQ(file.Create(UPathOf("lib.cf"), 32, u"", 4), VT_CF_OK);
    ASSERT_EQ(file.Close(), VT_CF_OK);
    ASSERT_EQ(file.Open(UPathOf("lib.cf"), u"", 4), VT_CF_OK);
}

TEST_F(CompactFileTest, BadArgumentsAreRefusedWithoutTouchingFiles)
{
    VtCompactFile file;
    EXPECT_EQ(file.Create(UPathOf("a.cf"), 32, u"secret", 4), VT_CF_PASSWORD);
    EXPECT_EQ(file.Create(UPathOf("a.cf"), 16, u"", 4), VT_CF_BAD_MODE);
    EXPECT_EQ(file.Create(UPathOf("a.cf"), 32, u"", 1), VT_CF_BAD_MODE);
    EXPECT_EQ(file.Create(UPathOf("missing-dir/a.cf"), 32, u"", 4), VT_CF_CANNOT_OPEN);
    EXPECT_FALSE(std::filesystem::exists(PathOf("a.cf")));

    EXPECT_EQ(file.Open(UPathOf("missing.cf"), u"", 4), VT_CF_CANNOT_OPEN);
    EXPECT_EQ(file.Open(UPathOf("missing.cf"), u"", 1), VT_CF_CANNOT_OPEN);
    EXPECT_FALSE(std::filesystem::exists(PathOf("missing.cf")));
    EXPECT_EQ(file.Open(ZedaUnicodeString::FromUtf8(dir_.string()), u"", 4), VT_CF_CANNOT_OPEN);
    ASSERT_EQ(mkfifo(PathOf("fifo").c_str(), 0600), 0);
    EXPECT_EQ(file.Open(UPathOf("fifo"), u"", 4), VT_CF_CANNOT_OPEN);

    MakeContainer("lib.cf", {{u"k", {1, 2, 3}}});
    const Bytes original = ReadFileBytes(PathOf("lib.cf"));
    EXPECT_EQ(file.Open(UPathOf("lib.cf"), u"pw", 4), VT_CF_PASSWORD);
    EXPECT_EQ(file.Open(UPathOf("lib.cf"), u"", 2), VT_CF_BAD_MODE);
    EXPECT_EQ(file.Open(UPathOf("lib.cf"), u"", 3), VT_CF_BAD_MODE);
    EXPECT_EQ(file.Create(UPathOf("lib.cf"), 32, u"", 4), VT_CF_CANNOT_OPEN);
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(ReadFileBytes(PathOf("lib.cf")), original);

    ASSERT_EQ(file.Open(UPathOf("lib.cf"), u"", 4), VT_CF_OK);
    EXPECT_EQ(file.Open(UPathOf("lib.cf"), u"", 4), VT_CF_ALREADY_OPEN);
    EXPECT_EQ(file.Create(UPathOf("b.cf"), 32, u"", 4), VT_CF_ALREADY_OPEN);
    EXPECT_FALSE(std::filesystem::exists(PathOf("b.cf")));
    EXPECT_EQ(LookupBytes(file, u"k"), (Bytes{1, 2, 3}));
}

TEST_F(CompactFileTest, FilesThatAreNoDatabaseStayUntouched)
{
    Bytes header = {'S', 'Q', 'L', 'i', 't', 'e', ' ', 'f', 'o', 'r', 'm', 'a', 't', ' ', '3', 0};
    Bytes damaged = header;
    const Bytes noise = Pattern(5, 4096);
    damaged.insert(damaged.end(), noise.begin(), noise.end());
    const std::vector<std::pair<std::string, Bytes>> files = {
        {"random.bin", Pattern(4, 10000)},
        {"empty.sym", {}},
        {"short.sym", {'S', 'Q', 'L'}},
        {"stream.sym", {20, 0, 0, 0, 'R', 0, 'o', 0, 'o', 0, 't', 0}},
        {"damaged.cf", damaged},
    };
    for (const auto& [name, bytes] : files) {
        WriteFileBytes(PathOf(name), bytes);
        for (int mode : {1, 4}) {
            VtCompactFile file;
            EXPECT_EQ(file.Open(UPathOf(name), u"", mode), VT_CF_NOT_CONTAINER) << name;
            EXPECT_FALSE(file.IsOpen());
        }
        EXPECT_EQ(ReadFileBytes(PathOf(name)), bytes) << name;
        EXPECT_FALSE(SideFilesExist(name)) << name;
    }
}

TEST_F(CompactFileTest, ForeignDatabasesOpenAsIndexInfoThreeAndRefuseEntries)
{
    RunSql("other.db", "CREATE TABLE t(x); INSERT INTO t VALUES(1);");
    RunSql("wal.db", "PRAGMA journal_mode=WAL; CREATE TABLE t(x); INSERT INTO t VALUES(1);");
    RunSql("lookalike.db",
           "CREATE TABLE meta(name TEXT PRIMARY KEY NOT NULL, value NOT NULL);"
           "CREATE TABLE entries(key TEXT PRIMARY KEY NOT NULL, value BLOB NOT NULL);"
           "INSERT INTO entries VALUES('k', x'01');");
    // One of ours with the marker rows of a later format.
    MakeContainer("newer.cf", {{u"k", {1}}});
    RunSql("newer.cf", "UPDATE meta SET value = 2 WHERE name = 'version';");
    // Ours but stripped of its application id.
    MakeContainer("noid.cf", {{u"k", {1}}});
    RunSql("noid.cf", "PRAGMA application_id = 0;");

    for (const std::string name : {"other.db", "wal.db", "lookalike.db", "newer.cf", "noid.cf"}) {
        const Bytes original = ReadFileBytes(PathOf(name));
        for (int mode : {1, 4}) {
            VtCompactFile file;
            ASSERT_EQ(file.Open(UPathOf(name), u"", mode), VT_CF_OK) << name;
            EXPECT_EQ(file.GetIndexInfo(), VT_CF_INDEX_FOREIGN) << name;
            VtByteArray bytes;
            long long size = 0;
            EXPECT_EQ(file.Lookup(u"k", bytes, size, 0), VT_CF_FOREIGN);
            EXPECT_EQ(file.SetAt(u"k", ToArray({2}), 0, 0, 0), VT_CF_FOREIGN);
            EXPECT_EQ(file.Remove(u"k"), VT_CF_FOREIGN);
            EXPECT_EQ(file.Compact(), VT_CF_FOREIGN);
            EXPECT_EQ(file.SetAtFromFile(u"k", UPathOf(name)), VT_CF_FOREIGN);
            EXPECT_EQ(file.LookupToFile(u"k", UPathOf("out")), VT_CF_FOREIGN);
            EXPECT_EQ(file.Flush(), VT_CF_OK);
            EXPECT_TRUE(file.GetKeys().empty());
            EXPECT_EQ(file.GetFullPath(), UPathOf(name));
            EXPECT_EQ(file.Close(), VT_CF_OK);
            EXPECT_EQ(ReadFileBytes(PathOf(name)), original) << name;
            // A reader of a WAL database leaves SQLite's empty shared-memory files behind.
            if (mode == 4 || name != "wal.db") {
                EXPECT_FALSE(SideFilesExist(name)) << name << " mode " << mode;
            }
        }
    }
}

TEST_F(CompactFileTest, ReadModeReadsAndRefusesWrites)
{
    MakeContainer("lib.cf", {{u"k", Pattern(1, 1000)}});
    const Bytes original = ReadFileBytes(PathOf("lib.cf"));
    WriteFileBytes(PathOf("source"), Pattern(2, 10));

    VtCompactFile file;
    ASSERT_EQ(file.Open(UPathOf("lib.cf"), u"", 1), VT_CF_OK);
    EXPECT_EQ(file.GetIndexInfo(), VT_CF_INDEX_KEYED);
    EXPECT_EQ(LookupBytes(file, u"k"), Pattern(1, 1000));
    EXPECT_EQ(file.SetAt(u"k", ToArray({1}), 0, 0, 0), VT_CF_READ_ONLY);
    EXPECT_EQ(file.SetAt(u"new", ToArray({1}), 0, 0, 0), VT_CF_READ_ONLY);
    EXPECT_EQ(file.Remove(u"k"), VT_CF_READ_ONLY);
    EXPECT_EQ(file.Compact(), VT_CF_READ_ONLY);
    EXPECT_EQ(file.SetAtFromFile(u"k", UPathOf("source")), VT_CF_READ_ONLY);
    EXPECT_EQ(file.Flush(), VT_CF_OK);
    EXPECT_EQ(file.LookupToFile(u"k", UPathOf("copy")), VT_CF_OK);
    EXPECT_EQ(ReadFileBytes(PathOf("copy")), Pattern(1, 1000));
    ASSERT_EQ(file.Close(), VT_CF_OK);
    EXPECT_EQ(ReadFileBytes(PathOf("lib.cf")), original);
}

TEST_F(CompactFileTest, FullPathIsAbsolute)
{
    MakeContainer("lib.cf", {});
    const auto relative = std::filesystem::relative(PathOf("lib.cf"));
    ASSERT_TRUE(relative.is_relative());
    VtCompactFile file;
    ASSERT_EQ(file.Open(ZedaUnicodeString::FromUtf8(relative.string()), u"", 4), VT_CF_OK);
    const std::filesystem::path full(file.GetFullPath().ToUtf8());
    EXPECT_TRUE(full.is_absolute());
    EXPECT_TRUE(std::filesystem::equivalent(full, PathOf("lib.cf")));
}

TEST_F(CompactFileTest, StreamedCopiesAcrossChunkBoundaries)
{
    const long long chunk = VtCompactFile::chunkSize;
    ASSERT_EQ(chunk, 2 * 1024 * 1024);
    VtCompactFile file;
    ASSERT_EQ(file.Create(UPathOf("lib.cf"), 32, u"", 4), VT_CF_OK);
    ASSERT_EQ(file.SetAt(u"k", ToArray(Pattern(99, 5 * chunk)), 0, 0, 0), VT_CF_OK);

    for (long long size : {0LL, 1LL, chunk, chunk + 1, 2 * chunk + 7}) {
        const Bytes value = Pattern(static_cast<unsigned>(size), static_cast<std::size_t>(size));
        WriteFileBytes(PathOf("in"), value);
        ASSERT_EQ(file.SetAtFromFile(u"k", UPathOf("in")), VT_CF_OK) << size;
        EXPECT_EQ(LookupBytes(file, u"k"), value) << size;
        WriteFileBytes(PathOf("out"), Pattern(1, 3 * chunk));  // to be replaced, not merged
        ASSERT_EQ(file.LookupToFile(u"k", UPathOf("out")), VT_CF_OK) << size;
        EXPECT_EQ(ReadFileBytes(PathOf("out")), value) << size;
    }

    EXPECT_EQ(file.SetAtFromFile(u"k", UPathOf("no-such-file")), VT_CF_CANNOT_OPEN);
    EXPECT_EQ(file.SetAtFromFile(u"k", ZedaUnicodeString::FromUtf8(dir_.string())), VT_CF_CANNOT_OPEN);
    ASSERT_EQ(mkfifo(PathOf("fifo").c_str(), 0600), 0);
    EXPECT_EQ(file.SetAtFromFile(u"k", UPathOf("fifo")), VT_CF_CANNOT_OPEN);
    EXPECT_EQ(LookupBytes(file, u"k").size(), static_cast<std::size_t>(2 * chunk + 7));
    EXPECT_EQ(file.LookupToFile(u"absent", UPathOf("absent-out")), VT_CF_KEY_NOT_FOUND);
    EXPECT_FALSE(std::filesystem::exists(PathOf("absent-out")));
    EXPECT_EQ(file.LookupToFile(u"k", UPathOf("missing-dir/out")), VT_CF_CANNOT_OPEN);
}

}  // namespace
