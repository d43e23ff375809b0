#include "VtCompactFile.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

#include "VtConfinedVfs_p.h"
#include "VtLogFile.h"

namespace VTC {
namespace {

// The marker that tells our containers from other SQLite files: the header's
// application id plus two rows of the meta table.
constexpr std::int32_t containerApplicationId = 0x4C714346;  // "LqCF"
constexpr const char* containerFormatName = "LqCompactFile";
constexpr int containerFormatVersion = 1;
constexpr int supportedIndexSize = 32;
// Our page size, no byte of a page reserved. For every record it reads, SQLite lists the
// overflow pages the record claims, eight bytes for each page of up to 4 GiB:
// a 1 KB file of 512-byte pages makes it allocate 68 MB, one of ours at most
// 8.4 MB. Smaller pages are refused before any record is read.
constexpr int containerPageBytes = 4096;
constexpr int busyTimeoutMs = 5000;

constexpr int logLevel = 300;
constexpr const char* logSource = "Platform/CompactFile/VtCompactFile";

int Refuse(int result, const char* code, int line)
{
    VtLogFile::GetInstance(false)->RecordLog(logLevel, code, logSource, line);
    return result;
}

// A SQLite failure that no caller asked for: a write to a read-only database
// keeps its own code, everything else is an I/O error.
int SqliteFailure(int rc, int line)
{
    if ((rc & 0xff) == SQLITE_READONLY) return Refuse(VT_CF_READ_ONLY, "ECf009", line);
    return Refuse(VT_CF_IO_ERROR, "ECf008", line);
}

struct DbCloser {
    void operator()(sqlite3* db) const { sqlite3_close_v2(db); }
};
struct StatementFinalizer {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
struct BlobCloser {
    void operator()(sqlite3_blob* blob) const { sqlite3_blob_close(blob); }
};
using Db = std::unique_ptr<sqlite3, DbCloser>;
using Statement = std::unique_ptr<sqlite3_stmt, StatementFinalizer>;
using Blob = std::unique_ptr<sqlite3_blob, BlobCloser>;

class UniqueFd {
public:
    explicit UniqueFd(int fd) : fd_(fd) {}
    ~UniqueFd()
    {
        if (fd_ >= 0) ::close(fd_);
    }
    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;

