#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "LqExport.h"

namespace VTC {

// Replaces a file so that it is never lost: the new contents go into a
// temporary sibling, which is synced to disk, checked by the caller and only
// then renamed over the target. Until Commit succeeds the target stays as it
// was, byte for byte; on every path that does not commit, the destructor
// removes the temporary file. A target that is a symbolic link is replaced
// where the link points.
//
// The temporary file is named ".<name>.lqtmp-<pid>-<unique>" and starts
// empty; writers may also delete and re-create it. Siblings left behind by a
// process that was killed are removed by the next replacement of the same
// target (by a batch, of any target in the directory).
class LQ_EXPORT VtFileReplacer {
public:
    explicit VtFileReplacer(const std::string& target);
    ~VtFileReplacer();
    VtFileReplacer(const VtFileReplacer&) = delete;
    VtFileReplacer& operator=(const VtFileReplacer&) = delete;

    // False when no temporary file could be made beside the target (GetError says why).
    bool IsReady() const { return !temporary_.empty(); }
    const std::string& GetTemporaryPath() const { return temporary_; }
    const std::string& GetTargetPath() const { return target_; }

    // Syncs the temporary file, gives it the target's permission bits (new
    // files get 0666 less the umask), renames it over the target and syncs
    // the directory. False, with the target untouched, when a step fails.
    bool Commit();
    const std::string& GetError() const { return error_; }

    // Writes through `write`, checks through `check` (both get the temporary
    // path; an empty check accepts), then commits. The reason for a failure
    // goes to `error`, which is cleared first so that `write` and `check` may
    // fill in their own.
    static bool Replace(const std::string& target, const std::function<bool(const std::string&)>& write,
                        const std::function<bool(const std::string&)>& check, std::string& error);

private:
    friend class VtFileBatch;

    // `sweepSiblings`: remove what dead processes left beside the target first.
    VtFileReplacer(const std::string& target, bool sweepSiblings);
    bool Fail(const std::string& step);
    // Removes the temporary files of dead processes in the directory: those
    // of this target, or with `everyTarget` those of any file.
    void RemoveStaleTemporaries(bool everyTarget) const;
    // Permissions, rename and (when asked) a sync of the directory; the
    // temporary file must already be on disk.
    bool Install(bool syncDirectory);

    std::string target_;
    std::string directory_;
    std::string temporary_;
    std::string error_;
};

// Replaces many files as one piece of work, for outputs such as a folder of
// a thousand pictures where a sync per file would take most of the time:
// each file is written and checked beside its target as with VtFileReplacer,
// then one sync of the file system makes all of them durable, and only then
// are they renamed over their targets. Until Commit, no target is touched;
// files not committed are removed with the batch. Each directory is swept
// for what dead processes left there once, not once a file.
class LQ_EXPORT VtFileBatch {
public:
    // Writes and checks one file; false (the reason in `error`) when that fails.
    bool Add(const std::string& target, const std::function<bool(const std::string&)>& write,
             const std::function<bool(const std::string&)>& check, std::string& error);
    bool Commit(std::string& error);
    std::size_t GetCount() const { return pending_.size(); }

private:
    std::vector<std::unique_ptr<VtFileReplacer>> pending_;
    std::set<std::string> sweptDirectories_;
};

}  // namespace VTC
