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

// An item takes 4 bytes of a stream at least.
constexpr long long minItemRecordBytes = 4;

// What a tree walk does with a group it reaches.
enum class WalkStep { descend, skip, stop };

// Walks the subtree of `start` depth first, in pre-order, without recursion,
// so that a tree of any depth is walked on a small stack. `visit` decides for
// each group: descend into its children (then `leave` is called once they are
// all done), skip them (no `leave`), or stop the walk with this group as its
// result. Returns null when the walk ends without a stop.
template <typename Visit, typename Leave>
VtSymbolGroup* Walk(VtSymbolGroup* start, Visit visit, Leave leave)
{
    struct Frame {
        VtSymbolGroup* group;
        int next;
    };
    std::vector<Frame> pending;
    auto enter = [&](VtSymbolGroup* group) {
        const WalkStep step = visit(*group);
        if (step == WalkStep::descend)
            pending.push_back({group, 0});
        return step == WalkStep::stop;
    };
    if (enter(start))
        return start;
    while (!pending.empty()) {
        Frame& top = pending.back();
        if (top.next < top.group->GetChildGroupCount()) {
            VtSymbolGroup* child = top.group->GetChildGroup(top.next++);
            if (enter(child))
                return child;
        } else {
            VtSymbolGroup* done = top.group;
            pending.pop_back();
            leave(*done);
        }
    }
    return nullptr;
}

void LeaveQuietly(VtSymbolGroup&) {}

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

// Subtrees are taken apart from a list of pending groups rather than by
// recursion, so that a tree of any depth is deleted on a small stack.
void VtSymbolGroup::Clear()
{
    std::vector<int>().swap(itemIDs);
    itemIndex->Invalidate();
    DeleteChildren();
}

