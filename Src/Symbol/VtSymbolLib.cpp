#include "VtSymbolLib.h"

#include <algorithm>
#include <cstdint>
#include <source_location>

#include "LqToolkit.h"
#include "VtSymbol.h"
#include "VtSymbolGroup.h"

namespace VTC {

namespace {

void LogFailure(const char* code, std::source_location where = std::source_location::current())
{
    VtLogFile::GetInstance(false)->RecordLog(300, code, "Src/Symbol/VtSymbolLib", static_cast<int>(where.line()));
}

}  // namespace

// ---------------------------------------------------------------------------
// Object and accessors

VtSymbolLib::VtSymbolLib()
    : idGrowStep(0),
      rootGroup(nullptr),
      version(0),
      modified(0),
      storage(nullptr),
      storageIsExternal(0)
{
    rootGroup = new VtSymbolGroup(this);
    rootGroup->SetGroupName(u"RootGroup");
}

VtSymbolLib::~VtSymbolLib()
{
    RemoveAll();
    delete rootGroup;
    rootGroup = nullptr;
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
        id = GetMaxID() + 1;
        symbol->ID = id;
    }
    symbols[id] = symbol;
    if (idGrowStep != 0 && idList.size() == idList.capacity())
        idList.reserve(idList.capacity() + idGrowStep);
    idList.push_back(id);
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
}

int VtSymbolLib::RemoveAt(int index, int count)
{
    if (index < 0 || index > GetSymbolCount() || count < 1) {
        LogFailure("EDb001");
        LogFailure("EGa020");
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
    const auto first = idList.begin() + index;
    idList.erase(first, first + std::min<std::ptrdiff_t>(removed, idList.end() - first));
    return removed;
}

unsigned char VtSymbolLib::RemoveID(int id)
{
    const int position = FindID(id);
    const auto found = position == -1 ? symbols.end() : symbols.find(id);
    if (found == symbols.end()) {
        LogFailure("EGa030");
        LogFailure("EGa022");
        return 0;
    }
    delete found->second;
    symbols.erase(found);
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
}

unsigned char VtSymbolLib::Swap(int index1, int index2)
{
    if (!IsListIndex(index1, GetSymbolCount())) {
        LogFailure("EDb009");
        return 0;
    }
    if (!IsListIndex(index2, GetSymbolCount())) {
        LogFailure("EDb009");
        return 0;
    }
    std::swap(idList[static_cast<std::size_t>(index1)], idList[static_cast<std::size_t>(index2)]);
    return 1;
}

void VtSymbolLib::SortByID()
{
    Sort<int>(idList.data(), idList.data() + idList.size());
}

unsigned char VtSymbolLib::SetIDAt(int index, int newID)
{
    if (IsBeforeStartAndPastEnd(index, GetSymbolCount())) {
        LogFailure("EDb001");
        LogFailure("EGa047");
        return 0;
    }
    if (IsIDExisted(newID)) {
        LogFailure("EGa048");
        return 0;
    }
    const int oldID = GetIDAt(index);
    const auto found = symbols.find(oldID);
    if (found == symbols.end()) {
        LogFailure("EGa038");
        return 0;
    }
    VtSymbol* const symbol = found->second;
    if (symbol == nullptr) {
        LogFailure("EGa032");
        return 0;
    }
    symbol->ID = newID;
    idList[static_cast<std::size_t>(index)] = newID;
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
    return idList.empty() ? 0 : std::max(0, *std::ranges::max_element(idList));
}

int VtSymbolLib::FindID(int id) const
{
    const auto found = std::ranges::find(idList, id);
    if (found == idList.end()) {
        LogFailure("EGa038");
        return -1;
    }
    return static_cast<int>(found - idList.begin());
}

unsigned char VtSymbolLib::IsIDExisted(int id) const
{
    return FindID(id) != -1;
}

VtSymbol* VtSymbolLib::GetSymbolByID(int id) const
{
    const auto found = symbols.find(id);
    if (found == symbols.end()) {
        LogFailure("EGa038");
        return nullptr;
    }
    if (found->second != nullptr)
        found->second->libVersion = version;
    return found->second;
}

VtSymbol* VtSymbolLib::GetSymbolAt(int index) const
{
    if (!IsListIndex(index, GetSymbolCount())) {
        LogFailure("EDb001");
        LogFailure("EGa004");
        return nullptr;
    }
    const auto found = symbols.find(idList[static_cast<std::size_t>(index)]);
    if (found == symbols.end()) {
        LogFailure("EDb002");
        return nullptr;
    }
    if (found->second != nullptr)
        found->second->libVersion = version;
    return found->second;
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
        LogFailure("EDb001");
        LogFailure("EGa026");
        return -1;
    }
    for (int i = start; i < count; ++i) {
        if (IsNamed(symbols, idList[static_cast<std::size_t>(i)], name))
            return i;
    }
    LogFailure("EGa030");
    return -1;
}

int VtSymbolLib::ReverseFindName(const ZedaUnicodeString& name, int start) const
{
    const int count = GetSymbolCount();
    if (count == 0 || start < 0) {
        LogFailure("EEb016");
        return -1;
    }
    // 0 means "from the end", like any start past the last position.
    const int from = IsListIndex(start, count) && start > 0 ? start : count - 1;
    for (int i = from; i >= 0; --i) {
        if (IsNamed(symbols, idList[static_cast<std::size_t>(i)], name))
            return i;
    }
    LogFailure("EGa031");
    LogFailure("EGa026");
    return -1;
}

ZedaUnicodeString VtSymbolLib::GetNameAt(int index) const
{
    if (IsBeforeStartAndPastEnd(index, GetSymbolCount())) {
        LogFailure("EDb001");
        LogFailure("EGa026");
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
        LogFailure("EDb001");
        LogFailure("EGa026");
        return;
    }
    const auto found = symbols.find(GetIDAt(index));
    if (found != symbols.end() && found->second != nullptr)
        found->second->name = name;
}

// ---------------------------------------------------------------------------
// Storage and resources

void VtSymbolLib::SetExternalStorage(VtCompactFile* externalStorage)
{
    storage = externalStorage;
    if (externalStorage != nullptr)
        storageIsExternal = 1;
}

void VtSymbolLib::CopySymbolRes(const ZedaUnicodeString&, const ZedaUnicodeString&) const {}

void VtSymbolLib::CopySymbolRes(const ZedaUnicodeString&, VtCompactFile*) const {}

void VtSymbolLib::CopySymbolRes(const ZedaUnicodeString&) const {}

void VtSymbolLib::CopySymbolRes(VtCompactFile*) const {}

}  // namespace VTC
