#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "TempDir.h"
#include "VtFile.h"

using lqtest::TempDir;
using VTC::VtFile;
using ZEDA::ZedaUnicodeString;

namespace {

void WriteFile(const std::filesystem::path& path, const std::string& contents)
{
    std::ofstream(path, std::ios::binary) << contents;
}

std::string ReadFile(const std::filesystem::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// Sets an environment variable for the life of the object.
class ScopedEnv {
public:
    ScopedEnv(const char* name, const char* value) : name_(name)
    {
        if (const char* old = std::getenv(name))
            old_ = old;
        if (value)
            setenv(name, value, 1);
        else
            unsetenv(name);
    }
    ~ScopedEnv()
    {
        if (old_)
            setenv(name_, old_->c_str(), 1);
        else
            unsetenv(name_);
    }

private:
    const char* name_;
    std::optional<std::string> old_;
};

}  // namespace

TEST(VtFile, ChangeExtTouchesOnlyTheLastComponent)
{
    EXPECT_EQ(VtFile::ChangeExt(u"/tmp/Cache1A.tmp", u".sc"), u"/tmp/Cache1A.sc");
    EXPECT_EQ(VtFile::ChangeExt(u"/tmp/Cache1A.tmp", u"sc00"), u"/tmp/Cache1A.sc00");
    EXPECT_EQ(VtFile::ChangeExt(u"/data/v1.2/lib", u"lock"), u"/data/v1.2/lib.lock");
    EXPECT_EQ(VtFile::ChangeExt(u"/data/v1.2/lib.x.sym", u"sc"), u"/data/v1.2/lib.x.sc");
    EXPECT_EQ(VtFile::ChangeExt(u"lib", u".sc"), u"lib.sc");
    EXPECT_EQ(VtFile::ChangeExt(u"/home/.hidden", u"sc"), u"/home/.hidden.sc");
    EXPECT_EQ(VtFile::ChangeExt(u"a/b.c", u""), u"a/b");
    EXPECT_EQ(VtFile::StripExt(u"/data/v1.2/lib.sym"), u"/data/v1.2/lib");
    EXPECT_EQ(VtFile::StripExt(u"/data/v1.2/lib"), u"/data/v1.2/lib");
    EXPECT_EQ(VtFile::StripExt(u"name."), u"name");
}

TEST(VtFile, TemporaryPathFollowsTmpdirAndEndsInSlash)
{
    {
        ScopedEnv env("TMPDIR", "/var/tmp");
        EXPECT_EQ(VtFile::GetTemporaryPath(), u"/var/tmp/");
    }
    {
        ScopedEnv env("TMPDIR", "/var/tmp/");
        EXPECT_EQ(VtFile::GetTemporaryPath(), u"/var/tmp/");
    }
    {
        ScopedEnv env("TMPDIR", nullptr);
        EXPECT_EQ(VtFile::GetTemporaryPath(), u"/tmp/");
    }
    {
        ScopedEnv env("TMPDIR", "");
        EXPECT_EQ(VtFile::GetTemporaryPath(), u"/tmp/");
    }
}

TEST(VtFile, TemporaryFileNamesAreUniqueAndCreated)
{
    TempDir dir;
    // Threads started together tend to pick the same first candidate and must retry.
    std::vector<std::vector<ZedaUnicodeString>> perThread(4);
    std::vector<std::thread> threads;
    for (auto& names : perThread)
        threads.emplace_back([&dir, &names] {
            for (int i = 0; i < 50; ++i) {
                ZedaUnicodeString name;
                if (VtFile::GetTemporaryFileName(dir.Dir(), u"Cache", 0, name) != 0)
                    names.push_back(name);
            }
        });
    for (auto& thread : threads)
        thread.join();
    std::set<std::u16string> unique;
    for (const auto& names : perThread) {
        EXPECT_EQ(names.size(), 50u);
        for (const ZedaUnicodeString& name : names) {
            EXPECT_EQ(name.Find(dir.Dir()), 0);
            EXPECT_EQ(name.Find(u"Cache"), dir.Dir().GetLength());
            EXPECT_EQ(name.Find(u".tmp"), name.GetLength() - 4);
            EXPECT_EQ(VtFile::GetLength(name), 0);
            unique.insert(name.Str());
        }
    }
    EXPECT_EQ(unique.size(), 200u);

    // A given unique value names the file without creating it.
    ZedaUnicodeString fixed;
    EXPECT_EQ(VtFile::GetTemporaryFileName(dir.Dir(), u"P", 0xBEEF, fixed), 0xBEEFu);
    EXPECT_EQ(fixed, dir.Dir() + u"PBEEF.tmp");
    EXPECT_FALSE(VtFile::IsExist(fixed));

    ZedaUnicodeString untouched(u"before");
    EXPECT_EQ(VtFile::GetTemporaryFileName(dir.Unicode("no/such/dir/"), u"P", 0, untouched), 0u);
    EXPECT_EQ(untouched, u"before");
}

TEST(VtFile, CopyRespectsOverwrite)
{
    TempDir dir;
    WriteFile(dir.Path("a"), "first");
    WriteFile(dir.Path("b"), "second");
    EXPECT_FALSE(VtFile::Copy(dir.Unicode("a"), dir.Unicode("b"), 0));
    EXPECT_EQ(ReadFile(dir.Path("b")), "second");
    EXPECT_TRUE(VtFile::Copy(dir.Unicode("a"), dir.Unicode("b"), 1));
    EXPECT_EQ(ReadFile(dir.Path("b")), "first");
    EXPECT_TRUE(VtFile::Copy(dir.Unicode("a"), dir.Unicode("c"), 0));
    EXPECT_EQ(ReadFile(dir.Path("c")), "first");

    // Onto itself, or from nowhere: refused, nothing damaged.
    EXPECT_FALSE(VtFile::Copy(dir.Unicode("a"), dir.Unicode("a"), 1));
    EXPECT_EQ(ReadFile(dir.Path("a")), "first");
    EXPECT_FALSE(VtFile::Copy(dir.Unicode("missing"), dir.Unicode("d"), 1));
    EXPECT_FALSE(VtFile::IsExist(dir.Unicode("d")));
}

TEST(VtFile, CopiesFilesLargerThanTheChunk)
{
    TempDir dir;
    std::string big(2 * 1024 * 1024 + 12345, '\0');
    for (std::size_t i = 0; i < big.size(); ++i)
        big[i] = static_cast<char>(i * 31 + i / 4096);
    WriteFile(dir.Path("big"), big);
    ASSERT_TRUE(VtFile::Copy(dir.Unicode("big"), dir.Unicode("copy"), 0));
    EXPECT_EQ(VtFile::GetLength(dir.Unicode("copy")), static_cast<long long>(big.size()));
    EXPECT_TRUE(ReadFile(dir.Path("copy")) == big);
}

TEST(VtFile, ExistenceLengthAndDelete)
{
    TempDir dir;
    WriteFile(dir.Path("f.sc"), "12345");
    EXPECT_TRUE(VtFile::IsExist(dir.Unicode("f.sc")));
    EXPECT_EQ(VtFile::GetLength(dir.Unicode("f.sc")), 5);
    EXPECT_EQ(VtFile::GetLength(dir.Unicode("none")), -1);
    EXPECT_EQ(VtFile::GetLength(dir.Dir()), -1);
    EXPECT_FALSE(VtFile::IsExist(ZedaUnicodeString()));
    EXPECT_TRUE(VtFile::Delete(dir.Unicode("f.sc")));
    EXPECT_FALSE(VtFile::IsExist(dir.Unicode("f.sc")));
    EXPECT_FALSE(VtFile::Delete(dir.Unicode("f.sc")));
}
