#pragma once

// What the tests of every library share: temporary folders and the records
// of the framework's log. The tests' one support header (docs/architecture.md).

#include <filesystem>
#include <string>
#include <vector>

#include "LqBase.h"
#include "LqToolkit.h"

namespace lqtest {

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

// The log records made since the last take, oldest first; the log is emptied.
std::vector<VTC::VtLogRecord> TakeLogRecords();

}  // namespace lqtest
