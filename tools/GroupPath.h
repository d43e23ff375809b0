#pragma once

#include <string>
#include <vector>

namespace VTC {
class VtSymbolGroup;
}

// Group paths: the names of the groups from the root's child down, joined by
// "/"; a "/" inside a name is written "\/" and a backslash "\\". The empty
// path (or "/") is the root group.
namespace LqTool {

using GroupNames = std::vector<std::string>;

bool ParseGroupPath(const std::string& text, GroupNames& names, std::string& error);
std::string FormatGroupPath(const GroupNames& names);
// The path of a group of a library's tree.
GroupNames GroupNamesOf(const VTC::VtSymbolGroup& group);

// `root` and every group below it, parents before children, children in
// order (WalkGroups: no recursion, trees from files may be deep).
std::vector<const VTC::VtSymbolGroup*> GroupsInOrder(const VTC::VtSymbolGroup& root);

// The group at `names` under `root`; null when a group on the way is missing.
VTC::VtSymbolGroup* FindGroup(VTC::VtSymbolGroup& root, const GroupNames& names);
// The same, making the groups that are missing.
VTC::VtSymbolGroup* MakeGroup(VTC::VtSymbolGroup& root, const GroupNames& names);

}  // namespace LqTool
