#include "ResourceSymbolLib.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <map>
#include <set>
#include <unordered_set>

#include "LqCompactFile.h"
#include "LqStream.h"
#include "LqToolkit.h"
#include "VtCacheSection.h"
#include "VtSymbolGroup.h"

namespace LqExample {

using VTC::VtCompactFile;
using VTC::VtFile;
using VTC::VtStream;
using VTC::VtSymbolGroup;

namespace {

constexpr const char* logSource = "examples/ResourceSymbolLib";
// ID, an empty name, two picture integers: the least a symbol record takes.
constexpr long long minSymbolBytes = 4 + 4 + 16;

bool IsTemporary(const ZedaUnicodeString& path)
{
    return !path.IsEmpty() && path.Find(VtFile::GetTemporaryPath()) >= 0;
}

bool IsContainerVersion(unsigned int fileVersion)
{
    return fileVersion == VTC::VtSymbolLib::containerVersion;
}

bool IsValidRef(const ResourceRef& ref)
{
    if (ref.IsNull())
        return ref.offset == 0;
    return ref.offset >= ResourceCache::headerBytes && ref.length > ResourceCache::recordHeaderBytes;
}

// Deletes a scratch cache in the temporary directory when it goes out of scope.
class ScratchCache {
public:
    explicit ScratchCache(const VTC::VtSymbolLib& lib) : lib_(lib), base_(lib.GetAvailableCachePath()) {}
    ~ScratchCache() { lib_.DeleteCacheFile(base_); }
    ScratchCache(const ScratchCache&) = delete;
    ScratchCache& operator=(const ScratchCache&) = delete;
    const ZedaUnicodeString& Base() const { return base_; }

private:
    const VTC::VtSymbolLib& lib_;
    ZedaUnicodeString base_;
};

}  // namespace

bool WriteDouble(VtStream& stream, double value)
{
    return stream.WriteInt64(std::bit_cast<long long>(value));
}

bool ReadDouble(VtStream& stream, double& value)
{
    long long bits = 0;
    if (!stream.ReadInt64(bits))
        return false;
    value = std::bit_cast<double>(bits);
    return true;
}

// The fields of a cache section as VtSymbolLib::SaveCacheToLib writes them.
struct ResourceSymbolLib::CacheSection {
    bool present = false;
    std::string stamp;
    long long dataBytes = 0;
    long long indexBytes = 0;
};

ResourceSymbolLib::~ResourceSymbolLib() = default;

bool ResourceSymbolLib::Fail(const char* code, std::string message, int line) const
{
    VTC::VtLogFile::GetInstance(false)->RecordLog(300, code, logSource, line);
    lastError_ = std::move(message);
    return false;
}

// A call that succeeds leaves no error behind, neither an earlier call's nor
// one of a step it recovered from.
bool ResourceSymbolLib::Succeeded(bool ok) const
{
    if (ok)
        lastError_.clear();
    return ok;
}

// ---------------------------------------------------------------- loading

unsigned char ResourceSymbolLib::LoadFromStream(VtStream& stream, unsigned char /*flag*/)
{
    RemoveAll();
    report_ = {};
    if (Succeeded(LoadImage(stream)))
        return 1;
    RemoveAll();
    return 0;
}

bool ResourceSymbolLib::LoadImage(VtStream& stream)
{
    unsigned int fileVersion = 0;
    SymbolList parsed;
    if (!ReadHeader(stream, fileVersion) || !ReadSymbols(stream, parsed))
        return false;
    version = fileVersion;
    std::vector<int> ids;
    for (auto& symbol : parsed) {
        ids.push_back(symbol->ID);
        InsertAt(-1, symbol.release());
    }
    rootGroup->Clear();
    rootGroup->Load(stream, fileVersion);
    if (stream.IsFailed() || !CheckTree(*rootGroup, ids))
        return Fail("EXl003", "the group tree is damaged", __LINE__);

    report_.formatVersion = fileVersion;
    report_.containerForm = IsContainerVersion(fileVersion);
    if (report_.containerForm)
        TakeResourcesFromStorage();
    else if (!TakeResourcesFromStream(stream))
        return false;
    return CheckResources();
}

bool ResourceSymbolLib::ReadHeader(VtStream& stream, unsigned int& fileVersion)
{
    int magic = 0;
    int storedVersion = 0;
    if (!stream.ReadInt(magic) || magic != GetStreamMagic())
        return Fail("EXl001", "not a library of this kind (wrong magic number)", __LINE__);
    if (!stream.ReadInt(storedVersion))
        return Fail("EXl001", "the library header is truncated", __LINE__);
    fileVersion = static_cast<unsigned int>(storedVersion);
    return true;
}

bool ResourceSymbolLib::ReadSymbols(VtStream& stream, SymbolList& parsed)
{
    int count = 0;
    if (!stream.ReadInt(count) || count < 0 || count > stream.GetRemaining() / minSymbolBytes)
        return Fail("EXl002", "the symbol count is damaged", __LINE__);
    std::set<int> seen;
    parsed.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        std::unique_ptr<ResourceSymbol> symbol(NewSymbol());
        stream.ReadInt(symbol->ID);
        stream >> symbol->name;
        const bool fieldsRead = !stream.IsFailed() && ReadFields(stream, *symbol);
        stream.ReadInt64(symbol->resource.offset);
        stream.ReadInt64(symbol->resource.length);
        if (!fieldsRead || stream.IsFailed() || !IsValidRef(symbol->resource))
            return Fail("EXl002", "symbol record " + std::to_string(i) + " is damaged", __LINE__);
        if (!seen.insert(symbol->ID).second)
            return Fail("EXl002", "symbol ID " + std::to_string(symbol->ID) + " appears twice", __LINE__);
        parsed.push_back(std::move(symbol));
    }
    return true;
}

