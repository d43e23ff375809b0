// demo: builds a sample marker library, saves it in both library forms, loads
// both back, checks that all three agree, and reports sizes and timings.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <numeric>

#include "Commands.h"
#include "ContactSheet.h"
#include "LibraryFile.h"
#include "LineSymbolLib.h"
#include "LqStream.h"
#include "MarkerSymbolLib.h"
#include "Output.h"
#include "SymbolRenderer.h"
#include "VtSymbolGroup.h"

namespace LqTool {

namespace fs = std::filesystem;
using namespace LqExample;
using VTC::VtSymbolGroup;
using ZEDA::ZedaUnicodeString;

namespace {

constexpr unsigned int streamVersion = 20050302;

const unsigned int palette[] = {ZEDARGB(0xD6, 0x27, 0x28), ZEDARGB(0x1F, 0x77, 0xB4), ZEDARGB(0x2C, 0xA0, 0x2C),
                                ZEDARGB(0xFF, 0x7F, 0x0E), ZEDARGB(0x94, 0x67, 0xBD), ZEDARGB(0x8C, 0x56, 0x4B),
                                ZEDARGB(0xE3, 0x77, 0xC2), ZEDARGB(0x17, 0xBE, 0xCF)};

// The group a shape is filed in.
const char* GroupPath(MarkerShape shape)
{
    switch (shape) {
    case MarkerShape::Circle: return "Geometric/Round";
    case MarkerShape::Star: return "Signs/Stars";
    case MarkerShape::Cross:
    case MarkerShape::Saltire: return "Signs/Crosses";
    case MarkerShape::Arrow: return "Signs/Arrows";
    default: return "Geometric/Angular";
    }
}

// The group at a "/"-separated path under the root, made as needed.
VtSymbolGroup* GroupAt(VtSymbolGroup* root, const std::string& path)
{
    VtSymbolGroup* group = root;
    std::size_t start = 0;
    while (start < path.size()) {
        const std::size_t end = std::min(path.find('/', start), path.size());
        const ZedaUnicodeString name = ZedaUnicodeString::FromUtf8(path.substr(start, end - start));
        group = group->IsChildGroupExisted(name) ? group->GetChildGroup(name) : group->CreateChildGroup(name);
        start = end + 1;
    }
    return group;
}

bool BuildMarkers(MarkerSymbolLib& lib, int count)
{
    for (int i = 0; i < count; ++i) {
        const auto shape = static_cast<MarkerShape>(i % LqExample::markerShapeCount);
        const std::string name = std::string(LqExample::GetShapeName(shape)) + " " + std::to_string(i / 10 + 1);
        auto* marker = new MarkerSymbol(-1, ZedaUnicodeString::FromUtf8(name), shape, 14 + (i * 7) % 35,
                                        palette[i % std::size(palette)], (i * 15) % 360);
        marker->outlineColour = ZEDARGB(0x20, 0x20, 0x20);
        // Every twelfth marker stays at the root.
        VtSymbolGroup* group = i % 12 == 11 ? nullptr : GroupAt(lib.GetRootGroup(), GroupPath(shape));
        lib.AddSymbol(marker, group);
        RasterImage picture;
        if (!LqExample::RenderMarker(*marker, picture) || !lib.SetSymbolImage(marker->ID, picture))
            return false;
    }
    return true;
}

bool BuildLines(LineSymbolLib& lib)
{
    VtSymbolGroup* dashed = lib.GetRootGroup()->CreateChildGroup(u"Dashed");
    const struct {
        const char* name;
        double width;
        unsigned int colour;
        std::vector<int> dashes;
        VtSymbolGroup* group;
    } lines[] = {{"hairline", 0.5, ZEDARGB(0, 0, 0), {}, nullptr},
                 {"road", 4.0, ZEDARGB(0xE0, 0x80, 0x20), {}, nullptr},
                 {"path", 1.5, ZEDARGB(0x60, 0x40, 0x20), {6, 3}, dashed},
                 {"border", 2.0, ZEDARGB(0x80, 0x20, 0x80), {10, 3, 2, 3}, dashed},
                 {"rail", 3.0, ZEDARGB(0x30, 0x30, 0x30), {12, 4}, dashed}};
    for (const auto& line : lines) {
        auto* symbol = new LineSymbol(-1, ZedaUnicodeString::FromUtf8(line.name), line.width, line.colour, line.dashes);
        lib.AddSymbol(symbol, line.group);
        RasterImage picture;
        if (!LqExample::RenderLineSample(*symbol, 96, picture) || !lib.SetSymbolImage(symbol->ID, picture))
            return false;
    }
    return true;
}

std::string MakeWorkDirectory()
{
    std::error_code error;
    const std::filesystem::path system = std::filesystem::temp_directory_path(error);
    if (error)
        return {};
    std::string pattern = (system / "lqsymbol-demo-XXXXXX").string();
    return mkdtemp(pattern.data()) ? pattern : std::string();
}

// Median wall time of `repeat` runs, in milliseconds; false when a run fails.
bool Measure(int repeat, const std::function<bool()>& run, double& milliseconds)
{
    std::vector<double> times;
    for (int i = 0; i < repeat; ++i) {
        const auto start = std::chrono::steady_clock::now();
        if (!run())
            return false;
        times.push_back(std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    }
    std::sort(times.begin(), times.end());
    milliseconds = times[times.size() / 2];
    return true;
}

struct FormFigures {
    const char* form;
    unsigned int version;
    std::string path;
    long long bytes = 0;
    double saveMs = 0;
    double loadMs = 0;
};

// Saves and loads `lib` in one form `repeat` times; keeps the last load in
// `loaded`. Each save is a safe one, as every save of the program is: the
// time includes writing beside the target, syncing, checking and renaming.
template <typename Library>
bool RoundTrip(Library& lib, FormFigures& figures, int repeat, std::unique_ptr<Library>& loaded)
{
    const ZedaUnicodeString path = ZedaUnicodeString::FromUtf8(figures.path);
    std::string error;
    if (!Measure(repeat, [&] { return SaveLibrarySafely(lib, figures.path, figures.version, error); },
                 figures.saveMs)) {
        Report(figures.path, "cannot be saved: " + error);
        return false;
    }
    figures.bytes = static_cast<long long>(fs::file_size(figures.path));
    const bool loadedAll = Measure(repeat, [&] {
        loaded = std::make_unique<Library>();
        return loaded->LoadFromFile(path) != 0;
    }, figures.loadMs);
    if (!loadedAll)
        Report(figures.path, "cannot be loaded: " + loaded->GetLastError());
    return loadedAll;
}

bool Agree(const ResourceSymbolLib& a, const ResourceSymbolLib& b, const std::string& what)
{
    const auto differences = CompareLibraries(a, b);
    for (const std::string& difference : differences)
        Report(what, difference);
    std::printf("  %-44s %s\n", what.c_str(), differences.empty() ? "agree" : "DIFFER");
    return differences.empty();
}

bool WriteMarkerSheet(const MarkerSymbolLib& lib, const std::string& path, std::vector<std::string>& pages,
                      std::string& error)
{
    ContactSheet sheet("Demo markers: the pictures kept in the resource cache", 12, 56, 56);
    for (int i = 0; i < lib.GetSymbolCount(); ++i) {
        const int id = lib.GetIDAt(i);
        RasterImage picture;
        if (!lib.GetSymbolImage(id, picture))
            return false;
        sheet.Add(picture, std::string("#").append(std::to_string(id)).append("\n").append(lib.GetNameAt(i).ToUtf8()));
    }
    return sheet.Save(path, pages, error);
}

}  // namespace

int RunDemo(const DemoOptions& options)
{
    const std::string directory = options.directory.empty() ? MakeWorkDirectory() : options.directory;
    if (directory.empty())
        return Report("demo", "no work directory can be made in the temporary directory");
    if (const int failed = MakeOutputDirectory(directory))
        return failed;
    for (const char* name : {"markers.lqc", "markers.lqs", "lines.lqc", "lines.lqs", "markers.png", "markers-1.png"})
        if (const int refused = CheckOutput(directory + "/" + name, {}, options.force))
            return refused;
    std::printf("work directory: %s\n", directory.c_str());

    MarkerSymbolLib markers;
    const auto buildStart = std::chrono::steady_clock::now();
    if (!BuildMarkers(markers, options.markerCount))
        return Report("demo", "the sample markers cannot be drawn or stored: " + markers.GetLastError());
    const double buildMs =
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - buildStart).count();
    std::printf("built %d markers with pictures in %.1f ms\n", markers.GetSymbolCount(), buildMs);

