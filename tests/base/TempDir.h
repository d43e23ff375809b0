#pragma once

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "ZedaUnicodeString.h"

namespace lqtest {

// A fresh directory under the system temporary directory, removed with its contents.
class TempDir {
public:
    TempDir() : path_((std::filesystem::temp_directory_path() / "lqbase-XXXXXX").string())
    {
        if (mkdtemp(path_.data()) == nullptr)
            throw std::runtime_error("cannot create a temporary directory");
    }
    ~TempDir() { std::filesystem::remove_all(path_); }

    std::filesystem::path Path(const std::string& name) const { return std::filesystem::path(path_) / name; }
    ZEDA::ZedaUnicodeString Unicode(const std::string& name) const { return ZEDA::ZedaUnicodeString::FromUtf8(Path(name).string()); }
    ZEDA::ZedaUnicodeString Dir() const { return ZEDA::ZedaUnicodeString::FromUtf8(path_ + "/"); }

private:
    std::string path_;
};

}  // namespace lqtest