    bool IsValid() const { return fd_ >= 0; }
    int Get() const { return fd_; }
    bool Close()
    {
        const int rc = ::close(fd_);
        fd_ = -1;
        return rc == 0;
    }

private:
    int fd_;
};

// Reads until `count` bytes or the end of the file; -1 on error.
long long ReadFully(int fd, unsigned char* bytes, long long count)
{
    long long done = 0;
    while (done < count) {
        const ssize_t n = ::read(fd, bytes + done, static_cast<size_t>(count - done));
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return -1;
        if (n == 0) break;
        done += n;
    }
    return done;
}

bool WriteFully(int fd, const unsigned char* bytes, long long count)
{
    long long done = 0;
    while (done < count) {
        const ssize_t n = ::write(fd, bytes + done, static_cast<size_t>(count - done));
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        done += n;
    }
    return true;
}

std::string AbsolutePath(const ZedaUnicodeString& path)
{
    if (path.IsEmpty()) return {};
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(path.ToUtf8(), error);
    return error ? std::string() : absolute.string();
}

// Makes a new directory entry survive a power loss.
bool SyncParentDirectory(const std::string& path)
{
    const std::string parent = std::filesystem::path(path).parent_path().string();
    UniqueFd dir(::open(parent.empty() ? "/" : parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return dir.IsValid() && ::fsync(dir.Get()) == 0;
}

// Looks at the file before SQLite does: SQLite takes a missing file as a new
// database and an empty one as an empty database, and neither may be touched.
// Opening without blocking keeps a FIFO from hanging us.
int SniffDatabaseFile(const std::string& path)
{
    UniqueFd fd(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat info {};
    if (!fd.IsValid() || ::fstat(fd.Get(), &info) != 0 || !S_ISREG(info.st_mode)) return VT_CF_CANNOT_OPEN;
    static constexpr char magic[] = "SQLite format 3";  // 16 bytes with its terminating 0
    unsigned char header[sizeof magic] = {};
    if (ReadFully(fd.Get(), header, sizeof header) != static_cast<long long>(sizeof header) ||
        std::memcmp(header, magic, sizeof magic) != 0)
        return VT_CF_NOT_CONTAINER;
    return VT_CF_OK;
}

int Prepare(sqlite3* db, std::string_view sql, Statement& statement)
{
    sqlite3_stmt* raw = nullptr;
    const int rc = sqlite3_prepare_v2(db, sql.data(), static_cast<int>(sql.size()), &raw, nullptr);
    statement.reset(raw);
    return rc;
}

// Runs a query whose first row holds one integer.
int QueryInt(sqlite3* db, std::string_view sql, long long& value)
{
    Statement statement;
    int rc = Prepare(db, sql, statement);
    if (rc != SQLITE_OK) return rc;
    rc = sqlite3_step(statement.get());
    if (rc != SQLITE_ROW) return rc == SQLITE_DONE ? SQLITE_ERROR : rc;
    value = sqlite3_column_int64(statement.get(), 0);
    return SQLITE_OK;
}

int Execute(sqlite3* db, const char* sql)
{
    return sqlite3_exec(db, sql, nullptr, nullptr, nullptr);
}

// A nested transaction, undone on every path that does not release it: a
// failed write leaves its entry as it was and the rest of the batch intact.
class Savepoint {
public:
    explicit Savepoint(sqlite3* db) : db_(db) {}
    ~Savepoint()
    {
        if (active_) Execute(db_, "ROLLBACK TO entry; RELEASE entry");
    }
    Savepoint(const Savepoint&) = delete;
    Savepoint& operator=(const Savepoint&) = delete;

    int Begin()
    {
        const int rc = Execute(db_, "SAVEPOINT entry");
        active_ = rc == SQLITE_OK;
        return rc;
    }
    int Release()
    {
        const int rc = Execute(db_, "RELEASE entry");
        if (rc == SQLITE_OK) active_ = false;
        return rc;
    }

private:
    sqlite3* db_;
    bool active_ = false;
};

// A file from elsewhere may carry any schema. Only the exact schema we write
// is ever used (see ReadMarker), and SQLite is told not to trust, run or
// expand anything a schema could bring: no triggers, no views, no functions
// with side effects, no schema writes, small limits on statements (VACUUM
// attaches one database of its own).
void Harden(sqlite3* db)
{
    for (const auto& [option, value] : {std::pair{SQLITE_DBCONFIG_DEFENSIVE, 1}, {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0},
                                        {SQLITE_DBCONFIG_ENABLE_TRIGGER, 0}, {SQLITE_DBCONFIG_ENABLE_VIEW, 0},
                                        {SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0}})
        sqlite3_db_config(db, option, value, nullptr);
    for (const auto& [limit, value] :
         {std::pair{SQLITE_LIMIT_SQL_LENGTH, 64 * 1024}, {SQLITE_LIMIT_COLUMN, 16}, {SQLITE_LIMIT_EXPR_DEPTH, 64},
          {SQLITE_LIMIT_COMPOUND_SELECT, 4}, {SQLITE_LIMIT_VDBE_OP, 100000}, {SQLITE_LIMIT_FUNCTION_ARG, 8},
          {SQLITE_LIMIT_ATTACHED, 1}, {SQLITE_LIMIT_LIKE_PATTERN_LENGTH, 64}, {SQLITE_LIMIT_TRIGGER_DEPTH, 1}})
        sqlite3_limit(db, limit, value);
}

int OpenDatabase(const std::string& path, int flags, Db& db)
{
    sqlite3* raw = nullptr;
    const int rc = sqlite3_open_v2(path.c_str(), &raw, flags, detail::ConfinedVfsName());
    db.reset(raw);  // a failed open still hands out a handle to release
    if (rc != SQLITE_OK) return rc;
    sqlite3_extended_result_codes(raw, 1);
    Harden(raw);
    return sqlite3_busy_timeout(raw, busyTimeoutMs);
}

// Until the first write, no string or blob that SQLite reads may be longer
// than the file: a damaged overflow chain cannot inflate a value.
void LimitLengthsToFile(sqlite3* db, const std::string& path)
{
    struct stat info {};
    const long long fileBytes = ::stat(path.c_str(), &info) == 0 ? info.st_size : 0;
    const int current = sqlite3_limit(db, SQLITE_LIMIT_LENGTH, -1);
    sqlite3_limit(db, SQLITE_LIMIT_LENGTH, static_cast<int>(std::clamp(fileBytes, 1LL, static_cast<long long>(current))));
}

// Writes may store values longer than the file was: SQLite's own bound again.
void LiftLengthLimit(sqlite3* db)
{
    sqlite3_limit(db, SQLITE_LIMIT_LENGTH, std::numeric_limits<int>::max());
}

// Rollback journal with full syncs: every commit is on disk when it returns,
// and at rest the container is one self-contained file.
int ConfigureForWriting(sqlite3* db)
{
    return Execute(db, "PRAGMA journal_mode=DELETE; PRAGMA synchronous=FULL;");
}

int CreateSchema(sqlite3* db)
{
    const std::string sql = "PRAGMA page_size=" + std::to_string(containerPageBytes) +
                            "; PRAGMA application_id=" + std::to_string(containerApplicationId) +
                            ";"
                            "CREATE TABLE meta(name TEXT PRIMARY KEY NOT NULL, value NOT NULL);"
                            "INSERT INTO meta VALUES('format', '" +
                            containerFormatName + "'), ('version', " + std::to_string(containerFormatVersion) +
                            ");"
                            "CREATE TABLE entries(key TEXT PRIMARY KEY NOT NULL, value BLOB NOT NULL);";
    // Until Create returns there is no container to keep whole (a failure
    // deletes the file), so the schema goes in without a journal: one sync
    // instead of four.
    return Execute(db, ("PRAGMA journal_mode=OFF; PRAGMA synchronous=FULL; BEGIN IMMEDIATE;" + sql + "COMMIT;").c_str());
}

// The schema that CreateSchema makes, row for row ("type name sql", by name).
constexpr std::string_view containerSchema =
    "table entries CREATE TABLE entries(key TEXT PRIMARY KEY NOT NULL, value BLOB NOT NULL)\n"
    "table meta CREATE TABLE meta(name TEXT PRIMARY KEY NOT NULL, value NOT NULL)\n"
    "index sqlite_autoindex_entries_1 \n"
    "index sqlite_autoindex_meta_1 \n";

// The schema as text, one row per entry; SQLITE_TOOBIG when it is far longer
// than ours could be.
int ReadSchema(sqlite3* db, std::string& schema)
{
    Statement statement;
    int rc = Prepare(db, "SELECT type, name, sql FROM sqlite_schema ORDER BY name", statement);
    while (rc == SQLITE_OK && (rc = sqlite3_step(statement.get())) == SQLITE_ROW) {
        for (int column = 0; column < 3; ++column) {
            const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), column));
            schema.append(text ? text : "").append(column < 2 ? " " : "\n");
        }
        rc = schema.size() <= 4 * containerSchema.size() ? SQLITE_OK : SQLITE_TOOBIG;
    }
    return rc == SQLITE_DONE ? SQLITE_OK : rc;
}

// The page layout that SQLite read from the header.
bool HasContainerPages(sqlite3* db)
{
    long long pageSize = 0;
    int reserved = -1;  // asks without changing it
    return QueryInt(db, "PRAGMA page_size", pageSize) == SQLITE_OK &&
           sqlite3_file_control(db, "main", SQLITE_FCNTL_RESERVE_BYTES, &reserved) == SQLITE_OK &&
           pageSize - reserved >= containerPageBytes;
}

// Tells a container of ours from another SQLite database and gives SQLite's
// result. The first read, of the header alone, is where SQLite finds out that
// a file is no database at all, and where it plays back a hot journal. A
// database with our marker but smaller pages or any other schema (a generated
// column, a trigger, a view, an index more) is foreign, and none of its tables
// is ever read.
int ReadMarker(sqlite3* db, int& indexInfo)
{
    indexInfo = VT_CF_INDEX_FOREIGN;
    long long applicationId = 0;
    int rc = QueryInt(db, "PRAGMA application_id", applicationId);
    if (rc != SQLITE_OK || applicationId != containerApplicationId) return rc;
    if (!HasContainerPages(db)) {
        Refuse(VT_CF_FOREIGN, "ECf013", __LINE__);
        return SQLITE_OK;
    }
    std::string schema;
    rc = ReadSchema(db, schema);
    if (rc == SQLITE_TOOBIG) return SQLITE_OK;
    if (rc != SQLITE_OK) return rc;
    if (schema != containerSchema) {
        Refuse(VT_CF_FOREIGN, "ECf011", __LINE__);
        return SQLITE_OK;
    }
    long long markerRows = 0;
    const std::string sql = std::string("SELECT count(*) FROM meta WHERE (name = 'format' AND value = '") +
                            containerFormatName + "') OR (name = 'version' AND value = " +
                            std::to_string(containerFormatVersion) + ")";
    rc = QueryInt(db, sql, markerRows);
    if (markerRows == 2) indexInfo = VT_CF_INDEX_KEYED;
    return rc;
}

int ConnectAndReadMarker(const std::string& path, int flags, Db& db, int& indexInfo)
{
    const int rc = OpenDatabase(path, flags, db);
    if (rc != SQLITE_OK) return rc;
    LimitLengthsToFile(db.get(), path);
    return ReadMarker(db.get(), indexInfo);
}

// A read-only connection cannot undo the unfinished transaction of a writer
// that died; a short-lived writing connection does, as any writer would.
bool RollBackHotJournal(const std::string& path)
{
    Db db;
    int indexInfo = VT_CF_INDEX_NONE;
    return ConnectAndReadMarker(path, SQLITE_OPEN_READWRITE, db, indexInfo) == SQLITE_OK &&
           sqlite3_db_readonly(db.get(), "main") == 0;
}

}  // namespace

struct VtCompactFile::State {
    Db db;
    std::string fullPath;
    int indexInfo = VT_CF_INDEX_NONE;
    bool readOnly = false;
    // The writes since the last Flush form one transaction, open while `pending`.
    bool pending = false;
    // The journal settings are made by the first write: switching the journal
    // mode rewrites the header of a file in another mode, and opening,
    // inspecting or reading a container must leave it as it was.
    bool configuredForWriting = false;
    // SQLite abandoned that transaction after an I/O error: acknowledged writes
    // are gone, which the next Flush or Close must report.
    bool batchLost = false;

