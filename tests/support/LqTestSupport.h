#pragma once

// What the tests of every library share: temporary folders, files read and
// written whole, and the records of the framework's log. The tests' one
// support header (docs/architecture.md).

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "LqBase.h"
#include "LqToolkit.h"

namespace lqtest {

// A fresh folder under `parent` named `prefix` and six random characters;
// throws when it cannot be made.
std::filesystem::path MakeFolder(const std::filesystem::path& parent, const std::string& prefix);

// A fresh folder under the system's temporary folder, removed with everything
// in it when the object goes.
class TempDir {
public:
    explicit TempDir(const std::string& prefix = "lq-test-");
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    ~TempDir();

    const std::filesystem::path& Root() const { return root_; }
    std::filesystem::path Path(const std::string& name) const { return root_ / name; }
    std::string operator/(const std::string& name) const { return Path(name).string(); }
    ZEDA::ZedaUnicodeString Unicode(const std::string& name) const;
    // The folder with a trailing separator.
    ZEDA::ZedaUnicodeString Dir() const;

private:
    std::filesystem::path root_;
};

// A TempDir whose tmp/ folder is the process's TMPDIR from now on, so that
// what a library or the lqsymbol program makes and deletes in its temporary
// folder is the test's own and can be counted. The framework makes its
// temporary folder once a process, so TMPDIR is left set.
class PrivateTmpdir : public TempDir {
public:
    explicit PrivateTmpdir(const std::string& prefix);
    std::filesystem::path Tmp() const { return Path("tmp"); }
};

// A file's bytes, or none when it cannot be read.
std::vector<unsigned char> ReadFileBytes(const std::filesystem::path& path);
std::string ReadFileText(const std::filesystem::path& path);
std::string ReadFileText(const ZEDA::ZedaUnicodeString& path);
// Replaces the file's contents.
void WriteFile(const std::filesystem::path& path, std::string_view bytes);
void WriteFile(const std::filesystem::path& path, const std::vector<unsigned char>& bytes);
void WriteFile(const ZEDA::ZedaUnicodeString& path, std::string_view bytes);

// The log records made since the last take, oldest first; the log is emptied.
std::vector<VTC::VtLogRecord> TakeLogRecords();

}  // namespace lqtest