    FormFigures container{"container", VTC::VtSymbolLib::containerVersion, directory + "/markers.lqc"};
    FormFigures stream{"stream", streamVersion, directory + "/markers.lqs"};
    std::unique_ptr<MarkerSymbolLib> fromContainer;
    std::unique_ptr<MarkerSymbolLib> fromStream;
    if (!RoundTrip(markers, container, options.repeat, fromContainer) ||
        !RoundTrip(markers, stream, options.repeat, fromStream))
        return exitFailure;

    LineSymbolLib lines;
    FormFigures lineContainer{"container", VTC::VtSymbolLib::containerVersion, directory + "/lines.lqc"};
    FormFigures lineStream{"stream", streamVersion, directory + "/lines.lqs"};
    std::unique_ptr<LineSymbolLib> linesFromContainer;
    std::unique_ptr<LineSymbolLib> linesFromStream;
    if (!BuildLines(lines))
        return Report("demo", "the sample lines cannot be drawn or stored: " + lines.GetLastError());
    if (!RoundTrip(lines, lineContainer, 1, linesFromContainer) || !RoundTrip(lines, lineStream, 1, linesFromStream))
        return exitFailure;

    std::printf("\nmarker library as loaded from %s:\n", container.path.c_str());
    PrintTree(*fromContainer);