    enum class Access { read, write };

    // The common refusals of every entry operation.
    static int Check(const std::unique_ptr<State>& state, Access access, int line)
    {
        if (!state) return Refuse(VT_CF_NOT_OPEN, "ECf001", line);
        if (state->indexInfo != VT_CF_INDEX_KEYED) return Refuse(VT_CF_FOREIGN, "ECf010", line);
        if (access == Access::write && state->readOnly) return Refuse(VT_CF_READ_ONLY, "ECf009", line);
        return VT_CF_OK;
    }

    // Refusals shared by Create and Open.
    static int CheckOpenArguments(const std::unique_ptr<State>& state, const ZedaUnicodeString& password, int line)
    {
        if (state) return Refuse(VT_CF_ALREADY_OPEN, "ECf002", line);
        if (!password.IsEmpty()) return Refuse(VT_CF_PASSWORD, "ECf005", line);
        return VT_CF_OK;
    }

    // Prepares a statement whose first parameter is the key.
    int PrepareForKey(std::string_view sql, const std::string& key, Statement& statement) const
    {
        const int rc = Prepare(db.get(), sql, statement);
        return rc == SQLITE_OK ? sqlite3_bind_text64(statement.get(), 1, key.data(), key.size(), SQLITE_STATIC, SQLITE_UTF8)
                               : rc;
    }

