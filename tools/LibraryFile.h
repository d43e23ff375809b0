#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ResourceSymbolLib.h"

namespace VTC {
class VtSymbolGroup;
}

namespace LqTool {

enum class LibraryKind { Unknown, Marker, Line };

// What a file looks like before it is loaded.
struct LibraryProbe {
    std::string path;
    long long fileBytes = 0;
    bool container = false;
    std::vector<std::pair<std::string, long long>> entries;  // container keys and value sizes
    LibraryKind kind = LibraryKind::Unknown;
    unsigned int formatVersion = 0;
    std::string problem;  // why this cannot be a library; empty when it may be one
};

LibraryProbe ProbeLibrary(const std::string& path);
const char* KindName(LibraryKind kind);
std::unique_ptr<LqExample::ResourceSymbolLib> NewLibrary(LibraryKind kind);

// Probes and loads a library file; null with the reason in `error`.
std::unique_ptr<LqExample::ResourceSymbolLib> OpenLibrary(const std::string& path, std::string& error,
                                                          LibraryProbe* probe = nullptr);

// Differences between two libraries: IDs and their order, names, fields,
// groups and pictures (byte for byte); empty when they agree.
std::vector<std::string> CompareLibraries(const LqExample::ResourceSymbolLib& expected,
                                          const LqExample::ResourceSymbolLib& actual);

// Walks a group tree depth first without recursion, so that a file's nesting
// cannot exhaust the stack. `enter` sees each group before its children, with
// its depth (0 for the root), its index in visiting order and its parent's
// index (-1 for the root); `leave`, when given, sees it after them.
struct GroupVisitor {
    std::function<void(const VTC::VtSymbolGroup& group, int depth, int index, int parent)> enter;
    std::function<void(const VTC::VtSymbolGroup& group, int depth)> leave;
};
void WalkGroups(const VTC::VtSymbolGroup& root, const GroupVisitor& visitor);

// Prints the group tree with its symbols, then the symbols in no group.
void PrintTree(const LqExample::ResourceSymbolLib& lib);

// One line of text per symbol: its fields in a few words.
std::string DescribeSymbol(const LqExample::ResourceSymbolLib& lib, int id);

}  // namespace LqTool
