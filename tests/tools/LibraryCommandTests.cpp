// The library commands (new, add, add-folder, rename, move, remove, group,
// merge, thumbnails, sheet) run as a user runs them; the files they leave are
// read back with the program's own code and checked field by field.

#include <functional>
#include <map>
#include <set>

#include <nlohmann/json.hpp>

#include "Editing.h"
#include "GroupPath.h"
#include "LibraryFile.h"
#include "LineSymbol.h"
#include "MarkerSymbol.h"
#include "Png.h"
#include "ToolTestSupport.h"
#include "VtSymbolGroup.h"

namespace {

using namespace lqtool;
using LqExample::RasterImage;
using LqExample::ResourceSymbolLib;

using Library = std::unique_ptr<ResourceSymbolLib>;

// A 24 x 24 drawing: a blue disc at 60 % opacity on nothing.
const char* const discSvg = R"(<svg xmlns="http://www.w3.org/2000/svg" width="24" height="24">
<circle cx="12" cy="12" r="10" fill="#1f77b4" fill-opacity="0.6"/></svg>)";

// Group path -> the IDs filed there, in order; "(none)" lists the symbols in no group.
std::map<std::string, std::vector<int>> Filing(const ResourceSymbolLib& lib)
{
    std::map<std::string, std::vector<int>> filing;
    std::set<int> filed;
    for (const VTC::VtSymbolGroup* group : LqTool::GroupsInOrder(*lib.GetRootGroup())) {
        auto& ids = filing["/" + LqTool::FormatGroupPath(LqTool::GroupNamesOf(*group))];
        for (int i = 0; i < group->GetItemCount(); ++i) {
            ids.push_back(group->GetItemID(i));
            filed.insert(group->GetItemID(i));
        }
    }
    for (int i = 0; i < lib.GetSymbolCount(); ++i)
        if (!filed.contains(lib.GetIDAt(i)))
            filing["(none)"].push_back(lib.GetIDAt(i));
    return filing;
}

std::vector<std::string> Names(const ResourceSymbolLib& lib)
{
    std::vector<std::string> names;
    for (int i = 0; i < lib.GetSymbolCount(); ++i)
        names.push_back(std::to_string(lib.GetIDAt(i)) + " " + lib.GetNameAt(i).ToUtf8());
    return names;
}

