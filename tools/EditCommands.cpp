// new, add, add-folder, rename, move and remove: the commands that make a
// library file and change its symbols in place.

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "Colour.h"
#include "Commands.h"
#include "Editing.h"
#include "GroupPath.h"
#include "LineSymbol.h"
#include "MarkerSymbol.h"
#include "Output.h"
#include "PictureFile.h"
#include "Progress.h"
#include "SymbolRenderer.h"
#include "VtSymbolGroup.h"

namespace LqTool {

namespace fs = std::filesystem;
using LqExample::LineSymbol;
using LqExample::MarkerSymbol;
using LqExample::RasterImage;
using LqExample::ResourceSymbol;
using VTC::VtSymbolGroup;
using ZEDA::ZedaUnicodeString;

namespace {

constexpr int lineSampleLength = 96;

// The group at a path given on the command line, made as needed.
int GroupFor(EditedLibrary& edited, const std::string& path, VtSymbolGroup*& group)
{
    GroupNames names;
    std::string error;
    if (!ParseGroupPath(path, names, error))
        return Refuse(path, error);
    group = MakeGroup(*edited.lib->GetRootGroup(), names);
    return exitOk;
}

// Options that one kind of symbol takes and the other does not.
int CheckKindOptions(const AddOptions& o, LibraryKind kind)
{
    const bool markerOptions = o.shape || o.outline || o.rotation || o.picture;
    const bool lineOptions = o.width || o.dashes;
    if (kind == LibraryKind::Marker && lineOptions)
        return Refuse(o.file, "a marker library: --width and --dashes are for line libraries");
    if (kind == LibraryKind::Line && (markerOptions || o.size))
        return Refuse(o.file, "a line library: --shape, --size, --outline, --rotation and --picture are for markers");
    if (kind == LibraryKind::Line && !(o.width && o.colour))
        return Refuse(o.file, "a line symbol needs --width and --colour");
    if (kind == LibraryKind::Marker && o.picture && (o.shape || o.colour || o.outline || o.rotation))
        return Refuse(o.file, "a picture marker takes --picture and --size only");
    if (kind == LibraryKind::Marker && !o.picture && !(o.shape && o.size && o.colour))
        return Refuse(o.file, "a marker needs --shape, --size and --colour, or --picture");
    return exitOk;
}

unsigned int ColourOption(const std::optional<std::string>& text, unsigned int fallback)
{
    unsigned int colour = fallback;
    if (text)
        ParseColour(*text, colour);
    return colour;
}

// The new symbol and its picture, from the options of `add`.
int MakeSymbol(const AddOptions& o, LibraryKind kind, std::unique_ptr<ResourceSymbol>& symbol, RasterImage& picture)
{
    const ZedaUnicodeString name = ZedaUnicodeString::FromUtf8(o.name);
    std::string error;
    if (kind == LibraryKind::Line) {
        auto line = std::make_unique<LineSymbol>(-1, name, *o.width, ColourOption(o.colour, 0),
                                                 o.dashes.value_or(std::vector<int>{}));
        if (!LqExample::RenderLineSample(*line, lineSampleLength, picture))
            return Report(o.file, "the sample stroke cannot be drawn");
        symbol = std::move(line);
        return exitOk;
    }
    if (o.picture) {
        if (!LoadPictureFile(*o.picture, o.size.value_or(defaultPictureSize), picture, error))
            return Report(*o.picture, error);
        symbol = std::make_unique<MarkerSymbol>(-1, name, LqExample::MarkerShape::Square,
                                                std::max(picture.width, picture.height), ZEDARGB(0, 0, 0));
        return exitOk;
    }
    LqExample::MarkerShape shape{};
    if (!LqExample::ParseShapeName(*o.shape, shape))
        return Refuse(*o.shape, "not a shape");
    auto marker = std::make_unique<MarkerSymbol>(-1, name, shape, *o.size, ColourOption(o.colour, 0),
                                                 o.rotation.value_or(0.0));
    marker->outlineColour = ColourOption(o.outline, marker->colour);
    if (!LqExample::RenderMarker(*marker, picture))
        return Report(o.file, "the marker cannot be drawn");
    symbol = std::move(marker);
    return exitOk;
}

// Adds a symbol with its picture to a group; the library owns it from then
// on. False when no ID is left or the picture cannot be stored.
bool AddWithPicture(EditedLibrary& edited, std::unique_ptr<ResourceSymbol> symbol, VtSymbolGroup* group,
                    const RasterImage& picture, int& id)
{
    if (!edited.lib->AddSymbol(symbol.get(), group))
        return false;
    id = symbol.release()->ID;
    return edited.lib->SetSymbolImage(id, picture);
}

// The picture files under a directory, in a stable order.
std::vector<fs::path> PictureFiles(const fs::path& directory)
{
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(directory))
        if (entry.is_regular_file() && IsPictureFile(entry.path().string()))
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

GroupNames FolderNames(const fs::path& file, const fs::path& directory)
{
    GroupNames names;
    for (const fs::path& part : fs::relative(file.parent_path(), directory))
        if (part != ".")
            names.push_back(part.string());
    return names;
}

}  // namespace

int RunNew(const std::string& path, const std::string& kindName, const OutputOptions& output)
{
    unsigned int version = 0;
    if (const int refused = ChooseOutputVersion(path, output.form, defaultStreamVersion, version))
        return refused;
    if (const int refused = CheckOutput(path, {}, output.force))
        return refused;
    const LibraryKind kind = kindName == "line" ? LibraryKind::Line : LibraryKind::Marker;
    auto lib = NewLibrary(kind);
    std::string error;
    if (!SaveLibrarySafely(*lib, path, version, error))
        return Report(path, error);
    Remark("created " + path + ": an empty " + KindName(kind) + " library");
    return exitOk;
}

int RunAdd(const AddOptions& options)
{
    EditedLibrary edited;
    if (const int failed = OpenForEditing(options.file, edited))
        return failed;
    if (const int refused = CheckKindOptions(options, edited.kind))
        return refused;
    if (SymbolNames(*edited.lib).IsTaken(ZedaUnicodeString::FromUtf8(options.name)))
        return Refuse(options.file, "already has a symbol named " + options.name);
    VtSymbolGroup* group = nullptr;
    if (const int refused = GroupFor(edited, options.group, group))
        return refused;
    std::unique_ptr<ResourceSymbol> symbol;
    RasterImage picture;
    if (const int failed = MakeSymbol(options, edited.kind, symbol, picture))
        return failed;
    int id = -1;
    if (!AddWithPicture(edited, std::move(symbol), group, picture, id))
        return Report(options.file, "the symbol or its picture cannot be stored: " + edited.lib->GetLastError());
    if (const int failed = SaveEdited(edited))
        return failed;
    std::printf("%d\n", id);
    return exitOk;
}

int RunAddFolder(const std::string& file, const std::string& directory, int size)
{
    EditedLibrary edited;
    if (const int failed = OpenForEditing(file, edited))
        return failed;
    if (edited.kind != LibraryKind::Marker)
        return Refuse(file, "pictures become markers: this is a line library");
    // The folder is an input: one that cannot be read is a bad file, not a usage error.
    if (!fs::is_directory(directory))
        return Report(directory, fs::exists(directory) ? "is not a folder" : "no such folder");
    std::vector<fs::path> files;
    try {
        files = PictureFiles(directory);
    } catch (const fs::filesystem_error& error) {
        return Report(directory, error.code().message() + ": " + error.path1().string());
    }
    SymbolNames names(*edited.lib);
    int added = 0;
    int failed = 0;
    {
        Progress progress("add-folder", static_cast<long>(files.size()));
        for (const fs::path& path : files) {
            RasterImage picture;
            std::string error;
            int id = -1;
            progress.Advance();
            if (!LoadPictureFile(path.string(), size, picture, error)) {
                Report(path.string(), error);
                ++failed;
                continue;
            }
            const ZedaUnicodeString name = names.Claim(ZedaUnicodeString::FromUtf8(path.stem().string()));
            auto marker = std::make_unique<MarkerSymbol>(-1, name, LqExample::MarkerShape::Square,
                                                         std::max(picture.width, picture.height), ZEDARGB(0, 0, 0));
            VtSymbolGroup* group = MakeGroup(*edited.lib->GetRootGroup(), FolderNames(path, directory));
            if (!AddWithPicture(edited, std::move(marker), group, picture, id))
                return Report(file, path.string() + " cannot be stored: " + edited.lib->GetLastError());
            ++added;
        }
    }
    if (const int saveFailed = SaveEdited(edited))
        return saveFailed;
    Remark("added " + std::to_string(added) + " pictures from " + directory + " to " + file +
           (failed ? "; " + std::to_string(failed) + " files could not be read" : ""));
    return failed ? exitFailure : exitOk;
}

int RunRename(const std::string& file, int id, const std::string& name)
{
    EditedLibrary edited;
    if (const int failed = OpenForEditing(file, edited))
        return failed;
    if (const int refused = CheckIDs(edited, {id}))
        return refused;
    const ZedaUnicodeString newName = ZedaUnicodeString::FromUtf8(name);
    const int index = edited.lib->FindID(id);
    if (edited.lib->GetNameAt(index) == newName)
        return exitOk;
    if (SymbolNames(*edited.lib).IsTaken(newName))
        return Refuse(file, "already has a symbol named " + name);
    edited.lib->SetNameAt(index, newName);
    return SaveEdited(edited);
}

int RunMove(const std::string& file, const std::vector<int>& ids, const std::string& groupPath)
{
    EditedLibrary edited;
    if (const int failed = OpenForEditing(file, edited))
        return failed;
    if (const int refused = CheckIDs(edited, ids))
        return refused;
    VtSymbolGroup* group = nullptr;
    if (const int refused = GroupFor(edited, groupPath, group))
        return refused;
    for (const int id : ids)
        group->AddItem(id, 1);
    return SaveEdited(edited);
}

int RunRemove(const std::string& file, const std::vector<int>& ids)
{
    EditedLibrary edited;
    if (const int failed = OpenForEditing(file, edited))
        return failed;
    if (const int refused = CheckIDs(edited, ids))
        return refused;
    for (const int id : ids) {
        // Through the tree when the symbol is filed, so that no group keeps its ID.
        if (edited.lib->IsIDExisted(id) && !edited.lib->GetRootGroup()->RemoveSymbol(id))
            edited.lib->RemoveID(id);
    }
    return SaveEdited(edited);
}

}  // namespace LqTool
