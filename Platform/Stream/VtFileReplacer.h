#pragma once

#include <functional>
#include <string>

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
// target.
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
    bool Fail(const std::string& step);
    void RemoveStaleSiblings() const;

    std::string target_;
    std::string directory_;
    std::string temporary_;
    std::string error_;
};

}  // namespace VTC
