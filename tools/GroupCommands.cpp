// group FILE create|rename|move|remove: the group tree of a library file,
// changed in place.

#include "Commands.h"
#include "Editing.h"
#include "GroupPath.h"
#include "Progress.h"
#include "VtSymbolGroup.h"

namespace LqTool {

using VTC::VtSymbolGroup;
using ZEDA::ZedaUnicodeString;

namespace {

int IndexInParent(const VtSymbolGroup& group)
{
    const VtSymbolGroup& parent = *group.GetParentGroup();
    for (int i = 0; i < parent.GetChildGroupCount(); ++i)
        if (parent.GetChildGroup(i) == &group)
            return i;
    return -1;
}

// The group at `path`, which must exist; the root only when `rootAllowed`.
int ExistingGroup(EditedLibrary& edited, const std::string& path, bool rootAllowed, VtSymbolGroup*& group)
{
    GroupNames names;
    std::string error;
    if (!ParseGroupPath(path, names, error))
        return Refuse(path, error);
    if (names.empty() && !rootAllowed)
        return Refuse(edited.path, "the root group cannot be renamed, moved or removed");
    group = FindGroup(*edited.lib->GetRootGroup(), names);
    return group ? exitOk : Refuse(edited.path, "has no group " + path);
}

int Create(EditedLibrary& edited, const std::string& path)
{
    GroupNames names;
    std::string error;
    if (!ParseGroupPath(path, names, error))
        return Refuse(path, error);
    if (names.empty() || FindGroup(*edited.lib->GetRootGroup(), names))
        return Refuse(edited.path, "already has the group " + (names.empty() ? std::string("/") : path));
    MakeGroup(*edited.lib->GetRootGroup(), names);
    return exitOk;
}

int Rename(EditedLibrary& edited, const std::string& path, const std::string& newName)
{
    VtSymbolGroup* group = nullptr;
    if (const int refused = ExistingGroup(edited, path, false, group))
        return refused;
    const ZedaUnicodeString name = ZedaUnicodeString::FromUtf8(newName);
    if (newName.empty())
        return Refuse(newName, "a group needs a name");
    if (group->GetParentGroup()->IsChildGroupExisted(name) && group->GetGroupName() != name)
        return Refuse(edited.path, "a group beside " + path + " is already named " + newName);
    group->SetGroupName(name);
    edited.lib->SetModifiedFlag(1);
    return exitOk;
}

int Move(EditedLibrary& edited, const std::string& path, const std::string& newParentPath)
{
    VtSymbolGroup* group = nullptr;
    VtSymbolGroup* newParent = nullptr;
    if (const int refused = ExistingGroup(edited, path, false, group))
        return refused;
    if (const int refused = ExistingGroup(edited, newParentPath, true, newParent))
        return refused;
    if (newParent == group->GetParentGroup())
        return exitOk;
    if (newParent->IsChildGroupExisted(group->GetGroupName()))
        return Refuse(edited.path, newParentPath + " already has a group named " + group->GetGroupName().ToUtf8());
    if (newParent == group || !group->GetParentGroup()->MoveChildTo(IndexInParent(*group), newParent))
        return Refuse(edited.path, "a group cannot move into itself or below itself");
    edited.lib->SetModifiedFlag(1);
    return exitOk;
}

int Remove(EditedLibrary& edited, const std::string& path)
{
    VtSymbolGroup* group = nullptr;
    if (const int refused = ExistingGroup(edited, path, false, group))
        return refused;
    // Dissolved: its symbols and child groups go to the parent group.
    if (!group->GetParentGroup()->RemoveChild(IndexInParent(*group), 1))
        return Report(edited.path, "the group " + path + " cannot be removed");
    edited.lib->SetModifiedFlag(1);
    return exitOk;
}

}  // namespace

int RunGroup(const std::string& file, const std::string& action, const std::string& path,
             const std::string& argument)
{
    const bool needsArgument = action == "rename" || action == "move";
    if (needsArgument == argument.empty())
        return Refuse("group " + action, needsArgument ? "needs a second argument" : "takes one path");
    EditedLibrary edited;
    if (const int failed = OpenForEditing(file, edited))
        return failed;
    int result = exitUsage;
    if (action == "create")
        result = Create(edited, path);
    else if (action == "rename")
        result = Rename(edited, path, argument);
    else if (action == "move")
        result = Move(edited, path, argument);
    else if (action == "remove")
        result = Remove(edited, path);
    return result == exitOk ? SaveEdited(edited) : result;
}

}  // namespace LqTool