// A picture whose alpha and colours change across it.
RasterImage Ramp(int width, int height)
{
    RasterImage picture(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            picture.At(x, y) = ZEDARGBA(x * 12 % 256, y * 20 % 256, 90, (x * 255 / (width - 1)));
    return picture;
}

unsigned int Alpha(unsigned int pixel)
{
    return pixel >> 24;
}

class LibraryCommandTest : public PerTestWorkspace {
protected:
    static void SetUpTestSuite() { MakeRoot("lq-library-commands-"); }
    static void TearDownTestSuite() { RemoveRoot(); }

    static Library Load(const std::string& path)
    {
        std::string error;
        auto lib = LqTool::OpenLibrary(path, error);
        EXPECT_TRUE(lib) << path << ": " << error;
        return lib;
    }

    static RasterImage Picture(const ResourceSymbolLib& lib, int id)
    {
        RasterImage picture;
        EXPECT_TRUE(lib.GetSymbolImage(id, picture)) << "symbol " << id;
        return picture;
    }

    // Runs a command that must succeed; returns what it printed.
    static std::string Ok(const std::vector<std::string>& command)
    {
        const Outcome run = Lq(command);
        EXPECT_EQ(run.code, 0) << command[0] << ": " << run.err;
        return run.out;
    }
};

TEST_F(LibraryCommandTest, EditsMakeTheLibraryTheyDescribe)
{
    const std::string lib = In("lib.lqc");
    EXPECT_EQ(Ok({"new", lib, "--kind", "marker"}), "created " + lib + ": an empty marker library\n");
    EXPECT_EQ(Ok({"add", lib, "--name", "star", "--shape", "star", "--size", "40", "--colour", "#D62728",
                  "--outline", "#80202020", "--rotation", "15", "--group", "Signs/Stars", "-q"}),
              "1\n");
    const RasterImage ramp = Ramp(20, 10);
    WriteFile(In("ramp.png"), LqTool::EncodePng(ramp));
    WriteFile(In("disc.svg"), discSvg);
    EXPECT_EQ(Ok({"add", lib, "--name", "ramp", "--picture", In("ramp.png"), "--size", "20", "--group", "Pictures"}),
              "2\n");
    EXPECT_EQ(Ok({"add", lib, "--name", "disc", "--picture", In("disc.svg"), "--size", "48", "--group", "Pictures"}),
              "3\n");
    {
        const Library loaded = Load(lib);
        const auto* star = dynamic_cast<const LqExample::MarkerSymbol*>(loaded->GetSymbolByID(1));
        ASSERT_NE(star, nullptr);
        EXPECT_EQ(star->shape, LqExample::MarkerShape::Star);
        EXPECT_EQ(star->size, 40);
        EXPECT_EQ(star->colour, ZEDARGB(0xD6, 0x27, 0x28));
        EXPECT_EQ(star->outlineColour, ZEDARGBA(0x20, 0x20, 0x20, 0x80));
        EXPECT_EQ(star->rotation, 15.0);
        EXPECT_TRUE(Picture(*loaded, 2) == ramp) << "a PNG at its own size is kept byte for byte";
        const RasterImage disc = Picture(*loaded, 3);
        ASSERT_EQ(disc.width, 48);
        ASSERT_EQ(disc.height, 48);
        EXPECT_EQ(Alpha(disc.At(0, 0)), 0u);
        EXPECT_NEAR(Alpha(disc.At(24, 24)), 153, 2);
        EXPECT_NEAR(static_cast<int>((disc.At(24, 24) >> 16) & 0xFF), 0x1F, 3);
        EXPECT_NEAR(static_cast<int>(disc.At(24, 24) & 0xFF), 0xB4, 3);
    }

    Ok({"group", lib, "create", "Road\\/Rail/Bridges"});
    Ok({"group", lib, "rename", "Signs", "Symbols"});
    Ok({"group", lib, "move", "Symbols/Stars", "Pictures"});
    Ok({"rename", lib, "1", "big star"});
    Ok({"move", lib, "2", "--group", "Road\\/Rail"});
    Ok({"remove", lib, "3"});
    Ok({"group", lib, "remove", "Pictures"});  // Stars moves up to the root
    const Library edited = Load(lib);
    EXPECT_EQ(Names(*edited), (std::vector<std::string>{"1 big star", "2 ramp"}));
    const std::map<std::string, std::vector<int>> expected = {
        {"/", {}}, {"/Symbols", {}}, {"/Road\\/Rail", {2}}, {"/Road\\/Rail/Bridges", {}}, {"/Stars", {1}}};
    EXPECT_EQ(Filing(*edited), expected);
    EXPECT_TRUE(LqTool::ProbeLibrary(lib).container) << "an edited file keeps its form";
}

TEST_F(LibraryCommandTest, StreamFilesKeepTheirFormatVersion)
{
    const std::string lib = In("lines.lqs");
    Ok({"new", In("lines.lqc"), "--kind", "line"});
    Ok({"convert", In("lines.lqc"), lib, "--form", "stream", "--format-version", "20200101"});
    EXPECT_EQ(Ok({"add", lib, "--name", "road", "--width", "2.5", "--colour", "#E08020", "--dashes", "10,3,2,3"}),
              "1\n");
    const LqTool::LibraryProbe probe = LqTool::ProbeLibrary(lib);
    EXPECT_FALSE(probe.container);
    EXPECT_EQ(probe.formatVersion, 20200101u);
    const Library lines = Load(lib);
    const auto* road = dynamic_cast<const LqExample::LineSymbol*>(lines->GetSymbolByID(1));
    ASSERT_NE(road, nullptr);
    EXPECT_EQ(road->width, 2.5);
    EXPECT_EQ(road->dashes, (std::vector<int>{10, 3, 2, 3}));
    const RasterImage sample = Picture(*lines, 1);
    EXPECT_EQ(sample.width, 96);
}

TEST_F(LibraryCommandTest, RefusalsLeaveTheFileAsItWas)
{
    const std::string lib = In("lib.lqc");
    Ok({"new", lib, "--kind", "marker"});
    Ok({"add", lib, "--name", "dot", "--shape", "circle", "--size", "8", "--colour", "#000000", "--group", "A/B"});
    Ok({"group", lib, "create", "C"});
    const std::string bytes = ReadFileText(lib);
    const struct {
        std::vector<std::string> command;
        int code;
        std::string message;
    } cases[] = {
        {{"new", lib, "--kind", "line"}, 2, "exists; add --force"},
        {{"new", In("lib.txt"), "--kind", "line"}, 2, "the form follows the extension"},
        {{"add", lib, "--name", "dot", "--shape", "circle", "--size", "8", "--colour", "#000000"}, 2, "already has"},
        {{"add", lib, "--name", "x", "--shape", "circle", "--size", "8"}, 2, "needs --shape, --size and --colour"},
        {{"add", lib, "--name", "x", "--width", "2", "--colour", "#000000"}, 2, "for line libraries"},
        {{"add", lib, "--name", "x", "--shape", "blob", "--size", "8", "--colour", "#000000"}, 2, "blob"},
        {{"add", lib, "--name", "x", "--shape", "circle", "--size", "8", "--colour", "red"}, 2, "not a colour"},
        {{"add", lib, "--name", "x", "--shape", "circle", "--size", "8", "--colour", "#12345"}, 2, "not a colour"},
        {{"add", lib, "--name", "x", "--picture", In("missing.svg")}, 1, "No such file"},
        {{"add", lib, "--name", "x", "--picture", lib}, 1, "Not a PNG"},
        {{"add", In("missing.lqc"), "--name", "x", "--shape", "circle", "--size", "8", "--colour", "#000000"},
         1, "no such file"},
        {{"rename", lib, "9", "x"}, 2, "has no symbol with ID 9"},
        {{"move", lib, "1", "9", "--group", "C"}, 2, "has no symbol with ID 9"},
        {{"remove", lib, "9"}, 2, "has no symbol with ID 9"},
        {{"group", lib, "create", "A/B"}, 2, "already has the group"},
        {{"group", lib, "rename", "A", "C"}, 2, "already named C"},
        {{"group", lib, "rename", "/", "X"}, 2, "root group"},
        {{"group", lib, "move", "A", "A/B"}, 2, "into itself or below itself"},
        {{"group", lib, "move", "A/B", "/", "extra"}, 2, ""},
        {{"group", lib, "remove", "Nowhere"}, 2, "has no group Nowhere"},
        {{"group", lib, "create", "A//B"}, 2, "empty name"},
        {{"group", lib, "rename", "A"}, 2, "needs a second argument"},
    };
    for (const auto& c : cases) {
        const Outcome run = Lq(c.command);
        EXPECT_EQ(run.code, c.code) << c.command[0] << " " << c.command[2] << ": " << run.err;
        EXPECT_NE(run.err.find(c.message), std::string::npos) << run.err;
        EXPECT_EQ(run.out, "");
        EXPECT_TRUE(ReadFileText(lib) == bytes) << c.command[0] << " " << c.command[2] << " changed the file";
    }
    fs::permissions(lib, fs::perms::owner_read);
    const Outcome protectedFile = Lq({"rename", lib, "1", "y"});
    EXPECT_EQ(protectedFile.code, 1);
    EXPECT_NE(protectedFile.err.find("write-protected"), std::string::npos);
    EXPECT_TRUE(ReadFileText(lib) == bytes);
    EXPECT_EQ(Listing(directory), std::vector<std::string>{"lib.lqc"});
}

TEST_F(LibraryCommandTest, AddFolderFilesPicturesByFolderUnderFreeNames)
{
    const std::string icons = In("icons");
    fs::create_directories(icons + "/sub/deeper");
    WriteFile(icons + "/a.svg", discSvg);
    WriteFile(icons + "/b.PNG", LqTool::EncodePng(Ramp(16, 8)));
    WriteFile(icons + "/broken.svg", "<svg");
    WriteFile(icons + "/notes.txt", "not a picture");
    WriteFile(icons + "/sub/a.svg", discSvg);
    WriteFile(icons + "/sub/deeper/c.svg", discSvg);
    const std::string lib = In("icons.lqs");
    Ok({"new", lib, "--kind", "marker"});
    const Outcome run = Lq({"add-folder", lib, icons, "--size", "16"});
    EXPECT_EQ(run.code, 1) << "one file could not be read";
    EXPECT_NE(run.err.find("broken.svg"), std::string::npos) << run.err;
    EXPECT_NE(run.out.find("added 4 pictures"), std::string::npos) << run.out;

    const Library loaded = Load(lib);
    EXPECT_EQ(Names(*loaded), (std::vector<std::string>{"1 a", "2 b", "3 a_1", "4 c"}));
    const std::map<std::string, std::vector<int>> expected = {
        {"/", {1, 2}}, {"/sub", {3}}, {"/sub/deeper", {4}}};
    EXPECT_EQ(Filing(*loaded), expected);
    EXPECT_EQ(Picture(*loaded, 2).width, 16);
    EXPECT_EQ(Picture(*loaded, 2).height, 8);
    EXPECT_EQ(Picture(*loaded, 4).width, 16);
    EXPECT_TRUE(Picture(*loaded, 1) == Picture(*loaded, 4));
    const Outcome lines = Lq({"add-folder", In("lines.lqc"), icons});
    EXPECT_EQ(lines.code, 1) << "no such file";
    // The folder is an input: one that is missing or is a file cannot be read.
    const std::string bytes = ReadFileText(lib);
    for (const auto& [folder, message] : {std::pair{In("nowhere"), "no such folder"},
                                          std::pair{icons + "/a.svg", "is not a folder"}}) {
        const Outcome unreadable = Lq({"add-folder", lib, folder});
        EXPECT_EQ(unreadable.code, 1) << folder;
        EXPECT_NE(unreadable.err.find(message), std::string::npos) << unreadable.err;
        EXPECT_TRUE(ReadFileText(lib) == bytes);
    }
}

TEST_F(LibraryCommandTest, MergeRenumbersRenamesAndMergesGroupsWithPictures)
{
    const std::string first = In("first.lqc");
    const std::string second = In("second.lqs");
    Ok({"new", first, "--kind", "marker"});
    Ok({"add", first, "--name", "star", "--shape", "star", "--size", "20", "--colour", "#FF0000", "--group", "Signs"});
    Ok({"add", first, "--name", "dot", "--shape", "circle", "--size", "9", "--colour", "#00FF00", "--group",
        "Signs/Round"});
    Ok({"new", second, "--kind", "marker"});
    Ok({"add", second, "--name", "star", "--shape", "star", "--size", "30", "--colour", "#0000FF", "--group", "Signs"});
    Ok({"add", second, "--name", "spare", "--shape", "cross", "--size", "12", "--colour", "#000000"});
    Ok({"add", second, "--name", "cross", "--shape", "cross", "--size", "12", "--colour", "#000000", "--group",
        "Other"});
    Ok({"remove", second, "2"});
    Ok({"group", second, "create", "Empty"});

    const std::string merged = In("merged.lqc");
    const Outcome run = Lq({"merge", first, second, "-o", merged});
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_NE(run.out.find("merged 2 symbols"), std::string::npos) << run.out;
    const Library result = Load(merged);
    EXPECT_EQ(Names(*result), (std::vector<std::string>{"1 star", "2 dot", "3 star_1", "4 cross"}));
    const std::map<std::string, std::vector<int>> expected = {
        {"/", {}}, {"/Signs", {1, 3}}, {"/Signs/Round", {2}}, {"/Other", {4}}, {"/Empty", {}}};
    EXPECT_EQ(Filing(*result), expected);
    const Library from = Load(second);
    EXPECT_TRUE(Picture(*result, 3) == Picture(*from, 1));
    EXPECT_TRUE(Picture(*result, 4) == Picture(*from, 3));
    EXPECT_EQ(dynamic_cast<const LqExample::MarkerSymbol*>(result->GetSymbolByID(3))->size, 30);

    Ok({"new", In("lines.lqc"), "--kind", "line"});
    const std::string before = ReadFileText(first);
    EXPECT_EQ(Lq({"merge", first, In("lines.lqc"), "-o", In("mixed.lqc")}).code, 2);
    EXPECT_EQ(Lq({"merge", first, second, "-o", second, "--force"}).code, 2);
    EXPECT_EQ(Lq({"merge", first, second, "-o", merged}).code, 2);
    EXPECT_TRUE(ReadFileText(first) == before);
    EXPECT_FALSE(fs::exists(In("mixed.lqc")));
}

TEST_F(LibraryCommandTest, ThumbnailsAreTransparentSquaresAndSheetsLabelEveryGroup)
{
    const std::string markers = In("markers.lqc");
    const std::string lines = In("lines.lqc");
    Ok({"new", markers, "--kind", "marker"});
    Ok({"add", markers, "--name", "big", "--shape", "square", "--size", "200", "--colour", "#FF0000"});
    Ok({"add", markers, "--name", "small", "--shape", "circle", "--size", "10", "--colour", "#0000FF", "--group",
        "G"});
    Ok({"new", lines, "--kind", "line"});
    Ok({"add", lines, "--name", "road", "--width", "6", "--colour", "#E08020", "--dashes", "8,4"});

    Ok({"thumbnails", markers, "-o", In("thumbs"), "--size", "48"});
    Ok({"thumbnails", lines, "-o", In("thumbs-lines")});
    for (const auto& [path, side] : {std::pair{In("thumbs/1.png"), 48}, std::pair{In("thumbs/2.png"), 48},
                                     std::pair{In("thumbs-lines/1.png"), 64}}) {
        RasterImage thumbnail;
        std::string error;
        ASSERT_TRUE(LqTool::ReadPng(path, thumbnail, error)) << path << ": " << error;
        EXPECT_EQ(ReadFileText(path)[25], 6) << path << " is RGBA";
        EXPECT_EQ(thumbnail.width, side);
        EXPECT_EQ(thumbnail.height, side);
        int opaque = 0;
        for (const unsigned int pixel : thumbnail.pixels)
            opaque += Alpha(pixel) == 255 ? 1 : 0;
        EXPECT_GT(opaque, 0) << path;
        EXPECT_EQ(Alpha(thumbnail.At(side / 2, 0)), 0u) << path;
        if (path.find("lines") == std::string::npos) {
            EXPECT_EQ(Alpha(thumbnail.At(side / 2, side / 2)), 255u) << path;
        }
    }
    // The line's dashes leave gaps along its stroke.
    RasterImage road;
    std::string error;
    ASSERT_TRUE(LqTool::ReadPng(In("thumbs-lines/1.png"), road, error));
    EXPECT_EQ(Alpha(road.At(2, 32)), 255u);
    EXPECT_EQ(Alpha(road.At(10, 32)), 0u);
    EXPECT_EQ(Lq({"thumbnails", markers, "-o", In("thumbs")}).code, 2);
    EXPECT_EQ(Lq({"thumbnails", markers, "-o", In("thumbs"), "--force"}).code, 0);
    // A file where an output folder goes is a refused output, and nothing is written.
    for (const auto& command : {std::vector<std::string>{"thumbnails", markers, "-o", lines},
                                std::vector<std::string>{"export", markers, "--json", "--images", lines}}) {
        const std::string before = ReadFileText(lines);
        const Outcome refused = Lq(command);
        EXPECT_EQ(refused.code, 2) << command[0] << ": " << refused.err;
        EXPECT_NE(refused.err.find("is not a directory"), std::string::npos) << refused.err;
        EXPECT_EQ(refused.out, "");
        EXPECT_TRUE(ReadFileText(lines) == before);
    }

    EXPECT_EQ(Ok({"sheet", markers, "-o", In("sheet.png")}), In("sheet.png") + "\n");
    RasterImage sheet;
    ASSERT_TRUE(LqTool::ReadPng(In("sheet.png"), sheet, error)) << error;
    EXPECT_GT(sheet.height, 2 * 72);
    EXPECT_EQ(Lq({"sheet", markers, "-o", In("sheet.png")}).code, 2);
}

}  // namespace