    std::printf("\nchecks (IDs, order, names, fields, groups, pictures byte for byte):\n");
    bool agreed = Agree(markers, *fromContainer, "markers: built vs container form");
    agreed = Agree(markers, *fromStream, "markers: built vs stream form") && agreed;
    agreed = Agree(*fromContainer, *fromStream, "markers: container vs stream form") && agreed;
    agreed = Agree(lines, *linesFromContainer, "lines: built vs container form") && agreed;
    agreed = Agree(lines, *linesFromStream, "lines: built vs stream form") && agreed;

    std::printf("\nfigures for %d markers (median of %d runs):\n", markers.GetSymbolCount(), options.repeat);
    std::printf("  %-10s %-9s %12s %10s %10s\n", "form", "version", "file bytes", "save ms", "load ms");
    std::printf("  (a save writes beside the file, syncs, loads and compares what it wrote, and renames)\n");
    for (const FormFigures* figures : {&container, &stream})
        std::printf("  %-10s %-9u %12lld %10.2f %10.2f\n", figures->form, figures->version, figures->bytes,
                    figures->saveMs, figures->loadMs);

    const std::string sheet = directory + "/markers.png";
    std::vector<std::string> pages;
    std::string sheetError;
    if (!WriteMarkerSheet(*fromStream, sheet, pages, sheetError))
        return Report(sheet, sheetError);
    std::printf("\nmarker sheet:");
    for (const std::string& page : pages)
        std::printf(" %s", page.c_str());
    std::printf("\n");
    if (options.gallery)
        if (const int failed = RunGallery(directory + "/gallery", options.force))
            return failed;
    if (!agreed)
        return Report("demo", "the libraries do not agree");
    std::printf("demo passed\n");
    return exitOk;
}

}  // namespace LqTool