    // Inserts or replaces one entry, its value set by `bindValue`.
    template <typename BindValue>
    int Store(const std::string& key, BindValue bindValue, int line) const
    {
        Statement statement;
        int rc = PrepareForKey("INSERT INTO entries(key, value) VALUES(?1, ?2) "
                               "ON CONFLICT(key) DO UPDATE SET value = excluded.value",
                               key, statement);
        if (rc == SQLITE_OK) rc = bindValue(statement.get(), 2);
        if (rc == SQLITE_OK) rc = sqlite3_step(statement.get());
        return rc == SQLITE_DONE ? VT_CF_OK : SqliteFailure(rc, line);
    }

    // Finds the row and length of an entry: VT_CF_OK, VT_CF_KEY_NOT_FOUND or a
    // failure. The type and length come from the record's header, so a value
    // is never read before it is known to be a blob that the database can hold.
    int FindEntry(const std::string& key, sqlite3_int64& rowid, long long& length) const
    {
        Statement statement;
        int rc = PrepareForKey("SELECT rowid, typeof(value) = 'blob', length(value) FROM entries WHERE key = ?1", key,
                               statement);
        if (rc == SQLITE_OK) rc = sqlite3_step(statement.get());
        if (rc == SQLITE_DONE) return VT_CF_KEY_NOT_FOUND;
        if (rc != SQLITE_ROW) return SqliteFailure(rc, __LINE__);
        rowid = sqlite3_column_int64(statement.get(), 0);
        const bool isBlob = sqlite3_column_int(statement.get(), 1) != 0;
        length = sqlite3_column_int64(statement.get(), 2);
        long long databaseBytes = 0;
        rc = DatabaseBytes(databaseBytes);
        if (rc != SQLITE_OK) return SqliteFailure(rc, __LINE__);
        if (!isBlob || length > databaseBytes) return Refuse(VT_CF_IO_ERROR, "ECf012", __LINE__);
        return VT_CF_OK;
    }