void VtSymbolGroup::DeleteChildren()
{
    std::vector<VtSymbolGroup*> pending;
    pending.swap(childGroups);
    while (!pending.empty()) {
        VtSymbolGroup* group = pending.back();
        pending.pop_back();
        if (group == nullptr)
            continue;
        // A group moved under itself is its own child: it is deleted once.
        std::erase(group->childGroups, group);
        pending.insert(pending.end(), group->childGroups.begin(), group->childGroups.end());
        group->childGroups.clear();
        delete group;
    }
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
    return Walk(
        const_cast<VtSymbolGroup*>(this),
        [&name](VtSymbolGroup& group) { return group.groupName == name ? WalkStep::stop : WalkStep::descend; },
        [](VtSymbolGroup&) { symbolGroupLog.Fail("EGa044"); });
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
    // The walk up stops at a group moved under itself, which is its own parent.
    for (const VtSymbolGroup* p = target->GetParentGroup(); p != nullptr; p = p == p->parentGroup ? nullptr : p->parentGroup) {
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
    if (!keepContents) {
        RemoveChildWithSymbols(index);
        return true;
    }
    VtSymbolGroup* child = childGroups[index];
    {
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

// Child `index` goes with the symbols of its items. Each removal first removes
// the grandchildren at 0, 1, ... of the child's count taken beforehand; the
// index runs on while the remaining ones shift down, so every other one goes
// with its symbols, and each index past the end logs "EDb009". What is left
// goes with the child and leaves its symbols in the library, belonging to no
// group. The nested removals are frames of a list rather than recursive
// calls, so that a subtree of any depth is removed on a small stack.
void VtSymbolGroup::RemoveChildWithSymbols(int index)
{
    struct Removal {
        VtSymbolGroup* parent;
        int index;
        int grandchildCount;
        int next;
    };
    std::vector<Removal> pending{{this, index, childGroups[index]->GetChildGroupCount(), 0}};
    while (!pending.empty()) {
        Removal& removal = pending.back();
        VtSymbolGroup* child = removal.parent->childGroups[removal.index];
        if (removal.next < removal.grandchildCount) {
            const int grandchild = removal.next++;
            if (grandchild >= child->GetChildGroupCount()) {
                symbolGroupLog.Fail("EDb009");
                continue;
            }
            pending.push_back({child, grandchild, child->childGroups[grandchild]->GetChildGroupCount(), 0});
            continue;
        }
        child->RemoveItem(0, child->GetItemCount());
        removal.parent->childGroups.erase(removal.parent->childGroups.begin() + removal.index);
        pending.pop_back();
        delete child;
    }
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

namespace {

// Stops a walk at the first group that holds `id`.
auto HolderOf(int id)
{
    return [id](VtSymbolGroup& group) { return group.FindItemID(id) != -1 ? WalkStep::stop : WalkStep::descend; };
}

}  // namespace

bool VtSymbolGroup::IsExistID(int id) const
{
    return Walk(const_cast<VtSymbolGroup*>(this), HolderOf(id), LeaveQuietly) != nullptr;
}

VtSymbolGroup* VtSymbolGroup::FindChildGroupWithID(int id) const
{
    return Walk(const_cast<VtSymbolGroup*>(this), HolderOf(id), [](VtSymbolGroup&) { symbolGroupLog.Fail("EGa041"); });
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
    Walk(
        this,
        [id](VtSymbolGroup& group) {
            const int position = group.FindItemID(id);
            if (position != -1)
                group.EraseItems(position, 1);
            return WalkStep::descend;
        },
        LeaveQuietly);
}

// The first holder in pre-order gives up the item; when the library then
// refuses to remove the symbol, the search goes on after that holder's
// subtree, and only groups searched in full log "EGa022".
bool VtSymbolGroup::RemoveSymbol(int id)
{
    const auto removeHere = [id](VtSymbolGroup& group) {
        const int position = group.FindItemID(id);
        if (position == -1)
            return WalkStep::descend;
        group.EraseItems(position, 1);
        return group.attachedLib->RemoveID(id) != 0 ? WalkStep::stop : WalkStep::skip;
    };
    return Walk(this, removeHere, [](VtSymbolGroup&) { symbolGroupLog.Fail("EGa022"); }) != nullptr;
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
    const VtSymbolGroup* top = this;
    const auto writeHead = [&](VtSymbolGroup& group) {
        stream << group.groupName;
        if (HasLegacyValue(fileVersion))
            stream.WriteInt(&group == top ? legacyValue : 0);
        const int childCount = group.GetChildGroupCount();
        stream.WriteInt(childCount);
        return WalkStep::descend;
    };
    const auto writeItems = [&stream](VtSymbolGroup& group) {
        const int itemCount = group.GetItemCount();
        stream.WriteInt(itemCount);
        for (const int& id : group.itemIDs)
            stream.WriteInt(id);
    };
    Walk(const_cast<VtSymbolGroup*>(this), writeHead, writeItems);
}

// Records nest as deep as the tree: the groups being read are frames of a
// list rather than recursive calls. Each child is stored with whatever its
// record gave before the stream ran out; no further child is made once the
// stream has failed, and items are read as long as it holds them, so a
// damaged count never allocates more than the stream can fill.
void VtSymbolGroup::Load(VtStream& stream, unsigned int fileVersion)
{
    struct Pending {
        VtSymbolGroup* group;
        int childrenLeft;
    };
    std::vector<Pending> pending;
    const auto readHead = [&](VtSymbolGroup& group) {
        stream >> group.groupName;
        if (HasLegacyValue(fileVersion)) {
            int legacyValue = 0;
            stream.ReadInt(legacyValue);
        }
        int childCount = 0;
        stream.ReadInt(childCount);
        if (childCount > 0)
            group.DeleteChildren();
        pending.push_back({&group, std::max(childCount, 0)});
    };
    readHead(*this);
    while (!pending.empty()) {
        Pending& top = pending.back();
        // A child record takes at least its name's length: none begins at the end.
        if (top.childrenLeft > 0 && !stream.IsFailed() && stream.GetRemaining() > 0) {
            --top.childrenLeft;
            VtSymbolGroup* parent = top.group;
            auto* child = new VtSymbolGroup(parent->attachedLib);
            child->SetParentGroup(parent);
            parent->childGroups.push_back(child);
            readHead(*child);
        } else {
            VtSymbolGroup* group = top.group;
            pending.pop_back();
            group->LoadItems(stream);
        }
    }
}

void VtSymbolGroup::LoadItems(VtStream& stream)
{
    int itemCount = 0;
    stream.ReadInt(itemCount);
    if (itemCount <= 0)
        return;
    std::vector<int> items;
    items.reserve(static_cast<std::size_t>(std::min<long long>(itemCount, stream.GetRemaining() / minItemRecordBytes)));
    for (int i = 0; i < itemCount; ++i) {
        int id = 0;
        if (!stream.ReadInt(id))
            break;
        items.push_back(id);
    }
    itemIDs = std::move(items);
    itemIndex->Invalidate();
}

}  // namespace VTC
