// Runs the lqsymbol program on good, missing, empty, truncated and damaged
// files and checks its exit codes and messages.

#include <sqlite3.h>

#include <random>

#include <nlohmann/json.hpp>

#include "MarkerSymbolLib.h"
#include "ToolTestSupport.h"
#include "VtSymbolGroup.h"

namespace {

using namespace lqtool;

// The demo's files, made once for the whole program.
class ToolTest : public ToolWorkspace {
protected:
    static void SetUpTestSuite()
    {
        MakeRoot("lq-tool-tests-");
        demo = Lq({"demo", "-d", (root / "demo").string(), "--count", "20", "--repeat", "1", "--no-gallery"});
    }
    static void TearDownTestSuite() { RemoveRoot(); }

    static std::string Demo(const std::string& name) { return (root / "demo" / name).string(); }

    static inline Outcome demo;
};

TEST_F(ToolTest, DemoPassesAndItsFilesReadBack)
{
    ASSERT_EQ(demo.code, 0) << demo.err;
    EXPECT_NE(demo.out.find("demo passed"), std::string::npos);
    EXPECT_EQ(demo.out.find("DIFFER"), std::string::npos);
    std::size_t agreements = 0;
    for (std::size_t at = demo.out.find(" agree\n"); at != std::string::npos; at = demo.out.find(" agree\n", at + 1))
        ++agreements;
    EXPECT_EQ(agreements, 5u) << demo.out;
    EXPECT_EQ(demo.err, "");
    const std::string markers = ReadFileText(Demo("markers.lqc"));
    const Outcome rerun = Lq({"demo", "-d", (root / "demo").string(), "--count", "3", "--no-gallery"});
    EXPECT_EQ(rerun.code, 2) << "a second run would replace the first run's files";
    EXPECT_TRUE(ReadFileText(Demo("markers.lqc")) == markers);

    const Outcome info = Lq({"info", Demo("markers.lqc"), "--json"});
    ASSERT_EQ(info.code, 0) << info.err;
    const auto json = nlohmann::json::parse(info.out);
    EXPECT_EQ(json["form"], "container");
    EXPECT_EQ(json["formatVersion"], 20120328u);
    EXPECT_EQ(json["symbols"], 20);
    EXPECT_EQ(json["pictures"], 20);
    EXPECT_EQ(json["containerEntries"].size(), 3u);

    const Outcome stream = Lq({"info", Demo("markers.lqs")});
    ASSERT_EQ(stream.code, 0) << stream.err;
    EXPECT_NE(stream.out.find("cache section: stamp \"Mar\""), std::string::npos) << stream.out;
    const Outcome lines = Lq({"info", Demo("lines.lqs"), "--json"});
    ASSERT_EQ(lines.code, 0) << lines.err;
    EXPECT_EQ(nlohmann::json::parse(lines.out)["cacheSection"]["stamp"], "Li");
}

TEST_F(ToolTest, ConvertedFilesExportTheSameLibrary)
{
    ASSERT_EQ(demo.code, 0);
    ASSERT_EQ(Lq({"convert", Demo("markers.lqc"), Work("c.lqs"), "--form", "stream", "--format-version", "20200101"}).code, 0);
    ASSERT_EQ(Lq({"convert", Work("c.lqs"), Work("c.lqc"), "--form", "container"}).code, 0);
    const Outcome fromContainer = Lq({"export", Demo("markers.lqc"), "--json", "--images", Work("pictures")});
    const Outcome fromConverted = Lq({"export", Work("c.lqc"), "--json", "--images", Work("pictures-c")});
    ASSERT_EQ(fromContainer.code, 0) << fromContainer.err;
    ASSERT_EQ(fromConverted.code, 0) << fromConverted.err;
    const auto a = nlohmann::json::parse(fromContainer.out);
    const auto b = nlohmann::json::parse(fromConverted.out);
    EXPECT_EQ(a["symbolList"], b["symbolList"]);
    EXPECT_EQ(a["groups"], b["groups"]);
    EXPECT_EQ(a["symbolList"].size(), 20u);
    EXPECT_TRUE(fs::exists(Work("pictures/20.png")));
    EXPECT_TRUE(ReadFileText(Work("pictures/20.png")) == ReadFileText(Work("pictures-c/20.png")));
    EXPECT_EQ(Lq({"tree", Demo("markers.lqc")}).out, Lq({"tree", Work("c.lqs")}).out);
}

TEST_F(ToolTest, MissingEmptyAndForeignFilesAreRefused)
{
    WriteFile(Work("empty.lqs"), "");
    WriteFile(Work("text.lqs"), "just some text, long enough to look at");
    const struct {
        std::string path;
        std::string message;
    } cases[] = {{Work("missing.lqs"), "no such file"},
                 {Work("empty.lqs"), "the file is empty"},
                 {root.string(), "not a regular file"},
                 {Work("text.lqs"), "not a symbol library (unknown header)"}};
    for (const auto& c : cases) {
        for (const std::vector<std::string>& command :
             {std::vector<std::string>{"info", c.path}, {"tree", c.path}, {"export", c.path, "--json"},
              {"convert", c.path, Work("never.lqc"), "--form", "container"}}) {
            const Outcome run = Lq(command);
            EXPECT_EQ(run.code, 1) << command[0] << " " << c.path;
            EXPECT_EQ(run.err, "lqsymbol: " + c.path + ": " + c.message + "\n");
            EXPECT_EQ(run.out, "");
        }
    }
    EXPECT_FALSE(fs::exists(Work("never.lqc")));
}

TEST_F(ToolTest, TruncatedAndDamagedFilesFailCleanly)
{
    ASSERT_EQ(demo.code, 0);
    // A container may lose its last byte unharmed (the database does not
    // need it); a stream file never does.
    for (const char* name : {"markers.lqs", "markers.lqc"}) {
        const std::string whole = ReadFileText(Demo(name));
        const bool stream = std::string(name).ends_with(".lqs");
        for (const std::size_t length : {std::size_t{3}, std::size_t{8}, std::size_t{100}, std::size_t{1000},
                                         whole.size() / 2, stream ? whole.size() - 1 : whole.size() / 4}) {
            const std::string path = Work("cut-" + std::to_string(length) + "-" + name);
            WriteFile(path, whole.substr(0, length));
            const Outcome run = Lq({"info", path});
            EXPECT_EQ(run.code, 1) << path << ": " << run.err;
            EXPECT_EQ(run.err.rfind("lqsymbol: " + path + ": ", 0), 0u) << run.err;
        }
    }
    std::mt19937 random(11);
    std::string noise(5000, '\0');
    for (char& c : noise)
        c = static_cast<char>(random());
    WriteFile(Work("noise.bin"), noise);
    const Outcome run = Lq({"tree", Work("noise.bin")});
    EXPECT_EQ(run.code, 1);
    EXPECT_NE(run.err.find("not a symbol library"), std::string::npos);

    // Damaged bytes anywhere in a stream file: a clean result either way,
    // and every picture the export reaches is checked.
    const std::string whole = ReadFileText(Demo("markers.lqs"));
    for (int trial = 0; trial < 25; ++trial) {
        std::string damaged = whole;
        damaged[random() % damaged.size()] ^= static_cast<char>(1 + random() % 255);
        const std::string path = Work("damaged" + std::to_string(trial) + ".lqs");
        WriteFile(path, damaged);
        const Outcome exported = Lq({"export", path, "--json", "--images", Work("damaged-pictures"), "--force"});
        EXPECT_TRUE(exported.code == 0 || exported.code == 1) << "exit " << exported.code << ": " << exported.err;
        if (exported.code == 1) {
            EXPECT_EQ(exported.err.rfind("lqsymbol: " + path + ": ", 0), 0u) << exported.err;
        }
    }
}

TEST_F(ToolTest, GalleryWritesEverySheet)
{
    const Outcome gallery = Lq({"gallery", "-o", Work("gallery")});
    ASSERT_EQ(gallery.code, 0) << gallery.err;
    for (const char* name : {"gradients-window32.png", "gradients-window24.png", "gradients-window16.png",
                             "gradients-native.png", "gradients-printer.png", "printer-page.png",
                             "transparent-fills.png", "blits.png"}) {
        EXPECT_EQ(ReadFileText(Work(std::string("gallery/") + name)).substr(1, 3), "PNG") << name;
    }
    EXPECT_EQ(ReadFileText(Work("gallery/printer-page.pdf")).substr(0, 5), "%PDF-");
    const std::string blits = ReadFileText(Work("gallery/blits.png"));
    const Outcome again = Lq({"gallery", "-o", Work("gallery")});
    EXPECT_EQ(again.code, 2);
    EXPECT_NE(again.err.find("exists; add --force"), std::string::npos) << again.err;
    EXPECT_TRUE(ReadFileText(Work("gallery/blits.png")) == blits);
    EXPECT_EQ(Lq({"gallery", "-o", Work("gallery"), "--force"}).code, 0);
    const Outcome blocked = Lq({"gallery", "-o", Work("gallery/blits.png")});  // a file, not a directory
    EXPECT_EQ(blocked.code, 2);
    EXPECT_NE(blocked.err.find("is not a directory"), std::string::npos) << blocked.err;
    EXPECT_EQ(Lq({"gallery", "-o", Work("gallery/blits.png/below")}).code, 1);
}

TEST_F(ToolTest, UsageErrorsAndFills)
{
    EXPECT_EQ(Lq({}).code, 2);
    const Outcome badVersion = Lq({"convert", "a", "b", "--form", "stream", "--format-version", "20120328"});
    EXPECT_EQ(badVersion.code, 2);
    EXPECT_NE(badVersion.err.find("container form's version"), std::string::npos) << badVersion.err;
    EXPECT_EQ(Lq({"fill", "-o", Work("x.png"), "--colour1", "#12345G"}).code, 2);
    EXPECT_EQ(Lq({"info", "--help"}).code, 0);

    const Outcome fill = Lq({"fill", "-o", Work("conical.png"), "--kind", "conical", "--surface", "window16",
                         "--transparency", "30", "--width", "64", "--height", "48"});
    ASSERT_EQ(fill.code, 0) << fill.err;
    EXPECT_EQ(ReadFileText(Work("conical.png")).substr(1, 3), "PNG");
    const Outcome page = Lq({"fill", "-o", Work("page.pdf"), "--surface", "printer", "--shape", "multipolygon",
                         "--kind", "transparent"});
    ASSERT_EQ(page.code, 0) << page.err;
    EXPECT_EQ(ReadFileText(Work("page.pdf")).substr(0, 5), "%PDF-");
    const Outcome notPdf = Lq({"fill", "-o", Work("window.pdf")});
    EXPECT_EQ(notPdf.code, 2);
    EXPECT_NE(notPdf.err.find("only the printer surface writes PDF"), std::string::npos);
}

// A marker library in the stream form whose names carry terminal escapes and
// whose groups nest `depth` levels deep, each level holding one symbol.
void WriteHostileLibrary(const std::string& path, int depth)
{
    using namespace LqExample;
    MarkerSymbolLib lib;
    VTC::VtSymbolGroup* group = lib.GetRootGroup()->CreateChildGroup(u"\x1b]0;owned\a");
    lib.AddSymbol(new MarkerSymbol(1, u"red\x1b[31m\u0085", MarkerShape::Circle, 8, 0), group);
    for (int level = 2; level <= depth; ++level) {
        group = group->CreateChildGroup(u"g");
        lib.AddSymbol(new MarkerSymbol(level, u"s", MarkerShape::Square, 8, 0), group);
    }
    ASSERT_EQ(lib.SaveToFile(ZEDA::ZedaUnicodeString::FromUtf8(path), 20050302), 1) << lib.GetLastError();
}

// Text from a file reaches the terminal escaped, a stamp that is not UTF-8
// still makes JSON, and a deep tree's output grows with its size, not with
// its depth squared.
TEST_F(ToolTest, HostileLibrariesArePrintedEscapedAndInBoundedSpace)
{
    const std::string path = Work("hostile.lqs");
    constexpr int depth = 900;
    WriteHostileLibrary(path, depth);
    const std::size_t fileBytes = fs::file_size(path);

    const Outcome tree = Lq({"tree", path});
    ASSERT_EQ(tree.code, 0) << tree.err;
    EXPECT_EQ(tree.out.find('\x1b'), std::string::npos);
    EXPECT_NE(tree.out.find("[\\x1B]0;owned\\x07]"), std::string::npos);
    EXPECT_NE(tree.out.find("red\\x1B[31m\\u{0085}"), std::string::npos);
    EXPECT_NE(tree.out.find("[g] (depth 900)"), std::string::npos);
    EXPECT_LT(tree.out.size(), 4 * fileBytes);  // indented to the depth, it took 30 times the file

    const Outcome exported = Lq({"export", path, "--json"});
    ASSERT_EQ(exported.code, 0) << exported.err;
    EXPECT_LT(exported.out.size(), 16 * fileBytes);  // nested and indented, 400 times
    const auto json = nlohmann::json::parse(exported.out);
    ASSERT_EQ(json["groups"].size(), depth + 1u);
    EXPECT_EQ(json["groups"][1]["name"], "\x1b]0;owned\a");
    EXPECT_EQ(json["groups"][depth]["parent"], depth - 1);
    EXPECT_EQ(json["groups"][depth]["items"], nlohmann::json::array({depth}));

    // The stamp's bytes are stored as they are: make the first one no UTF-8.
    std::string bytes = ReadFileText(path);
    const std::size_t stamp = bytes.rfind(std::string("M\0a\0r\0", 6));
    ASSERT_NE(stamp, std::string::npos);
    bytes[stamp] = '\xFF';
    WriteFile(Work("stamp.lqs"), bytes);
    const Outcome info = Lq({"info", Work("stamp.lqs"), "--json"});
    ASSERT_EQ(info.code, 0) << info.err;
    EXPECT_EQ(nlohmann::json::parse(info.out)["cacheSection"]["stamp"], "\xEF\xBF\xBD" "ar");
    const Outcome text = Lq({"info", Work("stamp.lqs")});
    ASSERT_EQ(text.code, 0) << text.err;
    EXPECT_NE(text.out.find("stamp \"\\xFFar\""), std::string::npos) << text.out;
    EXPECT_EQ(Lq({"export", Work("stamp.lqs"), "--json"}).code, 0);
}

// Inspecting a container changes nothing in it, even one that another
// program left in another journal mode.
TEST_F(ToolTest, InspectingAContainerLeavesItsFileAsItWas)
{
    ASSERT_EQ(demo.code, 0);
    const std::string path = Work("wal.lqc");
    fs::copy_file(Demo("markers.lqc"), path);
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(db, "PRAGMA journal_mode=WAL", nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(db);
    const std::string original = ReadFileText(path);
    for (const std::vector<std::string>& command : {std::vector<std::string>{"info", path}, {"info", path, "--json"},
                                                    {"tree", path}, {"export", path, "--json"}}) {
        const Outcome run = Lq(command);
        EXPECT_EQ(run.code, 0) << command[0] << ": " << run.err;
        EXPECT_EQ(ReadFileText(path), original) << command[0];
    }
}

}  // namespace
