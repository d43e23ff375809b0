// import, and the pictures that export and import exchange.

#include <glib.h>
#include <zlib.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <set>

#include "Commands.h"
#include "Editing.h"
#include "Exchange.h"
#include "Output.h"
#include "Png.h"
#include "Progress.h"
#include "SymbolFields.h"
#include "VtSymbolGroup.h"

namespace LqTool {

namespace fs = std::filesystem;
using LqExample::RasterImage;
using LqExample::ResourceSymbolLib;
using VTC::VtSymbolGroup;
using ZEDA::ZedaUnicodeString;

namespace {

struct GFreeDeleter {
    void operator()(void* memory) const { g_free(memory); }
};

std::string Base64(const std::string& bytes)
{
    const std::unique_ptr<gchar, GFreeDeleter> text(
        g_base64_encode(reinterpret_cast<const guchar*>(bytes.data()), bytes.size()));
    return text.get();
}

std::string FromBase64(const std::string& text)
{
    gsize length = 0;
    const std::unique_ptr<guchar, GFreeDeleter> bytes(g_base64_decode(text.c_str(), &length));
    return {reinterpret_cast<const char*>(bytes.get()), length};
}

// A failure in the document: reported with the document's name, exit code 1.
struct BadDocument : std::runtime_error {
    using std::runtime_error::runtime_error;
};

void Require(bool condition, const std::string& message)
{
    if (!condition)
        throw BadDocument(message);
}

std::string ReadFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    Require(static_cast<bool>(in), "cannot read " + path);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// The groups of a flat, depth-first list, each after its parent; returns them
// in the list's order. Names go in as they are, even two alike under one parent.
std::vector<VtSymbolGroup*> MakeGroups(ResourceSymbolLib& lib, const Json& groups)
{
    Require(groups.is_array() && !groups.empty() && groups[0].at("parent").is_null(),
            "\"groups\" must start with the root group");
    std::vector<VtSymbolGroup*> made;
    for (const Json& entry : groups) {
        const ZedaUnicodeString name = ZedaUnicodeString::FromUtf8(entry.at("name").get<std::string>());
        if (made.empty()) {
            lib.GetRootGroup()->SetGroupName(name);
            made.push_back(lib.GetRootGroup());
            continue;
        }
        const auto parent = entry.at("parent").get<long long>();
        Require(parent >= 0 && parent < static_cast<long long>(made.size()),
                "group " + std::to_string(made.size()) + " names a parent that does not come before it");
        VtSymbolGroup* parentGroup = made[static_cast<std::size_t>(parent)];
        VtSymbolGroup* group = parentGroup->CreateChildGroup(parentGroup->GetAvailableName(u"\uFFFF"));
        group->SetGroupName(name);
        made.push_back(group);
    }
    return made;
}

void FileSymbols(ResourceSymbolLib& lib, const Json& groups, const std::vector<VtSymbolGroup*>& made)
{
    for (int i = 0; i < lib.GetSymbolCount(); ++i)
        lib.GetRootGroup()->RemoveItemOnlyInGroup(lib.GetIDAt(i));
    std::set<int> filed;
    for (std::size_t g = 0; g < made.size(); ++g)
        for (const Json& item : groups[g].at("items")) {
            const int id = item.get<int>();
            Require(lib.IsIDExisted(id) && filed.insert(id).second,
                    "group " + std::to_string(g) + " files symbol " + std::to_string(id) +
                        ", which is not in the symbol list or is filed twice");
            made[g]->AddItem(id);
        }
}

RasterImage ImportPicture(const Json& entry, int id, const std::string& imageDirectory)
{
    std::string bytes;
    if (entry.contains("png")) {
        bytes = FromBase64(entry.at("png").get<std::string>());
    } else {
        const std::string file = entry.at("file").get<std::string>();
        Require(file == PictureFileName(id), "the picture file of symbol " + std::to_string(id) + " must be " +
                                                 PictureFileName(id));
        bytes = ReadFile((fs::path(imageDirectory) / file).string());
    }
    RasterImage picture;
    std::string error;
    Require(DecodePng(bytes, picture, error), "the picture of symbol " + std::to_string(id) + ": " + error);
    Require(picture.width == entry.at("width").get<int>() && picture.height == entry.at("height").get<int>() &&
                PixelChecksum(picture) == entry.at("crc32").get<std::string>(),
            "the picture of symbol " + std::to_string(id) + " is not the one the document describes");
    return picture;
}

// Whether any picture of the document is a file beside it rather than inside it.
bool NamesPictureFiles(const Json& document)
{
    const auto symbols = document.find("symbolList");
    if (symbols == document.end() || !symbols->is_array())
        return false;
    return std::any_of(symbols->begin(), symbols->end(), [](const Json& entry) {
        const auto picture = entry.find("picture");
        return picture != entry.end() && picture->is_object() && picture->contains("file");
    });
}

void ImportSymbols(ResourceSymbolLib& lib, LibraryKind kind, const Json& symbols, const std::string& imageDirectory)
{
    Require(symbols.is_array(), "\"symbolList\" must be a list");
    Progress progress("import", static_cast<long>(symbols.size()));
    for (const Json& entry : symbols) {
        progress.Advance();
        const auto number = entry.at("id").get<long long>();
        Require(number >= 0 && number <= std::numeric_limits<int>::max() && !lib.IsIDExisted(static_cast<int>(number)),
                "symbol ID " + std::to_string(number) + " is out of range or repeated");
        const int id = static_cast<int>(number);
        std::string error;
        auto symbol = SymbolFromFields(kind, id, ZedaUnicodeString::FromUtf8(entry.at("name").get<std::string>()),
                                       entry, error);
        Require(symbol != nullptr, "symbol " + std::to_string(id) + ": " + error);
        Require(lib.AddSymbol(symbol.get(), nullptr) != 0, "symbol " + std::to_string(id) + " cannot be added");
        symbol.release();
        if (!entry.at("picture").is_null())
            Require(lib.SetSymbolImage(id, ImportPicture(entry.at("picture"), id, imageDirectory)),
                    "the picture of symbol " + std::to_string(id) + " cannot be stored: " + lib.GetLastError());
    }
}

}  // namespace

std::string PictureFileName(int id)
{
    return std::to_string(id) + ".png";
}

std::string PixelChecksum(const RasterImage& picture)
{
    const auto crc = crc32(crc32(0L, Z_NULL, 0), reinterpret_cast<const Bytef*>(picture.pixels.data()),
                           static_cast<uInt>(picture.pixels.size() * sizeof(unsigned int)));
    char text[12];
    std::snprintf(text, sizeof text, "%08lx", static_cast<unsigned long>(crc));
    return text;
}

Json PictureJson(const ResourceSymbolLib& lib, int id, const std::string& imageDirectory, OutputBatch& files)
{
    RasterImage picture;
    if (!lib.HasSymbolImage(id))
        return nullptr;
    if (!lib.GetSymbolImage(id, picture))
        throw std::runtime_error("the picture of symbol " + std::to_string(id) + ": " + lib.GetLastError());
    Json entry = {{"width", picture.width}, {"height", picture.height}, {"crc32", PixelChecksum(picture)}};
    if (imageDirectory.empty()) {
        entry["png"] = Base64(EncodePng(picture));
        return entry;
    }
    const std::string path = (fs::path(imageDirectory) / PictureFileName(id)).string();
    std::string error;
    if (!files.Add(path, EncodePng(picture), error))
        throw std::runtime_error(path + ": " + error);
    entry["file"] = PictureFileName(id);
    return entry;
}

int RunImport(const std::string& json, const std::string& output, const std::string& imageDirectory,
              const OutputOptions& options)
{
    if (const int refused = CheckOutput(output, {json}, options.force))
        return refused;
    Json document;
    try {
        document = Json::parse(ReadFile(json));
    } catch (const std::exception& error) {
        return Report(json, std::string("not a library document: ") + error.what());
    }
    if (imageDirectory.empty() && NamesPictureFiles(document))
        return Refuse(json, "its pictures are files: name their directory with --images");
    try {
        const std::string kindName = document.at("kind").get<std::string>();
        const LibraryKind kind = kindName == "marker" ? LibraryKind::Marker
                                 : kindName == "line" ? LibraryKind::Line
                                                      : LibraryKind::Unknown;
        Require(kind != LibraryKind::Unknown, "unknown kind of library " + kindName);
        const bool streamForm = document.at("form").get<std::string>() == "stream";
        unsigned int version = 0;
        const unsigned int streamVersion =
            streamForm ? document.at("formatVersion").get<unsigned int>() : defaultStreamVersion;
        if (const int refused = ChooseOutputVersion(output, options.form, streamVersion, version))
            return refused;
        auto lib = NewLibrary(kind);
        const std::vector<VtSymbolGroup*> groups = MakeGroups(*lib, document.at("groups"));
        ImportSymbols(*lib, kind, document.at("symbolList"), imageDirectory);
        FileSymbols(*lib, document.at("groups"), groups);
        std::string error;
        if (!SaveLibrarySafely(*lib, output, version, error))
            return Report(output, error);
        Remark("imported " + std::to_string(lib->GetSymbolCount()) + " symbols into " + output);
        return exitOk;
    } catch (const std::exception& error) {
        return Report(json, error.what());
    }
}

}  // namespace LqTool
