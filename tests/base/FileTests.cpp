#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <set>
#include <thread>
#include <vector>

#include "LqTestSupport.h"
#include "VtFile.h"
#include "VtFileStream.h"

using lqtest::TempDir;
using VTC::VtFile;
using ZEDA::ZedaUnicodeString;

TEST(VtFile, ExtensionsChangeOnlyInTheLastComponent)
{
    const std::tuple<const char16_t*, const char16_t*, const char16_t*> changed[] = {
        {u"/tmp/Cache1A.tmp", u".sc", u"/tmp/Cache1A.sc"}, {u"/data/v1.2/lib", u"lock", u"/data/v1.2/lib.lock"},
        {u"/data/v1.2/lib.x.sym", u"sc00", u"/data/v1.2/lib.x.sc00"}, {u"/home/.hidden", u"sc", u"/home/.hidden.sc"},
        {u"a/b.c", u"", u"a/b"}};
    for (const auto& [path, extension, expected] : changed)
        EXPECT_EQ(VtFile::ChangeExt(path, extension), expected);
    EXPECT_EQ(VtFile::StripExt(u"/data/v1.2/lib.sym"), u"/data/v1.2/lib");
}

// In a fresh process whose TMPDIR is `system`: the temporary path is a
// folder of its own inside it, private and stable; at exit it is removed when
// empty and kept with whatever is left in it. Gives the path and whether the
// child found all that.
std::pair<std::string, bool> TemporaryPathOfAChild(const std::string& system, bool leaveAFile)
{
    int channel[2];
    if (pipe(channel) != 0)
        return {};
    const pid_t child = fork();
    if (child == 0) {
        setenv("TMPDIR", system.c_str(), 1);
        const std::string path = VtFile::GetTemporaryPath().ToUtf8();
        struct stat info {};
        const bool private_ = path == VtFile::GetTemporaryPath().ToUtf8() && stat(path.c_str(), &info) == 0 &&
                              S_ISDIR(info.st_mode) && (info.st_mode & 0777) == 0700;
        if (leaveAFile)
            std::ofstream(path + "kept") << "mine";
        (void)!write(channel[1], path.data(), path.size());
        std::exit(private_ ? 0 : 1);  // static objects are destroyed: the folder goes if empty
    }
    close(channel[1]);
    std::string path(4096, '\0');
    const ssize_t got = read(channel[0], path.data(), path.size());
    close(channel[0]);
    path.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    int status = 0;
    waitpid(child, &status, 0);
    return {path, WIFEXITED(status) && WEXITSTATUS(status) == 0};
}

TEST(VtFile, TheTemporaryPathIsAPrivateFolderInTmpdirRemovedWhenEmpty)
{
    TempDir system;
    for (const bool leaveAFile : {false, true}) {
        const auto [path, private_] = TemporaryPathOfAChild(system.Dir().ToUtf8(), leaveAFile);
        EXPECT_TRUE(private_) << path;
        EXPECT_EQ(path.rfind(system.Dir().ToUtf8() + "lq-", 0), 0u) << path;
        EXPECT_EQ(path.back(), '/');
        EXPECT_EQ(std::filesystem::exists(path), leaveAFile) << path;
        EXPECT_EQ(std::filesystem::exists(path + "kept"), leaveAFile) << path;
    }
    // Two processes never share one.
    EXPECT_NE(TemporaryPathOfAChild(system.Dir().ToUtf8(), false).first,
              TemporaryPathOfAChild(system.Dir().ToUtf8(), false).first);
}

TEST(VtFile, TemporaryNamesAreUniqueAndCreated)
{
    // Threads started together tend to pick the same first candidate and must retry.
    TempDir dir;
    std::vector<std::vector<ZedaUnicodeString>> perThread(4);
    {
        std::vector<std::jthread> threads;
        for (auto& names : perThread)
            threads.emplace_back([&dir, &names] {
                for (ZedaUnicodeString name; names.size() < 50 && VtFile::GetTemporaryFileName(dir.Dir(), u"Cache", 0, name);)
                    names.push_back(name);
            });
    }
    std::set<std::u16string> unique;
    for (const auto& names : perThread) {
        for (const ZedaUnicodeString& name : names) {
            EXPECT_TRUE(name.Find(dir.Dir() + u"Cache") == 0 && name.Find(u".tmp") == name.GetLength() - 4) << name.ToUtf8();
            EXPECT_EQ(VtFile::GetLength(name), 0);  // created empty
            unique.insert(name.Str());
        }
    }
    EXPECT_EQ(unique.size(), 200u);  // 4 threads of 50, none twice
    // A missing folder gives no name.
    ZedaUnicodeString name(u"before");
    EXPECT_EQ(VtFile::GetTemporaryFileName(dir.Unicode("no/such/dir/"), u"P", 0, name), 0u);
    EXPECT_EQ(name, u"before");
}

