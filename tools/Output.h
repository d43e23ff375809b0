#pragma once

#include <functional>
#include <string>
#include <vector>

#include "LqStream.h"
#include "ResourceSymbolLib.h"

// Everything lqsymbol writes goes through here: refusals first, then a
// temporary sibling that is checked before it replaces the target.
namespace LqTool {

// Whether two paths name one file (same device and inode, so links and
// other spellings count); false when either does not exist.
bool IsSameFile(const std::string& a, const std::string& b);

// 0 when `output` may be written. Otherwise reports why and returns the exit
// code: exitUsage for an output that exists (unless `force`) or that is one
// of `inputs`, exitFailure for one that is write-protected.
int CheckOutput(const std::string& output, const std::vector<std::string>& inputs, bool force);
// For edits in place: exitFailure, reported, when `path` is write-protected.
int CheckWritable(const std::string& path);

// 0 when `directory` is a directory, made if missing. Otherwise reports why:
// exitUsage when a file that is not a directory stands in its place,
// exitFailure when it cannot be made.
int MakeOutputDirectory(const std::string& directory);

// Writes `bytes` to a temporary sibling, reads them back, compares, renames.
bool WriteFileSafely(const std::string& path, const std::string& bytes, std::string& error);

// Many outputs written as one piece of work (VTC::VtFileBatch): each is
// written beside its target and read back now; Commit syncs them all at once
// and renames them over their targets.
class OutputBatch {
public:
    // `write` and `check` get the temporary path, as VTC::VtFileReplacer's do.
    using FileStep = std::function<bool(const std::string& temporary)>;

    bool Add(const std::string& path, const std::string& bytes, std::string& error);
    bool Add(const std::string& path, const FileStep& write, const FileStep& check, std::string& error)
    {
        return batch_.Add(path, write, check, error);
    }
    bool Commit(std::string& error) { return batch_.Commit(error); }

private:
    VTC::VtFileBatch batch_;
};

// Saves through VTC::SaveSymbolLibSafely, the written file checked by loading
// it into a fresh library and comparing it with `lib` (IDs, order, names,
// fields, groups, pictures byte for byte).
bool SaveLibrarySafely(LqExample::ResourceSymbolLib& lib, const std::string& path, unsigned int fileVersion,
                       std::string& error);

}  // namespace LqTool