namespace {

// A library with what a round trip can lose: IDs out of order and with gaps,
// fractional rotations, translucent colours, pictures with graded alpha,
// names with "/" and non-ASCII letters, empty and nested groups, and symbols
// in no group.
void MakeAwkwardLibrary(const std::string& lib, const std::string& scratch,
                        const std::function<void(const std::vector<std::string>&)>& ok)
{
    ok({"new", lib, "--kind", "marker"});
    WriteFile(scratch + "/ramp.png", LqTool::EncodePng(Ramp(20, 12)));
    ok({"add", lib, "--name", "Straße/Weg", "--shape", "arrow", "--size", "33", "--colour", "#7F10A0F0",
        "--outline", "#FF000000", "--rotation", "12.345678901234567", "--group", "Wege\\/Straßen/Nebenwege"});
    ok({"add", lib, "--name", "ramp", "--picture", scratch + "/ramp.png", "--size", "20"});
    ok({"add", lib, "--name", "gone", "--shape", "cross", "--size", "5", "--colour", "#000000"});
    ok({"add", lib, "--name", "hexagon", "--shape", "hexagon", "--size", "64", "--colour", "#2CA02C", "--group",
        "Flächen"});
    ok({"remove", lib, "3"});
    ok({"group", lib, "create", "Leer/Noch leerer"});
    ok({"move", lib, "1", "--group", "Flächen"});
}

}  // namespace

