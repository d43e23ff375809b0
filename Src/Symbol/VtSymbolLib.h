#pragma once

#include <map>
#include <memory>
#include <vector>

#include "LqBase.h"
#include "VtSymbol.h"

namespace VTC {

class VtStream;
class VtSymbolGroup;
class VtCompactFile;
class VtPositionIndex;

// Abstract base of every symbol library: owns symbols by ID, keeps their user
// order (the index) and names, owns the root of the group tree, and saves and
// loads library files with their resource cache.
class LQ_EXPORT VtSymbolLib {
public:
    VtSymbolLib();
    virtual ~VtSymbolLib();
    VtSymbolLib(const VtSymbolLib&) = delete;
    VtSymbolLib& operator=(const VtSymbolLib&) = delete;

    // Replaces the contents with what `stream` holds at its position, sets `version`.
    virtual unsigned char LoadFromStream(VtStream& stream, unsigned char flag) = 0;
    // Adds the symbols `stream` holds to the current contents.
    virtual unsigned char AppendFromStream(VtStream& stream, unsigned char flag) = 0;
    // Writes the whole library in format `version`.
    virtual unsigned char SaveToStream(VtStream& stream, unsigned int version, unsigned char flag) = 0;
    // 0 = marker library, 1 = line library.
    virtual int GetLibType() const = 0;
    // `version`, or the current container format version when it is 0.
    virtual int GetCompatibleVersion(int version) const;
    // Hands in a container that the library uses but never closes or deletes.
    virtual void SetExternalStorage(VtCompactFile* externalStorage);
    // Makes `path` the base of the resource cache; must set `cachePath` and
    // accept an argument that aliases it.
    virtual void SetCachePath(const ZedaUnicodeString& path) = 0;
    // Copies the cache files of one base path to another.
    virtual void CopySymbolRes(const ZedaUnicodeString& from, const ZedaUnicodeString& to) const;
    // Hooks for moving resources between cache files and a container; empty here.
    virtual void CopySymbolRes(const ZedaUnicodeString& from, VtCompactFile* to) const;
    virtual void CopySymbolRes(const ZedaUnicodeString& to) const;
    virtual void CopySymbolRes(VtCompactFile* to) const;

    // Accessors.
    unsigned int GetVersion();
    unsigned char IsModified() const;
    void SetModifiedFlag(unsigned char flag);
    int GetSymbolCount() const;
    VtSymbolGroup* GetRootGroup() const;
    void SetLibPath(const ZedaUnicodeString& path);
    ZedaUnicodeString GetLibPath() const;
    void SetDefaultPath(const ZedaUnicodeString& path);
    ZedaUnicodeString GetDefaultPath() const;
    ZedaUnicodeString GetCachePath() const;

    // Registry.
    // Takes ownership of `symbol` and returns 1; returns 0 and leaves it to the
    // caller only when it needs a new ID and the library already holds the largest.
    unsigned char AddSymbol(VtSymbol* symbol, VtSymbolGroup* group = nullptr);
    void InsertAt(int index, VtSymbol* symbol);
    int RemoveAt(int index, int count = 1);
    unsigned char RemoveID(int id);
    void RemoveAll();
    unsigned char Swap(int index1, int index2);
    void SortByID();
    unsigned char SetIDAt(int index, int newID);
    int GetIDAt(int index) const;
    int GetMaxID() const;
    int FindID(int id) const;
    unsigned char IsIDExisted(int id) const;
    VtSymbol* GetSymbolByID(int id) const;
    VtSymbol* GetSymbolAt(int index) const;
    int GetIDByName(const ZedaUnicodeString& name);
    int FindName(const ZedaUnicodeString& name, int start = 0) const;
    int ReverseFindName(const ZedaUnicodeString& name, int start = 0) const;
    ZedaUnicodeString GetNameAt(int index) const;
    void SetNameAt(int index, const ZedaUnicodeString& name);

    // Library files.
    unsigned char SaveToFile(const ZedaUnicodeString& path, unsigned int fileVersion);
    unsigned char LoadFromFile(const ZedaUnicodeString& path);
    unsigned char LoadDefault();
    unsigned char AppendFromFile(const ZedaUnicodeString& path, unsigned char flag);

    // Resource cache.
    ZedaUnicodeString GetAvailableCachePath() const;
    unsigned char DeleteCacheFile(const ZedaUnicodeString& path) const;
    void SaveCacheToLib(VtStream& stream, unsigned int fileVersion) const;
    void LoadCacheFromLib(VtStream& stream);
    void SaveLockFileToStream(VtStream& stream) const;
    unsigned char LoadLockFileFromStream(VtStream& stream, ZedaUnicodeString& lockPath) const;
    void CopyCacheToStream(VtStream& stream, ZedaUnicodeString& path) const;
    void CopyStreamToCache(VtStream& stream, ZedaUnicodeString& path) const;

    // The current container format version.
    static constexpr unsigned int containerVersion = 20120328;

protected:
    // Derived libraries read `idList` freely but change it only through the
    // registry operations, which keep the index of positions up to date.
    std::map<int, VtSymbol*> symbols;
    std::vector<int> idList;
    unsigned long long idGrowStep;
    VtSymbolGroup* rootGroup;
    unsigned int version;
    unsigned char modified;
    ZedaUnicodeString defaultPath;
    ZedaUnicodeString libPath;
    ZedaUnicodeString cachePath;
    VtCompactFile* storage;
    unsigned char storageIsExternal;

private:
    // Where each ID stands in `idList`.
    std::unique_ptr<VtPositionIndex> idIndex;

    unsigned char SaveToStreamFile(const ZedaUnicodeString& path, unsigned int fileVersion);
    unsigned char SaveToContainer(const ZedaUnicodeString& path);
    // Replaces `storage` with a new container at `path`; false when it cannot be made.
    bool AdoptNewContainer(const ZedaUnicodeString& path);
    // Closes and deletes `storage` unless it is external; `storage` becomes null.
    void ReleaseOwnedStorage();
};

}  // namespace VTC
