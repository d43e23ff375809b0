#pragma once

#include <memory>
#include <vector>

#include "LqBase.h"

namespace VTC {

using ZEDA::ZedaUnicodeString;

class VtStream;
class VtSymbolLib;
class VtPositionIndex;

// One node of a library's group tree: a name, owned child groups in their
// order, and the IDs of the symbols filed here. An ID belongs to at most one
// group of a tree.
class LQ_EXPORT VtSymbolGroup {
public:
    VtSymbolGroup();
    explicit VtSymbolGroup(VtSymbolLib* lib);
    ~VtSymbolGroup();
    VtSymbolGroup(const VtSymbolGroup&) = delete;
    VtSymbolGroup& operator=(const VtSymbolGroup&) = delete;

    void Clear();

    VtSymbolGroup* GetParentGroup() const;
    void SetParentGroup(VtSymbolGroup* parent);
    VtSymbolLib* GetAttachedLib();
    void AttachLib(VtSymbolLib* lib);
    bool IsModified() const;
    void SetModifiedFlag(unsigned char flag);
    ZedaUnicodeString GetGroupName() const;
    void SetGroupName(const ZedaUnicodeString& name);
    VtSymbolGroup* GetRootGroup() const;

    // Child groups.
    int GetChildGroupCount() const;
    VtSymbolGroup* GetChildGroup(int index) const;
    VtSymbolGroup* GetChildGroup(const ZedaUnicodeString& name) const;
    VtSymbolGroup* FindChildGroup(const ZedaUnicodeString& name) const;
    bool IsChildGroupExisted(const ZedaUnicodeString& name);
    ZedaUnicodeString GetAvailableName(const ZedaUnicodeString& name);
    VtSymbolGroup* CreateChildGroup(const ZedaUnicodeString& name);
    bool AppendGroup(VtSymbolGroup* group);
    bool RemoveChild(int index, unsigned char keepContents);
    bool MoveChildTo(int index, VtSymbolGroup* target);

    // Items: the IDs of the symbols filed in this group.
    int GetItemCount() const;
    int GetItemID(int index) const;
    ZedaUnicodeString GetItemName(int index) const;
    void SetItemName(int index, const ZedaUnicodeString& name);
    int FindItemID(int id) const;
    bool IsExistID(int id) const;
    VtSymbolGroup* FindChildGroupWithID(int id) const;
    bool AddItem(int id, unsigned char moveIfGrouped);
    bool AddItem(int id);
    int RemoveItem(int index, int count);
    void RemoveItemOnlyInGroup(int id);
    bool RemoveSymbol(int id);
    bool MoveItemTo(int id, VtSymbolGroup* target);
    int MoveItemTo(int index, int count, VtSymbolGroup* target);
    bool SetItemID(int index, int newID);
    void SortByID();

    // The group record: name, [legacy value], children, items.
    void Save(VtStream& stream, unsigned int fileVersion, int legacyValue) const;
    void Load(VtStream& stream, unsigned int fileVersion);

private:
    void DeleteChildren();
    void RemoveChildWithSymbols(int index);
    void LoadItems(VtStream& stream);
    void EraseItems(int first, int count);

    ZedaUnicodeString groupName;
    unsigned char modified;
    VtSymbolLib* attachedLib;
    VtSymbolGroup* parentGroup;
    std::vector<VtSymbolGroup*> childGroups;
    std::vector<int> itemIDs;
    // Where each ID stands in `itemIDs`.
    std::unique_ptr<VtPositionIndex> itemIndex;
};

}  // namespace VTC
