// tree, info, export and convert.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <set>

#include <nlohmann/json.hpp>

#include "Commands.h"
#include "LibraryFile.h"
#include "LqCompactFile.h"
#include "Exchange.h"
#include "Output.h"
#include "Printable.h"
#include "Progress.h"
#include "SymbolFields.h"
#include "SymbolRenderer.h"
#include "VtSymbolGroup.h"

namespace LqTool {

using LqExample::ResourceSymbolLib;
using VTC::VtSymbolGroup;
using Json = nlohmann::ordered_json;

namespace {

// Deeper groups are printed at this indentation, with their depth, so that
// the output grows with the number of groups and not with their depth.
constexpr int maxIndentDepth = 16;

int CountGroups(const VtSymbolGroup& root)
{
    int count = 0;
    WalkGroups(root, {[&count](const VtSymbolGroup&, int, int, int) { ++count; }, {}});
    return count;
}

std::set<int> FiledIDs(const VtSymbolGroup& root)
{
    std::set<int> filed;
    WalkGroups(root, {[&filed](const VtSymbolGroup& group, int, int, int) {
                          for (int i = 0; i < group.GetItemCount(); ++i)
                              filed.insert(group.GetItemID(i));
                      },
                      {}});
    return filed;
}

void PrintSymbolLine(const ResourceSymbolLib& lib, const std::string& indent, int id)
{
    std::printf("%s  %4d  %-24s %s\n", indent.c_str(), id, Printable(lib.GetSymbolByID(id)->name.ToUtf8()).c_str(),
                DescribeSymbol(lib, id).c_str());
}

// Each group's name, then its child groups, then its symbols.
void PrintGroups(const ResourceSymbolLib& lib)
{
    const auto indent = [](int depth) { return std::string(2 * static_cast<std::size_t>(std::min(depth, maxIndentDepth)), ' '); };
    const auto enter = [&](const VtSymbolGroup& group, int depth, int, int) {
        const std::string name = Printable(group.GetGroupName().ToUtf8());
        if (depth > maxIndentDepth)
            std::printf("%s[%s] (depth %d)\n", indent(depth).c_str(), name.c_str(), depth);
        else
            std::printf("%s[%s]\n", indent(depth).c_str(), name.c_str());
    };
    const auto leave = [&](const VtSymbolGroup& group, int depth) {
        for (int i = 0; i < group.GetItemCount(); ++i)
            PrintSymbolLine(lib, indent(depth), group.GetItemID(i));
    };
    WalkGroups(*lib.GetRootGroup(), {enter, leave});
}

int CountPictures(const ResourceSymbolLib& lib)
{
    int count = 0;
    for (int i = 0; i < lib.GetSymbolCount(); ++i)
        count += lib.HasSymbolImage(lib.GetIDAt(i)) ? 1 : 0;
    return count;
}

// The groups as a flat list in depth-first order, each naming its parent's
// place in the list: the document's nesting, and so its size, does not grow
// with the depth of the tree.
Json GroupsJson(const VtSymbolGroup& root)
{
    Json groups = Json::array();
    WalkGroups(root, {[&groups](const VtSymbolGroup& group, int, int, int parent) {
                          Json items = Json::array();
                          for (int i = 0; i < group.GetItemCount(); ++i)
                              items.push_back(group.GetItemID(i));
                          groups.push_back({{"name", group.GetGroupName().ToUtf8()},
                                            {"parent", parent < 0 ? Json() : Json(parent)},
                                            {"items", std::move(items)}});
                      },
                      {}});
    return groups;
}

// The symbol's ID, name and fields, and its picture (see PictureJson).
Json SymbolJson(const ResourceSymbolLib& lib, int id, const std::string& imageDirectory, OutputBatch& pictures)
{
    const VTC::VtSymbol* symbol = lib.GetSymbolByID(id);
    Json entry = {{"id", id}, {"name", symbol->name.ToUtf8()}};
    entry.update(SymbolFields(*symbol));
    entry["picture"] = PictureJson(lib, id, imageDirectory, pictures);
    return entry;
}

Json InfoJson(const LibraryProbe& probe, const ResourceSymbolLib& lib)
{
    const std::set<int> filed = FiledIDs(*lib.GetRootGroup());
    const auto& report = lib.GetReport();
    Json info = {{"file", probe.path},
                 {"bytes", probe.fileBytes},
                 {"form", probe.container ? "container" : "stream"},
                 {"formatVersion", report.formatVersion},
                 {"kind", KindName(probe.kind)},
                 {"symbols", lib.GetSymbolCount()},
                 {"groups", CountGroups(*lib.GetRootGroup())},
                 {"ungroupedSymbols", lib.GetSymbolCount() - static_cast<int>(filed.size())},
                 {"pictures", CountPictures(lib)}};
    if (probe.container) {
        Json entries = Json::array();
        for (const auto& [key, size] : probe.entries)
            entries.push_back({{"key", key}, {"bytes", size}});
        info["containerEntries"] = entries;
    } else if (report.cacheSection) {
        info["cacheSection"] = {{"stamp", report.stamp},
                                {"scBytes", report.cacheDataBytes},
                                {"sc00Bytes", report.cacheIndexBytes}};
    } else {
        info["cacheSection"] = nullptr;
    }
    const auto* cache = lib.GetResourceCache();
    info["cacheRecords"] = cache ? static_cast<int>(cache->GetEntries().size()) : 0;
    return info;
}

void PrintInfo(const Json& info)
{
    std::printf("file:    %s (%lld bytes)\n", Printable(info["file"].get<std::string>()).c_str(), info["bytes"].get<long long>());
    std::printf("form:    %s, format version %u\n", info["form"].get<std::string>().c_str(),
                info["formatVersion"].get<unsigned int>());
    std::printf("kind:    %s library\n", info["kind"].get<std::string>().c_str());
    std::printf("content: %d symbols (%d not in a group), %d groups, %d pictures in %d cache records\n",
                info["symbols"].get<int>(), info["ungroupedSymbols"].get<int>(), info["groups"].get<int>(),
                info["pictures"].get<int>(), info["cacheRecords"].get<int>());
    if (info.contains("containerEntries")) {
        std::printf("entries:\n");
        for (const auto& entry : info["containerEntries"])
            std::printf("  %-20s %12lld bytes\n", Printable(entry["key"].get<std::string>()).c_str(),
                        entry["bytes"].get<long long>());
    } else if (info["cacheSection"].is_null()) {
        std::printf("cache section: none\n");
    } else {
        const auto& section = info["cacheSection"];
        std::printf("cache section: stamp \"%s\", sc %lld bytes, sc00 %lld bytes\n",
                    Printable(section["stamp"].get<std::string>()).c_str(), section["scBytes"].get<long long>(),
                    section["sc00Bytes"].get<long long>());
    }
}

// Strings from a file need not be UTF-8 (a cache section's stamp is raw
// bytes): what is not UTF-8 becomes U+FFFD instead of failing the dump. The
// library leaves DEL raw, which a terminal may act on; it can only stand
// inside a string, where its escape means the same.
std::string Dump(const Json& document)
{
    const std::string raw = document.dump(2, ' ', false, Json::error_handler_t::replace);
    std::string escaped;
    escaped.reserve(raw.size());
    for (const char c : raw) {
        if (c == '\x7F')
            escaped += "\\u007f";
        else
            escaped += c;
    }
    return escaped;
}

}  // namespace

int Report(const std::string& subject, const std::string& message)
{
    std::fprintf(stderr, "lqsymbol: %s: %s\n", Printable(subject).c_str(), Printable(message).c_str());
    return exitFailure;
}

int Refuse(const std::string& subject, const std::string& message)
{
    Report(subject, message);
    return exitUsage;
}

void PrintTree(const ResourceSymbolLib& lib)
{
    PrintGroups(lib);
    const std::set<int> filed = FiledIDs(*lib.GetRootGroup());
    if (static_cast<int>(filed.size()) == lib.GetSymbolCount())
        return;
    std::printf("(not in a group)\n");
    for (int i = 0; i < lib.GetSymbolCount(); ++i) {
        const int id = lib.GetIDAt(i);
        if (!filed.contains(id))
            PrintSymbolLine(lib, "", id);
    }
}

int RunTree(const std::string& path)
{
    std::string error;
    auto lib = OpenLibrary(path, error);
    if (!lib)
        return Report(path, error);
    PrintTree(*lib);
    return exitOk;
}

int RunInfo(const std::string& path, bool json)
{
    std::string error;
    LibraryProbe probe;
    auto lib = OpenLibrary(path, error, &probe);
    if (!lib)
        return Report(path, error);
    const Json info = InfoJson(probe, *lib);
    if (json)
        std::printf("%s\n", Dump(info).c_str());
    else
        PrintInfo(info);
    return exitOk;
}

int RunExport(const std::string& path, const std::string& output, const std::string& imageDirectory, bool force)
{
    const bool toFile = !output.empty() && output != "-";
    if (const int refused = toFile ? CheckOutput(output, {path}, force) : exitOk)
        return refused;
    std::string error;
    LibraryProbe probe;
    auto lib = OpenLibrary(path, error, &probe);
    if (!lib)
        return Report(path, error);
    if (!imageDirectory.empty()) {
        for (int i = 0; i < lib->GetSymbolCount(); ++i) {
            const int id = lib->GetIDAt(i);
            const std::string file = (std::filesystem::path(imageDirectory) / PictureFileName(id)).string();
            if (const int refused = lib->HasSymbolImage(id) ? CheckOutput(file, {path}, force) : exitOk)
                return refused;
        }
        if (const int failed = MakeOutputDirectory(imageDirectory))
            return failed;
    }
    Json document = InfoJson(probe, *lib);
    Json symbols = Json::array();
    OutputBatch pictures;
    try {
        Progress progress("export", lib->GetSymbolCount());
        for (int i = 0; i < lib->GetSymbolCount(); ++i, progress.Advance())
            symbols.push_back(SymbolJson(*lib, lib->GetIDAt(i), imageDirectory, pictures));
    } catch (const std::exception& failure) {
        return Report(path, failure.what());
    }
    if (!pictures.Commit(error))
        return Report(imageDirectory, error);
    document["symbolList"] = symbols;
    document["groups"] = GroupsJson(*lib->GetRootGroup());
    const std::string text = Dump(document) + "\n";
    if (!toFile) {
        std::fwrite(text.data(), 1, text.size(), stdout);
        return exitOk;
    }
    return WriteFileSafely(output, text, error) ? exitOk : Report(output, error);
}

int RunConvert(const std::string& in, const std::string& out, const std::string& form, unsigned int streamVersion,
               bool force)
{
    if (const int refused = CheckOutput(out, {in}, force))
        return refused;
    std::string error;
    auto lib = OpenLibrary(in, error);
    if (!lib)
        return Report(in, error);
    const unsigned int version = form == "container" ? VTC::VtSymbolLib::containerVersion : streamVersion;
    if (!SaveLibrarySafely(*lib, out, version, error))
        return Report(out, error);
    std::printf("%s -> %s (%s form, format version %u, %d symbols)\n", in.c_str(), out.c_str(), form.c_str(),
                version, lib->GetSymbolCount());
    return exitOk;
}

}  // namespace LqTool
