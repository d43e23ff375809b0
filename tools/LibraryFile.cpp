#include "LibraryFile.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>

#include "Colour.h"
#include "LineSymbolLib.h"
#include "LqCompactFile.h"
#include "LqStream.h"
#include "MarkerSymbolLib.h"
#include "VtSymbolGroup.h"

namespace LqTool {

namespace fs = std::filesystem;
using namespace LqExample;
using ZEDA::ZedaUnicodeString;

namespace {

const ZedaUnicodeString libraryEntry(u"SymbolStoreInCF");

int LittleEndianInt(const unsigned char* bytes)
{
    return static_cast<int>(static_cast<unsigned int>(bytes[0]) | static_cast<unsigned int>(bytes[1]) << 8 |
                            static_cast<unsigned int>(bytes[2]) << 16 | static_cast<unsigned int>(bytes[3]) << 24);
}

// Reads the kind and format version from the first 8 bytes of a stream image.
void ReadImageHeader(const unsigned char* bytes, long long count, LibraryProbe& probe)
{
    if (count < 8) {
        probe.problem = "too short to be a symbol library";
        return;
    }
    const int magic = LittleEndianInt(bytes);
    if (magic == MarkerSymbolLib::streamMagic)
        probe.kind = LibraryKind::Marker;
    else if (magic == LineSymbolLib::streamMagic)
        probe.kind = LibraryKind::Line;
    else {
        probe.problem = "not a symbol library (unknown header)";
        return;
    }
    probe.formatVersion = static_cast<unsigned int>(LittleEndianInt(bytes + 4));
}

void ProbeContainer(VTC::VtCompactFile& container, LibraryProbe& probe)
{
    probe.container = true;
    for (const ZedaUnicodeString& key : container.GetKeys()) {
        VTC::VtByteArray bytes;
        long long size = 0;
        container.Lookup(key, bytes, size, 0);
        probe.entries.emplace_back(key.ToUtf8(), size);
        if (key == libraryEntry)
            ReadImageHeader(bytes.GetData(), bytes.GetSize(), probe);
    }
    if (probe.kind == LibraryKind::Unknown && probe.problem.empty())
        probe.problem = "a container file without a symbol library entry";
}

}  // namespace

const char* KindName(LibraryKind kind)
{
    switch (kind) {
    case LibraryKind::Marker: return "marker";
    case LibraryKind::Line: return "line";
    case LibraryKind::Unknown: break;
    }
    return "unknown";
}

LibraryProbe ProbeLibrary(const std::string& path)
{
    LibraryProbe probe;
    probe.path = path;
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status)) {
        probe.problem = "no such file";
        return probe;
    }
    if (!fs::is_regular_file(status)) {
        probe.problem = "not a regular file";
        return probe;
    }
    probe.fileBytes = static_cast<long long>(fs::file_size(path, error));
    if (probe.fileBytes == 0) {
        probe.problem = "the file is empty";
        return probe;
    }
    unsigned char header[16] = {};
    std::ifstream in(path, std::ios::binary);
    in.read(reinterpret_cast<char*>(header), sizeof header);
    const long long headerBytes = in.gcount();
    const bool database = headerBytes == 16 && std::memcmp(header, "SQLite format 3", 16) == 0;

    VTC::VtCompactFile container;
    const int opened = container.Open(ZedaUnicodeString::FromUtf8(path), u"", VTC::VT_CF_MODE_READ);
    if (opened == VTC::VT_CF_OK && container.GetIndexInfo() != VTC::VT_CF_INDEX_FOREIGN) {
        ProbeContainer(container, probe);
        return probe;
    }
    if (database) {
        probe.problem = opened == VTC::VT_CF_OK ? "a database that is not a symbol library container"
                                                : "a damaged container file (error " + std::to_string(opened) + ")";
        return probe;
    }
    ReadImageHeader(header, headerBytes, probe);
    return probe;
}

std::unique_ptr<ResourceSymbolLib> NewLibrary(LibraryKind kind)
{
    switch (kind) {
    case LibraryKind::Marker: return std::make_unique<MarkerSymbolLib>();
    case LibraryKind::Line: return std::make_unique<LineSymbolLib>();
    case LibraryKind::Unknown: break;
    }
    return nullptr;
}

std::unique_ptr<ResourceSymbolLib> OpenLibrary(const std::string& path, std::string& error, LibraryProbe* probeOut)
{
    LibraryProbe probe = ProbeLibrary(path);
    if (probeOut)
        *probeOut = probe;
    if (!probe.problem.empty()) {
        error = probe.problem;
        return nullptr;
    }
    auto lib = NewLibrary(probe.kind);
    if (!lib->LoadFromFile(ZedaUnicodeString::FromUtf8(path))) {
        error = lib->GetLastError().empty() ? "the library cannot be read" : lib->GetLastError();
        return nullptr;
    }
    return lib;
}