// Every ID filed in the tree must name a symbol of `ids`, and only once.
bool ResourceSymbolLib::CheckTree(const VtSymbolGroup& root, const std::vector<int>& ids)
{
    const std::set<int> known(ids.begin(), ids.end());
    std::set<int> filed;
    std::vector<const VtSymbolGroup*> pending{&root};
    while (!pending.empty()) {
        const VtSymbolGroup* group = pending.back();
        pending.pop_back();
        for (int i = 0; i < group->GetItemCount(); ++i) {
            const int id = group->GetItemID(i);
            if (!known.contains(id) || !filed.insert(id).second)
                return false;
        }
        for (int i = 0; i < group->GetChildGroupCount(); ++i)
            pending.push_back(group->GetChildGroup(i));
    }
    return true;
}

// Checks the rest of the stream before VtSymbolLib::LoadCacheFromLib reads
// it, since that copies whatever lengths the section claims: nothing at all,
// or exactly one complete section.
bool ResourceSymbolLib::ScanCacheSection(VtStream& stream, CacheSection& section)
{
    section = {};
    if (stream.GetRemaining() == 0)
        return true;
    VTC::VtCacheSectionLayout layout;
    if (!VTC::VtCacheSection::Scan(stream, layout))
        return Fail("EXl004", "the data after the group tree is not a complete cache section", __LINE__);
    if (layout.bytes != stream.GetRemaining())
        return Fail("EXl004", "unexpected data after the cache section", __LINE__);
    // The stamp as the file has it: the bytes of the stored units, which need not be text.
    std::string stamp;
    for (const char16_t unit : layout.stamp.Str())
        stamp.push_back(static_cast<char>(unit & 0xFF));
    section = {true, stamp, layout.firstLength, layout.secondLength};
    return true;
}

bool ResourceSymbolLib::TakeResourcesFromStream(VtStream& stream)
{
    CacheSection section;
    if (!ScanCacheSection(stream, section))
        return false;
    LoadCacheFromLib(stream);
    if (section.present && stream.GetRemaining() != 0)
        return Fail("EXl004", "the cache section could not be taken out", __LINE__);
    report_.cacheSection = section.present;
    report_.stamp = section.stamp;
    report_.cacheDataBytes = section.dataBytes;
    report_.cacheIndexBytes = section.indexBytes;
    return true;
}

// The container's entries become a fresh cache; a container without them
// leaves the library without a cache.
void ResourceSymbolLib::TakeResourcesFromStorage()
{
    const ZedaUnicodeString fresh = GetAvailableCachePath();
    DeleteCacheFile(GetCachePath());
    if (storage && ResourceCache::CopyFromContainer(*storage, fresh)) {
        SetCachePath(fresh);
        RememberSync(*storage, fresh);
        return;
    }
    DeleteCacheFile(fresh);
    SetCachePath(VTC::g_stStringBlank);
}

bool ResourceSymbolLib::CheckResources()
{
    if (!HasAnyResource())
        return true;
    const ResourceCache* cache = OpenedCache();
    if (!cache)
        return Fail("EXl005", "the pictures are missing: " + lastError_, __LINE__);
    for (const auto& [id, symbol] : symbols) {
        const auto* resourceSymbol = dynamic_cast<const ResourceSymbol*>(symbol);
        if (resourceSymbol && !resourceSymbol->resource.IsNull() && !cache->Find(resourceSymbol->resource))
            return Fail("EXl005", "the picture of symbol " + std::to_string(id) + " is not in the cache", __LINE__);
    }
    return true;
}

