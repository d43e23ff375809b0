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
    TempDir()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "lqbase-XXXXXX").string();
        if (!mkdtemp(pattern.data()))
            throw std::runtime_error("cannot create a temporary directory");
        path_ = pattern;
    }
    ~TempDir() { std::filesystem::remove_all(path_); }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    std::filesystem::path Path(const std::string& name) const { return path_ / name; }
    ZEDA::ZedaUnicodeString Unicode(const std::string& name) const
    {
        return ZEDA::ZedaUnicodeString::FromUtf8(Path(name).string());
    }
    ZEDA::ZedaUnicodeString Dir() const { return ZEDA::ZedaUnicodeString::FromUtf8(path_.string() + "/"); }

private:
    std::filesystem::path path_;
};

}  // namespace lqtest
