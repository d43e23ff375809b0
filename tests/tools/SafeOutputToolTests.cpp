// Every file lqsymbol writes survives refusals, a full disk, a read-only
// directory and a kill in the middle of a save: afterwards the old file is
// byte for byte what it was, it still loads, and no temporary file is left.

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include <nlohmann/json.hpp>

#include "ToolTestSupport.h"

extern char** environ;

namespace {

using namespace lqtool;

class SafeOutputTest : public ToolWorkspace {
protected:
    // Enough markers that a save takes a while and that the demo's sheet
    // needs more than one page.
    static void SetUpTestSuite()
    {
        MakeRoot("lq-safe-output-");
        demo = Lq({"demo", "-d", Work("demo"), "--count", "1500", "--repeat", "1", "--no-gallery"});
    }
    static void TearDownTestSuite() { RemoveRoot(); }

    void SetUp() override { ASSERT_EQ(demo.code, 0) << demo.err; }

    static std::string Demo(const std::string& name) { return Work("demo/" + name); }

    // A directory holding a copy of a demo file; returns the copy's path.
    static std::string CopyInto(const std::string& directory, const std::string& demoFile, const std::string& name)
    {
        fs::create_directories(Work(directory));
        const std::string path = Work(directory + "/" + name);
        fs::copy_file(Demo(demoFile), path, fs::copy_options::overwrite_existing);
        return path;
    }

    // What a library file holds, as the export sees it.
    static std::string Contents(const std::string& path)
    {
        const Outcome exported = Lq({"export", path, "--json"});
        EXPECT_EQ(exported.code, 0) << exported.err;
        auto json = nlohmann::json::parse(exported.out, nullptr, false);
        return json.is_discarded() ? std::string() : json["symbolList"].dump() + json["groups"].dump();
    }

    // The file and its directory are as they were, and it still loads.
    static void ExpectUntouched(const std::string& path, const std::string& bytes, const std::string& contents,
                                const std::vector<std::string>& listing)
    {
        EXPECT_EQ(ReadFileText(path), bytes) << path;
        EXPECT_EQ(Listing(fs::path(path).parent_path()), listing) << path;
        EXPECT_EQ(Contents(path), contents) << path;
    }

    // A file-size limit with room for the demo markers' pictures in their
    // cache file, not for a library file that holds them.
    static std::string FullDisk()
    {
        const auto info = nlohmann::json::parse(Lq({"info", Demo("markers.lqs"), "--json"}).out);
        const long long cacheBytes = info["cacheSection"]["scBytes"].get<long long>();
        const long long limit = cacheBytes + (info["bytes"].get<long long>() - cacheBytes) / 2;
        return "prlimit --fsize=" + std::to_string(limit) + " ";
    }

