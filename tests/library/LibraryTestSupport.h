#pragma once

// Shared pieces of the library-file and resource-cache tests: a private
// temporary directory per test process (TMPDIR points into it), a work
// directory per test outside it, file helpers, and a concrete library that
// carries its cache section in the stream form and records the resource hooks.

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "LqCompactFile.h"
#include "LqStream.h"
#include "LqToolkit.h"
#include "TestLibrary.h"

namespace lqtest {

namespace fs = std::filesystem;

inline ZedaUnicodeString U(const std::string& utf8)
{
    return ZedaUnicodeString::FromUtf8(utf8);
}

inline std::string Utf8(const ZedaUnicodeString& text)
{
    return text.ToUtf8();
}

inline std::string MakeTempDirectory(const fs::path& parent, const std::string& prefix)
{
    std::string pattern = (parent / (prefix + "XXXXXX")).string();
    if (mkdtemp(pattern.data()) == nullptr)
        ADD_FAILURE() << "mkdtemp failed under " << parent;
    return pattern;
}

// The process's private root; TMPDIR is its "tmp" folder, so files that the
// library deletes from the temporary directory can never be anyone else's.
class PrivateTemporaryDirectory : public ::testing::Environment {
public:
    void SetUp() override
    {
        Root() = MakeTempDirectory(fs::temp_directory_path(), "lq-library-");
        fs::create_directory(TemporaryDirectory());
        setenv("TMPDIR", TemporaryDirectory().c_str(), 1);
    }
    void TearDown() override
    {
        std::error_code ignored;
        fs::remove_all(Root(), ignored);
    }

    static std::string& Root()
    {
        static std::string root;
        return root;
    }
    static std::string TemporaryDirectory() { return Root() + "/tmp"; }
};

inline std::vector<unsigned char> ReadBytes(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

inline void WriteBytes(const fs::path& path, const std::vector<unsigned char>& bytes)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

inline void WriteText(const fs::path& path, const std::string& text)
{
    WriteBytes(path, std::vector<unsigned char>(text.begin(), text.end()));
}

// Files of the temporary directory, by name.
inline std::vector<std::string> TemporaryFiles()
{
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(PrivateTemporaryDirectory::TemporaryDirectory()))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

inline std::vector<unsigned char> StreamBytes(const VTC::VtMemoryStream& stream)
{
    return {stream.GetData(), stream.GetData() + stream.GetLength()};
}

// Each test works in its own directory beside (not inside) the temporary one,
// and checks that the temporary directory is left empty.
class LibraryFileTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        work = MakeTempDirectory(PrivateTemporaryDirectory::Root(), "work-");
        VTC::VtLogFile::GetInstance(false)->ClearRecords();
    }
    void TearDown() override
    {
        EXPECT_TRUE(TemporaryFiles().empty()) << "files left in the temporary directory";
        std::error_code ignored;
        fs::remove_all(work, ignored);
        fs::remove_all(PrivateTemporaryDirectory::TemporaryDirectory(), ignored);
        fs::create_directory(PrivateTemporaryDirectory::TemporaryDirectory());
    }

    std::string Work(const std::string& name) const { return work + "/" + name; }

    std::string work;
};

// A concrete library whose stream form carries its cache section after the
// image, and whose container hooks only record that they were called.
class CacheLibrary : public TestLibrary {
public:
    using TestLibrary::TestLibrary;
    using VtSymbolLib::CopySymbolRes;

    unsigned char SaveToStream(VTC::VtStream& stream, unsigned int fileVersion, unsigned char flag) override
    {
        const unsigned char saved = TestLibrary::SaveToStream(stream, fileVersion, flag);
        if (fileVersion != containerVersion)
            SaveCacheToLib(stream, fileVersion);
        return saved;
    }

    unsigned char LoadFromStream(VTC::VtStream& stream, unsigned char flag) override
    {
        const unsigned char loaded = TestLibrary::LoadFromStream(stream, flag);
        if (loaded != 0 && version != containerVersion)
            LoadCacheFromLib(stream);
        return loaded;
    }

    void CopySymbolRes(const ZedaUnicodeString&, VTC::VtCompactFile*) const override
    {
        hooks.push_back("cache to container");
    }
    void CopySymbolRes(const ZedaUnicodeString&) const override { hooks.push_back("storage to cache"); }
    void CopySymbolRes(VTC::VtCompactFile*) const override { hooks.push_back("storage to container"); }

    VTC::VtCompactFile* Storage() const { return storage; }
    unsigned char StorageIsExternal() const { return storageIsExternal; }
    void SetVersion(unsigned int value) { version = value; }

    mutable std::vector<std::string> hooks;
};

// The library as text: each symbol in list order with its group path, so
// that two libraries compare by IDs, order, names and filing.
inline std::string Describe(VTC::VtSymbolLib& lib)
{
    std::string text;
    for (int i = 0; i < lib.GetSymbolCount(); ++i) {
        const int id = lib.GetIDAt(i);
        std::string groups;
        for (VTC::VtSymbolGroup* group = lib.GetRootGroup()->FindChildGroupWithID(id); group != nullptr;
             group = group->GetParentGroup())
            groups = Utf8(group->GetGroupName()) + "/" + groups;
        text += std::to_string(id) + ":" + Utf8(lib.GetNameAt(i)) + "@" + groups + " ";
    }
    VTC::VtLogFile::GetInstance(false)->ClearRecords();
    return text;
}

}  // namespace lqtest
