#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ResourceCache.h"
#include "VtSymbol.h"
#include "VtSymbolLib.h"

namespace VTC {
class VtStream;
class VtSymbolGroup;
}  // namespace VTC

namespace LqExample {

// A symbol whose picture lives in its library's resource cache.
class LQ_EXPORT ResourceSymbol : public VTC::VtSymbol {
public:
    ResourceRef resource;

protected:
    ResourceSymbol() = default;
};

// Doubles travel as the 8 bytes of their IEEE-754 form, as one int64.
LQ_EXPORT bool WriteDouble(VTC::VtStream& stream, double value);
LQ_EXPORT bool ReadDouble(VTC::VtStream& stream, double& value);

// What the last successful load found in a library stream.
struct LQ_EXPORT LibraryReport {
    unsigned int formatVersion = 0;
    bool containerForm = false;
    bool cacheSection = false;    // a cache section followed the stream image
    std::string stamp;            // its type stamp as stored ("Mar", "Li")
    long long cacheDataBytes = 0;   // length of the "sc" file it carried
    long long cacheIndexBytes = 0;  // length of the "sc00" file it carried
};

// The common ground of the example libraries: the stream image, the group
// tree, and the pictures of the symbols in a resource cache (ResourceCache)
// that travels in the stream's cache section or in container entries.
//
// Stream image, in order (integers and strings in the stream's encoding):
//   int magic (the kind of library), int format version, int symbol count;
//   per symbol in user order: int ID, string name, the kind's own fields,
//   int64 picture offset, int64 picture length (0 and 0 without a picture);
//   the root group's record (VtSymbolGroup::Save);
//   in the stream form only (any version but the container one), the cache
//   section (VtSymbolLib::SaveCacheToLib).
//
// The cache files are the working copy of the pictures at all times: loading
// a container takes its entries out into a fresh cache, and saving writes the
// cache back into the container. A cache outside the temporary directory
// (one lying next to a library file) is never written: the first new picture
// copies it into the temporary directory first.
//
// Every failure is logged (level 300, source "examples/ResourceSymbolLib")
// and explained by GetLastError(), which a successful call clears; a load that
// fails leaves the library empty.
class LQ_EXPORT ResourceSymbolLib : public VTC::VtSymbolLib {
public:
    ~ResourceSymbolLib() override;

    unsigned char LoadFromStream(VTC::VtStream& stream, unsigned char flag) override;
    // A non-zero flag files the appended symbols into groups of the same
    // names as in the stream (merged with existing ones); 0 files them all
    // into the root group. IDs already in use are renumbered.
    unsigned char AppendFromStream(VTC::VtStream& stream, unsigned char flag) override;
    unsigned char SaveToStream(VTC::VtStream& stream, unsigned int fileVersion, unsigned char flag) override;
    void SetCachePath(const ZedaUnicodeString& path) override;

    using VTC::VtSymbolLib::CopySymbolRes;
    // Cache files of `from` into the container's entries.
    void CopySymbolRes(const ZedaUnicodeString& from, VTC::VtCompactFile* to) const override;
    // The library's cache into a fresh cache base `to` (the library holds a container).
    void CopySymbolRes(const ZedaUnicodeString& to) const override;
    // The library's cache into a new container (the library holds a container).
    void CopySymbolRes(VTC::VtCompactFile* to) const override;

    // Gives a symbol a new picture (an empty image takes its picture away).
    bool SetSymbolImage(int id, const RasterImage& image);
    bool GetSymbolImage(int id, RasterImage& image) const;
    bool HasSymbolImage(int id) const;
    // The open resource cache, or null when the library has none.
    const ResourceCache* GetResourceCache() const;

    VTC::VtCompactFile* GetStorage() const { return storage; }
    const std::string& GetLastError() const { return lastError_; }
    const LibraryReport& GetReport() const { return report_; }

    // The magic that starts every stream image of this kind of library.
    virtual int GetStreamMagic() const = 0;

protected:
    ResourceSymbolLib() = default;

