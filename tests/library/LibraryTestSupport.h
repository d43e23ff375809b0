#pragma once

// A private temporary directory, a work directory per test, and a library
// that carries its cache section and records its resource hooks.

#include <filesystem>

#include "LqCompactFile.h"
#include "LqTestSupport.h"
#include "TestLibrary.h"

namespace lqtest {

namespace fs = std::filesystem;
using Bytes = std::vector<unsigned char>;
using VTC::VtCompactFile;
using VTC::VtFile;
using VTC::VtMemoryStream;

// The process's private temporary folder, made on first use: TMPDIR points
// into it, so files that the library deletes from it can never be anyone else's.
inline const PrivateTmpdir& PrivateFolder()
{
    static const PrivateTmpdir folder("lq-library-");
    return folder;
}

// Gives `lib` a fresh temporary cache whose files hold `text` and their extension.
inline ZedaUnicodeString MakeCache(TestLibrary& lib, const std::string& text)
{
    const ZedaUnicodeString cache = lib.GetAvailableCachePath();
    lib.SetCachePath(cache);
    for (const char* extension : {"lock", "sc", "sc00"})
        WriteFile(VtFile::ChangeExt(cache, ZedaUnicodeString::FromUtf8(extension)).ToUtf8(), text + "." + extension);
    return cache;
}

// Each test works in its own directory beside (not inside) the temporary one,
// and must leave the temporary directory empty.
class LibraryFileTest : public ::testing::Test {
protected:
    void SetUp() override { work = MakeFolder(PrivateFolder().Root(), "work-").string(); }
    void TearDown() override
    {
        const std::string own = VtFile::GetTemporaryPath().ToUtf8();  // the library's folder in PrivateFolder().Tmp()
        EXPECT_TRUE(fs::is_empty(own)) << "files left in the temporary directory";
        fs::remove_all(work);
        for (const auto& entry : fs::directory_iterator(own))
            fs::remove_all(entry);
    }

    ZedaUnicodeString Work(const std::string& name) const { return ZedaUnicodeString::FromUtf8(work + "/" + name); }

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

    mutable std::vector<std::string> hooks;
};

// A library's image without the cache section: its IDs, order, names and group tree.
inline Bytes Image(TestLibrary& lib)
{
    VtMemoryStream stream;
    stream.Open(VTC::VT_STREAM_WRITE);
    lib.TestLibrary::SaveToStream(stream, 0, 1);
    return {stream.GetData(), stream.GetData() + stream.GetLength()};
}

}  // namespace lqtest