    // The size of the database as SQLite sees it, pending writes included; for
    // a file at rest SQLite refuses a header that claims more than the file.
    int DatabaseBytes(long long& bytes) const
    {
        long long pages = 0;
        long long pageSize = 0;
        int rc = QueryInt(db.get(), "PRAGMA page_count", pages);
        if (rc == SQLITE_OK) rc = QueryInt(db.get(), "PRAGMA page_size", pageSize);
        bytes = pages * pageSize;
        return rc;
    }

    int OpenBlob(sqlite3_int64 rowid, bool write, Blob& blob) const
    {
        sqlite3_blob* raw = nullptr;
        const int rc = sqlite3_blob_open(db.get(), "main", "entries", "value", rowid, write ? 1 : 0, &raw);
        blob.reset(raw);
        return rc;
    }

    int StoreFromFile(const std::string& key, int source, long long length) const
    {
        const int stored = Store(
            key, [length](sqlite3_stmt* statement, int index) { return sqlite3_bind_zeroblob64(statement, index, length); },
            __LINE__);
        if (stored != VT_CF_OK) return stored;
        sqlite3_int64 rowid = 0;
        long long reserved = 0;
        if (const int found = FindEntry(key, rowid, reserved)) return found;

        Blob blob;
        int rc = OpenBlob(rowid, true, blob);
        if (rc != SQLITE_OK) return SqliteFailure(rc, __LINE__);
        std::vector<unsigned char> chunk(static_cast<size_t>(std::min(length, chunkSize)));
        for (long long offset = 0; offset < length;) {
            const long long count = std::min(chunkSize, length - offset);
            // A file that shrank while being read fails the copy.
            if (ReadFully(source, chunk.data(), count) != count) return Refuse(VT_CF_IO_ERROR, "ECf008", __LINE__);
            rc = sqlite3_blob_write(blob.get(), chunk.data(), static_cast<int>(count), static_cast<int>(offset));
            if (rc != SQLITE_OK) return SqliteFailure(rc, __LINE__);
            offset += count;
        }
        rc = sqlite3_blob_close(blob.release());
        return rc == SQLITE_OK ? VT_CF_OK : SqliteFailure(rc, __LINE__);
    }

    void NoticeAbandonedBatch()
    {
        if (pending && sqlite3_get_autocommit(db.get()) != 0) {
            pending = false;
            batchLost = true;
        }
    }

    // Runs one write in the batch, beginning the batch if needed. The write
    // lock is taken at once, so that no write fails half-way for want of it.
    template <typename Body>
    int Write(Body body, int line)
    {
        NoticeAbandonedBatch();
        if (!pending) {
            int rc = ConfigureOnce();
            if (rc == SQLITE_OK) rc = Execute(db.get(), "BEGIN IMMEDIATE");
            if (rc != SQLITE_OK) return SqliteFailure(rc, line);
            pending = true;
        }
        Savepoint savepoint(db.get());
        int rc = savepoint.Begin();
        if (rc != SQLITE_OK) return SqliteFailure(rc, line);
        const int result = body();
        if (result != VT_CF_OK) return result;
        rc = savepoint.Release();
        return rc == SQLITE_OK ? VT_CF_OK : SqliteFailure(rc, line);
    }

