#include "Output.h"

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "Commands.h"
#include "LibraryFile.h"
#include "Progress.h"
#include "VtSafeSave.h"

namespace LqTool {

namespace {

bool IsWriteProtected(const std::string& path)
{
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0)
        return false;
    // Root may write anything; the permission bits still say what the owner wants.
    return ::access(path.c_str(), W_OK) != 0 || (status.st_mode & 0222) == 0;
}

bool WriteBytes(const std::string& path, const std::string& bytes)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    return static_cast<bool>(out);
}

bool HoldsBytes(const std::string& path, const std::string& bytes)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return false;
    const std::string read{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    return read == bytes;
}

}  // namespace

bool IsSameFile(const std::string& a, const std::string& b)
{
    struct stat first = {};
    struct stat second = {};
    return ::stat(a.c_str(), &first) == 0 && ::stat(b.c_str(), &second) == 0 && first.st_dev == second.st_dev &&
           first.st_ino == second.st_ino;
}

int CheckOutput(const std::string& output, const std::vector<std::string>& inputs, bool force)
{
    for (const std::string& input : inputs)
        if (IsSameFile(output, input))
            return Refuse(output, "is also an input (" + input + "); write to another file");
    struct stat status = {};
    if (::stat(output.c_str(), &status) != 0)
        return exitOk;
    if (S_ISDIR(status.st_mode))
        return Refuse(output, "is a directory");
    if (!force)
        return Refuse(output, "exists; add --force to replace it");
    return CheckWritable(output);
}

int CheckWritable(const std::string& path)
{
    return IsWriteProtected(path) ? Report(path, "is write-protected") : exitOk;
}

int MakeOutputDirectory(const std::string& directory)
{
    std::error_code error;
    std::filesystem::create_directories(directory, error);
    if (std::filesystem::is_directory(directory))
        return exitOk;
    if (std::filesystem::exists(directory))
        return Refuse(directory, "is not a directory");
    return Report(directory, "the directory cannot be made: " + error.message());
}

bool WriteFileSafely(const std::string& path, const std::string& bytes, std::string& error)
{
    return VTC::VtFileReplacer::Replace(
        path, [&](const std::string& temporary) { return WriteBytes(temporary, bytes); },
        [&](const std::string& temporary) { return HoldsBytes(temporary, bytes); }, error);
}

bool OutputBatch::Add(const std::string& path, const std::string& bytes, std::string& error)
{
    return Add(
        path, [&](const std::string& temporary) { return WriteBytes(temporary, bytes); },
        [&](const std::string& temporary) { return HoldsBytes(temporary, bytes); }, error);
}

bool SaveLibrarySafely(LqExample::ResourceSymbolLib& lib, const std::string& path, unsigned int fileVersion,
                       std::string& error)
{
    StageProgress progress("save " + path, "writing");
    const auto sameAsSaved = [&](const ZEDA::ZedaUnicodeString& written) {
        progress.Stage("checking");
        std::string reason;
        const auto reloaded = OpenLibrary(written.ToUtf8(), reason);
        return reloaded && CompareLibraries(lib, *reloaded).empty();
    };
    return VTC::SaveSymbolLibSafely(lib, ZEDA::ZedaUnicodeString::FromUtf8(path), fileVersion, sameAsSaved, &error);
}

}  // namespace LqTool