// ---------------------------------------------------------------- appending

unsigned char ResourceSymbolLib::AppendFromStream(VtStream& stream, unsigned char flag)
{
    return Succeeded(AppendImage(stream, flag)) ? 1 : 0;
}

bool ResourceSymbolLib::AppendImage(VtStream& stream, unsigned char flag)
{
    unsigned int fileVersion = 0;
    SymbolList parsed;
    if (!ReadHeader(stream, fileVersion) || !ReadSymbols(stream, parsed))
        return false;
    std::vector<int> ids;
    for (const auto& symbol : parsed)
        ids.push_back(symbol->ID);
    VtSymbolGroup tree(this);
    tree.Load(stream, fileVersion);
    if (stream.IsFailed() || !CheckTree(tree, ids))
        return Fail("EXl003", "the group tree is damaged", __LINE__);
    if (const ResourceSymbol* refused = FirstWithoutFreeId(parsed))
        return Fail("EXl008", "no free ID is left for symbol " + std::to_string(refused->ID) + "; nothing was appended",
                    __LINE__);
    if (!ImportResources(stream, fileVersion, parsed))
        return false;

    // Old ID -> the group of this library that receives the symbol. Stored
    // groups are matched to this library's by name under matched parents,
    // from a list rather than by recursion, as the tree may be of any depth.
    std::map<int, VtSymbolGroup*> destination;
    std::vector<std::pair<VtSymbolGroup*, VtSymbolGroup*>> pending;
    if (flag)
        pending.emplace_back(&tree, rootGroup);
    while (!pending.empty()) {
        const auto [from, to] = pending.back();
        pending.pop_back();
        for (int i = 0; i < from->GetItemCount(); ++i)
            destination[from->GetItemID(i)] = to;
        for (int i = 0; i < from->GetChildGroupCount(); ++i) {
            VtSymbolGroup* child = from->GetChildGroup(i);
            const ZedaUnicodeString childName = child->GetGroupName();
            pending.emplace_back(child, to->IsChildGroupExisted(childName) ? to->GetChildGroup(childName)
                                                                           : to->CreateChildGroup(childName));
        }
    }
    for (auto& symbol : parsed) {
        const auto found = destination.find(symbol->ID);
        if (!AddSymbol(symbol.get(), found == destination.end() ? nullptr : found->second))
            return Fail("EXl008", "no free ID is left for symbol " + std::to_string(symbol->ID) +
                                      "; the symbols before it were appended", __LINE__);
        symbol.release();
    }
    return true;
}

// Gives the symbols their IDs in order, as AddSymbol will, and returns the
// first that would need one above the largest (null when none does), so that
// such an append is refused before it changes anything.
const ResourceSymbol* ResourceSymbolLib::FirstWithoutFreeId(const SymbolList& parsed) const
{
    std::unordered_set<int> taken;
    for (int i = 0; i < GetSymbolCount(); ++i)
        taken.insert(GetIDAt(i));
    int largest = GetMaxID();
    for (const auto& symbol : parsed) {
        int id = symbol->ID;
        if (id < 0 || taken.contains(id)) {
            if (largest == std::numeric_limits<int>::max())
                return symbol.get();
            id = largest + 1;
        }
        taken.insert(id);
        largest = std::max(largest, id);
    }
    return nullptr;
}