    int ConfigureOnce()
    {
        if (configuredForWriting) return SQLITE_OK;
        LiftLengthLimit(db.get());
        const int rc = ConfigureForWriting(db.get());
        configuredForWriting = rc == SQLITE_OK;
        return rc;
    }

    // Commits the batch; a failed commit that SQLite did not undo stays
    // pending for the next try.
    int CommitBatch(int line)
    {
        NoticeAbandonedBatch();
        int result = VT_CF_OK;
        if (pending) {
            const int rc = Execute(db.get(), "COMMIT");
            if (rc == SQLITE_OK) pending = false;
            else result = SqliteFailure(rc, line);
            NoticeAbandonedBatch();
        }
        if (std::exchange(batchLost, false) && result == VT_CF_OK) result = Refuse(VT_CF_IO_ERROR, "ECf008", line);
        return result;
    }
};

VtCompactFile::VtCompactFile() = default;

VtCompactFile::~VtCompactFile()
{
    if (state_) Close();
}

int VtCompactFile::Create(const ZedaUnicodeString& path, int indexSize, const ZedaUnicodeString& password, int mode)
{
    if (const int refused = State::CheckOpenArguments(state_, password, __LINE__)) return refused;
    if (indexSize != supportedIndexSize || mode != VT_CF_MODE_READWRITE)
        return Refuse(VT_CF_BAD_MODE, "ECf006", __LINE__);
    const std::string fullPath = AbsolutePath(path);
    if (fullPath.empty()) return VT_CF_CANNOT_OPEN;

    // Claiming the name with O_EXCL refuses an existing file without a race.
    UniqueFd claim(::open(fullPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!claim.IsValid()) return VT_CF_CANNOT_OPEN;
    claim.Close();

    auto state = std::make_unique<State>();
    int rc = OpenDatabase(fullPath, SQLITE_OPEN_READWRITE, state->db);
    if (rc == SQLITE_OK) rc = CreateSchema(state->db.get());
    if (rc == SQLITE_OK) rc = ConfigureForWriting(state->db.get());
    if (rc != SQLITE_OK || !SyncParentDirectory(fullPath)) {
        state.reset();
        ::unlink(fullPath.c_str());
        return SqliteFailure(rc == SQLITE_OK ? SQLITE_IOERR : rc, __LINE__);
    }
    state->fullPath = fullPath;
    state->indexInfo = VT_CF_INDEX_KEYED;
    state->configuredForWriting = true;
    state_ = std::move(state);
    return VT_CF_OK;
}

int VtCompactFile::Open(const ZedaUnicodeString& path, const ZedaUnicodeString& password, int mode)
{
    if (const int refused = State::CheckOpenArguments(state_, password, __LINE__)) return refused;
    if (mode != VT_CF_MODE_READ && mode != VT_CF_MODE_READWRITE) return Refuse(VT_CF_BAD_MODE, "ECf006", __LINE__);
    const std::string fullPath = AbsolutePath(path);
    if (fullPath.empty()) return VT_CF_CANNOT_OPEN;
    if (const int sniffed = SniffDatabaseFile(fullPath)) return sniffed;

    auto state = std::make_unique<State>();
    const int flags = mode == VT_CF_MODE_READ ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE;
    int rc = ConnectAndReadMarker(fullPath, flags, state->db, state->indexInfo);
    if (rc == SQLITE_READONLY_ROLLBACK && RollBackHotJournal(fullPath))
        rc = ConnectAndReadMarker(fullPath, flags, state->db, state->indexInfo);
    if ((rc & 0xff) == SQLITE_NOTADB || (rc & 0xff) == SQLITE_CORRUPT) return VT_CF_NOT_CONTAINER;
    if ((rc & 0xff) == SQLITE_CANTOPEN) return VT_CF_CANNOT_OPEN;
    if (rc != SQLITE_OK) return SqliteFailure(rc, __LINE__);

    // A file we may not write opens for reading, so that a library installed
    // read-only still loads; writes then report VT_CF_READ_ONLY.
    state->readOnly = sqlite3_db_readonly(state->db.get(), "main") != 0;
    state->fullPath = fullPath;
    state_ = std::move(state);
    return VT_CF_OK;
}

int VtCompactFile::Lookup(const ZedaUnicodeString& key, VtByteArray& bytes, long long& size, int /*flags*/)
{
    if (const int refused = State::Check(state_, State::Access::read, __LINE__)) return refused;
    // One read transaction (or the batch) from the check to the copy.
    Savepoint reading(state_->db.get());
    int rc = reading.Begin();
    if (rc != SQLITE_OK) return SqliteFailure(rc, __LINE__);
    sqlite3_int64 rowid = 0;
    long long checkedLength = 0;
    if (const int found = state_->FindEntry(key.ToUtf8(), rowid, checkedLength)) return found;
    Statement statement;
    rc = Prepare(state_->db.get(), "SELECT value FROM entries WHERE rowid = ?1", statement);
    if (rc == SQLITE_OK) rc = sqlite3_bind_int64(statement.get(), 1, rowid);
    if (rc == SQLITE_OK) rc = sqlite3_step(statement.get());
    if (rc != SQLITE_ROW) return SqliteFailure(rc, __LINE__);

    const auto* value = static_cast<const unsigned char*>(sqlite3_column_blob(statement.get(), 0));
    const int length = sqlite3_column_bytes(statement.get(), 0);
    if (value == nullptr && length > 0) return SqliteFailure(sqlite3_errcode(state_->db.get()), __LINE__);
    bytes.SetSize(length);
    if (length > 0) std::memcpy(bytes.GetData(), value, static_cast<size_t>(length));
    size = length;
    return VT_CF_OK;
}

int VtCompactFile::SetAt(const ZedaUnicodeString& key, const VtByteArray& bytes, int /*flags*/, int /*reserved1*/,
                         int /*reserved2*/)
{
    if (const int refused = State::Check(state_, State::Access::write, __LINE__)) return refused;
    // An empty array may have no storage, and a null blob would bind SQL NULL.
    const auto bindValue = [&bytes](sqlite3_stmt* statement, int index) {
        return bytes.IsEmpty() ? sqlite3_bind_zeroblob(statement, index, 0)
                               : sqlite3_bind_blob64(statement, index, bytes.GetData(),
                                                     static_cast<sqlite3_uint64>(bytes.GetSize()), SQLITE_STATIC);
    };
    return state_->Write([&] { return state_->Store(key.ToUtf8(), bindValue, __LINE__); }, __LINE__);
}

int VtCompactFile::Remove(const ZedaUnicodeString& key)
{
    if (const int refused = State::Check(state_, State::Access::write, __LINE__)) return refused;
    return state_->Write(
        [&]() -> int {
            Statement statement;
            const std::string utf8Key = key.ToUtf8();
            int rc = state_->PrepareForKey("DELETE FROM entries WHERE key = ?1", utf8Key, statement);
            if (rc == SQLITE_OK) rc = sqlite3_step(statement.get());
            if (rc != SQLITE_DONE) return SqliteFailure(rc, __LINE__);
            return sqlite3_changes(state_->db.get()) == 0 ? VT_CF_KEY_NOT_FOUND : VT_CF_OK;
        },
        __LINE__);
}

int VtCompactFile::Compact()
{
    if (const int refused = State::Check(state_, State::Access::write, __LINE__)) return refused;
    // VACUUM cannot run inside a transaction.
    if (const int failed = state_->CommitBatch(__LINE__)) return failed;
    int rc = state_->ConfigureOnce();
    if (rc == SQLITE_OK) rc = Execute(state_->db.get(), "VACUUM");
    return rc == SQLITE_OK ? VT_CF_OK : SqliteFailure(rc, __LINE__);
}

int VtCompactFile::Flush()
{
    if (!state_) return Refuse(VT_CF_NOT_OPEN, "ECf001", __LINE__);
    if (state_->readOnly || state_->indexInfo != VT_CF_INDEX_KEYED) return VT_CF_OK;
    // The commit is synced as it returns; the folder sync keeps the name of a
    // container created since.
    if (const int failed = state_->CommitBatch(__LINE__)) return failed;
    return SyncParentDirectory(state_->fullPath) ? VT_CF_OK : Refuse(VT_CF_IO_ERROR, "ECf008", __LINE__);
}

int VtCompactFile::Close()
{
    if (!state_) return Refuse(VT_CF_NOT_OPEN, "ECf001", __LINE__);
    const int committed = state_->CommitBatch(__LINE__);
    const int rc = sqlite3_close_v2(state_->db.release());
    state_.reset();
    if (committed != VT_CF_OK) return committed;
    return rc == SQLITE_OK ? VT_CF_OK : SqliteFailure(rc, __LINE__);
}

bool VtCompactFile::IsOpen() const
{
    return state_ != nullptr;
}

int VtCompactFile::GetIndexInfo() const
{
    return state_ ? state_->indexInfo : VT_CF_INDEX_NONE;
}

ZedaUnicodeString VtCompactFile::GetFullPath() const
{
    return state_ ? ZedaUnicodeString::FromUtf8(state_->fullPath) : ZedaUnicodeString();
}

std::vector<ZedaUnicodeString> VtCompactFile::GetKeys() const
{
    std::vector<ZedaUnicodeString> keys;
    if (State::Check(state_, State::Access::read, __LINE__) != VT_CF_OK) return keys;
    Statement statement;
    int rc = Prepare(state_->db.get(), "SELECT key FROM entries", statement);
    while (rc == SQLITE_OK && (rc = sqlite3_step(statement.get())) == SQLITE_ROW) {
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), 0));
        const int length = sqlite3_column_bytes(statement.get(), 0);
        keys.push_back(ZedaUnicodeString::FromUtf8(std::string_view(text ? text : "", static_cast<size_t>(length))));
        rc = SQLITE_OK;
    }
    if (rc != SQLITE_DONE) {
        SqliteFailure(rc, __LINE__);
        keys.clear();
    }
    // UTF-8 byte order differs from UTF-16 code-unit order above U+FFFF.
    std::sort(keys.begin(), keys.end());
    return keys;
}

