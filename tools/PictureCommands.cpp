// thumbnails and sheet: the pictures of a library's symbols, one PNG per
// symbol or contact sheets grouped by group.

#include <algorithm>
#include <filesystem>
#include <set>

#include "CairoPicture.h"
#include "Commands.h"
#include "ContactSheet.h"
#include "GroupPath.h"
#include "LibraryFile.h"
#include "LineSymbol.h"
#include "MarkerSymbol.h"
#include "Output.h"
#include "Png.h"
#include "Progress.h"
#include "SymbolRenderer.h"
#include "VtSymbolGroup.h"

namespace LqTool {

namespace fs = std::filesystem;
using LqExample::RasterImage;
using LqExample::ResourceSymbolLib;
using VTC::VtSymbolGroup;

namespace {

constexpr int sheetColumns = 10;
constexpr int sheetCell = 72;

// What a symbol looks like within a square of `side` pixels: a line as a
// sample stroke, a marker as its picture (drawn from its fields when it has
// none), scaled down to fit, transparent around it.
bool SymbolPicture(const ResourceSymbolLib& lib, int id, int side, RasterImage& picture)
{
    const VTC::VtSymbol* symbol = lib.GetSymbolByID(id);
    RasterImage drawn;
    bool ok = false;
    if (const auto* line = dynamic_cast<const LqExample::LineSymbol*>(symbol))
        ok = LqExample::RenderLineSample(*line, side, drawn);
    else if (lib.HasSymbolImage(id))
        ok = lib.GetSymbolImage(id, drawn);
    else if (const auto* marker = dynamic_cast<const LqExample::MarkerSymbol*>(symbol))
        ok = LqExample::RenderMarker(*marker, drawn);
    if (ok)
        picture = CentreInSquare(drawn, side);
    return ok;
}

std::string ThumbnailPath(const std::string& directory, int id)
{
    return (fs::path(directory) / (std::to_string(id) + ".png")).string();
}

std::string Heading(const VtSymbolGroup& group)
{
    const GroupNames names = GroupNamesOf(group);
    return names.empty() ? std::string("(top level)") : FormatGroupPath(names);
}

bool AddCell(ContactSheet& sheet, const ResourceSymbolLib& lib, int id)
{
    RasterImage picture;
    if (!SymbolPicture(lib, id, sheetCell, picture))
        return false;
    sheet.Add(picture, "#" + std::to_string(id) + "\n" + lib.GetSymbolByID(id)->name.ToUtf8());
    return true;
}

// Rows per group, depth first, then the symbols that are in no group.
int FillSheet(ContactSheet& sheet, const std::string& file, const ResourceSymbolLib& lib)
{
    std::set<int> filed;
    Progress progress("sheet", lib.GetSymbolCount());
    for (const VtSymbolGroup* group : GroupsInOrder(*lib.GetRootGroup())) {
        if (group->GetItemCount() > 0)
            sheet.NewRow(Heading(*group));
        for (int i = 0; i < group->GetItemCount(); ++i) {
            const int id = group->GetItemID(i);
            if (!filed.insert(id).second)
                continue;
            progress.Advance();
            if (!AddCell(sheet, lib, id))
                return Report(file, "the picture of symbol " + std::to_string(id) + ": " + lib.GetLastError());
        }
    }
    bool headed = false;
    for (int i = 0; i < lib.GetSymbolCount(); ++i) {
        const int id = lib.GetIDAt(i);
        if (filed.contains(id))
            continue;
        if (!std::exchange(headed, true))
            sheet.NewRow("(not in a group)");
        progress.Advance();
        if (!AddCell(sheet, lib, id))
            return Report(file, "the picture of symbol " + std::to_string(id) + ": " + lib.GetLastError());
    }
    return exitOk;
}

}  // namespace

int RunThumbnails(const std::string& file, const std::string& directory, int size, bool force)
{
    std::string error;
    const auto lib = OpenLibrary(file, error);
    if (!lib)
        return Report(file, error);
    for (int i = 0; i < lib->GetSymbolCount(); ++i)
        if (const int refused = CheckOutput(ThumbnailPath(directory, lib->GetIDAt(i)), {file}, force))
            return refused;
    if (const int failed = MakeOutputDirectory(directory))
        return failed;
    OutputBatch thumbnails;
    Progress progress("thumbnails", lib->GetSymbolCount());
    for (int i = 0; i < lib->GetSymbolCount(); ++i) {
        const int id = lib->GetIDAt(i);
        RasterImage picture;
        progress.Advance();
        if (!SymbolPicture(*lib, id, size, picture))
            return Report(file, "the picture of symbol " + std::to_string(id) + ": " + lib->GetLastError());
        if (!thumbnails.Add(ThumbnailPath(directory, id), EncodePng(picture), error))
            return Report(ThumbnailPath(directory, id), error);
    }
    if (!thumbnails.Commit(error))
        return Report(directory, error);
    Remark("wrote " + std::to_string(lib->GetSymbolCount()) + " thumbnails of " + std::to_string(size) + "x" +
           std::to_string(size) + " pixels into " + directory);
    return exitOk;
}

int RunSheet(const std::string& file, const std::string& output, bool force)
{
    std::string error;
    const auto lib = OpenLibrary(file, error);
    if (!lib)
        return Report(file, error);
    ContactSheet sheet(fs::path(file).filename().string() + ": " + std::to_string(lib->GetSymbolCount()) +
                           " symbols",
                       sheetColumns, sheetCell, sheetCell);
    if (const int failed = FillSheet(sheet, file, *lib))
        return failed;
    for (const std::string& page : sheet.PagePaths(output))
        if (const int refused = CheckOutput(page, {file}, force))
            return refused;
    std::vector<std::string> pages;
    if (!sheet.Save(output, pages, error))
        return Report(pages.size() < sheet.PagePaths(output).size() ? sheet.PagePaths(output)[pages.size()] : output,
                      error);
    for (const std::string& page : pages)
        Remark(page);
    return exitOk;
}

}  // namespace LqTool