// Copies the pictures of the appended symbols from the stream's cache
// section into this library's cache and points the symbols at the copies.
bool ResourceSymbolLib::ImportResources(VtStream& stream, unsigned int fileVersion, SymbolList& parsed)
{
    const bool needed = std::any_of(parsed.begin(), parsed.end(),
                                    [](const auto& symbol) { return !symbol->resource.IsNull(); });
    if (IsContainerVersion(fileVersion)) {
        if (needed)
            return Fail("EXl005", "the pictures of a container image are not in the stream", __LINE__);
        return true;
    }
    CacheSection section;
    if (!ScanCacheSection(stream, section))
        return false;
    if (!needed)
        return stream.SetPosition(0, 2);  // the section was checked up to the end
    if (!section.present)
        return Fail("EXl005", "the stream has pictures but no cache section", __LINE__);
    ScratchCache scratch(*this);
    ZedaUnicodeString lockPath = ResourceCache::LockPath(scratch.Base());
    ZedaUnicodeString dataPath = ResourceCache::DataPath(scratch.Base());
    ZedaUnicodeString indexPath = ResourceCache::IndexPath(scratch.Base());
    VTC::VtCacheSection::ReadMarker(stream);  // checked by the scan above
    if (!LoadLockFileFromStream(stream, lockPath))
        return Fail("EXl004", "the cache section belongs to another kind of library", __LINE__);
    CopyStreamToCache(stream, dataPath);
    CopyStreamToCache(stream, indexPath);

    ResourceCache source;
    std::string error;
    if (!source.Open(scratch.Base(), error))
        return Fail("EXl005", "the appended pictures are damaged: " + error, __LINE__);
    if (!EnsureWritableCache())
        return false;
    std::vector<ResourceRef> copies;
    for (const auto& symbol : parsed) {
        RasterImage image;
        if (symbol->resource.IsNull()) {
            copies.emplace_back();
            continue;
        }
        if (!source.Read(symbol->resource, image, error))
            return Fail("EXl005", "an appended picture is damaged: " + error, __LINE__);
        copies.push_back(cache_.Append(image));
        if (copies.back().IsNull())
            return Fail("EXl006", "the picture cache cannot be written", __LINE__);
    }
    for (std::size_t i = 0; i < parsed.size(); ++i)
        parsed[i]->resource = copies[i];
    return true;
}

// ---------------------------------------------------------------- saving

unsigned char ResourceSymbolLib::SaveToStream(VtStream& stream, unsigned int fileVersion, unsigned char /*flag*/)
{
    const auto formatVersion = static_cast<unsigned int>(GetCompatibleVersion(static_cast<int>(fileVersion)));
    return Succeeded(SaveImage(stream, formatVersion)) ? 1 : 0;
}

bool ResourceSymbolLib::SaveImage(VtStream& stream, unsigned int fileVersion)
{
    if (!CheckResources())
        return false;
    const bool containerForm = IsContainerVersion(fileVersion);
    // The stream form always carries a cache section, even an empty one.
    if (!containerForm && !EnsureWritableCache())
        return false;
    if (!stream.WriteInt(GetStreamMagic()) || !stream.WriteInt(static_cast<int>(fileVersion)) ||
        !stream.WriteInt(GetSymbolCount()))
        return Fail("EXl006", "the library stream could not be written", __LINE__);
    if (!WriteSymbols(stream))
        return false;
    rootGroup->Save(stream, fileVersion, 0);
    if (!containerForm)
        SaveCacheToLib(stream, fileVersion);
    else if (storage && !IsSynced(*storage))
        CopySymbolRes(cachePath, storage);
    return true;
}

bool ResourceSymbolLib::WriteSymbols(VtStream& stream)
{
    for (const int id : idList) {
        const auto* symbol = dynamic_cast<const ResourceSymbol*>(symbols.at(id));
        if (!symbol || !IsOwnKind(*symbol))
            return Fail("EXl006", "symbol " + std::to_string(id) + " is not of this library's kind", __LINE__);
        stream.WriteInt(id);
        stream << symbol->name;
        if (!WriteFields(stream, *symbol) || !stream.WriteInt64(symbol->resource.offset) ||
            !stream.WriteInt64(symbol->resource.length))
            return Fail("EXl006", "the library stream could not be written", __LINE__);
    }
    return true;
}

// ---------------------------------------------------------------- cache and container

void ResourceSymbolLib::SetCachePath(const ZedaUnicodeString& path)
{
    const ZedaUnicodeString newPath(path);  // `path` may be `cachePath` itself
    cachePath = newPath;
    cache_.Close();
}

void ResourceSymbolLib::CopySymbolRes(const ZedaUnicodeString& from, VtCompactFile* to) const
{
    if (!to)
        return;
    if (!ResourceCache::Exists(from)) {
        ResourceCache::RemoveFromContainer(*to);
        return;
    }
    if (ResourceCache::CopyToContainer(from, *to))
        RememberSync(*to, from);
}

void ResourceSymbolLib::CopySymbolRes(const ZedaUnicodeString& to) const
{
    VtSymbolLib::CopySymbolRes(cachePath, to);
}

void ResourceSymbolLib::CopySymbolRes(VtCompactFile* to) const
{
    CopySymbolRes(cachePath, to);
}

// The cache files only grow, so their lengths tell whether a container
// already holds what the cache holds.
void ResourceSymbolLib::RememberSync(const VtCompactFile& container, const ZedaUnicodeString& base) const
{
    sync_ = {container.GetFullPath().Str(), base, VtFile::GetLength(ResourceCache::DataPath(base)),
             VtFile::GetLength(ResourceCache::IndexPath(base))};
}

