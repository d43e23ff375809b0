#include "Editing.h"

#include <filesystem>

#include "Commands.h"
#include "Output.h"
#include "VtSymbolLib.h"

namespace LqTool {

using ZEDA::ZedaUnicodeString;

int OpenForEditing(const std::string& path, EditedLibrary& edited)
{
    std::string error;
    LibraryProbe probe;
    edited.lib = OpenLibrary(path, error, &probe);
    if (!edited.lib)
        return Report(path, error);
    if (const int refused = CheckWritable(path))
        return refused;
    edited.path = path;
    edited.kind = probe.kind;
    edited.formatVersion = probe.container ? VTC::VtSymbolLib::containerVersion : edited.lib->GetReport().formatVersion;
    return exitOk;
}

int SaveEdited(EditedLibrary& edited)
{
    std::string error;
    return SaveLibrarySafely(*edited.lib, edited.path, edited.formatVersion, error) ? exitOk
                                                                                    : Report(edited.path, error);
}

int ChooseOutputVersion(const std::string& path, const std::string& form, unsigned int streamVersion,
                        unsigned int& version)
{
    const std::string extension = std::filesystem::path(path).extension().string();
    const std::string chosen = !form.empty()           ? form
                               : extension == ".lqc" ? "container"
                               : extension == ".lqs" ? "stream"
                                                     : "";
    if (chosen.empty())
        return Refuse(path, "the form follows the extension (.lqc container, .lqs stream); name one or give --form");
    version = chosen == "container" ? VTC::VtSymbolLib::containerVersion : streamVersion;
    return exitOk;
}

int CheckIDs(const EditedLibrary& edited, const std::vector<int>& ids)
{
    for (const int id : ids)
        if (!edited.lib->IsIDExisted(id))
            return Refuse(edited.path, "has no symbol with ID " + std::to_string(id));
    return exitOk;
}

SymbolNames::SymbolNames(const LqExample::ResourceSymbolLib& lib)
{
    for (int i = 0; i < lib.GetSymbolCount(); ++i)
        taken_.insert(lib.GetNameAt(i));
}

ZedaUnicodeString SymbolNames::Claim(const ZedaUnicodeString& name)
{
    ZedaUnicodeString result = name;
    if (IsTaken(result))
        result += u"_1";
    ZedaUnicodeString base = result;
    for (int n = 1; IsTaken(result); ++n) {
        ZedaUnicodeString number;
        number.Format(u"%d", n);
        const int underscore = base.ReverseFind(u'_');
        if (underscore > 0)
            base = base.Left(underscore);
        result = base + u"_" + number;
    }
    taken_.insert(result);
    return result;
}

}  // namespace LqTool
