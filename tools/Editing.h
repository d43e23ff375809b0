#pragma once

#include <memory>
#include <set>
#include <string>

#include "LibraryFile.h"

// Opening library files to change them, and writing new ones.
namespace LqTool {

constexpr unsigned int defaultStreamVersion = 20050302;

// A library file opened to be changed in place; it is saved back in the form
// and format version it had.
struct EditedLibrary {
    std::string path;
    std::unique_ptr<LqExample::ResourceSymbolLib> lib;
    LibraryKind kind = LibraryKind::Unknown;
    unsigned int formatVersion = 0;
};
// The exit code: exitFailure (reported) when the file is write-protected or
// cannot be read as a library.
int OpenForEditing(const std::string& path, EditedLibrary& edited);
int SaveEdited(EditedLibrary& edited);

// The format version a new file at `path` is written in: the form that
// `form` names ("container" or "stream"), else the one its extension names
// (.lqc container, .lqs stream); the stream form in `streamVersion`.
// exitUsage (reported) when neither says.
int ChooseOutputVersion(const std::string& path, const std::string& form, unsigned int streamVersion,
                        unsigned int& version);

// exitUsage (reported) unless every ID names a symbol of `lib`.
int CheckIDs(const EditedLibrary& edited, const std::vector<int>& ids);

// The names in use in a library, and a free one by the rule the group tree
// uses for group names: the name itself, else "name_1", "name_2", ... (the
// part after a last "_" of the name is replaced, as that rule does).
class SymbolNames {
public:
    explicit SymbolNames(const LqExample::ResourceSymbolLib& lib);
    bool IsTaken(const ZEDA::ZedaUnicodeString& name) const { return taken_.contains(name); }
    // A free name for `name`, from then on taken.
    ZEDA::ZedaUnicodeString Claim(const ZEDA::ZedaUnicodeString& name);
    void Release(const ZEDA::ZedaUnicodeString& name) { taken_.erase(name); }

private:
    std::set<ZEDA::ZedaUnicodeString> taken_;
};

}  // namespace LqTool