void WalkGroups(const VTC::VtSymbolGroup& root, const GroupVisitor& visitor)
{
    struct Frame {
        const VTC::VtSymbolGroup* group;
        int depth;
        int index;
        int nextChild;
    };
    int visited = 0;
    visitor.enter(root, 0, visited++, -1);
    std::vector<Frame> stack{{&root, 0, 0, 0}};
    while (!stack.empty()) {
        Frame& top = stack.back();
        if (top.nextChild < top.group->GetChildGroupCount()) {
            const VTC::VtSymbolGroup* child = top.group->GetChildGroup(top.nextChild++);
            const Frame entered{child, top.depth + 1, visited++, 0};
            visitor.enter(*child, entered.depth, entered.index, top.index);
            stack.push_back(entered);  // `top` is not used after this
            continue;
        }
        if (visitor.leave)
            visitor.leave(*top.group, top.depth);
        stack.pop_back();
    }
}

std::string DescribeSymbol(const ResourceSymbolLib& lib, int id)
{
    const auto* symbol = lib.GetSymbolByID(id);
    std::string text;
    char buffer[96];
    if (const auto* marker = dynamic_cast<const MarkerSymbol*>(symbol)) {
        std::snprintf(buffer, sizeof buffer, "%s %dpx %s rot %g", LqExample::GetShapeName(marker->shape),
                      marker->size, FormatColour(marker->colour).c_str(), marker->rotation);
        text = buffer;
    } else if (const auto* line = dynamic_cast<const LineSymbol*>(symbol)) {
        std::snprintf(buffer, sizeof buffer, "line %g %s", line->width, FormatColour(line->colour).c_str());
        text = buffer;
        if (!line->dashes.empty()) {
            text += " dash";
            for (const int dash : line->dashes)
                text.append(" ").append(std::to_string(dash));
        }
    }
    if (const auto* resource = dynamic_cast<const LqExample::ResourceSymbol*>(symbol); resource && lib.HasSymbolImage(id)) {
        const auto* cache = lib.GetResourceCache();
        const auto* entry = cache ? cache->Find(resource->resource) : nullptr;
        if (entry)
            text += ", picture " + std::to_string(entry->width) + "x" + std::to_string(entry->height);
    }
    return text;
}

namespace {

// A group tree as lines "depth parent name: ids", depth first.
std::vector<std::string> TreeLines(const VTC::VtSymbolGroup& root)
{
    std::vector<std::string> lines;
    WalkGroups(root, {[&lines](const VTC::VtSymbolGroup& group, int depth, int, int parent) {
                          std::string line = std::to_string(depth) + " " + std::to_string(parent) + " " +
                                             group.GetGroupName().ToUtf8() + ":";
                          for (int i = 0; i < group.GetItemCount(); ++i)
                              line.append(" ").append(std::to_string(group.GetItemID(i)));
                          lines.push_back(std::move(line));
                      },
                      {}});
    return lines;
}

bool SameFields(const VTC::VtSymbol* a, const VTC::VtSymbol* b)
{
    const auto* markerA = dynamic_cast<const MarkerSymbol*>(a);
    const auto* markerB = dynamic_cast<const MarkerSymbol*>(b);
    if (markerA || markerB)
        return markerA && markerB && markerA->shape == markerB->shape && markerA->size == markerB->size &&
               markerA->colour == markerB->colour && markerA->outlineColour == markerB->outlineColour &&
               markerA->rotation == markerB->rotation;
    const auto* lineA = dynamic_cast<const LineSymbol*>(a);
    const auto* lineB = dynamic_cast<const LineSymbol*>(b);
    return lineA && lineB && lineA->width == lineB->width && lineA->colour == lineB->colour &&
           lineA->dashes == lineB->dashes;
}

}  // namespace

std::vector<std::string> CompareLibraries(const ResourceSymbolLib& expected, const ResourceSymbolLib& actual)
{
    std::vector<std::string> differences;
    if (expected.GetSymbolCount() != actual.GetSymbolCount()) {
        differences.push_back("symbol counts differ: " + std::to_string(expected.GetSymbolCount()) + " and " +
                              std::to_string(actual.GetSymbolCount()));
        return differences;
    }
    for (int i = 0; i < expected.GetSymbolCount(); ++i) {
        const int id = expected.GetIDAt(i);
        const std::string where = "position " + std::to_string(i) + " (ID " + std::to_string(id) + "): ";
        if (actual.GetIDAt(i) != id) {
            differences.push_back(where + "ID " + std::to_string(actual.GetIDAt(i)) + " instead");
            continue;
        }
        const VTC::VtSymbol* a = expected.GetSymbolByID(id);
        const VTC::VtSymbol* b = actual.GetSymbolByID(id);
        if (a->name != b->name)
            differences.push_back(where + "names differ");
        if (!SameFields(a, b))
            differences.push_back(where + "fields differ");
        if (expected.HasSymbolImage(id) != actual.HasSymbolImage(id)) {
            differences.push_back(where + "only one has a picture");
            continue;
        }
        RasterImage pictureA;
        RasterImage pictureB;
        if (expected.HasSymbolImage(id) &&
            (!expected.GetSymbolImage(id, pictureA) || !actual.GetSymbolImage(id, pictureB) || pictureA != pictureB))
            differences.push_back(where + "pictures differ or cannot be read");
    }
    if (TreeLines(*expected.GetRootGroup()) != TreeLines(*actual.GetRootGroup()))
        differences.push_back("the group trees differ");
    return differences;
}

}  // namespace LqTool