TEST_F(LibraryCommandTest, ExportThenImportGivesTheSameLibraryInEitherForm)
{
    const std::string original = In("original.lqc");
    MakeAwkwardLibrary(original, directory, [](const std::vector<std::string>& command) { Ok(command); });
    const Library expected = Load(original);
    ASSERT_EQ(expected->GetSymbolCount(), 3);

    // Pictures inside the JSON, container to stream; pictures as files, stream to container.
    Ok({"export", original, "--json", "-o", In("embedded.json")});
    Ok({"import", In("embedded.json"), "-o", In("copy.lqs")});
    Ok({"export", In("copy.lqs"), "--json", "-o", In("files.json"), "--images", In("pictures")});
    Ok({"import", In("files.json"), "-o", In("copy.lqc"), "--images", In("pictures")});
    for (const char* copy : {"copy.lqs", "copy.lqc"}) {
        const Library imported = Load(In(copy));
        EXPECT_EQ(LqTool::CompareLibraries(*expected, *imported), std::vector<std::string>()) << copy;
    }
    EXPECT_EQ(Listing(In("pictures")), (std::vector<std::string>{"1.png", "2.png", "4.png"}));
    EXPECT_FALSE(LqTool::ProbeLibrary(In("copy.lqs")).container);

    // The export of the copy is the export of the original, byte for byte, but for the file's own facts.
    const auto symbolsAndGroups = [](const std::string& json) {
        const auto document = nlohmann::json::parse(ReadFileText(json));
        return document["symbolList"].dump() + document["groups"].dump();
    };
    Ok({"export", In("copy.lqc"), "--json", "-o", In("again.json")});
    EXPECT_EQ(symbolsAndGroups(In("again.json")), symbolsAndGroups(In("embedded.json")));
    const auto document = nlohmann::json::parse(ReadFileText(In("embedded.json")));
    EXPECT_EQ(document["symbolList"][0]["colour"], "#7F10A0F0");
    EXPECT_EQ(document["symbolList"][0]["outlineColour"], "#000000");
}