int VtCompactFile::SetAtFromFile(const ZedaUnicodeString& key, const ZedaUnicodeString& filePath)
{
    if (const int refused = State::Check(state_, State::Access::write, __LINE__)) return refused;
    UniqueFd source(::open(filePath.ToUtf8().c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));  // FIFOs refused below
    struct stat info {};
    if (!source.IsValid() || ::fstat(source.Get(), &info) != 0 || !S_ISREG(info.st_mode)) return VT_CF_CANNOT_OPEN;
    // The value is reserved as zeros and then filled chunk by chunk, all in
    // one savepoint, so a failure half-way leaves the old value.
    return state_->Write([&] { return state_->StoreFromFile(key.ToUtf8(), source.Get(), info.st_size); }, __LINE__);
}

int VtCompactFile::LookupToFile(const ZedaUnicodeString& key, const ZedaUnicodeString& filePath)
{
    if (const int refused = State::Check(state_, State::Access::read, __LINE__)) return refused;
    // A read transaction (or the batch) keeps the row from changing between
    // the search and the copy.
    Savepoint reading(state_->db.get());
    int rc = reading.Begin();
    if (rc != SQLITE_OK) return SqliteFailure(rc, __LINE__);
    sqlite3_int64 rowid = 0;
    long long length = 0;
    if (const int found = state_->FindEntry(key.ToUtf8(), rowid, length)) return found;
    Blob blob;
    rc = state_->OpenBlob(rowid, false, blob);
    if (rc != SQLITE_OK) return SqliteFailure(rc, __LINE__);

    const std::string target = filePath.ToUtf8();
    UniqueFd output(::open(target.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    if (!output.IsValid()) return VT_CF_CANNOT_OPEN;
    std::vector<unsigned char> chunk(static_cast<size_t>(std::min(length, chunkSize)));
    int result = VT_CF_OK;
    for (long long offset = 0; offset < length && result == VT_CF_OK;) {
        const long long count = std::min(chunkSize, length - offset);
        rc = sqlite3_blob_read(blob.get(), chunk.data(), static_cast<int>(count), static_cast<int>(offset));
        if (rc != SQLITE_OK)
            result = SqliteFailure(rc, __LINE__);
        else if (!WriteFully(output.Get(), chunk.data(), count))
            result = Refuse(VT_CF_IO_ERROR, "ECf008", __LINE__);
        offset += count;
    }
    if (!output.Close() && result == VT_CF_OK) result = Refuse(VT_CF_IO_ERROR, "ECf008", __LINE__);
    // A half-written copy is worse than none.
    if (result != VT_CF_OK) ::unlink(target.c_str());
    return result;
}

}  // namespace VTC
