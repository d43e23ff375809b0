#include <signal.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include "CompactFileTestSupport.h"
#include "VtLogFile.h"

using namespace VTC;
using namespace cftest;
using Keys = std::vector<ZedaUnicodeString>;

namespace {

class CompactFileTest : public TempDirTest {
protected:
    static Bytes Get(VtCompactFile& file, const ZedaUnicodeString& key)
    {
        VtByteArray bytes;
        long long size = -1;
        EXPECT_EQ(file.Lookup(key, bytes, size, 0), VT_CF_OK) << key.ToUtf8();
        EXPECT_EQ(size, bytes.GetSize());
        return ToBytes(bytes);
    }
    bool SideFilesExist(const std::string& name) const
    {
        return std::filesystem::exists(PathOf(name + "-journal")) || std::filesystem::exists(PathOf(name + "-wal")) ||
               std::filesystem::exists(PathOf(name + "-shm"));
    }
    // A container of ours holding the one entry "k".
    void CreateWithOneEntry(const std::string& name, unsigned char value)
    {
        VtCompactFile ours;
        ASSERT_EQ(ours.Create(UPathOf(name), 32, u"", 4), VT_CF_OK);
        ASSERT_EQ(ours.SetAt(u"k", ToArray({value}), 0, 0, 0), VT_CF_OK);
        ASSERT_EQ(ours.Close(), VT_CF_OK);
    }
    // Runs SQL on a database of our own making, outside the container library.
    void RunSql(const std::string& name, const char* sql)
    {
        sqlite3* db = nullptr;
        ASSERT_EQ(sqlite3_open(PathOf(name).c_str(), &db), SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(db, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sql;
        sqlite3_close(db);
    }
};

TEST_F(CompactFileTest, EntriesOfEverySizeSurviveReopeningAndCompaction)
{
    const std::vector<std::pair<ZedaUnicodeString, Bytes>> entries = {{u"", {}}, {u"\uFF01", {0x5A}},
        {u"\U0001F600", {0, 1, 0, 0, 255, 0}}, {u"b", Pattern(7, 5 * 1024 * 1024 + 3)}, {u"B", Pattern(8, 100)}};
    {
        VtCompactFile file;
        ASSERT_EQ(file.Create(UPathOf("lib.cf"), 32, u"", 4), VT_CF_OK);
        for (const auto& [key, value] : entries) ASSERT_EQ(file.SetAt(key, ToArray(value), 0, 0, 0), VT_CF_OK);
    }
    VtCompactFile file;
    ASSERT_EQ(file.Open(UPathOf("lib.cf"), u"", 4), VT_CF_OK);
    // U+1F600 is a surrogate pair, which sorts before U+FF01 in UTF-16 but after it in UTF-8.
    EXPECT_EQ(file.GetKeys(), (Keys{u"", u"B", u"b", u"\U0001F600", u"\uFF01"}));
    for (const auto& [key, value] : entries) EXPECT_EQ(Get(file, key), value);
    // Lookup replaces whatever the array held; a missing key leaves it alone.
    VtByteArray bytes = ToArray(Pattern(1, 4000));
    long long size = 0;
    ASSERT_EQ(file.Lookup(u"\uFF01", bytes, size, 0), VT_CF_OK);
    EXPECT_EQ(file.Lookup(u"A", bytes, size, 0), VT_CF_KEY_NOT_FOUND);
    EXPECT_EQ(ToBytes(bytes), Bytes{0x5A});
    const auto before = std::filesystem::file_size(PathOf("lib.cf"));
    ASSERT_EQ(file.Remove(u"b"), VT_CF_OK);
    EXPECT_EQ(file.Remove(u"b"), VT_CF_KEY_NOT_FOUND);
    ASSERT_EQ(file.Compact(), VT_CF_OK);
    EXPECT_LT(std::filesystem::file_size(PathOf("lib.cf")), before / 4);
    EXPECT_EQ(Get(file, u"B"), Pattern(8, 100));
}

TEST_F(CompactFileTest, WritesUntilFlushAreOneBatchThatAFailedWriteDoesNotSpoil)
{
    VtCompactFile file, reader;
    ASSERT_EQ(file.Create(UPathOf("lib.cf"), 32, u"", 4), VT_CF_OK);
    WriteFile(PathOf("in"), Pattern(5, 2 * VtCompactFile::chunkSize + 7));
    ASSERT_EQ(file.SetAtFromFile(u"c", UPathOf("in")), VT_CF_OK);
    ASSERT_EQ(file.SetAt(u"a", ToArray({1}), 0, 0, 0), VT_CF_OK);
    ASSERT_EQ(file.SetAt(u"b", ToArray({2}), 0, 0, 0), VT_CF_OK);
    ASSERT_EQ(file.Flush(), VT_CF_OK);
    ASSERT_EQ(file.SetAt(u"a", ToArray({3}), 0, 0, 0), VT_CF_OK);
    EXPECT_TRUE(std::filesystem::exists(PathOf("lib.cf-journal")));  // a batch under way can be undone
    ASSERT_EQ(file.Remove(u"b"), VT_CF_OK);
    // A sysfs file claims 4096 bytes and holds fewer: the copy fails after the value was reserved.
    EXPECT_EQ(file.SetAtFromFile(u"a", u"/sys/devices/system/cpu/online"), VT_CF_IO_ERROR);
    // The writer sees its pending writes, another connection the last Flush until Close commits.
    EXPECT_EQ(file.GetKeys(), (Keys{u"a", u"c"}));
    EXPECT_EQ(Get(file, u"a"), Bytes{3});
    ASSERT_EQ(reader.Open(UPathOf("lib.cf"), u"", 1), VT_CF_OK);
    EXPECT_EQ(reader.GetKeys(), (Keys{u"a", u"b", u"c"}));
    WriteFile(PathOf("out"), Pattern(1, 3 * VtCompactFile::chunkSize));  // to be replaced, not merged
    ASSERT_EQ(reader.LookupToFile(u"c", UPathOf("out")), VT_CF_OK);
    EXPECT_EQ(ReadFileBytes(PathOf("out")), ReadFileBytes(PathOf("in")));
    ASSERT_EQ(file.Close(), VT_CF_OK);
    EXPECT_EQ(reader.GetKeys(), (Keys{u"a", u"c"}));
    EXPECT_EQ(Get(reader, u"a"), Bytes{3});
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
    const rlimit limited{std::filesystem::file_size(PathOf("lib.cf")) + 65536, old.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limited), 0);
    const int big = file.SetAt(u"big", ToArray(Pattern(1, 8 << 20)), 0, 0, 0);
    setrlimit(RLIMIT_FSIZE, &old);
    signal(SIGXFSZ, oldHandler);
    EXPECT_EQ(big, VT_CF_IO_ERROR);
    // "a" went with the batch: the next batch commits, and its Flush says so.
    ASSERT_EQ(file.SetAt(u"b", ToArray({2}), 0, 0, 0), VT_CF_OK);
    EXPECT_EQ(file.Flush(), VT_CF_IO_ERROR);
    EXPECT_EQ(file.Flush(), VT_CF_OK);
    EXPECT_EQ(file.GetKeys(), Keys{u"b"});
}

TEST_F(CompactFileTest, RefusalsTouchNoFile)
{
    VtLogFile::GetInstance(false)->ClearRecords();
    VtCompactFile file;
    EXPECT_EQ(file.Flush(), VT_CF_NOT_OPEN);
    const VtLogRecord record = VtLogFile::GetInstance(false)->GetRecords().at(0);
    EXPECT_TRUE(record.level == 300 && record.code == "ECf001" && record.source == "Platform/CompactFile/VtCompactFile");
    ASSERT_EQ(mkfifo(PathOf("fifo").c_str(), 0600), 0);
    for (const char* name : {"missing.cf", "fifo", ""})
        EXPECT_EQ(file.Open(UPathOf(name), u"", 4), VT_CF_CANNOT_OPEN) << name;
    EXPECT_EQ(file.Create(UPathOf("a.cf"), 32, u"secret", 4), VT_CF_PASSWORD);
    EXPECT_EQ(file.Create(UPathOf("a.cf"), 16, u"", 4), VT_CF_BAD_MODE);
    EXPECT_FALSE(std::filesystem::exists(PathOf("a.cf")) || std::filesystem::exists(PathOf("missing.cf")));
    ASSERT_EQ(file.Create(UPathOf("lib.cf"), 32, u"", 4), VT_CF_OK);
    ASSERT_EQ(file.SetAt(u"k", ToArray({1, 2, 3}), 0, 0, 0), VT_CF_OK);
    EXPECT_EQ(file.Open(UPathOf("b.cf"), u"", 4), VT_CF_ALREADY_OPEN);
    ASSERT_EQ(file.Close(), VT_CF_OK);
    const Bytes original = ReadFileBytes(PathOf("lib.cf"));
    EXPECT_EQ(file.Open(UPathOf("lib.cf"), u"pw", 4), VT_CF_PASSWORD);
    EXPECT_EQ(file.Create(UPathOf("lib.cf"), 32, u"", 4), VT_CF_CANNOT_OPEN);
    ASSERT_EQ(file.Open(UPathOf("lib.cf"), u"", 1), VT_CF_OK);  // reads, refuses writes
    for (const int rc : {file.SetAt(u"k", ToArray({1}), 0, 0, 0), file.Remove(u"k"), file.Compact()})
        EXPECT_EQ(rc, VT_CF_READ_ONLY);
    EXPECT_EQ(Get(file, u"k"), (Bytes{1, 2, 3}));
    EXPECT_EQ(file.Close(), VT_CF_OK);
    EXPECT_EQ(ReadFileBytes(PathOf("lib.cf")), original);
}

// Files that are no database are refused; databases of another layout open
// with index information 3 and refuse every entry operation. Neither is touched.
TEST_F(CompactFileTest, OtherFilesAreRefusedOrOpenAsForeignAndStayUntouched)
{
    Bytes damaged = Pattern(5, 4096);
    std::memcpy(damaged.data(), "SQLite format 3", 16);  // a database's header over noise
    const std::vector<std::pair<std::string, Bytes>> files = {{"random.bin", Pattern(4, 10000)}, {"empty.sym", {}},
        {"short.sym", {'S', 'Q', 'L'}}, {"stream.sym", {20, 0, 0, 0, 'R', 0, 'o', 0, 'o', 0, 't', 0}}, {"damaged.cf", damaged}};
    for (const auto& [name, bytes] : files)
        WriteFile(PathOf(name), bytes);
    RunSql("other.db", "CREATE TABLE t(x); INSERT INTO t VALUES(1);");
    RunSql("wal.db", "PRAGMA journal_mode=WAL; CREATE TABLE t(x); INSERT INTO t VALUES(1);");
    RunSql("lookalike.db", "CREATE TABLE meta(name TEXT PRIMARY KEY NOT NULL, value NOT NULL);"
                           "CREATE TABLE entries(key TEXT PRIMARY KEY NOT NULL, value BLOB NOT NULL);"
                           "INSERT INTO entries VALUES('k', x'01');");
    // Ours, with the marker rows of a later format, or stripped of the application id.
    for (const auto& [name, sql] : {std::pair{"newer.db", "UPDATE meta SET value = 2 WHERE name = 'version';"},
                                    {"noid.db", "PRAGMA application_id = 0;"}}) {
        CreateWithOneEntry(name, 1);
        RunSql(name, sql);
    }
    for (const std::string name : {"random.bin", "empty.sym", "short.sym", "stream.sym", "damaged.cf", "other.db",
                                   "wal.db", "lookalike.db", "newer.db", "noid.db"}) {
        const Bytes original = ReadFileBytes(PathOf(name));
        for (int mode : {1, 4}) {
            VtCompactFile file;
            if (!name.ends_with(".db")) {
                EXPECT_EQ(file.Open(UPathOf(name), u"", mode), VT_CF_NOT_CONTAINER) << name;
            } else {
                ASSERT_EQ(file.Open(UPathOf(name), u"", mode), VT_CF_OK) << name;
                EXPECT_EQ(file.GetIndexInfo(), VT_CF_INDEX_FOREIGN) << name;
                VtByteArray bytes;
                long long size = 0;
                for (const int rc : {file.Lookup(u"k", bytes, size, 0), file.SetAt(u"k", ToArray({2}), 0, 0, 0),
                                     file.Remove(u"k"), file.Compact(), file.SetAtFromFile(u"k", UPathOf(name)),
                                     file.LookupToFile(u"k", UPathOf("out"))})
                    EXPECT_EQ(rc, VT_CF_FOREIGN) << name;
                EXPECT_TRUE(file.GetKeys().empty());
                EXPECT_EQ(file.GetFullPath(), UPathOf(name));
                EXPECT_EQ(file.Close(), VT_CF_OK);
            }
            EXPECT_EQ(ReadFileBytes(PathOf(name)), original) << name;
            // A reader of a WAL database leaves SQLite's empty shared-memory files behind.
            if (mode == 4 || name != "wal.db") {
                EXPECT_FALSE(SideFilesExist(name)) << name << " mode " << mode;
            }
        }
    }
}

}  // namespace

namespace {

// Reading a container leaves its file as it was, whatever journal mode another
// program left it in; only the first write switches it to ours. Bytes 18 and
// 19 of the header are 2 in WAL mode and 1 in the rollback modes.
TEST_F(CompactFileTest, ReadingNeverSwitchesTheJournalModeTheFirstWriteDoes)
{
    CreateWithOneEntry("wal.cf", 7);
    RunSql("wal.cf", "PRAGMA journal_mode=WAL;");
    const Bytes original = ReadFileBytes(PathOf("wal.cf"));
    ASSERT_EQ(original.at(18), 2);
    for (int mode : {1, 4}) {
        VtCompactFile file;
        ASSERT_EQ(file.Open(UPathOf("wal.cf"), u"", mode), VT_CF_OK);
        EXPECT_EQ(Get(file, u"k"), Bytes{7});
        EXPECT_EQ(file.GetKeys().size(), 1u);
        EXPECT_EQ(file.Flush(), VT_CF_OK);
        EXPECT_EQ(file.Close(), VT_CF_OK);
        EXPECT_EQ(ReadFileBytes(PathOf("wal.cf")), original) << "mode " << mode;
    }
    VtCompactFile file;
    ASSERT_EQ(file.Open(UPathOf("wal.cf"), u"", 4), VT_CF_OK);
    ASSERT_EQ(file.SetAt(u"k", ToArray({8}), 0, 0, 0), VT_CF_OK);
    ASSERT_EQ(file.Close(), VT_CF_OK);
    const Bytes written = ReadFileBytes(PathOf("wal.cf"));
    EXPECT_TRUE(written.at(18) == 1 && written.at(19) == 1);
    EXPECT_FALSE(SideFilesExist("wal.cf"));
}

}  // namespace

namespace {

// A file with our marker but a schema of its own making opens as foreign, so
// that nothing its schema carries (a computed value, a trigger, a view) runs;
// pages smaller than ours open as foreign before any record is read; a value
// that is no blob is refused as damaged. None of them is changed.
TEST_F(CompactFileTest, CraftedSchemasOpenAsForeignAndNothingInThemRuns)
{
    struct Crafted {
        const char* name;
        const char* sql;
        const char* refusal;
    };
    const Crafted crafted[] = {
        {"generated.cf",
         "DROP TABLE entries; CREATE TABLE entries(key TEXT PRIMARY KEY NOT NULL, stored BLOB,"
         " value BLOB AS (zeroblob(900000000)));"
         "INSERT INTO entries(key) VALUES('SymbolStoreInCF');",
         "ECf011"},
        {"trigger.cf", "CREATE TRIGGER wipe AFTER INSERT ON entries BEGIN DELETE FROM meta; END;", "ECf011"},
        {"view.cf", "CREATE VIEW peek AS SELECT * FROM entries;", "ECf011"},
        {"index.cf", "CREATE INDEX byValue ON entries(value);", "ECf011"},
        {"small-pages.cf", "PRAGMA page_size=2048; VACUUM;", "ECf013"},
        {"text.cf", "UPDATE entries SET value = 'text' WHERE key = 'k';", "ECf012"},
    };
    for (const auto& [name, sql, refusal] : crafted) {
        CreateWithOneEntry(name, 1);
        RunSql(name, sql);
        const Bytes original = ReadFileBytes(PathOf(name));
        for (int mode : {1, 4}) {
            VtLogFile::GetInstance(false)->ClearRecords();
            VtCompactFile file;
            ASSERT_EQ(file.Open(UPathOf(name), u"", mode), VT_CF_OK) << name;
            VtByteArray bytes;
            long long size = 0;
            if (std::string(name) == "text.cf") {
                EXPECT_EQ(file.GetIndexInfo(), VT_CF_INDEX_KEYED);
                EXPECT_EQ(file.Lookup(u"k", bytes, size, 0), VT_CF_IO_ERROR);
                EXPECT_EQ(file.LookupToFile(u"k", UPathOf("out")), VT_CF_IO_ERROR);
                EXPECT_EQ(VtLogFile::GetInstance(false)->GetRecords().back().code, refusal);
            } else {
                EXPECT_EQ(file.GetIndexInfo(), VT_CF_INDEX_FOREIGN) << name;
                EXPECT_EQ(VtLogFile::GetInstance(false)->GetRecords().at(0).code, refusal) << name;
                EXPECT_EQ(file.Lookup(u"SymbolStoreInCF", bytes, size, 0), VT_CF_FOREIGN);
                EXPECT_EQ(file.SetAt(u"k", ToArray({2}), 0, 0, 0), VT_CF_FOREIGN);
            }
            EXPECT_EQ(file.Close(), VT_CF_OK);
            EXPECT_EQ(ReadFileBytes(PathOf(name)), original) << name << " mode " << mode;
        }
    }
}

}  // namespace

namespace {

// A journal travels with its container, and names any file it likes as its
// super-journal, which SQLite reads whole and deletes once the journal is
// played back. No file but the container and its own journal is touched.
class HotJournalTest : public CompactFileTest {
protected:
    // Copies the container and its journal while a transaction that spilled
    // pages into the file is under way: the journal left by a writer that died.
    void MakeHotCopy(const std::string& name, const std::string& copy)
    {
        sqlite3* db = nullptr;
        ASSERT_EQ(sqlite3_open(PathOf(name).c_str(), &db), SQLITE_OK);
        const char* spill = "PRAGMA cache_size=1; PRAGMA journal_mode=DELETE; BEGIN;"
                            "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 20)"
                            " INSERT INTO entries SELECT 'x' || i, randomblob(3000) FROM n;";
        EXPECT_EQ(sqlite3_exec(db, spill, nullptr, nullptr, nullptr), SQLITE_OK);
        std::filesystem::copy_file(PathOf(name), PathOf(copy));
        std::filesystem::copy_file(PathOf(name + "-journal"), PathOf(copy + "-journal"));
        sqlite3_exec(db, "ROLLBACK", nullptr, nullptr, nullptr);
        sqlite3_close(db);
    }
    // The record a journal of a transaction over several databases ends with.
    void NameSuperJournal(const std::string& journal, const std::string& superJournal)
    {
        Bytes bytes = ReadFileBytes(PathOf(journal));
        const auto append32 = [&bytes](std::uint32_t value) {
            for (int shift = 24; shift >= 0; shift -= 8) bytes.push_back(static_cast<unsigned char>(value >> shift));
        };
        append32(0x40000000 / 4096 + 1);  // the page of the lock bytes, which holds no data
        std::uint32_t checksum = 0;
        for (const char c : superJournal) {
            bytes.push_back(static_cast<unsigned char>(c));
            checksum += static_cast<std::uint32_t>(c);
        }
        append32(static_cast<std::uint32_t>(superJournal.size()));
        append32(checksum);
        for (const unsigned char c : {0xD9, 0xD5, 0x05, 0xF9, 0x20, 0xA1, 0x63, 0xD7}) bytes.push_back(c);
        WriteFile(PathOf(journal), bytes);
    }
};

TEST_F(HotJournalTest, AJournalNamingAnotherFileLeavesThatFileAlone)
{
    CreateWithOneEntry("lib.cf", 7);
    MakeHotCopy("lib.cf", "hot.cf");
    // A name SQLite could take for a journal of its own is no exception.
    for (const std::string victim : {"notes.txt", "notes-journal"}) {
        const Bytes precious = Pattern(3, 100);
        WriteFile(PathOf(victim), precious);
        std::filesystem::copy_file(PathOf("hot.cf"), PathOf("case.cf"), std::filesystem::copy_options::overwrite_existing);
        std::filesystem::copy_file(PathOf("hot.cf-journal"), PathOf("case.cf-journal"),
                                   std::filesystem::copy_options::overwrite_existing);
        NameSuperJournal("case.cf-journal", PathOf(victim));
        VtCompactFile file;
        // A super-journal that is not there makes the journal stale, as SQLite
        // has it; one it would have to open makes the container unreadable.
        EXPECT_EQ(file.Open(UPathOf("case.cf"), u"", 4), victim == "notes.txt" ? VT_CF_OK : VT_CF_CANNOT_OPEN);
        EXPECT_EQ(ReadFileBytes(PathOf(victim)), precious) << victim;
    }
}

}  // namespace
