#include "VtSymbolGroup.h"

#include <algorithm>

#include "LqStream.h"
#include "LqToolkit.h"
#include "VtModuleLog_p.h"
#include "VtPositionIndex_p.h"
#include "VtSymbol.h"
#include "VtSymbolLib.h"

namespace VTC {

namespace {

// Files from versions 1 .. 20050302 carry a legacy value after each group name.
bool HasLegacyValue(unsigned int fileVersion)
{
    return fileVersion - 1u < 20050302u;
}

// The smallest records a stream can hold: a group (name length, child count,
// item count) and an item.
constexpr long long minGroupRecordBytes = 12;
constexpr long long minItemRecordBytes = 4;

// Deeper records are taken as corrupt: every operation on the tree recurses.
constexpr int maxLoadDepth = 1000;

bool CountFitsInStream(const VtStream& stream, int count, long long minRecordBytes)
{
    return count <= stream.GetRemaining() / minRecordBytes;
}

// Leaves the stream failed, as a read past its end does.
void FailStream(VtStream& stream)
{
    if (stream.IsFailed())
        return;
    stream.SetPosition(0, 2);
    int pastTheEnd = 0;
    stream.ReadInt(pastTheEnd);
}

// The last index of a run of `count` entries from `index` in an array of `size`.
int LastIndexOfRun(int index, int count, int size)
{
    return static_cast<int>(std::min<long long>(static_cast<long long>(index) + count - 1, size - 1));
}

}  // namespace

VtSymbolGroup::VtSymbolGroup() : VtSymbolGroup(nullptr) {}

VtSymbolGroup::VtSymbolGroup(VtSymbolLib* lib)
    : modified(0), attachedLib(lib), parentGroup(nullptr), itemIndex(std::make_unique<VtPositionIndex>())
{
}

VtSymbolGroup::~VtSymbolGroup()
{
    Clear();
}

void VtSymbolGroup::Clear()
{
    std::vector<int>().swap(itemIDs);
    itemIndex->Invalidate();
    for (VtSymbolGroup* child : childGroups)
        delete child;
    std::vector<VtSymbolGroup*>().swap(childGroups);
}

VtSymbolGroup* VtSymbolGroup::GetParentGroup() const
{
    return parentGroup;
}

void VtSymbolGroup::SetParentGroup(VtSymbolGroup* parent)
{
    parentGroup = parent;
}

VtSymbolLib* VtSymbolGroup::GetAttachedLib()
{
    return attachedLib;
}

void VtSymbolGroup::AttachLib(VtSymbolLib* lib)
{
    attachedLib = lib;
}

bool VtSymbolGroup::IsModified() const
{
    return modified != 0;
}

void VtSymbolGroup::SetModifiedFlag(unsigned char flag)
{
    modified = flag;
}

ZedaUnicodeString VtSymbolGroup::GetGroupName() const
{
    return groupName;
}

void VtSymbolGroup::SetGroupName(const ZedaUnicodeString& name)
{
    groupName = name;
}

VtSymbolGroup* VtSymbolGroup::GetRootGroup() const
{
    return attachedLib->GetRootGroup();
}

// ---- Child groups ----

int VtSymbolGroup::GetChildGroupCount() const
{
    return static_cast<int>(childGroups.size());
}

VtSymbolGroup* VtSymbolGroup::GetChildGroup(int index) const
{
    return childGroups.at(index);
}

VtSymbolGroup* VtSymbolGroup::GetChildGroup(const ZedaUnicodeString& name) const
{
    for (VtSymbolGroup* child : childGroups) {
        if (child->GetGroupName() == name)
            return child;
    }
    symbolGroupLog.Fail("EGa043");
    return nullptr;
}

VtSymbolGroup* VtSymbolGroup::FindChildGroup(const ZedaUnicodeString& name) const
{
    if (groupName == name)
        return const_cast<VtSymbolGroup*>(this);
    for (VtSymbolGroup* child : childGroups) {
        if (VtSymbolGroup* found = child->FindChildGroup(name))
            return found;
    }
    symbolGroupLog.Fail("EGa044");
    return nullptr;
}

bool VtSymbolGroup::IsChildGroupExisted(const ZedaUnicodeString& name)
{
    return std::any_of(childGroups.begin(), childGroups.end(),
                       [&name](const VtSymbolGroup* child) { return child->GetGroupName() == name; });
}

// The base is cut at its last "_" on every pass, so a name that holds "_"
// itself loses more than a numeric suffix; kept so that generated names stay
// what they have always been.
ZedaUnicodeString VtSymbolGroup::GetAvailableName(const ZedaUnicodeString& name)
{
    ZedaUnicodeString result(name);
    if (IsChildGroupExisted(result))
        result += u"_1";
    ZedaUnicodeString base(result);
    ZedaUnicodeString number;
    int n = 1;
    while (IsChildGroupExisted(result)) {
        number.Format(u"%d", n);
        ++n;
        const int underscore = base.ReverseFind(u'_');
        if (underscore > 0)
            base = base.Left(underscore);
        result = base + u"_" + number;
    }
    return result;
}

VtSymbolGroup* VtSymbolGroup::CreateChildGroup(const ZedaUnicodeString& name)
{
    if (IsChildGroupExisted(name)) {
        symbolGroupLog.Fail("EGa046");
        symbolGroupLog.Fail("EGa045");
        return nullptr;
    }
    auto* child = new VtSymbolGroup(attachedLib);
    child->SetGroupName(name);
    child->SetParentGroup(this);
    childGroups.push_back(child);
    if (attachedLib != nullptr)  // a default-constructed tree has no library to mark
        attachedLib->SetModifiedFlag(true);
    return child;
}

bool VtSymbolGroup::AppendGroup(VtSymbolGroup* /*group*/)
{
    return false;
}

// Only the target's ancestors are compared with the child, never the target
// itself: moving a child under itself detaches it as its own parent and child.
bool VtSymbolGroup::MoveChildTo(int index, VtSymbolGroup* target)
{
    if (index < 0 || index >= GetChildGroupCount() || target == nullptr)
        return false;
    VtSymbolGroup* child = childGroups[index];
    for (const VtSymbolGroup* p = target->GetParentGroup(); p != nullptr; p = p->GetParentGroup()) {
        if (p == child)
            return false;
    }
    if (child->GetParentGroup() == target)
        return false;
    childGroups.erase(childGroups.begin() + index);
    child->SetParentGroup(target);
    target->childGroups.push_back(child);
    return true;
}

bool VtSymbolGroup::RemoveChild(int index, unsigned char keepContents)
{
    if (index < 0 || index >= GetChildGroupCount()) {
        symbolGroupLog.Fail("EDb009");
        return false;
    }
    VtSymbolGroup* child = childGroups[index];
    const int grandchildCount = child->GetChildGroupCount();
    if (!keepContents) {
        // The index runs on while the remaining grandchildren shift down, so
        // only every other one is removed here with its symbols; the rest go
        // with the child below and leave their symbols in the library.
        for (int i = 0; i < grandchildCount; ++i)
            child->RemoveChild(i, false);
        child->RemoveItem(0, child->GetItemCount());
    } else {
        const ZedaUnicodeString childName = child->GetGroupName();
        for (VtSymbolGroup* grandchild : child->childGroups) {
            const ZedaUnicodeString grandchildName = grandchild->GetGroupName();
            if (grandchildName != childName && IsChildGroupExisted(grandchildName))
                grandchild->SetGroupName(grandchildName + childName);
            grandchild->SetParentGroup(this);
            childGroups.push_back(grandchild);
        }
        child->childGroups.clear();
        child->MoveItemTo(0, child->GetItemCount(), child->GetParentGroup());
    }
    childGroups.erase(childGroups.begin() + index);
    delete child;
    return true;
}

// ---- Items ----

int VtSymbolGroup::GetItemCount() const
{
    return static_cast<int>(itemIDs.size());
}

int VtSymbolGroup::GetItemID(int index) const
{
    return itemIDs.at(index);
}

ZedaUnicodeString VtSymbolGroup::GetItemName(int index) const
{
    return attachedLib->GetSymbolByID(GetItemID(index))->name;
}

void VtSymbolGroup::SetItemName(int index, const ZedaUnicodeString& name)
{
    attachedLib->GetSymbolByID(GetItemID(index))->name = name;
}

int VtSymbolGroup::FindItemID(int id) const
{
    const int position = itemIndex->Find(itemIDs, id);
    if (position == -1)
        symbolGroupLog.Fail("EDd003");
    return position;
}

bool VtSymbolGroup::IsExistID(int id) const
{
    if (FindItemID(id) != -1)
        return true;
    return std::any_of(childGroups.begin(), childGroups.end(),
                       [id](const VtSymbolGroup* child) { return child->IsExistID(id); });
}

VtSymbolGroup* VtSymbolGroup::FindChildGroupWithID(int id) const
{
    if (FindItemID(id) != -1)
        return const_cast<VtSymbolGroup*>(this);
    for (VtSymbolGroup* child : childGroups) {
        if (VtSymbolGroup* found = child->FindChildGroupWithID(id))
            return found;
    }
    symbolGroupLog.Fail("EGa041");
    return nullptr;
}

bool VtSymbolGroup::AddItem(int id, unsigned char moveIfGrouped)
{
    if (!attachedLib->IsIDExisted(id)) {
        symbolGroupLog.Fail("EGa038");
        return false;
    }
    VtSymbolGroup* root = GetRootGroup();
    if (moveIfGrouped) {
        root->RemoveItemOnlyInGroup(id);
    } else if (root->IsExistID(id)) {
        symbolGroupLog.Fail("EGa037");
        return false;
    }
    itemIDs.push_back(id);
    itemIndex->Appended(itemIDs);
    return true;
}

bool VtSymbolGroup::AddItem(int id)
{
    return AddItem(id, false);
}

int VtSymbolGroup::RemoveItem(int index, int count)
{
    const int n = GetItemCount();
    if (n < 1 || index < 0 || index > n || count < 1) {
        symbolGroupLog.Fail("EGa021");
        return 0;
    }
    const int last = LastIndexOfRun(index, count, n);
    for (int i = index; i <= last; ++i)
        attachedLib->RemoveID(itemIDs[i]);
    const int removed = last - index + 1;
    if (removed == 0)
        return 0;
    EraseItems(index, removed);
    return removed;
}

void VtSymbolGroup::RemoveItemOnlyInGroup(int id)
{
    const int position = FindItemID(id);
    if (position != -1)
        EraseItems(position, 1);
    for (VtSymbolGroup* child : childGroups)
        child->RemoveItemOnlyInGroup(id);
}

bool VtSymbolGroup::RemoveSymbol(int id)
{
    const int position = FindItemID(id);
    if (position != -1) {
        EraseItems(position, 1);
        return attachedLib->RemoveID(id) != 0;
    }
    for (VtSymbolGroup* child : childGroups) {
        if (child->RemoveSymbol(id))
            return true;
    }
    symbolGroupLog.Fail("EGa022");
    return false;
}

bool VtSymbolGroup::MoveItemTo(int id, VtSymbolGroup* target)
{
    if (target == this || target == nullptr) {
        symbolGroupLog.Fail("EGa036");
        return false;
    }
    const int position = FindItemID(id);
    if (position == -1) {
        symbolGroupLog.Fail("EGa042");
        return false;
    }
    EraseItems(position, 1);
    target->AddItem(id);
    return true;
}

int VtSymbolGroup::MoveItemTo(int index, int count, VtSymbolGroup* target)
{
    const int n = GetItemCount();
    if (target == this || target == nullptr || index < 0 || index > n || count < 1)
        return 0;
    const int last = LastIndexOfRun(index, count, n);
    const int moved = last - index + 1;
    if (moved == 0)
        return 0;
    const std::vector<int> run(itemIDs.begin() + index, itemIDs.begin() + index + moved);
    EraseItems(index, moved);
    for (int id : run)
        target->AddItem(id);
    return moved;
}

bool VtSymbolGroup::SetItemID(int index, int newID)
{
    if (index < 0 || index >= GetItemCount()) {
        symbolGroupLog.Fail("EDb001");
        symbolGroupLog.Fail("EGa047");
        return false;
    }
    const int oldID = itemIDs[index];
    if (newID == oldID) {
        symbolGroupLog.Fail("EEe010");
        return true;
    }
    // An item whose symbol the library no longer lists hands SetIDAt the
    // position -1, which refuses a used new ID and throws for a free one.
    if (!attachedLib->SetIDAt(attachedLib->FindID(oldID), newID)) {
        symbolGroupLog.Fail("EGa047");
        return false;
    }
    itemIDs[index] = newID;
    itemIndex->Replaced(oldID, newID);
    return true;
}

void VtSymbolGroup::SortByID()
{
    VTC::Sort(itemIDs.data(), itemIDs.data() + itemIDs.size());
    itemIndex->Invalidate();
}

void VtSymbolGroup::EraseItems(int first, int count)
{
    itemIndex->Erasing(itemIDs, static_cast<std::size_t>(first), static_cast<std::size_t>(count));
    itemIDs.erase(itemIDs.begin() + first, itemIDs.begin() + first + count);
}

// ---- The group record ----

void VtSymbolGroup::Save(VtStream& stream, unsigned int fileVersion, int legacyValue) const
{
    stream << groupName;
    if (HasLegacyValue(fileVersion))
        stream.WriteInt(legacyValue);
    const int childCount = GetChildGroupCount();
    stream.WriteInt(childCount);
    for (const VtSymbolGroup* child : childGroups)
        child->Save(stream, fileVersion, 0);
    const int itemCount = GetItemCount();
    stream.WriteInt(itemCount);
    for (const int& id : itemIDs)
        stream.WriteInt(id);
}

void VtSymbolGroup::Load(VtStream& stream, unsigned int fileVersion)
{
    LoadRecord(stream, fileVersion, 0);
}

// A count that the rest of the stream cannot hold, a failed read or a record
// nested too deeply stops the load with the stream failed; the group keeps
// the children read in full and the items read, never a null entry.
void VtSymbolGroup::LoadRecord(VtStream& stream, unsigned int fileVersion, int depth)
{
    stream >> groupName;
    if (HasLegacyValue(fileVersion)) {
        int legacyValue = 0;
        stream.ReadInt(legacyValue);
    }
    int childCount = 0;
    stream.ReadInt(childCount);
    if (childCount > 0) {
        if (depth >= maxLoadDepth || !CountFitsInStream(stream, childCount, minGroupRecordBytes)) {
            FailStream(stream);
            return;
        }
        childGroups.resize(childCount);
        for (int i = 0; i < childCount; ++i) {
            auto* child = new VtSymbolGroup(attachedLib);
            child->SetParentGroup(this);
            child->LoadRecord(stream, fileVersion, depth + 1);
            if (stream.IsFailed()) {
                delete child;
                childGroups.resize(i);
                return;
            }
            childGroups[i] = child;
        }
    }
    int itemCount = 0;
    stream.ReadInt(itemCount);
    if (itemCount <= 0)
        return;
    itemIndex->Invalidate();
    if (!CountFitsInStream(stream, itemCount, minItemRecordBytes)) {
        FailStream(stream);
        return;
    }
    itemIDs.resize(itemCount);
    for (int i = 0; i < itemCount; ++i) {
        if (!stream.ReadInt(itemIDs[i])) {
            itemIDs.resize(i);
            return;
        }
    }
}

}  // namespace VTC
