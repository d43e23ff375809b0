// lqsymbol: inspects, converts and demonstrates symbol libraries, and draws
// the special fills.

#include <csignal>
#include <cstdio>
#include <exception>
#include <functional>

#include <CLI/CLI.hpp>

#include "Commands.h"
#include "ContactSheet.h"
#include "Drawing.h"
#include "VtSymbolLib.h"

namespace {

using namespace LqTool;

// A CLI11 validator for colours in the forms ParseColour takes.
CLI::Validator ColourValidator()
{
    return CLI::Validator(
        [](std::string& text) {
            unsigned int colour = 0;
            return ParseColour(text, colour) ? std::string() : "not a colour (#RRGGBB or r,g,b): " + text;
        },
        "COLOUR");
}

CLI::Validator StreamVersionValidator()
{
    return CLI::Validator(
        [](std::string& text) {
            unsigned long long version = 0;
            std::size_t used = 0;
            try {
                version = std::stoull(text, &used);
            } catch (const std::exception&) {
                used = 0;
            }
            if (used != text.size() || version == 0 || version > 0xFFFFFFFFull)
                return std::string("not a format version: ") + text;
            if (version == VTC::VtSymbolLib::containerVersion)
                return std::string("20120328 is the container form's version");
            return std::string();
        },
        "VERSION");
}

unsigned int Colour(const std::string& text)
{
    unsigned int colour = 0;
    ParseColour(text, colour);
    return colour;
}

}  // namespace

int main(int argc, char** argv)
{
    // Past a file-size limit a write should fail and be reported, not kill the program.
    std::signal(SIGXFSZ, SIG_IGN);
    CLI::App app{"lqsymbol: symbol libraries (marker and line examples) and special fills"};
    app.require_subcommand(1);
    app.set_version_flag("--version", "lqsymbol " LQ_VERSION);
    // Options of the program, such as --version, are also taken after a subcommand.
    app.fallthrough();
    std::function<int()> run;

    DemoOptions demo;
    auto* demoCommand = app.add_subcommand("demo", "build a sample library, save and load it in both forms, check "
                                                   "and time them, and draw the gallery");
    demoCommand->add_option("-d,--dir", demo.directory, "work directory (default: a new one under $TMPDIR)");
    demoCommand->add_option("--count", demo.markerCount, "number of markers")->check(CLI::Range(1, 5000));
    demoCommand->add_option("--repeat", demo.repeat, "timed saves and loads of each form")->check(CLI::Range(1, 1000));
    demoCommand->add_flag("!--no-gallery", demo.gallery, "skip the gallery");
    demoCommand->callback([&] { run = [&] { return RunDemo(demo); }; });

    std::string file;
    auto* treeCommand = app.add_subcommand("tree", "print the group tree of a library file");
    treeCommand->add_option("FILE", file, "library file")->required();
    treeCommand->callback([&] { run = [&] { return RunTree(file); }; });

    bool json = false;
    auto* infoCommand = app.add_subcommand("info", "describe a library file: form, version, counts, storage");
    infoCommand->add_option("FILE", file, "library file")->required();
    infoCommand->add_flag("--json", json, "print JSON");
    infoCommand->callback([&] { run = [&] { return RunInfo(file, json); }; });

    std::string output;
    std::string form;
    bool force = false;
    unsigned int streamVersion = 20050302;
    auto* convertCommand = app.add_subcommand("convert", "save a library file in the other form");
    convertCommand->add_option("IN", file, "library file to read")->required();
    convertCommand->add_option("OUT", output, "library file to write")->required();
    convertCommand->add_option("--form", form, "container or stream")
        ->required()
        ->check(CLI::IsMember({"container", "stream"}));
    convertCommand->add_option("--format-version", streamVersion, "format version of the stream form")
        ->capture_default_str()
        ->check(StreamVersionValidator());
    convertCommand->add_flag("--force", force, "replace OUT if it exists");
    convertCommand->callback([&] { run = [&] { return RunConvert(file, output, form, streamVersion, force); }; });

    std::string imageDirectory;
    auto* exportCommand = app.add_subcommand("export", "write a library file's symbols and groups as JSON");
    exportCommand->add_option("FILE", file, "library file")->required();
    exportCommand->add_flag("--json", json, "JSON output (the only format)")->required();
    exportCommand->add_option("-o,--output", output, "output file (default: standard output)");
    exportCommand->add_option("--images", imageDirectory, "also write each picture as <ID>.png into this directory");
    exportCommand->add_flag("--force", force, "replace the output and pictures if they exist");
    exportCommand->callback([&] { run = [&] { return RunExport(file, output, imageDirectory, force); }; });

    auto* galleryCommand = app.add_subcommand("gallery", "draw contact sheets of the special fills");
    galleryCommand->add_option("-o,--output", output, "directory for the sheets")->required();
    galleryCommand->callback([&] { run = [&] { return RunGallery(output); }; });

    FillOptions fill;
    std::string colour1 = "#1F4E9A";
    std::string colour2 = "#F2C14E";
    auto* fillCommand = app.add_subcommand("fill", "draw one fill into a PNG (or a PDF from the printer surface)");
    fillCommand->add_option("-o,--output", fill.output, "PNG or PDF file")->required();
    fillCommand->add_option("--kind", fill.kind, "linear, radial, conical, square, plain or transparent")
        ->check(CLI::IsMember({"linear", "radial", "conical", "square", "plain", "transparent"}));
    fillCommand->add_option("--shape", fill.shape, "rectangle, polygon or multipolygon")
        ->check(CLI::IsMember({"rectangle", "polygon", "multipolygon"}));
    fillCommand->add_option("--surface", fill.surface, "window16, window24, window32, printer, native or image")
        ->check(CLI::IsMember({"window16", "window24", "window32", "printer", "native", "image"}));
    fillCommand->add_option("--colour1", colour1, "first colour (the transparent fill's colour)")
        ->check(ColourValidator());
    fillCommand->add_option("--colour2", colour2, "second colour")->check(ColourValidator());
    fillCommand->add_option("--angle", fill.angle, "gradient angle in degrees, counter-clockwise");
    fillCommand->add_option("--offset-x", fill.offsetX, "horizontal shift of the gradient centre, percent");
    fillCommand->add_option("--offset-y", fill.offsetY, "vertical shift of the gradient centre, percent");
    fillCommand->add_option("--transparency", fill.transparency, "percent of the background that shows through");
    fillCommand->add_option("--width", fill.width, "surface width in pixels")->check(CLI::Range(8, 8000));
    fillCommand->add_option("--height", fill.height, "surface height in pixels")->check(CLI::Range(8, 8000));
    fillCommand->add_flag("--force", fill.force, "replace the output if it exists");
    fillCommand->callback([&] {
        fill.colour1 = Colour(colour1);
        fill.colour2 = Colour(colour2);
        run = [&] { return RunFill(fill); };
    });

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? exitOk : exitUsage;
    }
    int result = exitFailure;
    try {
        result = run();
    } catch (const std::exception& error) {
        Report("internal error", error.what());
    }
    ReleaseTextCaches();
    return result;
}
