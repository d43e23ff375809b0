// The icon flow of lqsymbol on an icon set as users bring one: 1000 icons
// (800 SVG drawings, 200 PNG pictures) in ten folders. Each command runs as
// the program runs it, files and all, beside a peer that does the same
// pictures' work with the libraries alone and writes its files in place:
//
// - add-folder      / drawing or decoding the 1000 files (librsvg, libpng)
// - export --images / encoding the pictures and writing them in place
// - import --images / reading and decoding the same PNG files
// - thumbnails      / encoding the 1000 thumbnails and writing them in place
// - sheet             (no peer: the drawing is the work)
//
// The difference is what the commands add: the library, its checks, and
// writing every file beside its target, syncing, reading back and renaming.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "CairoPicture.h"
#include "Commands.h"
#include "LibraryFile.h"
#include "PictureFile.h"
#include "Png.h"
#include "Progress.h"

namespace {

namespace fs = std::filesystem;
using LqExample::RasterImage;

constexpr int iconCount = 1000;
constexpr int pictureSize = 32;
constexpr int thumbnailSize = 64;

// A work directory holding the icon set, made once, removed at exit.
class IconSet {
public:
    IconSet()
    {
        std::string pattern = (fs::temp_directory_path() / "lq-iconflow-XXXXXX").string();
        if (!mkdtemp(pattern.data()))
            return;
        root_ = pattern;
        const char* const shapes[] = {
            R"(<circle cx="12" cy="12" r="9" fill="%s" fill-opacity="0.8"/>)",
            R"(<rect x="4" y="4" width="16" height="16" rx="3" fill="%s"/>)",
            R"(<path d="M12 2 L22 21 H2 Z" fill="%s" stroke="#222" stroke-width="1.5"/>)",
            R"(<path d="M4 12 H20 M12 4 V20" stroke="%s" stroke-width="4" stroke-linecap="round"/>)"};
        for (int i = 0; i < iconCount; ++i) {
            const fs::path folder = Path("icons/set" + std::to_string(i % 10));
            fs::create_directories(folder);
            char colour[8];
            std::snprintf(colour, sizeof colour, "#%02x%02x%02x", (i * 37) % 256, (i * 91) % 256, (i * 53) % 256);
            if (i % 5 == 4) {
                Write(folder / ("icon-" + std::to_string(i) + ".png"), LqTool::EncodePng(Ramp(i)));
                continue;
            }
            char body[200];
            std::snprintf(body, sizeof body, shapes[i % 4], colour);
            Write(folder / ("icon-" + std::to_string(i) + ".svg"),
                  std::string(R"(<svg xmlns="http://www.w3.org/2000/svg" width="24" height="24">)") + body +
                      "</svg>");
        }
        LqTool::ToolVerbosity().quiet = true;
        ready_ = LqTool::RunNew(Path("icons.lqc"), "marker", {}) == 0 &&
                 LqTool::RunAddFolder(Path("icons.lqc"), Path("icons"), pictureSize) == 0 &&
                 LqTool::RunExport(Path("icons.lqc"), Path("icons.json"), Path("pictures"), false) == 0;
    }
    ~IconSet()
    {
        std::error_code ignored;
        if (!root_.empty())
            fs::remove_all(root_, ignored);
    }
    IconSet(const IconSet&) = delete;
    IconSet& operator=(const IconSet&) = delete;

    bool IsReady() const { return ready_; }
    std::string Path(const std::string& name) const { return (fs::path(root_) / name).string(); }

    std::vector<fs::path> IconFiles() const
    {
        std::vector<fs::path> files;
        for (const auto& entry : fs::recursive_directory_iterator(Path("icons")))
            if (entry.is_regular_file())
                files.push_back(entry.path());
        return files;
    }

    static void Write(const fs::path& path, const std::string& bytes)
    {
        std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
    }

private:
    // A 40 x 28 picture whose colour and alpha change across it.
    static RasterImage Ramp(int seed)
    {
        RasterImage picture(40, 28);
        for (int y = 0; y < picture.height; ++y)
            for (int x = 0; x < picture.width; ++x)
                picture.At(x, y) = ZEDARGBA((x * 6 + seed) % 256, y * 9 % 256, seed % 256, x * 255 / 39);
        return picture;
    }

    std::string root_;
    bool ready_ = false;
};

IconSet& Icons()
{
    static IconSet icons;
    return icons;
}

// The pictures of the library, as the peers get them.
const std::vector<RasterImage>& Pictures()
{
    static const std::vector<RasterImage> pictures = [] {
        std::vector<RasterImage> all;
        std::string error;
        const auto lib = LqTool::OpenLibrary(Icons().Path("icons.lqc"), error);
        for (int i = 0; lib && i < lib->GetSymbolCount(); ++i) {
            RasterImage picture;
            lib->GetSymbolImage(lib->GetIDAt(i), picture);
            all.push_back(std::move(picture));
        }
        return all;
    }();
    return pictures;
}

bool Prepared(benchmark::State& state)
{
    if (Icons().IsReady() && Pictures().size() == iconCount)
        return true;
    state.SkipWithError("the icon set cannot be made");
    return false;
}

void Fail(benchmark::State& state, const char* what)
{
    state.SkipWithError(what);
}

void BM_AddFolder(benchmark::State& state)
{
    if (!Prepared(state))
        return;
    const std::string lib = Icons().Path("added.lqc");
    for (auto _ : state) {
        if (LqTool::RunNew(lib, "marker", {"", true}) != 0 ||
            LqTool::RunAddFolder(lib, Icons().Path("icons"), pictureSize) != 0)
            return Fail(state, "add-folder failed");
    }
}

void BM_Peer_DrawIconFiles(benchmark::State& state)
{
    if (!Prepared(state))
        return;
    const std::vector<fs::path> files = Icons().IconFiles();
    for (auto _ : state) {
        for (const fs::path& file : files) {
            RasterImage picture;
            std::string error;
            if (!LqTool::LoadPictureFile(file.string(), pictureSize, picture, error))
                return Fail(state, "an icon cannot be drawn");
            benchmark::DoNotOptimize(picture.pixels.data());
        }
    }
}

void BM_Export(benchmark::State& state)
{
    if (!Prepared(state))
        return;
    for (auto _ : state) {
        if (LqTool::RunExport(Icons().Path("icons.lqc"), Icons().Path("exported.json"), Icons().Path("exported"),
                              true) != 0)
            return Fail(state, "export failed");
    }
}

void BM_Peer_WritePictures(benchmark::State& state)
{
    if (!Prepared(state))
        return;
    fs::create_directories(Icons().Path("plain"));
    for (auto _ : state) {
        int id = 1;
        for (const RasterImage& picture : Pictures())
            IconSet::Write(Icons().Path("plain/" + std::to_string(id++) + ".png"), LqTool::EncodePng(picture));
    }
}

void BM_Import(benchmark::State& state)
{
    if (!Prepared(state))
        return;
    for (auto _ : state) {
        if (LqTool::RunImport(Icons().Path("icons.json"), Icons().Path("imported.lqs"), Icons().Path("pictures"),
                              {"", true}) != 0)
            return Fail(state, "import failed");
    }
}

void BM_Peer_ReadPictures(benchmark::State& state)
{
    if (!Prepared(state))
        return;
    for (auto _ : state) {
        for (int id = 1; id <= iconCount; ++id) {
            RasterImage picture;
            std::string error;
            if (!LqTool::ReadPng(Icons().Path("pictures/" + std::to_string(id) + ".png"), picture, error))
                return Fail(state, "a picture cannot be read");
            benchmark::DoNotOptimize(picture.pixels.data());
        }
    }
}

void BM_Thumbnails(benchmark::State& state)
{
    if (!Prepared(state))
        return;
    for (auto _ : state) {
        if (LqTool::RunThumbnails(Icons().Path("icons.lqc"), Icons().Path("thumbnails"), thumbnailSize, true) != 0)
            return Fail(state, "thumbnails failed");
    }
}

void BM_Peer_WriteThumbnails(benchmark::State& state)
{
    if (!Prepared(state))
        return;
    fs::create_directories(Icons().Path("plain-thumbnails"));
    for (auto _ : state) {
        int id = 1;
        for (const RasterImage& picture : Pictures())
            IconSet::Write(Icons().Path("plain-thumbnails/" + std::to_string(id++) + ".png"),
                           LqTool::EncodePng(LqTool::CentreInSquare(picture, thumbnailSize)));
    }
}

void BM_Sheet(benchmark::State& state)
{
    if (!Prepared(state))
        return;
    for (auto _ : state) {
        if (LqTool::RunSheet(Icons().Path("icons.lqc"), Icons().Path("sheet.png"), true) != 0)
            return Fail(state, "sheet failed");
    }
}

// Whole commands take tens to hundreds of milliseconds and write files: wall
// time is what a user waits, so it is what is measured.
#define ICON_FLOW_BENCHMARK(name) BENCHMARK(name)->Unit(benchmark::kMillisecond)->UseRealTime()
ICON_FLOW_BENCHMARK(BM_AddFolder);
ICON_FLOW_BENCHMARK(BM_Peer_DrawIconFiles);
ICON_FLOW_BENCHMARK(BM_Export);
ICON_FLOW_BENCHMARK(BM_Peer_WritePictures);
ICON_FLOW_BENCHMARK(BM_Import);
ICON_FLOW_BENCHMARK(BM_Peer_ReadPictures);
ICON_FLOW_BENCHMARK(BM_Thumbnails);
ICON_FLOW_BENCHMARK(BM_Peer_WriteThumbnails);
ICON_FLOW_BENCHMARK(BM_Sheet);

}  // namespace

BENCHMARK_MAIN();
