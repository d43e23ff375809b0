#pragma once

// What every harness shares: a private temporary directory (TMPDIR points
// there, so the library's cache files land in it), file helpers, and checks
// whose failure is a finding.

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "VtFile.h"
#include "VtLogFile.h"

namespace lqfuzz {

using Bytes = std::vector<unsigned char>;

// Stops the run with a message: libFuzzer keeps the input as a finding.
[[noreturn]] inline void Finding(const char* what)
{
    std::fprintf(stderr, "finding: %s\n", what);
    std::abort();
}

inline void Require(bool condition, const char* what)
{
    if (!condition)
        Finding(what);
}

// Where the work directory goes: a file system in memory when there is one.
// The harnesses create, rewrite and delete files on every run; on a disk, a
// file truncated and rewritten starts writeback when it is closed, and each
// sync of the code under test waits for the disk, so that under other builds
// a run took a hundred times longer. The code under test is the same.
// fuzz/run-harness.sh names a folder of its own, which it removes even when a
// finding ends the process before the work directory is removed.
inline std::string WorkBase()
{
    if (const char* owned = std::getenv("LQ_FUZZ_WORK_BASE"); owned && *owned)
        return owned;
    struct stat info {};
    if (stat("/dev/shm", &info) == 0 && S_ISDIR(info.st_mode) && access("/dev/shm", W_OK) == 0)
        return "/dev/shm";
    const char* base = std::getenv("TMPDIR");
    return base && *base ? base : "/tmp";
}

// The process's own directory for the files a harness writes: made once,
// removed with everything in it at exit.
class WorkFolder {
public:
    WorkFolder() : path_(WorkBase() + "/lq-fuzz-XXXXXX")
    {
        if (!mkdtemp(path_.data()))
            Finding("no work directory");
    }
    ~WorkFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    WorkFolder(const WorkFolder&) = delete;
    WorkFolder& operator=(const WorkFolder&) = delete;
    const std::string& Path() const { return path_; }

private:
    std::string path_;
};

inline const std::string& WorkDirectory()
{
    static const WorkFolder folder;
    return folder.Path();
}

// Points the library's temporary directory into the work directory.
inline void UsePrivateTemporaryDirectory()
{
    const std::string tmp = WorkDirectory() + "/tmp";
    mkdir(tmp.c_str(), 0700);
    setenv("TMPDIR", tmp.c_str(), 1);
}

inline std::string WorkPath(const std::string& name)
{
    return WorkDirectory() + "/" + name;
}

inline void WriteFile(const std::string& path, const std::uint8_t* data, std::size_t size)
{
    std::ofstream(path, std::ios::binary | std::ios::trunc).write(reinterpret_cast<const char*>(data),
                                                                  static_cast<std::streamsize>(size));
}

// Its length in bytes; 0 when it does not exist.
inline long long FileBytes(const std::string& path)
{
    struct stat info {};
    return stat(path.c_str(), &info) == 0 ? info.st_size : 0;
}

// In one read: a byte at a time, through the harness's own coverage
// instrumentation, this took a third of the container harness's time.
inline Bytes ReadFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    Bytes bytes(static_cast<std::size_t>(FileBytes(path)));
    in.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(in.gcount()));
    return bytes;
}

// Names in a directory, "." and ".." left out; none when it does not exist.
inline std::vector<std::string> ListDirectory(const std::string& path)
{
    std::vector<std::string> names;
    if (DIR* dir = opendir(path.c_str())) {
        while (const dirent* entry = readdir(dir)) {
            const std::string name = entry->d_name;
            if (name != "." && name != "..")
                names.push_back(name);
        }
        closedir(dir);
    }
    return names;
}

// A library that is gone leaves no cache file behind.
inline void RequireNoTemporaryFiles()
{
    const std::string tmp = VTC::VtFile::GetTemporaryPath().ToUtf8();
    Require(ListDirectory(tmp).empty(), "files left in the temporary directory");
}

// The log keeps a bounded window of records; clearing it each run keeps
// runs independent.
inline void ClearLog()
{
    VTC::VtLogFile::GetInstance(false)->ClearRecords();
}

}  // namespace lqfuzz