TEST_F(LibraryCommandTest, ImportRefusesDocumentsThatDoNotDescribeALibrary)
{
    const std::string original = In("original.lqs");
    MakeAwkwardLibrary(original, directory, [](const std::vector<std::string>& command) { Ok(command); });
    Ok({"export", original, "--json", "-o", In("good.json"), "--images", In("pictures")});
    const auto good = nlohmann::json::parse(ReadFileText(In("good.json")));
    const auto variant = [&](const std::string& name, const std::function<void(nlohmann::json&)>& change) {
        auto document = good;
        change(document);
        WriteFile(In(name), document.dump());
        return In(name);
    };
    WriteFile(In("text.json"), "symbols, but not JSON");
    const struct {
        std::string json;
        std::string message;
    } cases[] = {
        {In("text.json"), "not a library document"},
        {variant("kind.json", [](auto& d) { d["kind"] = "area"; }), "unknown kind"},
        {variant("twice.json", [](auto& d) { d["symbolList"][1]["id"] = d["symbolList"][0]["id"]; }), "repeated"},
        {variant("shape.json", [](auto& d) { d["symbolList"][0]["shape"] = "blob"; }), "unknown shape"},
        {variant("size.json", [](auto& d) { d["symbolList"][0]["size"] = 0; }), "size out of range"},
        {variant("colour.json", [](auto& d) { d["symbolList"][0]["colour"] = "red"; }), "not a colour"},
        {variant("crc.json", [](auto& d) { d["symbolList"][0]["picture"]["crc32"] = "00000000"; }),
         "not the one the document describes"},
        {variant("file.json", [](auto& d) { d["symbolList"][0]["picture"]["file"] = "../x.png"; }), "must be"},
        {variant("item.json", [](auto& d) { d["groups"][0]["items"].push_back(77); }), "77"},
        {variant("filed.json", [](auto& d) { d["groups"][0]["items"].push_back(1); }), "filed twice"},
        {variant("parent.json", [](auto& d) { d["groups"][1]["parent"] = 5; }), "parent"},
        {variant("root.json", [](auto& d) { d["groups"] = nlohmann::json::array(); }), "root group"},
    };
    for (const auto& c : cases) {
        const Outcome run = Lq({"import", c.json, "-o", In("never.lqc"), "--images", In("pictures")});
        EXPECT_EQ(run.code, 1) << c.json << ": " << run.err;
        EXPECT_NE(run.err.find(c.message), std::string::npos) << run.err;
    }
    const Outcome withoutImages = Lq({"import", In("good.json"), "-o", In("never.lqc")});
    EXPECT_EQ(withoutImages.code, 2) << "a usage error: " << withoutImages.err;
    EXPECT_NE(withoutImages.err.find("--images"), std::string::npos) << withoutImages.err;
    fs::remove(In("pictures/2.png"));
    EXPECT_EQ(Lq({"import", In("good.json"), "-o", In("never.lqc"), "--images", In("pictures")}).code, 1);
    EXPECT_EQ(Lq({"import", In("good.json"), "-o", In("good.json"), "--force"}).code, 2);
    EXPECT_FALSE(fs::exists(In("never.lqc")));
}