TEST(VtFile, CopyExistenceLengthAndDelete)
{
    TempDir dir;
    std::string big(3 << 20, '\0');  // more than one chunk of the copy
    for (std::size_t i = 0; i < big.size(); ++i)
        big[i] = static_cast<char>(i * 31 + i / 4096);
    std::ofstream(dir.Path("a"), std::ios::binary) << big;
    std::ofstream(dir.Path("b"), std::ios::binary) << "second";
    const auto contentOf = [&dir](const char* name) {
        std::ifstream in(dir.Path(name), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    };
    EXPECT_FALSE(VtFile::Copy(dir.Unicode("a"), dir.Unicode("b"), 0));
    EXPECT_EQ(contentOf("b"), "second");
    EXPECT_TRUE(VtFile::Copy(dir.Unicode("a"), dir.Unicode("b"), 1));
    EXPECT_TRUE(contentOf("b") == big);
    // Onto itself, or from nowhere: refused, nothing damaged.
    EXPECT_FALSE(VtFile::Copy(dir.Unicode("a"), dir.Unicode("a"), 1) || VtFile::Copy(dir.Unicode("c"), dir.Unicode("d"), 1));
    EXPECT_TRUE(contentOf("a") == big);
    EXPECT_FALSE(VtFile::IsExist(dir.Unicode("d")) || VtFile::IsExist(ZedaUnicodeString()));
    EXPECT_EQ(VtFile::GetLength(dir.Dir()), -1);
    EXPECT_TRUE(VtFile::Delete(dir.Unicode("b")));
    EXPECT_FALSE(VtFile::IsExist(dir.Unicode("b")) || VtFile::Delete(dir.Unicode("b")));
}

TEST(VtFileStream, DirectionsAndNamesOnDisk)
{
    TempDir dir;
    VTC::VtFileStream stream;
    EXPECT_FALSE(stream.Open(dir.Unicode("absent"), VTC::VT_STREAM_READ) || stream.Open(dir.Dir(), VTC::VT_STREAM_READ));
    const ZedaUnicodeString path = dir.Unicode("\u00FCber \u6587.bin");  // names are UTF-8 on disk
    int value = 0;
    EXPECT_TRUE(stream.Open(path, VTC::VT_STREAM_WRITE) && stream.WriteInt(7) && !stream.ReadInt(value) && stream.Close());
    EXPECT_EQ(std::filesystem::file_size(dir.Path("\xC3\xBC" "ber \xE6\x96\x87.bin")), 4u);
    EXPECT_TRUE(stream.Open(path, VTC::VT_STREAM_READ) && !stream.WriteInt(1) && stream.SetPosition(0, 0));
    EXPECT_TRUE(stream.ReadInt(value) && value == 7);
    EXPECT_TRUE(stream.Open(path, VTC::VT_STREAM_READWRITE) && stream.GetLength() == 4);  // keeps what is there
    EXPECT_TRUE(stream.Open(path, VTC::VT_STREAM_WRITE) && stream.GetLength() == 0);      // truncates
    // An empty write, one the size of the buffer, then a small one: each lands where it was made.
    const unsigned char bytes[] = {1, 2, 3, 4, 5};
    ASSERT_TRUE(stream.Open(path, VTC::VT_STREAM_WRITE, 4));
    stream.Save(bytes, 0);
    stream.Save(bytes, 4);
    stream.Save(bytes + 4, 1);
    EXPECT_TRUE(stream.Close() && stream.Open(path, VTC::VT_STREAM_READ) && stream.ReadInt(value));
    EXPECT_EQ(value, 0x04030201);
}
