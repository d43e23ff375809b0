#include "GroupPath.h"

#include <algorithm>

#include "LibraryFile.h"
#include "VtSymbolGroup.h"

namespace LqTool {

using VTC::VtSymbolGroup;
using ZEDA::ZedaUnicodeString;

bool ParseGroupPath(const std::string& text, GroupNames& names, std::string& error)
{
    names.clear();
    std::string name;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '\\') {
            if (i + 1 == text.size() || (text[i + 1] != '/' && text[i + 1] != '\\')) {
                error = "a backslash in a group path must come before / or \\";
                return false;
            }
            name += text[++i];
        } else if (c != '/') {
            name += c;
        } else if (!name.empty()) {
            names.push_back(name);
            name.clear();
        } else if (i != 0) {
            error = "a group path has an empty name (two / in a row)";
            return false;
        }
    }
    if (!name.empty())
        names.push_back(name);
    return true;
}

std::string FormatGroupPath(const GroupNames& names)
{
    std::string text;
    for (const std::string& name : names) {
        if (!text.empty())
            text += '/';
        for (const char c : name) {
            if (c == '/' || c == '\\')
                text += '\\';
            text += c;
        }
    }
    return text;
}

GroupNames GroupNamesOf(const VtSymbolGroup& group)
{
    GroupNames names;
    for (const VtSymbolGroup* at = &group; at->GetParentGroup() != nullptr; at = at->GetParentGroup())
        names.push_back(at->GetGroupName().ToUtf8());
    std::reverse(names.begin(), names.end());
    return names;
}

std::vector<const VtSymbolGroup*> GroupsInOrder(const VtSymbolGroup& root)
{
    std::vector<const VtSymbolGroup*> order;
    WalkGroups(root, {[&order](const VtSymbolGroup& group, int, int, int) { order.push_back(&group); }, {}});
    return order;
}

VtSymbolGroup* FindGroup(VtSymbolGroup& root, const GroupNames& names)
{
    VtSymbolGroup* group = &root;
    for (const std::string& name : names) {
        const ZedaUnicodeString childName = ZedaUnicodeString::FromUtf8(name);
        if (!group->IsChildGroupExisted(childName))
            return nullptr;
        group = group->GetChildGroup(childName);
    }
    return group;
}

VtSymbolGroup* MakeGroup(VtSymbolGroup& root, const GroupNames& names)
{
    VtSymbolGroup* group = &root;
    for (const std::string& name : names) {
        const ZedaUnicodeString childName = ZedaUnicodeString::FromUtf8(name);
        group = group->IsChildGroupExisted(childName) ? group->GetChildGroup(childName)
                                                      : group->CreateChildGroup(childName);
    }
    return group;
}

}  // namespace LqTool