// An icon set as users bring one: a thousand SVG files in ten folders.
TEST_F(LibraryCommandTest, ThousandIconSetImportsRoundTripsAndDraws)
{
    const std::string icons = In("icons");
    const char* const shapes[] = {
        R"(<circle cx="12" cy="12" r="9" fill="%s" fill-opacity="0.8"/>)",
        R"(<rect x="4" y="4" width="16" height="16" rx="3" fill="%s"/>)",
        R"(<path d="M12 2 L22 21 H2 Z" fill="%s" stroke="#222" stroke-width="1.5"/>)",
        R"(<path d="M4 12 H20 M12 4 V20" stroke="%s" stroke-width="4" stroke-linecap="round"/>)"};
    for (int i = 0; i < 1000; ++i) {
        const std::string folder = icons + "/set" + std::to_string(i % 10);
        fs::create_directories(folder);
        char colour[8];
        std::snprintf(colour, sizeof colour, "#%02x%02x%02x", (i * 37) % 256, (i * 91) % 256, (i * 53) % 256);
        char body[200];
        std::snprintf(body, sizeof body, shapes[i % 4], colour);
        WriteFile(folder + "/icon-" + std::to_string(i) + ".svg",
                  std::string(R"(<svg xmlns="http://www.w3.org/2000/svg" width="24" height="24">)") + body +
                      "</svg>");
    }
    const std::string lib = In("icons.lqc");
    Ok({"new", lib, "--kind", "marker"});
    EXPECT_NE(Ok({"add-folder", lib, icons}).find("added 1000 pictures"), std::string::npos);
    Ok({"export", lib, "--json", "-o", In("icons.json"), "--images", In("pictures")});
    Ok({"import", In("icons.json"), "-o", In("icons.lqs"), "--images", In("pictures")});
    const Library original = Load(lib);
    const Library imported = Load(In("icons.lqs"));
    ASSERT_EQ(original->GetSymbolCount(), 1000);
    EXPECT_EQ(LqTool::CompareLibraries(*original, *imported), std::vector<std::string>());
    const std::map<std::string, std::vector<int>> filing = Filing(*original);
    EXPECT_EQ(filing.size(), 11u);
    EXPECT_EQ(filing.at("/set7").size(), 100u);

    Ok({"thumbnails", In("icons.lqs"), "-o", In("thumbnails"), "-q"});
    EXPECT_EQ(Listing(In("thumbnails")).size(), 1000u);
    const std::string pages = Ok({"sheet", lib, "-o", In("icons.png")});
    EXPECT_NE(pages.find(In("icons-2.png")), std::string::npos) << pages;
    EXPECT_TRUE(fs::exists(In("icons-1.png")));
}