    // A new, empty symbol of the library's kind.
    virtual ResourceSymbol* NewSymbol() const = 0;
    // Whether a symbol is of the library's kind (others are refused).
    virtual bool IsOwnKind(const ResourceSymbol& symbol) const = 0;
    // The kind's own fields, for a symbol of the library's kind.
    virtual bool WriteFields(VTC::VtStream& stream, const ResourceSymbol& symbol) const = 0;
    // False when the fields cannot be read or are out of range.
    virtual bool ReadFields(VTC::VtStream& stream, ResourceSymbol& symbol) const = 0;

private:
    using SymbolList = std::vector<std::unique_ptr<ResourceSymbol>>;
    struct CacheSection;
    struct SyncState {
        std::u16string container;
        ZedaUnicodeString base;
        long long dataLength = -1;
        long long indexLength = -1;
    };

    bool LoadImage(VTC::VtStream& stream);
    bool AppendImage(VTC::VtStream& stream, unsigned char flag);
    bool SaveImage(VTC::VtStream& stream, unsigned int fileVersion);

    bool ReadHeader(VTC::VtStream& stream, unsigned int& fileVersion);
    bool ReadSymbols(VTC::VtStream& stream, SymbolList& parsed);
    bool WriteSymbols(VTC::VtStream& stream);
    static bool CheckTree(const VTC::VtSymbolGroup& root, const std::vector<int>& ids);
    const ResourceSymbol* FirstWithoutFreeId(const SymbolList& parsed) const;

    bool ScanCacheSection(VTC::VtStream& stream, CacheSection& section);
    bool TakeResourcesFromStream(VTC::VtStream& stream);
    void TakeResourcesFromStorage();
    bool ImportResources(VTC::VtStream& stream, unsigned int fileVersion, SymbolList& parsed);
    bool CheckResources();

    ResourceCache* OpenedCache() const;
    bool EnsureWritableCache();
    bool HasAnyResource() const;
    ResourceSymbol* FindSymbol(int id) const;

    void RememberSync(const VTC::VtCompactFile& container, const ZedaUnicodeString& base) const;
    bool IsSynced(const VTC::VtCompactFile& container) const;

    bool StoreSymbolImage(int id, const RasterImage& image);
    bool ReadSymbolImage(int id, RasterImage& image) const;

    bool Fail(const char* code, std::string message, int line) const;
    bool Succeeded(bool ok) const;

    mutable ResourceCache cache_;
    mutable SyncState sync_;
    mutable std::string lastError_;
    LibraryReport report_;
};

// A library of one kind of symbol. The kinds differ only in their library
// type, their stream magic and their symbol class, whose Write and Read carry
// the kind's own fields.
template <typename Symbol, int libType, int magic>
class LQ_EXPORT ResourceSymbolLibOf : public ResourceSymbolLib {
public:
    static constexpr int streamMagic = magic;

    int GetLibType() const override { return libType; }
    int GetStreamMagic() const override { return streamMagic; }

protected:
    ResourceSymbolLibOf() = default;

    // The symbol of that ID, or null (without a log line).
    Symbol* FindOfKind(int id) const
    {
        const auto found = symbols.find(id);
        return found == symbols.end() ? nullptr : dynamic_cast<Symbol*>(found->second);
    }

    ResourceSymbol* NewSymbol() const override { return new Symbol; }

    bool IsOwnKind(const ResourceSymbol& symbol) const override
    {
        return dynamic_cast<const Symbol*>(&symbol) != nullptr;
    }

    bool WriteFields(VTC::VtStream& stream, const ResourceSymbol& symbol) const override
    {
        return static_cast<const Symbol&>(symbol).Write(stream);
    }

    bool ReadFields(VTC::VtStream& stream, ResourceSymbol& symbol) const override
    {
        return static_cast<Symbol&>(symbol).Read(stream);
    }
};

}  // namespace LqExample
