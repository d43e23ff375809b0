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

// A container file of keyed byte entries, kept in one SQLite database. Every
// write is atomic: a crash at any moment leaves each entry as it was before
// the unfinished write or as that write made it.
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
    // Gives unused space back to the file system.
    int Compact();
    // Makes every write so far durable.
    int Flush();
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
