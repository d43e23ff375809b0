#include "ResourceCache.h"

#include <zlib.h>

#include <algorithm>

#include "LqCompactFile.h"
#include "LqStream.h"

namespace LqExample {

using VTC::VtCompactFile;
using VTC::VtFile;
using VTC::VtFileStream;

const ZedaUnicodeString ResourceCache::dataEntryKey(u"SymbolRes.sc");
const ZedaUnicodeString ResourceCache::indexEntryKey(u"SymbolRes.sc00");

namespace {

unsigned int Checksum(const std::vector<unsigned char>& bytes)
{
    const uLong initial = crc32_z(0L, Z_NULL, 0);
    return static_cast<unsigned int>(crc32_z(initial, bytes.data(), bytes.size()));
}

std::vector<unsigned char> EncodePixels(const RasterImage& image)
{
    std::vector<unsigned char> bytes;
    bytes.reserve(image.pixels.size() * 4);
    for (const unsigned int pixel : image.pixels)
        for (int shift = 0; shift < 32; shift += 8)
            bytes.push_back(static_cast<unsigned char>(pixel >> shift));
    return bytes;
}

void DecodePixels(const std::vector<unsigned char>& bytes, RasterImage& image)
{
    for (std::size_t i = 0; i < image.pixels.size(); ++i) {
        const unsigned char* p = &bytes[i * 4];
        image.pixels[i] = static_cast<unsigned int>(p[0]) | static_cast<unsigned int>(p[1]) << 8 |
                          static_cast<unsigned int>(p[2]) << 16 | static_cast<unsigned int>(p[3]) << 24;
    }
}

bool WriteHeader(const ZedaUnicodeString& path, int magic)
{
    VtFileStream file;
    if (!file.Open(path, VTC::VT_STREAM_WRITE))
        return false;
    const bool written = file.WriteInt(magic) && file.WriteInt(ResourceCache::layoutVersion);
    return file.Close() && written;
}

bool WriteLock(const ZedaUnicodeString& path)
{
    VtFileStream file;
    if (!file.Open(path, VTC::VT_STREAM_WRITE))
        return false;
    file << ZedaUnicodeString(u"lock");
    return file.Close();
}

bool ReadHeader(VtFileStream& file, int magic)
{
    int storedMagic = 0;
    int storedVersion = 0;
    return file.ReadInt(storedMagic) && file.ReadInt(storedVersion) && storedMagic == magic &&
           storedVersion == ResourceCache::layoutVersion;
}

bool IsValidSide(int side)
{
    return side > 0 && side <= ResourceCache::maxImageSide;
}

}  // namespace

ZedaUnicodeString ResourceCache::LockPath(const ZedaUnicodeString& base)
{
    return VtFile::ChangeExt(base, u"lock");
}

ZedaUnicodeString ResourceCache::DataPath(const ZedaUnicodeString& base)
{
    return VtFile::ChangeExt(base, u"sc");
}

ZedaUnicodeString ResourceCache::IndexPath(const ZedaUnicodeString& base)
{
    return VtFile::ChangeExt(base, u"sc00");
}

long long ResourceCache::RecordLength(int width, int height)
{
    return recordHeaderBytes + static_cast<long long>(width) * height * 4;
}

bool ResourceCache::Create(const ZedaUnicodeString& base)
{
    return WriteLock(LockPath(base)) && WriteHeader(DataPath(base), dataMagic) &&
           WriteHeader(IndexPath(base), indexMagic);
}

bool ResourceCache::Exists(const ZedaUnicodeString& base)
{
    return VtFile::IsExist(LockPath(base)) && VtFile::IsExist(DataPath(base)) && VtFile::IsExist(IndexPath(base));
}

bool ResourceCache::CopyToContainer(const ZedaUnicodeString& base, VtCompactFile& container)
{
    return container.SetAtFromFile(dataEntryKey, DataPath(base)) == VTC::VT_CF_OK &&
           container.SetAtFromFile(indexEntryKey, IndexPath(base)) == VTC::VT_CF_OK;
}

bool ResourceCache::CopyFromContainer(VtCompactFile& container, const ZedaUnicodeString& base)
{
    if (container.LookupToFile(dataEntryKey, DataPath(base)) != VTC::VT_CF_OK)
        return false;
    if (container.LookupToFile(indexEntryKey, IndexPath(base)) != VTC::VT_CF_OK || !WriteLock(LockPath(base))) {
        VtFile::Delete(DataPath(base));
        VtFile::Delete(IndexPath(base));
        return false;
    }
    return true;
}

void ResourceCache::RemoveFromContainer(VtCompactFile& container)
{
    container.Remove(dataEntryKey);
    container.Remove(indexEntryKey);
}

bool ResourceCache::Open(const ZedaUnicodeString& base, std::string& error)
{
    Close();
    base_ = base;
    if (!Exists(base)) {
        error = "the resource cache " + base.ToUtf8() + " is incomplete (lock, sc or sc00 missing)";
        return false;
    }
    if (!ReadIndex(error)) {
        entries_.clear();
        return false;
    }
    open_ = true;
    return true;
}

void ResourceCache::Close()
{
    open_ = false;
    entries_.clear();
    recordsEnd_ = headerBytes;
}

// The index must tile the data file from its header on: each entry starts
// where the previous one ended and is exactly as long as its picture needs.
bool ResourceCache::ReadIndex(std::string& error)
{
    VtFileStream data;
    if (!data.Open(DataPath(base_), VTC::VT_STREAM_READ) || !ReadHeader(data, dataMagic)) {
        error = "the resource data file has no valid header";
        return false;
    }
    const long long dataLength = data.GetLength();
    VtFileStream index;
    if (!index.Open(IndexPath(base_), VTC::VT_STREAM_READ) || !ReadHeader(index, indexMagic) ||
        (index.GetLength() - headerBytes) % indexEntryBytes != 0) {
        error = "the resource index file is damaged";
        return false;
    }
    const long long count = (index.GetLength() - headerBytes) / indexEntryBytes;
    entries_.reserve(static_cast<std::size_t>(count));
    long long expectedOffset = headerBytes;
    for (long long i = 0; i < count; ++i) {
        ResourceEntry entry;
        int checksum = 0;
        if (!index.ReadInt64(entry.ref.offset) || !index.ReadInt64(entry.ref.length) || !index.ReadInt(entry.width) ||
            !index.ReadInt(entry.height) || !index.ReadInt(checksum) || entry.ref.offset != expectedOffset ||
            !IsValidSide(entry.width) || !IsValidSide(entry.height) ||
            entry.ref.length != RecordLength(entry.width, entry.height) ||
            entry.ref.length > dataLength - entry.ref.offset) {
            error = "the resource index does not match the data file (entry " + std::to_string(i) + ")";
            return false;
        }
        entry.checksum = static_cast<unsigned int>(checksum);
        expectedOffset += entry.ref.length;
        entries_.push_back(entry);
    }
    recordsEnd_ = expectedOffset;
    return true;
}

const ResourceEntry* ResourceCache::Find(const ResourceRef& ref) const
{
    const auto it = std::lower_bound(entries_.begin(), entries_.end(), ref.offset,
                                     [](const ResourceEntry& entry, long long offset) { return entry.ref.offset < offset; });
    if (it == entries_.end() || it->ref != ref)
        return nullptr;
    return &*it;
}

bool ResourceCache::Read(const ResourceRef& ref, RasterImage& image, std::string& error) const
{
    const ResourceEntry* entry = open_ ? Find(ref) : nullptr;
    if (!entry) {
        error = "no picture record at offset " + std::to_string(ref.offset);
        return false;
    }
    VtFileStream data;
    int magic = 0;
    int width = 0;
    int height = 0;
    int checksum = 0;
    if (!data.Open(DataPath(base_), VTC::VT_STREAM_READ) || !data.SetPosition(ref.offset, 0) ||
        !data.ReadInt(magic) || !data.ReadInt(width) || !data.ReadInt(height) || !data.ReadInt(checksum) ||
        magic != recordMagic || width != entry->width || height != entry->height ||
        static_cast<unsigned int>(checksum) != entry->checksum) {
        error = "the picture record at offset " + std::to_string(ref.offset) + " has a damaged header";
        return false;
    }
    std::vector<unsigned char> bytes(static_cast<std::size_t>(ref.length - recordHeaderBytes));
    if (data.Load(bytes.data(), static_cast<unsigned long>(bytes.size())) != bytes.size() ||
        Checksum(bytes) != entry->checksum) {
        error = "the picture record at offset " + std::to_string(ref.offset) + " fails its checksum";
        return false;
    }
    RasterImage decoded(width, height);
    DecodePixels(bytes, decoded);
    image = std::move(decoded);
    return true;
}

ResourceRef ResourceCache::Append(const RasterImage& image)
{
    if (!open_ || !IsValidSide(image.width) || !IsValidSide(image.height) ||
        image.pixels.size() != static_cast<std::size_t>(image.width) * image.height)
        return {};
    const std::vector<unsigned char> bytes = EncodePixels(image);
    const ResourceEntry entry{{recordsEnd_, RecordLength(image.width, image.height)}, image.width, image.height,
                              Checksum(bytes)};

    VtFileStream data;
    if (!data.Open(DataPath(base_), VTC::VT_STREAM_READWRITE) || !data.SetPosition(entry.ref.offset, 0))
        return {};
    const bool recordWritten = data.WriteInt(recordMagic) && data.WriteInt(entry.width) &&
                               data.WriteInt(entry.height) && data.WriteInt(static_cast<int>(entry.checksum)) &&
                               data.Save(bytes.data(), static_cast<unsigned long>(bytes.size())) == bytes.size();
    if (!data.Close() || !recordWritten)
        return {};

    // A record without its index entry is only unused space: the next append
    // writes over it.
    VtFileStream index;
    if (!index.Open(IndexPath(base_), VTC::VT_STREAM_READWRITE) || !index.SetPosition(0, 2))
        return {};
    const bool entryWritten = index.WriteInt64(entry.ref.offset) && index.WriteInt64(entry.ref.length) &&
                              index.WriteInt(entry.width) && index.WriteInt(entry.height) &&
                              index.WriteInt(static_cast<int>(entry.checksum));
    if (!index.Close() || !entryWritten)
        return {};
    entries_.push_back(entry);
    recordsEnd_ += entry.ref.length;
    return entry.ref;
}

}  // namespace LqExample