bool ResourceSymbolLib::IsSynced(const VtCompactFile& container) const
{
    return sync_.container == container.GetFullPath().Str() && sync_.base == cachePath &&
           sync_.dataLength == VtFile::GetLength(ResourceCache::DataPath(cachePath)) &&
           sync_.indexLength == VtFile::GetLength(ResourceCache::IndexPath(cachePath));
}

ResourceCache* ResourceSymbolLib::OpenedCache() const
{
    if (cache_.IsOpen() && cache_.GetBase() == cachePath)
        return &cache_;
    std::string error;
    if (!cache_.Open(cachePath, error)) {
        lastError_ = error;
        return nullptr;
    }
    return &cache_;
}

// Makes sure the library has a cache of its own in the temporary directory,
// copying one that lies elsewhere, or starting an empty one when there is
// none and no symbol needs it.
bool ResourceSymbolLib::EnsureWritableCache()
{
    const bool usable = OpenedCache() != nullptr;
    if (usable && IsTemporary(cachePath))
        return true;
    if (!usable && HasAnyResource())
        return Fail("EXl005", "the pictures are missing: " + lastError_, __LINE__);
    const ZedaUnicodeString previous = cachePath;
    const ZedaUnicodeString fresh = GetAvailableCachePath();
    if (usable)
        VtSymbolLib::CopySymbolRes(previous, fresh);
    else
        ResourceCache::Create(fresh);
    SetCachePath(fresh);
    if (!OpenedCache()) {
        DeleteCacheFile(fresh);
        SetCachePath(previous);
        return Fail("EXl006", "no resource cache can be made in the temporary directory", __LINE__);
    }
    DeleteCacheFile(previous);
    return true;
}

bool ResourceSymbolLib::HasAnyResource() const
{
    return std::any_of(symbols.begin(), symbols.end(), [](const auto& entry) {
        const auto* symbol = dynamic_cast<const ResourceSymbol*>(entry.second);
        return symbol && !symbol->resource.IsNull();
    });
}

// ---------------------------------------------------------------- pictures

ResourceSymbol* ResourceSymbolLib::FindSymbol(int id) const
{
    const auto found = symbols.find(id);
    auto* symbol = found == symbols.end() ? nullptr : dynamic_cast<ResourceSymbol*>(found->second);
    if (symbol && IsOwnKind(*symbol))
        return symbol;
    Fail("EXl007", "no symbol of this library's kind has ID " + std::to_string(id), __LINE__);
    return nullptr;
}

bool ResourceSymbolLib::SetSymbolImage(int id, const RasterImage& image)
{
    return Succeeded(StoreSymbolImage(id, image));
}

bool ResourceSymbolLib::StoreSymbolImage(int id, const RasterImage& image)
{
    ResourceSymbol* symbol = FindSymbol(id);
    if (!symbol)
        return false;
    if (image.IsEmpty()) {
        symbol->resource = {};
        SetModifiedFlag(1);
        return true;
    }
    if (!EnsureWritableCache())
        return false;
    const ResourceRef ref = cache_.Append(image);
    if (ref.IsNull())
        return Fail("EXl006", "the picture could not be stored", __LINE__);
    symbol->resource = ref;
    SetModifiedFlag(1);
    return true;
}

bool ResourceSymbolLib::GetSymbolImage(int id, RasterImage& image) const
{
    return Succeeded(ReadSymbolImage(id, image));
}

bool ResourceSymbolLib::ReadSymbolImage(int id, RasterImage& image) const
{
    const ResourceSymbol* symbol = FindSymbol(id);
    if (!symbol)
        return false;
    if (symbol->resource.IsNull())
        return Fail("EXl007", "symbol " + std::to_string(id) + " has no picture", __LINE__);
    const ResourceCache* cache = OpenedCache();
    std::string error;
    if (!cache || !cache->Read(symbol->resource, image, error))
        return Fail("EXl005", cache ? error : lastError_, __LINE__);
    return true;
}

bool ResourceSymbolLib::HasSymbolImage(int id) const
{
    const auto found = symbols.find(id);
    const auto* symbol = found == symbols.end() ? nullptr : dynamic_cast<const ResourceSymbol*>(found->second);
    return symbol && !symbol->resource.IsNull();
}

const ResourceCache* ResourceSymbolLib::GetResourceCache() const
{
    const ResourceCache* cache = OpenedCache();
    Succeeded(cache != nullptr);
    return cache;
}

}  // namespace LqExample
