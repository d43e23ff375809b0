// The C++ side of "never lose a file": VtFileReplacer and
// SaveSymbolLibSafely on a real marker library with pictures.

#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "LibraryFile.h"
#include "LqCompactFile.h"
#include "LqStream.h"
#include "MarkerSymbolLib.h"
#include "SymbolRenderer.h"
#include "ToolTestSupport.h"
#include "VtSafeSave.h"
#include "VtSymbolGroup.h"

namespace {

using namespace lqtool;
using LqExample::MarkerShape;
using LqExample::MarkerSymbol;
using LqExample::MarkerSymbolLib;
using ZEDA::ZedaUnicodeString;

constexpr unsigned int streamVersion = 20050302;

class SafeSaveTest : public PerTestWorkspace {
protected:
    static void SetUpTestSuite() { MakeRoot("lq-safe-save-"); }
    static void TearDownTestSuite() { RemoveRoot(); }

    // `count` markers with pictures, every third in a group "Signs/Stars".
    static std::unique_ptr<MarkerSymbolLib> Markers(int count, int size = 24)
    {
        auto lib = std::make_unique<MarkerSymbolLib>();
        VTC::VtSymbolGroup* signs = lib->GetRootGroup()->CreateChildGroup(u"Signs");
        VTC::VtSymbolGroup* stars = signs->CreateChildGroup(u"Stars");
        for (int i = 0; i < count; ++i) {
            auto* marker = new MarkerSymbol(-1, ZedaUnicodeString::FromUtf8("m" + std::to_string(i)),
                                            static_cast<MarkerShape>(i % LqExample::markerShapeCount), size,
                                            ZEDARGBA(200, i % 256, 40, 128 + i % 128), i * 7.5);
            lib->AddSymbol(marker, i % 3 == 0 ? stars : nullptr);
            LqExample::RasterImage picture;
            EXPECT_TRUE(LqExample::RenderMarker(*marker, picture));
            EXPECT_TRUE(lib->SetSymbolImage(marker->ID, picture));
        }
        return lib;
    }

    static std::vector<std::string> Differences(const LqExample::ResourceSymbolLib& lib, const std::string& path)
    {
        std::string error;
        const auto loaded = LqTool::OpenLibrary(path, error);
        if (!loaded)
            return {path + ": " + error};
        return LqTool::CompareLibraries(lib, *loaded);
    }
};

TEST_F(SafeSaveTest, SavedLibraryRefersToTheFinalFileInBothForms)
{
    for (const unsigned int version : {VTC::VtSymbolLib::containerVersion, streamVersion}) {
        const std::string path = In("lib-" + std::to_string(version));
        const auto lib = Markers(12);
        std::string error;
        ASSERT_TRUE(VTC::SaveSymbolLibSafely(*lib, ZedaUnicodeString::FromUtf8(path), version, &error)) << error;
        EXPECT_EQ(lib->GetLibPath().ToUtf8(), path);
        if (version == VTC::VtSymbolLib::containerVersion) {
            ASSERT_NE(lib->GetStorage(), nullptr);
            EXPECT_TRUE(fs::equivalent(lib->GetStorage()->GetFullPath().ToUtf8(), path));
        }
        EXPECT_EQ(Differences(*lib, path), std::vector<std::string>());

        // Edited and saved over itself again, through the library it became.
        auto* extra = new MarkerSymbol(-1, u"extra", MarkerShape::Star, 30, ZEDARGB(1, 2, 3));
        lib->AddSymbol(extra, nullptr);
        LqExample::RasterImage picture;
        ASSERT_TRUE(LqExample::RenderMarker(*extra, picture));
        ASSERT_TRUE(lib->SetSymbolImage(extra->ID, picture));
        ASSERT_TRUE(VTC::SaveSymbolLibSafely(*lib, lib->GetLibPath(), version, &error)) << error;
        EXPECT_EQ(Differences(*lib, path), std::vector<std::string>());
    }
    EXPECT_EQ(Listing(directory).size(), 2u);
}

TEST_F(SafeSaveTest, RejectedSaveLeavesTheOldFileAndAUsableLibrary)
{
    for (const unsigned int version : {VTC::VtSymbolLib::containerVersion, streamVersion}) {
        const std::string path = In("old-" + std::to_string(version));
        const auto old = Markers(3);
        ASSERT_TRUE(VTC::SaveSymbolLibSafely(*old, ZedaUnicodeString::FromUtf8(path), version));
        const std::string bytes = ReadFileText(path);
        const auto listing = Listing(directory);

        const auto lib = Markers(20);
        std::string seen;
        std::string error;
        const auto reject = [&](const ZedaUnicodeString& written) {
            seen = written.ToUtf8();
            return false;
        };
        EXPECT_FALSE(VTC::SaveSymbolLibSafely(*lib, ZedaUnicodeString::FromUtf8(path), version, reject, &error));
        EXPECT_NE(error, "");
        EXPECT_EQ(fs::path(seen).parent_path(), fs::path(path).parent_path()) << "checked beside the target";
        EXPECT_NE(seen, path);
        EXPECT_TRUE(ReadFileText(path) == bytes);
        EXPECT_EQ(Listing(directory), listing);
        EXPECT_EQ(Differences(*old, path), std::vector<std::string>());

        // The library lost nothing and saves elsewhere.
        const std::string other = In("other-" + std::to_string(version));
        ASSERT_TRUE(VTC::SaveSymbolLibSafely(*lib, ZedaUnicodeString::FromUtf8(other), version, &error)) << error;
        EXPECT_EQ(Differences(*lib, other), std::vector<std::string>());
        EXPECT_EQ(lib->GetSymbolCount(), 20);
    }
}

TEST_F(SafeSaveTest, FileSizeLimitLeavesTheOldFile)
{
    for (const unsigned int version : {VTC::VtSymbolLib::containerVersion, streamVersion}) {
        const std::string path = In("full-" + std::to_string(version));
        const auto old = Markers(2);
        ASSERT_TRUE(VTC::SaveSymbolLibSafely(*old, ZedaUnicodeString::FromUtf8(path), version));
        const std::string bytes = ReadFileText(path);
        const auto listing = Listing(directory);
        const auto big = Markers(60, 200);

        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            signal(SIGXFSZ, SIG_IGN);
            const rlimit limit{static_cast<rlim_t>(bytes.size() * 2), static_cast<rlim_t>(bytes.size() * 2)};
            setrlimit(RLIMIT_FSIZE, &limit);
            const bool saved = VTC::SaveSymbolLibSafely(*big, ZedaUnicodeString::FromUtf8(path), version);
            _exit(saved ? 1 : 0);
        }
        int status = 0;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "the save should have failed";
        EXPECT_TRUE(ReadFileText(path) == bytes);
        EXPECT_EQ(Listing(directory), listing);
        EXPECT_EQ(Differences(*old, path), std::vector<std::string>());
    }
}

