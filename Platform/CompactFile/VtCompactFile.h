#pragma once

#include <memory>
#include <vector>

#include "LqExport.h"
#include "VtByteArray.h"
#include "ZedaUnicodeString.h"

namespace VTC {

using ZEDA::ZedaUnicodeString;

// Results of the VtCompactFile operations; 0 is success.
enum VtCompactFileResult : int {
    VT_CF_OK = 0,
    VT_CF_NOT_OPEN = 1,         // no container is open
    VT_CF_ALREADY_OPEN = 2,     // Create/Open on an object that holds an open container
    VT_CF_CANNOT_OPEN = 3,      // the file is missing or cannot be opened or created
    VT_CF_NOT_CONTAINER = 4,    // the file is not a database at all
    VT_CF_PASSWORD = 5,         // a non-empty password: encryption is not offered
    VT_CF_BAD_MODE = 6,         // an open mode or index size that is not supported
    VT_CF_KEY_NOT_FOUND = 7,    // Lookup/Remove of a key that is not there
    VT_CF_IO_ERROR = 8,         // the database reported an error while reading or writing
    VT_CF_READ_ONLY = 9,        // a write to a container opened for reading only
    VT_CF_FOREIGN = 10,         // an entry operation on a database that is not such a container
};

// Open modes.
enum VtCompactFileMode : int { VT_CF_MODE_READ = 1, VT_CF_MODE_READWRITE = 4 };

// GetIndexInfo values.
enum VtCompactFileIndexInfo : int {
    VT_CF_INDEX_NONE = 0,     // nothing is open
    VT_CF_INDEX_KEYED = 1,    // a container this platform wrote
    VT_CF_INDEX_FOREIGN = 3,  // a database that opened but is not such a container
};

// A container file of keyed byte entries, kept in one SQLite database.
//
// The writes (SetAt, Remove, SetAtFromFile) between two Flush calls form one
// transaction, begun by the first of them: a crash or a kill before Flush
// returns leaves every entry as the last Flush left it, or, once Flush has
// begun, as the whole interval made it; never a mixture. Lookup, GetKeys and
// LookupToFile on the same object see the pending writes; other connections
// see the last Flush's state and cannot write until the next one (a large
// batch may hold off their reads too). Close commits pending writes, so a
// closed container never loses acknowledged writes.
//
// A write that fails leaves its entry as it was and the other pending writes
// intact. Should SQLite abandon the batch (an I/O error, a full disk), the
// pending writes are lost and the next Flush, Compact or Close reports
// VT_CF_IO_ERROR.
class LQ_EXPORT VtCompactFile {
public:
    VtCompactFile();
    ~VtCompactFile();  // closes
    VtCompactFile(const VtCompactFile&) = delete;
    VtCompactFile& operator=(const VtCompactFile&) = delete;

    // Creates a new, empty container (replacing nothing: an existing file is
    // refused with VT_CF_CANNOT_OPEN). indexSize is accepted for compatibility (32).
    int Create(const ZedaUnicodeString& path, int indexSize, const ZedaUnicodeString& password, int mode);
    // Opens an existing file. A database of another layout opens with
    // GetIndexInfo() == VT_CF_INDEX_FOREIGN and refuses every entry operation.
    int Open(const ZedaUnicodeString& path, const ZedaUnicodeString& password, int mode);
    int Lookup(const ZedaUnicodeString& key, VtByteArray& bytes, long long& size, int flags);
    int SetAt(const ZedaUnicodeString& key, const VtByteArray& bytes, int flags, int reserved1, int reserved2);
    int Remove(const ZedaUnicodeString& key);
    // Commits pending writes, then gives unused space back to the file system.
    int Compact();
    // Commits pending writes, durable when it returns.
    int Flush();
    // Commits pending writes and closes; the object is closed even when that
    // commit fails (the writes are then lost and VT_CF_IO_ERROR is returned).
    int Close();

    bool IsOpen() const;
    int GetIndexInfo() const;
    ZedaUnicodeString GetFullPath() const;  // absolute path of the open file, "" when closed
    std::vector<ZedaUnicodeString> GetKeys() const;  // sorted by code units

    // Streamed entry access for large values: moves data in chunks of at most
    // chunkSize bytes, never the whole value in memory.
    int SetAtFromFile(const ZedaUnicodeString& key, const ZedaUnicodeString& filePath);
    int LookupToFile(const ZedaUnicodeString& key, const ZedaUnicodeString& filePath);
    static constexpr long long chunkSize = 2 * 1024 * 1024;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace VTC
