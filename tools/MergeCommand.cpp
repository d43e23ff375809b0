// merge: the symbols of other libraries added to a copy of one, into OUT.

#include <map>

#include "Commands.h"
#include "Editing.h"
#include "GroupPath.h"
#include "Output.h"
#include "Progress.h"
#include "SymbolFields.h"
#include "VtSymbolGroup.h"

namespace LqTool {

using LqExample::RasterImage;
using LqExample::ResourceSymbolLib;
using VTC::VtSymbolGroup;

namespace {

struct MergeCounts {
    int symbols = 0;
    int renumbered = 0;
    int renamed = 0;
};

// Each group of `from`, by path, made in `into`; symbol ID -> group of `into`.
std::map<int, VtSymbolGroup*> MergeGroups(const ResourceSymbolLib& from, ResourceSymbolLib& into)
{
    std::map<int, VtSymbolGroup*> destination;
    for (const VtSymbolGroup* group : GroupsInOrder(*from.GetRootGroup())) {
        VtSymbolGroup* target = MakeGroup(*into.GetRootGroup(), GroupNamesOf(*group));
        for (int i = 0; i < group->GetItemCount(); ++i)
            destination.emplace(group->GetItemID(i), target);
    }
    return destination;
}

int MergeOne(const std::string& path, const ResourceSymbolLib& from, LibraryKind kind, ResourceSymbolLib& into,
             SymbolNames& names, MergeCounts& counts)
{
    const auto destination = MergeGroups(from, into);
    Progress progress("merge " + path, from.GetSymbolCount());
    for (int i = 0; i < from.GetSymbolCount(); ++i) {
        progress.Advance();
        const int id = from.GetIDAt(i);
        const VTC::VtSymbol& symbol = *from.GetSymbolByID(id);
        std::string error;
        auto copy = SymbolFromFields(kind, id, names.Claim(symbol.name), SymbolFields(symbol), error);
        if (!copy)
            return Report(path, "symbol " + std::to_string(id) + ": " + error);
        counts.renamed += copy->name != symbol.name ? 1 : 0;
        const auto group = destination.find(id);
        if (!into.AddSymbol(copy.get(), group == destination.end() ? nullptr : group->second))
            return Report(path, "symbol " + std::to_string(id) + " cannot be added: no free ID is left");
        const LqExample::ResourceSymbol* added = copy.release();
        counts.renumbered += added->ID != id ? 1 : 0;
        ++counts.symbols;
        RasterImage picture;
        if (from.HasSymbolImage(id) &&
            (!from.GetSymbolImage(id, picture) || !into.SetSymbolImage(added->ID, picture)))
            return Report(path, "the picture of symbol " + std::to_string(id) + " cannot be copied: " +
                                    from.GetLastError() + into.GetLastError());
    }
    return exitOk;
}

}  // namespace

int RunMerge(const std::string& file, const std::vector<std::string>& others, const std::string& output,
             const OutputOptions& options)
{
    std::vector<std::string> inputs = others;
    inputs.push_back(file);
    if (const int refused = CheckOutput(output, inputs, options.force))
        return refused;
    std::string error;
    LibraryProbe probe;
    auto merged = OpenLibrary(file, error, &probe);
    if (!merged)
        return Report(file, error);
    unsigned int version = 0;
    const unsigned int streamVersion = probe.container ? defaultStreamVersion : probe.formatVersion;
    if (const int refused = ChooseOutputVersion(output, options.form, streamVersion, version))
        return refused;
    SymbolNames names(*merged);
    MergeCounts counts;
    for (const std::string& other : others) {
        LibraryProbe otherProbe;
        const auto from = OpenLibrary(other, error, &otherProbe);
        if (!from)
            return Report(other, error);
        if (otherProbe.kind != probe.kind)
            return Refuse(other, std::string("is a ") + KindName(otherProbe.kind) + " library and " + file +
                                     " a " + KindName(probe.kind) + " library");
        if (const int failed = MergeOne(other, *from, probe.kind, *merged, names, counts))
            return failed;
    }
    if (!SaveLibrarySafely(*merged, output, version, error))
        return Report(output, error);
    Remark("merged " + std::to_string(counts.symbols) + " symbols into " + output + " (" +
           std::to_string(counts.renumbered) + " with a new ID, " + std::to_string(counts.renamed) +
           " with a new name)");
    return exitOk;
}

}  // namespace LqTool
