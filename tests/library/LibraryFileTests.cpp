// Library files in container and stream form, loading and appending, the
// storage hand-over and what the destructor leaves behind.

#include <random>

#include "LibraryTestSupport.h"

namespace {

using lqtest::CacheLibrary;
using lqtest::Describe;
using lqtest::LibraryFileTest;
using lqtest::U;
using lqtest::Utf8;
using VTC::VtCompactFile;
using VTC::VtFile;
using ZEDA::ZedaUnicodeString;
namespace fs = std::filesystem;

const ZedaUnicodeString kStoreKey(u"SymbolStoreInCF");
const ZedaUnicodeString kNoPassword;

// Symbols in three levels of groups, in an order that is not by ID.
void Populate(CacheLibrary& lib)
{
    VTC::VtSymbolGroup* roads = lib.GetRootGroup()->CreateChildGroup(u"roads");
    VTC::VtSymbolGroup* minor = roads->CreateChildGroup(u"minor");
    lib.Add(7, u"church");
    lib.Add(3, u"motorway", roads);
    lib.Add(-1, u"track", minor);
    lib.Add(12, u"well");
    lib.Swap(0, 3);
    lib.SetModifiedFlag(0);
}

bool HasKey(const std::string& path, const ZedaUnicodeString& key)
{
    VtCompactFile container;
    if (container.Open(U(path), kNoPassword, VTC::VT_CF_MODE_READ) != VTC::VT_CF_OK)
        return false;
    const auto keys = container.GetKeys();
    return std::find(keys.begin(), keys.end(), key) != keys.end();
}

TEST_F(LibraryFileTest, ContainerFormRoundTrip)
{
    for (const unsigned int fileVersion : {0u, 20120328u}) {
        SCOPED_TRACE(fileVersion);
        const std::string path = Work("lib" + std::to_string(fileVersion) + ".cf");
        lqtest::WriteText(path, "an older file that is not a container");
        std::string expected;
        {
            CacheLibrary lib;
            Populate(lib);
            expected = Describe(lib);
            ASSERT_EQ(lib.SaveToFile(U(path), fileVersion), 1);
            ASSERT_NE(lib.Storage(), nullptr);
            EXPECT_EQ(lib.StorageIsExternal(), 0);
            EXPECT_EQ(Utf8(lib.Storage()->GetFullPath()), path);
            EXPECT_EQ(lib.hooks, (std::vector<std::string>{"cache to container"}));
            EXPECT_TRUE(lib.GetLibPath().IsEmpty());
            EXPECT_EQ(lib.IsModified(), 0);
        }
        EXPECT_TRUE(HasKey(path, kStoreKey));

        CacheLibrary loaded;
        ASSERT_EQ(loaded.LoadFromFile(U(path)), 1);
        EXPECT_EQ(Describe(loaded), expected);
        EXPECT_EQ(loaded.GetVersion(), 20120328u);
        EXPECT_EQ(loaded.IsModified(), 0);
        EXPECT_TRUE(loaded.GetLibPath().IsEmpty());
        ASSERT_NE(loaded.Storage(), nullptr);
        EXPECT_EQ(Utf8(loaded.Storage()->GetFullPath()), path);
    }
}

TEST_F(LibraryFileTest, StreamFormRoundTripCarriesTheCache)
{
    const std::string path = Work("lib.sym");
    std::string expected;
    {
        CacheLibrary lib;
        Populate(lib);
        expected = Describe(lib);
        const ZedaUnicodeString oldCache = lib.GetAvailableCachePath();
        lib.SetCachePath(oldCache);
        lqtest::WriteText(Utf8(VtFile::ChangeExt(oldCache, u"lock")), "L");
        lqtest::WriteText(Utf8(VtFile::ChangeExt(oldCache, u"sc")), "first cache");
        lqtest::WriteText(Utf8(VtFile::ChangeExt(oldCache, u"sc00")), "second cache");

        ASSERT_EQ(lib.SaveToFile(U(path), 20050302), 1);
        EXPECT_EQ(Utf8(lib.GetLibPath()), path);
        EXPECT_EQ(lib.Storage(), nullptr);
        EXPECT_EQ(lib.IsModified(), 0);
        EXPECT_TRUE(lib.hooks.empty());
        // The resources moved to a fresh cache name; the old files are gone.
        const ZedaUnicodeString newCache = lib.GetCachePath();
        EXPECT_NE(newCache, oldCache);
        EXPECT_FALSE(VtFile::IsExist(VtFile::ChangeExt(oldCache, u"sc")));
        EXPECT_FALSE(VtFile::IsExist(VtFile::ChangeExt(oldCache, u"tmp")));
        const auto sc = lqtest::ReadBytes(Utf8(VtFile::ChangeExt(newCache, u"sc")));
        EXPECT_EQ(std::string(sc.begin(), sc.end()), "first cache");
        EXPECT_TRUE(VtFile::IsExist(VtFile::ChangeExt(newCache, u"lock")));
    }
    const auto file = lqtest::ReadBytes(path);
    ASSERT_GE(file.size(), 4u);
    EXPECT_EQ(file[0] | file[1] << 8 | file[2] << 16 | file[3] << 24, 20050302);

    CacheLibrary loaded;
    loaded.SetModifiedFlag(0);
    ASSERT_EQ(loaded.LoadFromFile(U(path)), 1);
    EXPECT_EQ(Describe(loaded), expected);
    EXPECT_EQ(loaded.GetVersion(), 20050302u);
    EXPECT_EQ(loaded.IsModified(), 1);
    EXPECT_EQ(Utf8(loaded.GetLibPath()), path);
    EXPECT_EQ(loaded.Storage(), nullptr);
    const auto sc00 = lqtest::ReadBytes(Utf8(VtFile::ChangeExt(loaded.GetCachePath(), u"sc00")));
    EXPECT_EQ(std::string(sc00.begin(), sc00.end()), "second cache");
}

TEST_F(LibraryFileTest, SavingAgainRewritesTheOpenContainerOnlyWhenLoadedFromIt)
{
    const std::string path = Work("lib.cf");
    const ZedaUnicodeString other(u"Other");
    {
        CacheLibrary fresh;
        Populate(fresh);
        ASSERT_EQ(fresh.SaveToFile(U(path), 0), 1);
        ASSERT_EQ(fresh.Storage()->SetAt(other, VTC::VtByteArray(), 0, 0, 0), VTC::VT_CF_OK);
        // Version 0: not loaded from a container, so the file is made anew.
        fresh.hooks.clear();
        ASSERT_EQ(fresh.SaveToFile(U(path), 20120328), 1);
        EXPECT_EQ(fresh.hooks, (std::vector<std::string>{"storage to container"}));
        EXPECT_FALSE(HasKey(path, other));
        ASSERT_EQ(fresh.Storage()->SetAt(other, VTC::VtByteArray(), 0, 0, 0), VTC::VT_CF_OK);
    }

    CacheLibrary loaded;
    ASSERT_EQ(loaded.LoadFromFile(U(path)), 1);
    VtCompactFile* storage = loaded.Storage();
    loaded.Add(-1, u"added");
    ASSERT_EQ(loaded.SaveToFile(U(path), 0), 1);
    // The path matches the open storage ignoring case, so the open storage
    // is written, not a new file.
    std::string upper = path;
    upper.replace(upper.size() - 6, 6, "LIB.CF");
    ASSERT_EQ(loaded.SaveToFile(U(upper), 20120328), 1);
    EXPECT_FALSE(fs::exists(upper));
    EXPECT_EQ(loaded.Storage(), storage);
    EXPECT_TRUE(loaded.hooks.empty());
    EXPECT_TRUE(HasKey(path, other));

    CacheLibrary reloaded;
    ASSERT_EQ(reloaded.LoadFromFile(U(path)), 1);
    EXPECT_EQ(Describe(reloaded), Describe(loaded));
    EXPECT_EQ(reloaded.GetSymbolCount(), 5);
}

TEST_F(LibraryFileTest, LoadingSetsTheModifiedFlagOnlyForStreamFiles)
{
    const std::string container = Work("lib.cf");
    const std::string stream = Work("lib.sym");
    const std::string empty = Work("empty.sym");
    const std::string keyless = Work("keyless.cf");
    {
        CacheLibrary lib;
        Populate(lib);
        ASSERT_EQ(lib.SaveToFile(U(container), 0), 1);
        ASSERT_EQ(lib.SaveToFile(U(stream), 20050302), 1);
        VtCompactFile other;
        ASSERT_EQ(other.Create(U(keyless), 32, kNoPassword, VTC::VT_CF_MODE_READWRITE), VTC::VT_CF_OK);
        lqtest::WriteText(empty, "");
    }

    CacheLibrary lib;
    lib.SetModifiedFlag(0);
    ASSERT_EQ(lib.LoadFromFile(U(container)), 1);
    EXPECT_EQ(lib.IsModified(), 0);
    VtCompactFile* storage = lib.Storage();

    // A container without the library entry is refused; the storage stays.
    EXPECT_EQ(lib.LoadFromFile(U(keyless)), 0);
    EXPECT_EQ(lib.Storage(), storage);
    EXPECT_EQ(lib.IsModified(), 0);

    EXPECT_EQ(lib.LoadFromFile(U(Work("missing.sym"))), 0);
    EXPECT_EQ(lib.IsModified(), 1);
    EXPECT_EQ(lib.Storage(), nullptr);
    EXPECT_TRUE(lib.GetLibPath().IsEmpty());

    lib.SetModifiedFlag(0);
    EXPECT_EQ(lib.LoadFromFile(U(empty)), 0);
    EXPECT_EQ(lib.IsModified(), 1);
    EXPECT_EQ(Utf8(lib.GetLibPath()), empty);

    lib.SetModifiedFlag(0);
    EXPECT_EQ(lib.LoadFromFile(U(stream)), 1);
    EXPECT_EQ(lib.IsModified(), 1);
    EXPECT_EQ(lib.GetSymbolCount(), 4);

    CacheLibrary byDefault;
    byDefault.SetDefaultPath(U(container));
    EXPECT_EQ(byDefault.LoadDefault(), 1);
    EXPECT_EQ(Utf8(byDefault.GetLibPath()), container);
    EXPECT_EQ(byDefault.GetSymbolCount(), 4);
}

TEST_F(LibraryFileTest, AppendReadsOnlyStreamFiles)
{
    const std::string stream = Work("lib.sym");
    const std::string container = Work("lib.cf");
    {
        CacheLibrary lib;
        Populate(lib);
        ASSERT_EQ(lib.SaveToFile(U(stream), 20050302), 1);
        ASSERT_EQ(lib.SaveToFile(U(container), 0), 1);
    }
    lqtest::WriteText(Work("empty.sym"), "");

    CacheLibrary lib;
    lib.Add(8, u"own");
    for (const char* name : {"missing.sym", "empty.sym", "lib.cf"}) {
        lib.SetModifiedFlag(0);
        EXPECT_EQ(lib.AppendFromFile(U(Work(name)), 0), 0) << name;
        EXPECT_EQ(lib.IsModified(), 1) << name;
    }
    EXPECT_EQ(lib.GetSymbolCount(), 1);

    ASSERT_EQ(lib.AppendFromFile(U(stream), 0), 1);
    EXPECT_EQ(lib.GetSymbolCount(), 5);
    // Appended IDs that were taken are renumbered; the rest keep theirs.
    EXPECT_EQ(lib.GetIDAt(1), 12);
    EXPECT_EQ(lib.GetIDAt(2), 3);
    EXPECT_EQ(lib.GetIDAt(3), 13);
    EXPECT_EQ(lib.GetIDAt(4), 7);
    EXPECT_TRUE(lib.GetLibPath().IsEmpty());
}

TEST_F(LibraryFileTest, FailedSavesChangeNothing)
{
    const std::string nowhere = Work("no/such/folder/lib");
    CacheLibrary lib;
    Populate(lib);
    lib.SetLibPath(u"before");
    const ZedaUnicodeString cache = lib.GetCachePath();

    EXPECT_EQ(lib.SaveToFile(U(nowhere + ".sym"), 20050302), 0);
    EXPECT_EQ(lib.SaveToFile(U(nowhere + ".cf"), 0), 0);
    EXPECT_EQ(lib.GetLibPath(), ZedaUnicodeString(u"before"));
    EXPECT_EQ(lib.GetCachePath(), cache);
    EXPECT_EQ(lib.Storage(), nullptr);
    EXPECT_EQ(lib.hooks, (std::vector<std::string>{}));
}

TEST_F(LibraryFileTest, ExternalStorageIsNeverClosedByTheLibrary)
{
    const std::string path = Work("external.cf");
    VtCompactFile external;
    ASSERT_EQ(external.Create(U(path), 32, kNoPassword, VTC::VT_CF_MODE_READWRITE), VTC::VT_CF_OK);
    {
        CacheLibrary lib;
        Populate(lib);
        ASSERT_EQ(lib.SaveToFile(U(Work("owned.cf")), 0), 1);
        // Handing in a container releases the owned one.
        lib.SetExternalStorage(&external);
        EXPECT_EQ(lib.Storage(), &external);
        EXPECT_EQ(lib.StorageIsExternal(), 1);
        // A null hand-over drops the container and leaves the flag.
        lib.SetExternalStorage(nullptr);
        EXPECT_EQ(lib.Storage(), nullptr);
        EXPECT_EQ(lib.StorageIsExternal(), 1);
        lib.SetExternalStorage(&external);
    }
    EXPECT_TRUE(external.IsOpen());
    EXPECT_EQ(external.SetAt(u"still", VTC::VtByteArray(), 0, 0, 0), VTC::VT_CF_OK);

    {
        CacheLibrary lib;
        lib.SetExternalStorage(&external);
        lqtest::WriteText(Work("empty.sym"), "");
        EXPECT_EQ(lib.LoadFromFile(U(Work("empty.sym"))), 0);
        EXPECT_EQ(lib.Storage(), nullptr);
        EXPECT_EQ(lib.StorageIsExternal(), 1);
    }
    EXPECT_TRUE(external.IsOpen());
}

TEST_F(LibraryFileTest, DestructorDeletesOnlyTemporaryCacheFiles)
{
    const std::string base = Work("lib.sc");
    ZedaUnicodeString temporary;
    {
        CacheLibrary outside;
        outside.SetCachePath(U(base));
        for (const char* extension : {"lock", "sc", "sc00", "tmp"})
            lqtest::WriteText(Work(std::string("lib.") + extension), extension);

        CacheLibrary inside;
        temporary = inside.GetAvailableCachePath();
        inside.SetCachePath(temporary);
        for (const char16_t* extension : {u"lock", u"sc", u"sc00"})
            lqtest::WriteText(Utf8(VtFile::ChangeExt(temporary, extension)), "x");
        EXPECT_EQ(lqtest::TemporaryFiles().size(), 4u);
    }
    for (const char* extension : {"lock", "sc", "sc00", "tmp"})
        EXPECT_TRUE(fs::exists(Work(std::string("lib.") + extension))) << extension;
    EXPECT_TRUE(lqtest::TemporaryFiles().empty());
}

// Every prefix of a valid file, and random bytes, load without harm.
TEST_F(LibraryFileTest, DamagedFilesNeverCrash)
{
    const std::string stream = Work("lib.sym");
    const std::string container = Work("lib.cf");
    {
        CacheLibrary lib;
        Populate(lib);
        const ZedaUnicodeString cache = lib.GetAvailableCachePath();
        lib.SetCachePath(cache);
        for (const char16_t* extension : {u"lock", u"sc", u"sc00"})
            lqtest::WriteText(Utf8(VtFile::ChangeExt(cache, extension)), "resource");
        ASSERT_EQ(lib.SaveToFile(U(stream), 20050302), 1);
        ASSERT_EQ(lib.SaveToFile(U(container), 0), 1);
    }
    const std::string damaged = Work("damaged");
    auto tryFile = [&](const std::vector<unsigned char>& bytes) {
        lqtest::WriteBytes(damaged, bytes);
        CacheLibrary lib(static_cast<int>(bytes.size() % 3));
        lib.LoadFromFile(U(damaged));
        lib.AppendFromFile(U(damaged), 0);
        lib.LoadFromFile(U(damaged));
    };

    const auto streamBytes = lqtest::ReadBytes(stream);
    for (std::size_t length = 0; length <= streamBytes.size(); ++length)
        tryFile({streamBytes.begin(), streamBytes.begin() + static_cast<std::ptrdiff_t>(length)});
    const auto containerBytes = lqtest::ReadBytes(container);
    for (std::size_t length = 0; length <= containerBytes.size(); length += 509)
        tryFile({containerBytes.begin(), containerBytes.begin() + static_cast<std::ptrdiff_t>(length)});

    std::mt19937 random(20120328);
    for (int round = 0; round < 40; ++round) {
        std::vector<unsigned char> bytes(random() % 300);
        for (auto& byte : bytes)
            byte = static_cast<unsigned char>(random());
        // Half of them start like a library image with a cache section ahead.
        if (round % 2 == 0 && bytes.size() >= 40 && streamBytes.size() >= 40)
            std::copy_n(streamBytes.begin(), 40, bytes.begin());
        tryFile(bytes);
    }
}

}  // namespace
