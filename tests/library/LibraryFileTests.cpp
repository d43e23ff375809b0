// Library files in container and stream form, loading and appending, the
// storage hand-over and what the destructor leaves behind.

#include <random>

#include "LibraryTestSupport.h"

namespace lqtest {
namespace {

using Hooks = std::vector<std::string>;

// Symbols in three levels of groups, in an order that is not by ID.
void Populate(CacheLibrary& lib)
{
    VTC::VtSymbolGroup* roads = lib.GetRootGroup()->CreateChildGroup(u"roads");
    lib.Add(7, u"church");
    lib.Add(3, u"motorway", roads);
    lib.Add(-1, u"track", roads->CreateChildGroup(u"minor"));
    lib.Add(12, u"well");
    lib.Swap(0, 3);
    lib.SetModifiedFlag(0);
}

bool HasKey(const ZedaUnicodeString& path, const char16_t* key)
{
    VtCompactFile container;
    return container.Open(path, u"", VTC::VT_CF_MODE_READ) == VTC::VT_CF_OK &&
           std::ranges::count(container.GetKeys(), ZedaUnicodeString(key)) == 1;
}

TEST_F(LibraryFileTest, ContainerFormRoundTripAndRewriteInPlace)
{
    const ZedaUnicodeString path = Work("lib.cf");
    Bytes expected;
    for (const unsigned int fileVersion : {0u, 20120328u}) {
        SCOPED_TRACE(fileVersion);
        WriteFile(path, "an older file, replaced");
        CacheLibrary lib;
        Populate(lib);
        expected = Image(lib);
        ASSERT_EQ(lib.SaveToFile(path, fileVersion), 1);
        ASSERT_NE(lib.Storage(), nullptr);
        EXPECT_EQ(lib.Storage()->GetFullPath(), path);
        EXPECT_EQ(lib.hooks, Hooks{"cache to container"});
        EXPECT_TRUE(lib.GetLibPath().IsEmpty() && lib.IsModified() == 0);
        // Not loaded from a container, so saving again makes the file anew.
        ASSERT_EQ(lib.Storage()->SetAt(u"Other", VTC::VtByteArray(), 0, 0, 0), VTC::VT_CF_OK);
        ASSERT_EQ(lib.SaveToFile(path, 20120328), 1);
        EXPECT_EQ(lib.hooks, (Hooks{"cache to container", "storage to container"}));
        EXPECT_FALSE(HasKey(path, u"Other"));
        ASSERT_EQ(lib.Storage()->SetAt(u"Other", VTC::VtByteArray(), 0, 0, 0), VTC::VT_CF_OK);
    }
    CacheLibrary loaded;
    ASSERT_EQ(loaded.LoadFromFile(path), 1);
    EXPECT_EQ(Image(loaded), expected);
    EXPECT_EQ(loaded.GetVersion(), 20120328u);
    EXPECT_TRUE(loaded.IsModified() == 0 && loaded.GetLibPath().IsEmpty());  // only stream files mark the library
    VtCompactFile* storage = loaded.Storage();
    ASSERT_NE(storage, nullptr);
    // A path that names the open storage, in any case, rewrites only its library entry.
    loaded.Add(-1, u"added");
    ASSERT_EQ(loaded.SaveToFile(Work("LIB.CF"), 0), 1);
    EXPECT_FALSE(VtFile::IsExist(Work("LIB.CF")));
    EXPECT_EQ(loaded.Storage(), storage);
    EXPECT_TRUE(loaded.hooks.empty());
    EXPECT_TRUE(HasKey(path, u"Other") && HasKey(path, u"SymbolStoreInCF"));
    CacheLibrary reloaded;
    ASSERT_EQ(reloaded.LoadFromFile(path), 1);
    EXPECT_EQ(Image(reloaded), Image(loaded));
}

TEST_F(LibraryFileTest, StreamFormRoundTripCarriesTheCache)
{
    const ZedaUnicodeString path = Work("lib.sym");
    Bytes expected;
    {
        CacheLibrary lib;
        Populate(lib);
        expected = Image(lib);
        const ZedaUnicodeString oldCache = MakeCache(lib, "resource");
        ASSERT_EQ(lib.SaveToFile(path, 20050302), 1);
        EXPECT_EQ(lib.GetLibPath(), path);
        EXPECT_TRUE(lib.Storage() == nullptr && lib.IsModified() == 0 && lib.hooks.empty());
        // The resources moved to a fresh cache name; the old files are gone.
        EXPECT_NE(lib.GetCachePath(), oldCache);  // and the fixture sees that the old files are gone
        EXPECT_EQ(ReadFileText(VtFile::ChangeExt(lib.GetCachePath(), u"sc")), "resource.sc");
    }
    CacheLibrary loaded;
    ASSERT_EQ(loaded.LoadFromFile(path), 1);
    EXPECT_EQ(Image(loaded), expected);
    EXPECT_EQ(loaded.GetVersion(), 20050302u);
    EXPECT_EQ(loaded.IsModified(), 1);
    EXPECT_TRUE(loaded.GetLibPath() == path && loaded.Storage() == nullptr);
    EXPECT_EQ(ReadFileText(VtFile::ChangeExt(loaded.GetCachePath(), u"sc00")), "resource.sc00");
}

TEST_F(LibraryFileTest, FilesThatHoldNoLibraryLoadAndAppendNothing)
{
    const ZedaUnicodeString container = Work("lib.cf");
    const ZedaUnicodeString stream = Work("lib.sym");
    const ZedaUnicodeString empty = Work("empty.sym");
    {
        CacheLibrary lib;
        Populate(lib);
        // Saves that cannot open their file change nothing.
        EXPECT_EQ(lib.SaveToFile(Work("no/such/folder/lib.sym"), 20050302), 0);
        EXPECT_EQ(lib.SaveToFile(Work("no/such/folder/lib.cf"), 0), 0);
        EXPECT_TRUE(lib.GetLibPath().IsEmpty() && lib.GetCachePath().IsEmpty() && lib.hooks.empty() && !lib.Storage());
        ASSERT_EQ(lib.SaveToFile(container, 0), 1);
        ASSERT_EQ(lib.SaveToFile(stream, 20050302), 1);
        WriteFile(empty, "");
        VtCompactFile keyless;
        ASSERT_EQ(keyless.Create(Work("keyless.cf"), 32, u"", VTC::VT_CF_MODE_READWRITE), VTC::VT_CF_OK);
    }
    CacheLibrary lib;
    ASSERT_EQ(lib.LoadFromFile(container), 1);
    VtCompactFile* storage = lib.Storage();
    // A container without the library entry is refused; the storage stays.
    EXPECT_EQ(lib.LoadFromFile(Work("keyless.cf")), 0);
    EXPECT_EQ(lib.Storage(), storage);
    EXPECT_EQ(lib.IsModified(), 0);
    EXPECT_EQ(lib.LoadFromFile(Work("missing.sym")), 0);
    EXPECT_EQ(lib.IsModified(), 1);
    EXPECT_EQ(lib.Storage(), nullptr);
    EXPECT_TRUE(lib.GetLibPath().IsEmpty());
    lib.SetModifiedFlag(0);
    EXPECT_EQ(lib.LoadFromFile(empty), 0);
    EXPECT_EQ(lib.IsModified(), 1);
    EXPECT_EQ(lib.GetLibPath(), empty);

    // Appending reads the stream form only; appended IDs that are taken are renumbered.
    lib.RemoveAt(0, 2);
    for (const ZedaUnicodeString& path : {Work("missing.sym"), empty, container}) {
        lib.SetModifiedFlag(0);
        EXPECT_EQ(lib.AppendFromFile(path, 0), 0);
        EXPECT_EQ(lib.IsModified(), 1);
    }
    ASSERT_EQ(lib.AppendFromFile(stream, 0), 1);
    EXPECT_EQ(lib.IdList(), (std::vector<int>{8, 7, 12, 3, 13, 14}));
}

TEST_F(LibraryFileTest, DestructorLeavesExternalStorageAndOutsideCachesAlone)
{
    VtCompactFile external;
    ASSERT_EQ(external.Create(Work("external.cf"), 32, u"", VTC::VT_CF_MODE_READWRITE), VTC::VT_CF_OK);
    for (const char* extension : {"lock", "sc", "sc00", "tmp"})
        WriteFile(Work(std::string("lib.") + extension), extension);
    {
        CacheLibrary lib;
        ASSERT_EQ(lib.SaveToFile(Work("owned.cf"), 0), 1);
        lib.SetExternalStorage(&external);  // releases the owned container
        // Loading a stream file lets go of the container, as a null hand-over does, and leaves the flag.
        WriteFile(Work("empty.sym"), "");
        EXPECT_EQ(lib.LoadFromFile(Work("empty.sym")), 0);
        EXPECT_EQ(lib.Storage(), nullptr);
        EXPECT_EQ(lib.StorageIsExternal(), 1);
        lib.SetExternalStorage(&external);
        lib.SetCachePath(Work("lib.sc"));
        CacheLibrary temporary;
        MakeCache(temporary, "x");
    }
    EXPECT_EQ(external.SetAt(u"still open", VTC::VtByteArray(), 0, 0, 0), VTC::VT_CF_OK);
    for (const char* extension : {"lock", "sc", "sc00", "tmp"})
        EXPECT_TRUE(VtFile::IsExist(Work(std::string("lib.") + extension))) << extension;
}

// Every prefix of a valid file, and random bytes, load without harm.
TEST_F(LibraryFileTest, DamagedFilesNeverCrash)
{
    {
        CacheLibrary lib;
        Populate(lib);
        MakeCache(lib, "resource");
        ASSERT_EQ(lib.SaveToFile(Work("lib.sym"), 20050302), 1);
        ASSERT_EQ(lib.SaveToFile(Work("lib.cf"), 0), 1);
    }
    const auto tryFile = [this](const Bytes& bytes) {
        WriteFile(Work("damaged").ToUtf8(), bytes);
        CacheLibrary lib(static_cast<int>(bytes.size() % 3));
        lib.LoadFromFile(Work("damaged"));
        lib.AppendFromFile(Work("damaged"), 0);
        lib.LoadFromFile(Work("damaged"));
    };
    const auto stream = ReadFileBytes(Work("lib.sym").ToUtf8());
    const auto container = ReadFileBytes(Work("lib.cf").ToUtf8());
    for (const auto& [file, step] : {std::pair{stream, 1}, {container, 509}}) {
        for (std::size_t length = 0; length <= file.size(); length += step)
            tryFile({file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length)});
    }
    std::mt19937 random(20120328);
    for (int round = 0; round < 40; ++round) {
        Bytes bytes(random() % 300);
        for (auto& byte : bytes)
            byte = static_cast<unsigned char>(random());
        // Half of them start like a library image with a cache section ahead.
        if (round % 2 == 0 && bytes.size() >= 40)
            std::copy_n(stream.begin(), 40, bytes.begin());
        tryFile(bytes);
    }
}

}  // namespace
}  // namespace lqtest