TEST_F(SafeSaveTest, ReplacerFollowsLinksAndSweepsWhatDeadProcessesLeft)
{
    const std::string real = In("real.txt");
    WriteFile(real, "old");
    fs::create_symlink("real.txt", In("link.txt"));
    std::string error;
    ASSERT_TRUE(VTC::VtFileReplacer::Replace(
        In("link.txt"), [](const std::string& temporary) { WriteFile(temporary, "new"); return true; }, {}, error))
        << error;
    EXPECT_TRUE(fs::is_symlink(In("link.txt")));
    EXPECT_TRUE(ReadFileText(real) == "new");

    // A child that has exited stands for a killed writer; this process is alive.
    const pid_t dead = fork();
    if (dead == 0)
        _exit(0);
    waitpid(dead, nullptr, 0);
    const std::string stale = In(".real.txt.lqtmp-" + std::to_string(dead) + "-abcdef");
    const std::string live = In(".real.txt.lqtmp-" + std::to_string(getpid()) + "-abcdef");
    WriteFile(stale, "half");
    WriteFile(stale + "-journal", "half");
    WriteFile(live, "busy");
    {
        VTC::VtFileReplacer replacer(real);
        ASSERT_TRUE(replacer.IsReady());
        EXPECT_FALSE(fs::exists(stale));
        EXPECT_FALSE(fs::exists(stale + "-journal"));
        EXPECT_TRUE(fs::exists(live));
        EXPECT_TRUE(fs::exists(replacer.GetTemporaryPath()));
    }
    EXPECT_EQ(Listing(directory), (std::vector<std::string>{".real.txt.lqtmp-" + std::to_string(getpid()) + "-abcdef",
                                                            "link.txt", "real.txt"}));
    EXPECT_TRUE(ReadFileText(real) == "new");
}

}  // namespace

namespace {

TEST_F(SafeSaveTest, BatchReplacesNothingBeforeItsCommitAndLeavesNothingBehind)
{
    WriteFile(In("a.txt"), "old a");
    const auto write = [](const std::string& text) {
        return [text](const std::string& temporary) {
            WriteFile(temporary, text);
            return true;
        };
    };
    std::string error;
    {
        VTC::VtFileBatch abandoned;
        ASSERT_TRUE(abandoned.Add(In("a.txt"), write("new a"), {}, error)) << error;
        ASSERT_TRUE(abandoned.Add(In("b.txt"), write("new b"), {}, error)) << error;
        EXPECT_FALSE(abandoned.Add(In("c.txt"), write("bad"), [](const std::string&) { return false; }, error));
        EXPECT_EQ(abandoned.GetCount(), 2u);
        EXPECT_TRUE(ReadFileText(In("a.txt")) == "old a");
    }
    EXPECT_EQ(Listing(directory), std::vector<std::string>{"a.txt"});

    // What dead writers left beside any file of the folder goes with the first file of a batch there.
    const pid_t dead = fork();
    if (dead == 0)
        _exit(0);
    waitpid(dead, nullptr, 0);
    const std::string live = ".other.txt.lqtmp-" + std::to_string(getpid()) + "-abcdef";
    for (const std::string& name : {".other.txt.lqtmp-" + std::to_string(dead) + "-abcdef",
                                    ".b.txt.lqtmp-" + std::to_string(dead) + "-abcdef-journal", live})
        WriteFile(In(name), "half");

    VTC::VtFileBatch batch;
    ASSERT_TRUE(batch.Add(In("a.txt"), write("new a"), {}, error)) << error;
    EXPECT_EQ(Listing(directory).size(), 3u) << "a.txt, its temporary and the live writer's file";
    EXPECT_TRUE(fs::exists(In(live)));
    ASSERT_TRUE(batch.Add(In("b.txt"), write("new b"), {}, error)) << error;
    EXPECT_FALSE(fs::exists(In("b.txt")));
    ASSERT_TRUE(batch.Commit(error)) << error;
    EXPECT_TRUE(ReadFileText(In("a.txt")) == "new a");
    EXPECT_TRUE(ReadFileText(In("b.txt")) == "new b");
    EXPECT_EQ(Listing(directory), (std::vector<std::string>{live, "a.txt", "b.txt"}));
}

}  // namespace
