#include "VtFileReplacer.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <set>

namespace VTC {

namespace fs = std::filesystem;

namespace {

constexpr const char* temporaryMarker = ".lqtmp-";
// SQLite leaves this beside a database file while a transaction is open.
constexpr const char* journalSuffix = "-journal";

std::string ResolveLink(const std::string& target)
{
    std::error_code error;
    if (!fs::is_symlink(fs::symlink_status(target, error)))
        return target;
    const fs::path resolved = fs::weakly_canonical(target, error);
    return error ? target : resolved.string();
}

std::string TemporaryPrefix(const fs::path& target)
{
    return "." + target.filename().string() + temporaryMarker;
}

bool SyncPath(const std::string& path, int flags)
{
    const int descriptor = ::open(path.c_str(), flags | O_CLOEXEC);
    if (descriptor < 0)
        return false;
    const bool synced = ::fsync(descriptor) == 0;
    ::close(descriptor);
    return synced;
}

mode_t NewFileMode()
{
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

bool IsRunning(pid_t pid)
{
    return ::kill(pid, 0) == 0 || errno != ESRCH;
}

}  // namespace

VtFileReplacer::VtFileReplacer(const std::string& target) : VtFileReplacer(target, true) {}

VtFileReplacer::VtFileReplacer(const std::string& target, bool sweepSiblings) : target_(ResolveLink(target))
{
    const fs::path targetPath(target_);
    directory_ = targetPath.has_parent_path() ? targetPath.parent_path().string() : std::string(".");
    if (sweepSiblings)
        RemoveStaleTemporaries(false);
    std::string pattern =
        (fs::path(directory_) / (TemporaryPrefix(targetPath) + std::to_string(::getpid()) + "-XXXXXX")).string();
    const int descriptor = ::mkstemp(pattern.data());
    if (descriptor < 0) {
        Fail("cannot create a temporary file in " + directory_);
        return;
    }
    ::close(descriptor);
    temporary_ = pattern;
}

VtFileReplacer::~VtFileReplacer()
{
    if (temporary_.empty())
        return;
    ::unlink(temporary_.c_str());
    ::unlink((temporary_ + journalSuffix).c_str());
}

bool VtFileReplacer::Fail(const std::string& step)
{
    error_ = step + ": " + std::strerror(errno);
    return false;
}

bool VtFileReplacer::Commit()
{
    if (!IsReady())
        return false;
    if (!SyncPath(temporary_, O_RDONLY))
        return Fail("cannot sync " + temporary_);
    return Install(true);
}

bool VtFileReplacer::Install(bool syncDirectory)
{
    struct stat existing = {};
    const mode_t mode = ::stat(target_.c_str(), &existing) == 0 ? existing.st_mode & 07777 : NewFileMode();
    if (::chmod(temporary_.c_str(), mode) != 0)
        return Fail("cannot set the permissions of " + temporary_);
    if (::rename(temporary_.c_str(), target_.c_str()) != 0)
        return Fail("cannot rename " + temporary_ + " to " + target_);
    temporary_.clear();
    // The rename is durable only once the directory is synced; the new file
    // is in place either way, so a failure here is not reported.
    if (syncDirectory)
        SyncPath(directory_, O_RDONLY | O_DIRECTORY);
    return true;
}

void VtFileReplacer::RemoveStaleTemporaries(bool everyTarget) const
{
    const std::string prefix = TemporaryPrefix(fs::path(target_));
    const std::size_t markerLength = std::strlen(temporaryMarker);
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(directory_, error)) {
        const std::string name = entry.path().filename().string();
        const std::size_t marker = name.rfind(temporaryMarker);
        if (marker == std::string::npos || name.front() != '.')
            continue;
        const bool ofThisTarget = marker + markerLength == prefix.size() && name.compare(0, prefix.size(), prefix) == 0;
        if (!everyTarget && !ofThisTarget)
            continue;
        const long pid = std::strtol(name.c_str() + marker + markerLength, nullptr, 10);
        if (pid > 0 && !IsRunning(static_cast<pid_t>(pid)))
            fs::remove(entry.path(), error);
    }
}

bool VtFileReplacer::Replace(const std::string& target, const std::function<bool(const std::string&)>& write,
                             const std::function<bool(const std::string&)>& check, std::string& error)
{
    error.clear();
    VtFileReplacer replacer(target);
    if (!replacer.IsReady()) {
        error = replacer.GetError();
        return false;
    }
    if (!write(replacer.GetTemporaryPath())) {
        if (error.empty())
            error = "cannot be written";
        return false;
    }
    if (check && !check(replacer.GetTemporaryPath())) {
        if (error.empty())
            error = "the written file does not read back as written";
        return false;
    }
    if (!replacer.Commit()) {
        error = replacer.GetError();
        return false;
    }
    return true;
}

bool VtFileBatch::Add(const std::string& target, const std::function<bool(const std::string&)>& write,
                      const std::function<bool(const std::string&)>& check, std::string& error)
{
    std::unique_ptr<VtFileReplacer> replacer(new VtFileReplacer(target, false));
    if (sweptDirectories_.insert(replacer->directory_).second)
        replacer->RemoveStaleTemporaries(true);
    error.clear();
    if (!replacer->IsReady())
        error = replacer->GetError();
    else if (!write(replacer->GetTemporaryPath()))
        error = "cannot be written";
    else if (check && !check(replacer->GetTemporaryPath()))
        error = "the written file does not read back as written";
    if (!error.empty())
        return false;
    pending_.push_back(std::move(replacer));
    return true;
}

bool VtFileBatch::Commit(std::string& error)
{
    std::set<std::string> directories;
    for (const auto& replacer : pending_)
        directories.insert(replacer->directory_);
    // One sync of each file system holding a directory covers all its files.
    for (const std::string& directory : directories) {
        const int descriptor = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        const bool synced = descriptor >= 0 && ::syncfs(descriptor) == 0;
        if (descriptor >= 0)
            ::close(descriptor);
        if (!synced) {
            error = "cannot sync " + directory + ": " + std::strerror(errno);
            return false;
        }
    }
    for (const auto& replacer : pending_) {
        if (!replacer->Install(false)) {
            error = replacer->GetError();
            return false;
        }
    }
    for (const std::string& directory : directories)
        SyncPath(directory, O_RDONLY | O_DIRECTORY);
    pending_.clear();
    return true;
}

}  // namespace VTC
