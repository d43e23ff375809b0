#pragma once

#include <string>
#include <vector>

#include "LqBase.h"
#include "RasterImage.h"

namespace VTC {
class VtCompactFile;
}

namespace LqExample {

using ZEDA::ZedaUnicodeString;

// Where a symbol's picture lies in the "sc" file of its library's cache.
struct LQ_EXPORT ResourceRef {
    long long offset = 0;
    long long length = 0;  // 0: no picture

    bool IsNull() const { return length == 0; }
    friend bool operator==(const ResourceRef&, const ResourceRef&) = default;
};

// One record as the "sc00" index describes it.
struct LQ_EXPORT ResourceEntry {
    ResourceRef ref;
    int width = 0;
    int height = 0;
    unsigned int checksum = 0;  // CRC-32 of the pixel bytes
};

// The resource cache of a library: three files that share one base path.
//
//   <base>.lock  the string "lock" in the stream's string encoding; its
//                presence marks a complete cache.
//   <base>.sc    header: int "LQSC", int layout version 1; then picture
//                records back to back, each: int "LQIM", int width,
//                int height, uint CRC-32 of the pixel bytes, then
//                width x height pixels of 4 bytes (ZEDARGBA, little-endian).
//   <base>.sc00  header: int "LQSX", int layout version 1; then one entry of
//                28 bytes per record, in file order: int64 offset,
//                int64 length, int width, int height, uint CRC-32.
//
// All integers are little-endian. Records are only ever appended, so the
// index tiles the data file from byte 8 without gaps; a symbol names its
// record by offset and length. Both files hold their header even when empty,
// so a cache never has an empty file (a library stream cannot carry one).
// In a container the two files travel as the entries "SymbolRes.sc" and
// "SymbolRes.sc00"; the lock file is made anew when they are taken out.
class LQ_EXPORT ResourceCache {
public:
    static constexpr int dataMagic = 0x4353514C;    // "LQSC"
    static constexpr int indexMagic = 0x5853514C;   // "LQSX"
    static constexpr int recordMagic = 0x4D49514C;  // "LQIM"
    static constexpr int layoutVersion = 1;
    static constexpr long long headerBytes = 8;
    static constexpr long long recordHeaderBytes = 16;
    static constexpr long long indexEntryBytes = 28;
    static constexpr int maxImageSide = 8192;

    static const ZedaUnicodeString dataEntryKey;
    static const ZedaUnicodeString indexEntryKey;

    static ZedaUnicodeString LockPath(const ZedaUnicodeString& base);
    static ZedaUnicodeString DataPath(const ZedaUnicodeString& base);
    static ZedaUnicodeString IndexPath(const ZedaUnicodeString& base);
    // The length of the record of a width x height picture.
    static long long RecordLength(int width, int height);

    // Writes an empty cache at `base`, replacing the three files.
    static bool Create(const ZedaUnicodeString& base);
    // True when the lock, data and index files all exist.
    static bool Exists(const ZedaUnicodeString& base);
    // Stores the data and index files of `base` as container entries.
    static bool CopyToContainer(const ZedaUnicodeString& base, VTC::VtCompactFile& container);
    // Makes the cache at `base` from the container's entries; false when the
    // container holds none (then nothing is written).
    static bool CopyFromContainer(VTC::VtCompactFile& container, const ZedaUnicodeString& base);
    // Drops the resource entries of a container, if any.
    static void RemoveFromContainer(VTC::VtCompactFile& container);

    // Reads the index of the cache at `base` and checks that it describes
    // the data file; on failure the cache stays closed and `error` says why.
    bool Open(const ZedaUnicodeString& base, std::string& error);
    void Close();
    bool IsOpen() const { return open_; }
    const ZedaUnicodeString& GetBase() const { return base_; }
    const std::vector<ResourceEntry>& GetEntries() const { return entries_; }
    // The entry of the record at exactly this place, or null.
    const ResourceEntry* Find(const ResourceRef& ref) const;

    // Reads a record, checking its header and its checksum.
    bool Read(const ResourceRef& ref, RasterImage& image, std::string& error) const;
    // Appends a record and its index entry; a null ref on failure.
    ResourceRef Append(const RasterImage& image);

private:
    bool ReadIndex(std::string& error);

    ZedaUnicodeString base_;
    std::vector<ResourceEntry> entries_;
    long long recordsEnd_ = headerBytes;  // where the next record goes
    bool open_ = false;
};

}  // namespace LqExample
