#include "VtFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace VTC {

namespace {

constexpr std::size_t kCopyChunk = 1 << 20;
constexpr unsigned int kMaxNameAttempts = 65536;

// Owns a POSIX descriptor.
class Descriptor {
public:
    explicit Descriptor(int fd) : fd_(fd) {}
    ~Descriptor()
    {
        if (fd_ >= 0)
            close(fd_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Get() const { return fd_; }
    bool IsValid() const { return fd_ >= 0; }
    bool Close() { return close(std::exchange(fd_, -1)) == 0; }

private:
    int fd_;
};

// Position where the extension of the last path component starts (its dot),
// or npos. A leading dot names a hidden file, not an extension.
std::size_t ExtensionStart(const std::u16string& path)
{
    const std::size_t slash = path.rfind(u'/');
    const std::size_t nameStart = slash == std::u16string::npos ? 0 : slash + 1;
    const std::size_t dot = path.rfind(u'.');
    if (dot == std::u16string::npos || dot <= nameStart)
        return std::u16string::npos;
    return dot;
}

std::u16string WithoutExtension(const std::u16string& path) { return path.substr(0, ExtensionStart(path)); }

ZedaUnicodeString UniqueName(const ZedaUnicodeString& dir, const ZedaUnicodeString& prefix, unsigned int unique)
{
    ZedaUnicodeString name = dir;
    if (!name.IsEmpty() && name[name.GetLength() - 1] != u'/')
        name += u'/';
    char hex[16];
    std::snprintf(hex, sizeof hex, "%X", unique);
    return name + prefix + ZedaUnicodeString::FromUtf8(hex) + u".tmp";
}

unsigned int NextCandidate(unsigned int value) { return value + 1 == 0 ? 1 : value + 1; }

unsigned int FirstCandidate()
{
    const auto ticks = static_cast<unsigned long long>(std::chrono::steady_clock::now().time_since_epoch().count());
    const auto seed = static_cast<unsigned int>(ticks ^ (ticks >> 32) ^ (static_cast<unsigned long long>(getpid()) << 16));
    return seed == 0 ? 1 : seed;
}

bool IsSameFile(const struct stat& a, const struct stat& b) { return a.st_dev == b.st_dev && a.st_ino == b.st_ino; }

bool CopyContents(int from, int to)
{
    std::vector<unsigned char> chunk(kCopyChunk);
    for (;;) {
        const ssize_t got = read(from, chunk.data(), chunk.size());
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return false;
        if (got == 0)
            return true;
        for (ssize_t done = 0; done < got;) {
            const ssize_t written = write(to, chunk.data() + done, static_cast<std::size_t>(got - done));
            if (written < 0 && errno == EINTR)
                continue;
            if (written <= 0)
                return false;
            done += written;
        }
    }
}

// The folder behind GetTemporaryPath. Should it not be made (a system
// temporary directory that cannot be written), its name stays a pattern that
// names no file: creating cache files in it fails cleanly, and no path outside
// it can contain it.
class PrivateDirectory {
public:
    PrivateDirectory()
    {
        const char* fromEnvironment = std::getenv("TMPDIR");
        std::string pattern = (fromEnvironment && *fromEnvironment) ? fromEnvironment : "/tmp";
        if (pattern.back() != '/')
            pattern += '/';
        pattern += "lq-XXXXXX";
        made_ = mkdtemp(pattern.data()) != nullptr;
        path_ = pattern;
    }
    ~PrivateDirectory()
    {
        if (made_)
            rmdir(path_.c_str());  // fails, keeping everything, unless empty
    }
    PrivateDirectory(const PrivateDirectory&) = delete;
    PrivateDirectory& operator=(const PrivateDirectory&) = delete;

    ZedaUnicodeString Path() const { return ZedaUnicodeString::FromUtf8(path_ + "/"); }

private:
    std::string path_;
    bool made_ = false;
};

}  // namespace

ZedaUnicodeString VtFile::GetTemporaryPath()
{
    static const PrivateDirectory directory;
    return directory.Path();
}

unsigned int VtFile::GetTemporaryFileName(const ZedaUnicodeString& dir, const ZedaUnicodeString& prefix,
                                          unsigned int unique, ZedaUnicodeString& result)
{
    if (unique != 0) {
        result = UniqueName(dir, prefix, unique);
        return unique;
    }
    unsigned int candidate = FirstCandidate();
    for (unsigned int attempt = 0; attempt < kMaxNameAttempts; ++attempt, candidate = NextCandidate(candidate)) {
        const ZedaUnicodeString name = UniqueName(dir, prefix, candidate);
        const int fd = open(name.ToUtf8().c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (fd >= 0) {
            close(fd);
            result = name;
            return candidate;
        }
        if (errno != EEXIST)
            return 0;
    }
    return 0;
}

ZedaUnicodeString VtFile::ChangeExt(const ZedaUnicodeString& path, const ZedaUnicodeString& ext)
{
    std::u16string result = WithoutExtension(path.Str());
    std::u16string_view bare = ext.Str();
    if (!bare.empty() && bare.front() == u'.')
        bare.remove_prefix(1);
    if (!bare.empty())
        result.append(u".").append(bare);
    return ZedaUnicodeString(std::move(result));
}

ZedaUnicodeString VtFile::StripExt(const ZedaUnicodeString& path)
{
    return ZedaUnicodeString(WithoutExtension(path.Str()));
}

bool VtFile::IsExist(const ZedaUnicodeString& path)
{
    struct stat info {};
    return !path.IsEmpty() && stat(path.ToUtf8().c_str(), &info) == 0;
}

bool VtFile::Delete(const ZedaUnicodeString& path) { return !path.IsEmpty() && unlink(path.ToUtf8().c_str()) == 0; }

bool VtFile::Copy(const ZedaUnicodeString& from, const ZedaUnicodeString& to, int overwrite)
{
    const std::string source = from.ToUtf8();
    const std::string target = to.ToUtf8();
    Descriptor in(open(source.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat sourceInfo {};
    if (!in.IsValid() || fstat(in.Get(), &sourceInfo) != 0 || !S_ISREG(sourceInfo.st_mode))
        return false;
    // Truncating the target first would destroy a file copied onto itself.
    struct stat targetInfo {};
    if (stat(target.c_str(), &targetInfo) == 0 && IsSameFile(sourceInfo, targetInfo))
        return false;
    const int replace = overwrite ? O_TRUNC : O_EXCL;
    Descriptor out(open(target.c_str(), O_WRONLY | O_CREAT | replace | O_CLOEXEC, sourceInfo.st_mode & 0777));
    if (!out.IsValid())
        return false;
    if (CopyContents(in.Get(), out.Get()) && out.Close())
        return true;
    unlink(target.c_str());
    return false;
}

long long VtFile::GetLength(const ZedaUnicodeString& path)
{
    struct stat info {};
    if (path.IsEmpty() || stat(path.ToUtf8().c_str(), &info) != 0 || !S_ISREG(info.st_mode))
        return -1;
    return info.st_size;
}

}  // namespace VTC