    static inline Outcome demo;
};

TEST_F(SafeOutputTest, LargeDemoSpreadsItsSheetOverPages)
{
    EXPECT_FALSE(fs::exists(Demo("markers.png")));
    int pages = 0;
    for (; fs::exists(Demo("markers-" + std::to_string(pages + 1) + ".png")); ++pages) {
        const std::string png = ReadFileText(Demo("markers-" + std::to_string(pages + 1) + ".png"));
        ASSERT_EQ(png.substr(1, 3), "PNG");
        const auto byte = [&](int i) { return static_cast<unsigned int>(static_cast<unsigned char>(png[i])); };
        const unsigned int height = byte(20) << 24 | byte(21) << 16 | byte(22) << 8 | byte(23);
        EXPECT_LE(height, 4096u);
    }
    EXPECT_GE(pages, 2);
    EXPECT_NE(demo.out.find("markers-" + std::to_string(pages) + ".png"), std::string::npos) << demo.out;
}

TEST_F(SafeOutputTest, RefusedOutputsStayAsTheyWere)
{
    const std::string library = CopyInto("refuse", "lines.lqc", "lib.lqc");
    const std::string stream = CopyInto("refuse", "lines.lqs", "lib.lqs");
    fs::create_hard_link(library, Work("refuse/hard.lqc"));
    fs::create_symlink("lib.lqc", Work("refuse/soft.lqc"));
    const std::string bytes = ReadFileText(library);
    const std::string streamBytes = ReadFileText(stream);
    const std::string contents = Contents(library);
    const auto listing = Listing(Work("refuse"));
    const struct {
        std::vector<std::string> command;
        int code;
        std::string message;
    } cases[] = {
        {{"export", library, "--json", "-o", library}, 2, "is also an input"},
        {{"export", library, "--json", "-o", library, "--force"}, 2, "is also an input"},
        {{"export", library, "--json", "-o", Work("refuse/soft.lqc"), "--force"}, 2, "is also an input"},
        {{"convert", library, library, "--form", "container", "--force"}, 2, "is also an input"},
        {{"convert", library, Work("refuse/hard.lqc"), "--form", "stream", "--force"}, 2, "is also an input"},
        {{"convert", stream, library, "--form", "container"}, 2, "exists; add --force"},
        {{"export", stream, "--json", "-o", library}, 2, "exists; add --force"},
        {{"fill", "-o", library}, 2, "name the output .png or .pdf"},
        {{"fill", "-o", Work("refuse/x.jpg")}, 2, "name the output .png or .pdf"},
    };
    for (const auto& c : cases) {
        const Outcome run = Lq(c.command);
        EXPECT_EQ(run.code, c.code) << c.command[0] << " " << c.command.back() << ": " << run.err;
        EXPECT_NE(run.err.find(c.message), std::string::npos) << run.err;
        EXPECT_EQ(ReadFileText(stream), streamBytes);
    }
    ExpectUntouched(library, bytes, contents, listing);

    fs::permissions(library, fs::perms::owner_read | fs::perms::group_read | fs::perms::others_read);
    for (const char* form : {"container", "stream"}) {
        const Outcome run = Lq({"convert", stream, library, "--form", form, "--force"});
        EXPECT_EQ(run.code, 1) << run.err;
        EXPECT_NE(run.err.find("is write-protected"), std::string::npos) << run.err;
    }
    ExpectUntouched(library, bytes, contents, listing);
    EXPECT_EQ((fs::status(library).permissions() & fs::perms::owner_write), fs::perms::none);

    // With --force a replacement keeps the old file's permission bits.
    fs::permissions(library, fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    ASSERT_EQ(Lq({"convert", stream, library, "--form", "container", "--force"}).code, 0);
    EXPECT_EQ(fs::status(library).permissions(), fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read);
    EXPECT_EQ(Contents(library), contents);
    EXPECT_EQ(Listing(Work("refuse")), listing);
}

TEST_F(SafeOutputTest, FullDiskLeavesTheOldFile)
{
    const std::string old = CopyInto("full", "lines.lqc", "old.lqc");
    const std::string bytes = ReadFileText(old);
    const std::string contents = Contents(old);
    const auto listing = Listing(Work("full"));
    for (const char* form : {"container", "stream"}) {
        const Outcome run = Lq({"convert", Demo("markers.lqs"), old, "--form", form, "--force"}, FullDisk());
        EXPECT_EQ(run.code, 1) << form << ": " << run.err;
        EXPECT_EQ(run.err.rfind("lqsymbol: " + old + ": ", 0), 0u) << run.err;
        ExpectUntouched(old, bytes, contents, listing);
    }
}

// The gallery's files replace the old ones together or not at all: with
// room for every file but the largest, a run fails and leaves each old file
// as it was, so no file may be written in place, however early it comes.
TEST_F(SafeOutputTest, FullDiskLeavesTheWholeOldGallery)
{
    ASSERT_EQ(Lq({"gallery", "-o", Work("gallery-sizes")}).code, 0);
    std::vector<long long> sizes;
    for (const std::string& name : Listing(Work("gallery-sizes")))
        sizes.push_back(static_cast<long long>(fs::file_size(Work("gallery-sizes/" + name))));
    std::sort(sizes.begin(), sizes.end());
    ASSERT_GE(sizes.size(), 2u);
    ASSERT_LT(sizes[sizes.size() - 2], sizes.back()) << "no file is the largest";
    const long long limit = (sizes[sizes.size() - 2] + sizes.back()) / 2;

    fs::create_directories(Work("gallery"));
    for (const std::string& name : Listing(Work("gallery-sizes")))
        WriteFile(Work("gallery/" + name), "the old " + name);
    const auto listing = Listing(Work("gallery"));
    const Outcome run =
        Lq({"gallery", "-o", Work("gallery"), "--force"}, "prlimit --fsize=" + std::to_string(limit) + " ");
    EXPECT_EQ(run.code, 1) << run.err;
    EXPECT_EQ(Listing(Work("gallery")), listing);
    for (const std::string& name : listing)
        EXPECT_TRUE(ReadFileText(Work("gallery/" + name)) == "the old " + name) << name << " was written in place";
}

// The demo saves its libraries again and again to time them; each save is a
// safe one, so a full disk leaves the library of an earlier run.
TEST_F(SafeOutputTest, FullDiskLeavesTheDemosOldLibrary)
{
    const std::string old = CopyInto("demo-again", "lines.lqc", "markers.lqc");
    const std::string bytes = ReadFileText(old);
    const std::string contents = Contents(old);
    const auto listing = Listing(Work("demo-again"));
    const Outcome run = Lq({"demo", "-d", Work("demo-again"), "--count", "1500", "--repeat", "2", "--no-gallery",
                            "--force"},
                           FullDisk());
    EXPECT_EQ(run.code, 1) << run.err;
    EXPECT_EQ(run.err.rfind("lqsymbol: " + old + ": cannot be saved", 0), 0u) << run.err;
    ExpectUntouched(old, bytes, contents, listing);
}

TEST_F(SafeOutputTest, ReadOnlyDirectoryLeavesTheOldFile)
{
    const std::string old = CopyInto("readonly", "lines.lqc", "old.lqc");
    const std::string bytes = ReadFileText(old);
    const std::string contents = Contents(old);
    const auto listing = Listing(Work("readonly"));
    std::string prefix;
    if (geteuid() == 0) {
        // Root writes into any directory: run as nobody, with a TMPDIR nobody may use.
        if (std::system("command -v setpriv >/dev/null") != 0)
            GTEST_SKIP() << "running as root without setpriv";
        fs::create_directory(Work("tmp-nobody"));
        fs::permissions(Work("tmp-nobody"), fs::perms::all);
        fs::permissions(root, fs::perms::owner_all | fs::perms::group_exec | fs::perms::others_exec);
        prefix = "TMPDIR=" + Quote(Work("tmp-nobody")) + " setpriv --reuid=65534 --regid=65534 --clear-groups ";
    }
    fs::permissions(Work("readonly"), fs::perms::owner_read | fs::perms::owner_exec | fs::perms::group_read |
                                          fs::perms::group_exec | fs::perms::others_read | fs::perms::others_exec);
    fs::permissions(old, fs::perms::all);  // writable itself: only the directory stands in the way
    for (const char* form : {"container", "stream"}) {
        const Outcome run = Lq({"convert", Demo("lines.lqs"), old, "--form", form, "--force"}, prefix);
        EXPECT_EQ(run.code, 1) << form << ": " << run.err;
        EXPECT_NE(run.err.find("cannot create a temporary file"), std::string::npos) << run.err;
        EXPECT_EQ(ReadFileText(old), bytes);
        EXPECT_EQ(Listing(Work("readonly")), listing);
    }
    fs::permissions(Work("readonly"), fs::perms::owner_all, fs::perm_options::add);
    ExpectUntouched(old, bytes, contents, listing);
}

TEST_F(SafeOutputTest, KillInTheMiddleOfALargeSaveLeavesTheOldFile)
{
    const std::string old = CopyInto("kill", "lines.lqc", "old.lqc");
    const std::string bytes = ReadFileText(old);
    const std::string contents = Contents(old);
    const auto listing = Listing(Work("kill"));

    const std::string program = LQSYMBOL_PATH;
    const std::string source = Demo("markers.lqs");
    std::vector<const char*> argv = {program.c_str(), "convert", source.c_str(), old.c_str(), "--form",
                                     "container", "--force", nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    ASSERT_EQ(posix_spawn(&child, program.c_str(), &actions, nullptr, const_cast<char**>(argv.data()), environ), 0);
    posix_spawn_file_actions_destroy(&actions);

    // Kill it once its temporary file has grown past a megabyte.
    bool caught = false;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!caught && std::chrono::steady_clock::now() < deadline) {
        for (const std::string& name : Listing(Work("kill"))) {
            std::error_code ignored;
            if (name.starts_with(".old.lqc.lqtmp-") && fs::file_size(Work("kill/" + name), ignored) > (1 << 20) &&
                !ignored)
                caught = true;
        }
        if (!caught)
            std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(caught) << "the save was never seen in progress";
    ASSERT_TRUE(WIFSIGNALED(status));

    EXPECT_EQ(ReadFileText(old), bytes);
    EXPECT_EQ(Contents(old), contents);
    // The killed process's temporary file goes with the next save of the same file.
    EXPECT_GT(Listing(Work("kill")).size(), listing.size());
    ASSERT_EQ(Lq({"convert", Demo("lines.lqs"), old, "--form", "container", "--force"}).code, 0);
    EXPECT_EQ(Listing(Work("kill")), listing);
    EXPECT_EQ(Contents(old), contents);
}

}  // namespace
