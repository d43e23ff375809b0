#include "VtSymbolLib.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>

#include "LqCompactFile.h"
#include "LqStream.h"
#include "LqToolkit.h"
#include "VtCacheSection.h"
#include "VtModuleLog_p.h"
#include "VtPositionIndex_p.h"
#include "VtSymbol.h"
#include "VtSymbolGroup.h"

namespace VTC {


// ---------------------------------------------------------------------------
// Object and accessors

VtSymbolLib::VtSymbolLib()
    : idGrowStep(0),
      rootGroup(nullptr),
      version(0),
      modified(0),
      storage(nullptr),
      storageIsExternal(0),
      idIndex(std::make_unique<VtPositionIndex>())
{
    rootGroup = new VtSymbolGroup(this);
    rootGroup->SetGroupName(u"RootGroup");
}

VtSymbolLib::~VtSymbolLib()
{
    RemoveAll();
    delete rootGroup;
    rootGroup = nullptr;
    DeleteCacheFile(GetCachePath());
    ReleaseOwnedStorage();
}

int VtSymbolLib::GetCompatibleVersion(int formatVersion) const
{
    return formatVersion != 0 ? formatVersion : static_cast<int>(containerVersion);
}

unsigned int VtSymbolLib::GetVersion()
{
    return version;
}

unsigned char VtSymbolLib::IsModified() const
{
    return modified;
}

void VtSymbolLib::SetModifiedFlag(unsigned char flag)
{
    modified = flag;
}

int VtSymbolLib::GetSymbolCount() const
{
    return static_cast<int>(idList.size());
}

VtSymbolGroup* VtSymbolLib::GetRootGroup() const
{
    return rootGroup;
}

void VtSymbolLib::SetLibPath(const ZedaUnicodeString& path)
{
    libPath = path;
}

ZedaUnicodeString VtSymbolLib::GetLibPath() const
{
    return libPath;
}

void VtSymbolLib::SetDefaultPath(const ZedaUnicodeString& path)
{
    defaultPath = path;
}

ZedaUnicodeString VtSymbolLib::GetDefaultPath() const
{
    return defaultPath;
}

ZedaUnicodeString VtSymbolLib::GetCachePath() const
{
    return cachePath;
}

// ---------------------------------------------------------------------------
// Registry

namespace {

bool IsListIndex(int index, int count)
{
    return index >= 0 && index < count;
}

// A symbol handed out carries the version of the library it came from; a
// null one (only InsertAt's misuse makes it) is handed out as it is.
VtSymbol* Stamped(VtSymbol* symbol, unsigned int version)
{
    if (symbol != nullptr)
        symbol->libVersion = version;
    return symbol;
}

// The list length is never negative, so no index is at once before the start
// and past the end: the guards built on this test never fire.
bool IsBeforeStartAndPastEnd(int index, int count)
{
    return index < 0 && index >= count;
}

}  // namespace

unsigned char VtSymbolLib::AddSymbol(VtSymbol* symbol, VtSymbolGroup* group)
{
    int id = symbol->ID;
    if (id < 0 || IsIDExisted(id)) {
        const int maxID = GetMaxID();
        if (maxID == std::numeric_limits<int>::max()) {
            // No higher ID is left: the library stays as it was and the caller keeps the symbol.
            symbolLibLog.Fail("EGa049");
            return 0;
        }
        id = maxID + 1;
        symbol->ID = id;
    }
    symbols[id] = symbol;
    if (idGrowStep != 0 && idList.size() == idList.capacity())
        idList.reserve(idList.capacity() + idGrowStep);
    idList.push_back(id);
    idIndex->Appended(idList);
    (group != nullptr ? group : rootGroup)->AddItem(id, 1);
    SetModifiedFlag(1);
    return 1;
}

void VtSymbolLib::InsertAt(int index, VtSymbol* symbol)
{
    const int id = symbol->ID;
    symbols[id] = symbol;
    // Every negative index widens to a huge unsigned value and so appends.
    const auto position = std::min<std::uint64_t>(static_cast<std::uint64_t>(index), idList.size());
    idList.insert(idList.begin() + static_cast<std::ptrdiff_t>(position), id);
    if (position + 1 == idList.size())
        idIndex->Appended(idList);
    else
        idIndex->Invalidate();
}

int VtSymbolLib::RemoveAt(int index, int count)
{
    if (index < 0 || index > GetSymbolCount() || count < 1) {
        symbolLibLog.Fail("EDb001");
        symbolLibLog.Fail("EGa020");
        return 0;
    }
    const int last = static_cast<int>(std::min<long long>(static_cast<long long>(index) + count - 1,
                                                          GetSymbolCount() - 1));
    for (int i = index; i <= last; ++i) {
        const int id = idList.at(static_cast<std::size_t>(i));
        if (const auto found = symbols.find(id); found != symbols.end()) {
            delete found->second;
            symbols.erase(found);
        }
    }
    const int removed = last - index + 1;
    if (removed == 0)
        return 0;
    const auto erased = std::min<std::ptrdiff_t>(removed, static_cast<std::ptrdiff_t>(idList.size()) - index);
    idIndex->Erasing(idList, static_cast<std::size_t>(index), static_cast<std::size_t>(erased));
    const auto first = idList.begin() + index;
    idList.erase(first, first + erased);
    return removed;
}

unsigned char VtSymbolLib::RemoveID(int id)
{
    const int position = FindID(id);
    const auto found = position == -1 ? symbols.end() : symbols.find(id);
    if (found == symbols.end()) {
        symbolLibLog.Fail("EGa030");
        symbolLibLog.Fail("EGa022");
        return 0;
    }
    delete found->second;
    symbols.erase(found);
    idIndex->Erasing(idList, static_cast<std::size_t>(position), 1);
    idList.erase(idList.begin() + position);
    return 1;
}

void VtSymbolLib::RemoveAll()
{
    for (const auto& [id, symbol] : symbols)
        delete symbol;
    symbols.clear();
    rootGroup->Clear();
    std::vector<int>().swap(idList);
    idIndex->Invalidate();
}

unsigned char VtSymbolLib::Swap(int index1, int index2)
{
    if (!IsListIndex(index1, GetSymbolCount())) {
        symbolLibLog.Fail("EDb009");
        return 0;
    }
    if (!IsListIndex(index2, GetSymbolCount())) {
        symbolLibLog.Fail("EDb009");
        return 0;
    }
    std::swap(idList[static_cast<std::size_t>(index1)], idList[static_cast<std::size_t>(index2)]);
    idIndex->Swapped(idList, static_cast<std::size_t>(index1), static_cast<std::size_t>(index2));
    return 1;
}

void VtSymbolLib::SortByID()
{
    Sort<int>(idList.data(), idList.data() + idList.size());
    idIndex->Invalidate();
}

unsigned char VtSymbolLib::SetIDAt(int index, int newID)
{
    if (IsBeforeStartAndPastEnd(index, GetSymbolCount())) {
        symbolLibLog.Fail("EDb001");
        symbolLibLog.Fail("EGa047");
        return 0;
    }
    if (IsIDExisted(newID)) {
        symbolLibLog.Fail("EGa048");
        return 0;
    }
    const int oldID = GetIDAt(index);
    const auto found = symbols.find(oldID);
    if (found == symbols.end()) {
        symbolLibLog.Fail("EGa038");
        return 0;
    }
    VtSymbol* const symbol = found->second;
    if (symbol == nullptr) {
        symbolLibLog.Fail("EGa032");
        return 0;
    }
    symbol->ID = newID;
    idList[static_cast<std::size_t>(index)] = newID;
    idIndex->Replaced(oldID, newID);
    symbols.erase(found);
    symbols[newID] = symbol;
    return 1;
}

int VtSymbolLib::GetIDAt(int index) const
{
    // A negative index converts to a huge size and fails the bounds test too.
    return idList.at(static_cast<std::size_t>(index));
}

int VtSymbolLib::GetMaxID() const
{
    return idList.empty() ? 0 : std::max(0, idIndex->Largest(idList));
}

int VtSymbolLib::FindID(int id) const
{
    const int position = idIndex->Find(idList, id);
    if (position == -1)
        symbolLibLog.Fail("EGa038");
    return position;
}

unsigned char VtSymbolLib::IsIDExisted(int id) const
{
    return FindID(id) != -1;
}

VtSymbol* VtSymbolLib::GetSymbolByID(int id) const
{
    const auto found = symbols.find(id);
    if (found == symbols.end()) {
        symbolLibLog.Fail("EGa038");
        return nullptr;
    }
    return Stamped(found->second, version);
}

VtSymbol* VtSymbolLib::GetSymbolAt(int index) const
{
    if (!IsListIndex(index, GetSymbolCount())) {
        symbolLibLog.Fail("EDb001");
        symbolLibLog.Fail("EGa004");
        return nullptr;
    }
    const auto found = symbols.find(idList[static_cast<std::size_t>(index)]);
    if (found == symbols.end()) {
        symbolLibLog.Fail("EDb002");
        return nullptr;
    }
    return Stamped(found->second, version);
}

int VtSymbolLib::GetIDByName(const ZedaUnicodeString& name)
{
    for (const auto& [id, symbol] : symbols) {
        if (symbol != nullptr && symbol->name == name)
            return id;
    }
    return -1;
}

namespace {

bool IsNamed(const std::map<int, VtSymbol*>& symbols, int id, const ZedaUnicodeString& name)
{
    const auto found = symbols.find(id);
    return found != symbols.end() && found->second != nullptr && found->second->name == name;
}

}  // namespace

int VtSymbolLib::FindName(const ZedaUnicodeString& name, int start) const
{
    const int count = GetSymbolCount();
    if (!IsListIndex(start, count)) {
        symbolLibLog.Fail("EDb001");
        symbolLibLog.Fail("EGa026");
        return -1;
    }
    for (int i = start; i < count; ++i) {
        if (IsNamed(symbols, idList[static_cast<std::size_t>(i)], name))
            return i;
    }
    symbolLibLog.Fail("EGa030");
    return -1;
}

int VtSymbolLib::ReverseFindName(const ZedaUnicodeString& name, int start) const
{
    const int count = GetSymbolCount();
    if (count == 0 || start < 0) {
        symbolLibLog.Fail("EEb016");
        return -1;
    }
    // 0 means "from the end", like any start past the last position.
    const int from = IsListIndex(start, count) && start > 0 ? start : count - 1;
    for (int i = from; i >= 0; --i) {
        if (IsNamed(symbols, idList[static_cast<std::size_t>(i)], name))
            return i;
    }
    symbolLibLog.Fail("EGa031");
    symbolLibLog.Fail("EGa026");
    return -1;
}

ZedaUnicodeString VtSymbolLib::GetNameAt(int index) const
{
    if (IsBeforeStartAndPastEnd(index, GetSymbolCount())) {
        symbolLibLog.Fail("EDb001");
        symbolLibLog.Fail("EGa026");
        return g_stStringBlank;
    }
    // The map holds every listed ID unless InsertAt was misused; an empty name
    // then stands in for the missing symbol.
    const auto found = symbols.find(GetIDAt(index));
    if (found == symbols.end() || found->second == nullptr)
        return g_stStringBlank;
    return found->second->name;
}

void VtSymbolLib::SetNameAt(int index, const ZedaUnicodeString& name)
{
    if (IsBeforeStartAndPastEnd(index, GetSymbolCount())) {
        symbolLibLog.Fail("EDb001");
        symbolLibLog.Fail("EGa026");
        return;
    }
    const auto found = symbols.find(GetIDAt(index));
    if (found != symbols.end() && found->second != nullptr)
        found->second->name = name;
}

// ---------------------------------------------------------------------------
// Library files

namespace {

const char16_t* const kStoreEntryKey = u"SymbolStoreInCF";
constexpr int kContainerIndexSize = 32;
constexpr long long kMemoryStreamSize = 1024;

}  // namespace

void VtSymbolLib::ReleaseOwnedStorage()
{
    if (storage != nullptr && storageIsExternal == 0) {
        storage->Close();
        delete storage;
    }
    storage = nullptr;
}

unsigned char VtSymbolLib::SaveToFile(const ZedaUnicodeString& path, unsigned int fileVersion)
{
    if (fileVersion == 0 || fileVersion == containerVersion)
        return SaveToContainer(path);
    return SaveToStreamFile(path, fileVersion);
}

unsigned char VtSymbolLib::SaveToStreamFile(const ZedaUnicodeString& path, unsigned int fileVersion)
{
    VtFileStream file;
    if (!file.Open(path, VT_STREAM_WRITE))
        return 0;
    const ZedaUnicodeString oldCache = GetCachePath();
    // Taken only once the file is open: the name comes with a scratch file
    // that only a cache path in use gets deleted with.
    const ZedaUnicodeString newCache = GetAvailableCachePath();
    if (storage != nullptr)
        CopySymbolRes(newCache);
    else
        CopySymbolRes(oldCache, newCache);
    libPath = path;
    SetCachePath(newCache);
    const unsigned char saved = SaveToStream(file, fileVersion, 1);
    file.Close();
    DeleteCacheFile(oldCache);
    return saved;
}

unsigned char VtSymbolLib::SaveToContainer(const ZedaUnicodeString& path)
{
    const bool rewriteInPlace =
        version == containerVersion && storage != nullptr && storage->GetFullPath().CompareNoCase(path) == 0;
    if (!rewriteInPlace && !AdoptNewContainer(path))
        return 0;

    VtMemoryStream image;
    image.Open(VT_STREAM_WRITE, kMemoryStreamSize);
    if (SaveToStream(image, containerVersion, 1) == 0)
        return 0;
    storage->SetAt(kStoreEntryKey, VtByteArray(image.GetData(), image.GetLength()), 0, 0, 0);
    storage->Flush();
    return 1;
}

bool VtSymbolLib::AdoptNewContainer(const ZedaUnicodeString& path)
{
    const ZedaUnicodeString oldCache = GetCachePath();
    if (VtFile::IsExist(path))
        VtFile::Delete(path);
    auto container = std::make_unique<VtCompactFile>();
    // A file that could not be deleted is reused when it is a container.
    if (VtFile::IsExist(path) && container->Open(path, g_stStringBlank, VT_CF_MODE_READWRITE) == VT_CF_OK) {
        container->Remove(kStoreEntryKey);
        container->Compact();
    } else if (container->Create(path, kContainerIndexSize, g_stStringBlank, VT_CF_MODE_READWRITE) != VT_CF_OK) {
        return false;
    }
    if (storage != nullptr)
        CopySymbolRes(container.get());
    else
        CopySymbolRes(oldCache, container.get());
    ReleaseOwnedStorage();
    storage = container.release();
    storageIsExternal = 0;
    return true;
}

unsigned char VtSymbolLib::LoadFromFile(const ZedaUnicodeString& path)
{
    auto container = std::make_unique<VtCompactFile>();
    if (container->Open(path, g_stStringBlank, VT_CF_MODE_READWRITE) == VT_CF_OK &&
        container->GetIndexInfo() != VT_CF_INDEX_FOREIGN) {
        VtByteArray bytes;
        long long size = 0;
        if (container->Lookup(kStoreEntryKey, bytes, size, 0) != VT_CF_OK) {
            container->Close();
            return 0;
        }
        ReleaseOwnedStorage();
        storage = container.release();
        storageIsExternal = 0;

        VtMemoryStream image;
        image.Open(VT_STREAM_READWRITE, kMemoryStreamSize);
        image.Save(bytes.GetData(), static_cast<unsigned long>(std::clamp(size, 0LL, bytes.GetSize())));
        image.SetPosition(0, 0);
        return LoadFromStream(image, 1);
    }

    container->Close();
    container.reset();
    SetExternalStorage(nullptr);
    unsigned char loaded = 0;
    VtFileStream file;
    if (file.Open(path, VT_STREAM_READ)) {
        libPath = path;
        if (file.GetLength() != 0)
            loaded = LoadFromStream(file, 1);
        file.Close();
    }
    SetModifiedFlag(1);
    return loaded;
}

unsigned char VtSymbolLib::LoadDefault()
{
    libPath = defaultPath;
    return LoadFromFile(defaultPath);
}

unsigned char VtSymbolLib::AppendFromFile(const ZedaUnicodeString& path, unsigned char flag)
{
    unsigned char appended = 0;
    VtFileStream file;
    if (file.Open(path, VT_STREAM_READ)) {
        if (file.GetLength() != 0)
            appended = AppendFromStream(file, flag);
        file.Close();
    }
    SetModifiedFlag(1);
    return appended;
}

// ---------------------------------------------------------------------------
// Resource cache

namespace {

constexpr long long kChunkSize = 2 * 1024 * 1024;

ZedaUnicodeString StampWord(int libType)
{
    switch (libType) {
    case 0: return u"Marker";
    case 1: return u"Line";
    default: return g_stStringBlank;
    }
}

std::vector<unsigned char> LittleEndianUnits(const ZedaUnicodeString& text)
{
    std::vector<unsigned char> bytes;
    for (const char16_t unit : text.Str()) {
        bytes.push_back(static_cast<unsigned char>(unit & 0xFF));
        bytes.push_back(static_cast<unsigned char>(unit >> 8));
    }
    return bytes;
}

// Moves `count` bytes in chunks of at most 2 MiB through one buffer that is
// zero-filled before each chunk, so a short read still moves `count` bytes.
void CopyInChunks(VtStream& from, VtStream& to, long long count)
{
    std::vector<unsigned char> buffer(static_cast<std::size_t>(std::min(count, kChunkSize)));
    while (count > 0) {
        const auto chunk = static_cast<unsigned long>(std::min(count, kChunkSize));
        std::fill_n(buffer.begin(), chunk, 0);
        from.Load(buffer.data(), chunk);
        to.Save(buffer.data(), chunk);
        count -= static_cast<long long>(chunk);
    }
}

}  // namespace

ZedaUnicodeString VtSymbolLib::GetAvailableCachePath() const
{
    const ZedaUnicodeString directory = VtFile::GetTemporaryPath();
    ZedaUnicodeString name;
    VtFile::GetTemporaryFileName(directory, u"Cache", 0, name);
    return VtFile::ChangeExt(name, u".sc");
}

unsigned char VtSymbolLib::DeleteCacheFile(const ZedaUnicodeString& path) const
{
    // Cache files outside the temporary directory belong to a library file.
    if (path.IsEmpty() || path.Find(VtFile::GetTemporaryPath()) == -1)
        return 1;
    for (const char16_t* extension : {u"lock", u"sc", u"sc00", u"tmp"}) {
        const ZedaUnicodeString file = VtFile::ChangeExt(path, extension);
        if (VtFile::IsExist(file) && !VtFile::Delete(file))
            return 0;
    }
    return 1;
}

void VtSymbolLib::SaveCacheToLib(VtStream& stream, unsigned int) const
{
    const ZedaUnicodeString base = VtFile::StripExt(cachePath);
    const ZedaUnicodeString lockFile = base + u".lock";
    ZedaUnicodeString firstCache = base + u".sc";
    ZedaUnicodeString secondCache = base + u".sc00";
    if (!VtFile::IsExist(lockFile) || !VtFile::IsExist(firstCache) || !VtFile::IsExist(secondCache))
        return;
    stream << ZedaUnicodeString(u"Cache");
    SaveLockFileToStream(stream);
    CopyCacheToStream(stream, firstCache);
    CopyCacheToStream(stream, secondCache);
}

void VtSymbolLib::LoadCacheFromLib(VtStream& stream)
{
    DeleteCacheFile(GetCachePath());
    SetCachePath(libPath);
    if (GetLibType() == 1)
        SetCachePath(cachePath);

    const long long start = stream.GetPosition();
    const long long end = stream.GetLength();
    if (start != end && end - start <= 10) {
        // Too short for a cache section: keep the cache next to the library
        // file when there is one.
        if (!VtFile::IsExist(VtFile::ChangeExt(cachePath, u"sc")))
            SetCachePath(GetAvailableCachePath());
        return;
    }

    if (!VtCacheSection::ReadMarker(stream)) {
        stream.SetPosition(start, 0);
        return;
    }

    SetCachePath(GetAvailableCachePath());
    ZedaUnicodeString lockPath = VtFile::ChangeExt(cachePath, u"lock");
    if (LoadLockFileFromStream(stream, lockPath) == 0) {
        stream.SetPosition(start, 0);
        return;
    }
    ZedaUnicodeString firstCache = VtFile::ChangeExt(cachePath, u"sc");
    CopyStreamToCache(stream, firstCache);
    ZedaUnicodeString secondCache = VtFile::ChangeExt(cachePath, u"sc00");
    CopyStreamToCache(stream, secondCache);
}

void VtSymbolLib::SaveLockFileToStream(VtStream& stream) const
{
    const ZedaUnicodeString stamp = StampWord(GetLibType());
    // Only the first half of the stamp's bytes is written: the format has
    // always been read that way.
    const long long length = stamp.GetLength();
    stream.WriteInt64(length);
    stream.Save(LittleEndianUnits(stamp).data(), static_cast<unsigned long>(length));
}

unsigned char VtSymbolLib::LoadLockFileFromStream(VtStream& stream, ZedaUnicodeString& lockPath) const
{
    VtFileStream lockFile;
    if (!lockFile.Open(lockPath, VT_STREAM_WRITE)) {
        lockFile.Close();
        return 1;
    }
    long long stampLength = 0;
    VtCacheSection::ReadLength(stream, stampLength);
    const long long stampStart = stream.GetPosition();
    const ZedaUnicodeString stamp = VtCacheSection::ReadStamp(stream, stampLength);
    const int libType = GetLibType();
    if ((stamp == u"Marker" && libType != 0) || (stamp == u"Line" && libType != 1)) {
        lockFile.Close();
        return 0;
    }
    lockFile << ZedaUnicodeString(u"lock");
    stream.SetPosition(stampStart + stampLength, 0);
    lockFile.Close();
    return 1;
}

void VtSymbolLib::CopyCacheToStream(VtStream& stream, ZedaUnicodeString& path) const
{
    if (!VtFile::IsExist(path))
        return;
    VtFileStream file;
    if (file.Open(path, VT_STREAM_READ)) {
        const long long length = file.GetLength();
        if (length > 0) {
            stream.WriteInt64(length);
            CopyInChunks(file, stream, length);
        }
    }
    file.Close();
}

void VtSymbolLib::CopyStreamToCache(VtStream& stream, ZedaUnicodeString& path) const
{
    VtFileStream file;
    if (!file.Open(path, VT_STREAM_WRITE)) {
        file.Close();
        return;
    }
    long long length = 0;
    VtCacheSection::ReadLength(stream, length);
    const long long start = stream.GetPosition();
    CopyInChunks(stream, file, length);
    stream.SetPosition(start + length, 0);
    file.Close();
}

// ---------------------------------------------------------------------------
// Storage and resources

void VtSymbolLib::SetExternalStorage(VtCompactFile* externalStorage)
{
    ReleaseOwnedStorage();
    storage = externalStorage;
    if (externalStorage != nullptr)
        storageIsExternal = 1;
}

void VtSymbolLib::CopySymbolRes(const ZedaUnicodeString& from, const ZedaUnicodeString& to) const
{
    if (from.CompareNoCase(to) == 0)
        return;
    const ZedaUnicodeString source = VtFile::StripExt(from);
    const ZedaUnicodeString target = VtFile::StripExt(to);
    for (const char16_t* extension : {u".lock", u".sc", u".sc00"})
        VtFile::Copy(source + extension, target + extension, 1);
}

// The base library keeps no resources in a container; concrete libraries
// override these hooks to move theirs.
void VtSymbolLib::CopySymbolRes(const ZedaUnicodeString&, VtCompactFile*) const {}

void VtSymbolLib::CopySymbolRes(const ZedaUnicodeString&) const {}

void VtSymbolLib::CopySymbolRes(VtCompactFile*) const {}

}  // namespace VTC
