// lqsymbol: makes, edits, inspects, converts, merges, exports and imports
// symbol libraries, draws their pictures, and draws the special fills.

#include <csignal>
#include <cstdio>
#include <exception>
#include <functional>

#include <CLI/CLI.hpp>

#include "Colour.h"
#include "Commands.h"
#include "ContactSheet.h"
#include "MarkerSymbol.h"
#include "Progress.h"
#include "VtSymbolLib.h"

namespace {

using namespace LqTool;
using Runner = std::function<int()>;

const char* const colourHelp = "#RRGGBB or #AARRGGBB";

CLI::Validator ColourValidator()
{
    return CLI::Validator(
        [](std::string& text) {
            unsigned int colour = 0;
            return ParseColour(text, colour) ? std::string() : "not a colour (" + std::string(colourHelp) + "): " + text;
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

std::vector<std::string> ShapeNames()
{
    std::vector<std::string> names;
    for (int i = 0; i < LqExample::markerShapeCount; ++i)
        names.emplace_back(LqExample::GetShapeName(static_cast<LqExample::MarkerShape>(i)));
    return names;
}

unsigned int Colour(const std::string& text)
{
    unsigned int colour = 0;
    ParseColour(text, colour);
    return colour;
}

// Everything read from the command line; one subcommand runs.
struct Arguments {
    std::string file;
    std::string output;
    std::string imageDirectory;
    bool json = false;
    OutputOptions outputOptions;
    unsigned int streamVersion = 20050302;
    std::string kind = "marker";
    AddOptions add;
    std::string name;
    std::string groupPath;
    int id = 0;
    std::vector<int> ids;
    std::vector<std::string> others;
    std::string groupAction;
    std::string groupArgument;
    int size = 0;
    DemoOptions demo;
    FillOptions fill;
    std::string colour1 = "#1F4E9A";
    std::string colour2 = "#F2C14E";
};

CLI::App* Command(CLI::App& app, Runner& run, const char* name, const char* description, Runner command)
{
    CLI::App* sub = app.add_subcommand(name, description);
    sub->callback([&run, command = std::move(command)] { run = command; });
    return sub;
}

void AddFileOption(CLI::App* command, Arguments& a, const char* name = "FILE", const char* text = "library file")
{
    command->add_option(name, a.file, text)->required();
}

void AddOutputOptions(CLI::App* command, Arguments& a, bool withForm)
{
    if (withForm)
        command->add_option("--form", a.outputOptions.form,
                            "container or stream (default: by the extension, .lqc container, .lqs stream)")
            ->check(CLI::IsMember({"container", "stream"}));
    command->add_flag("--force", a.outputOptions.force, "replace outputs that exist");
}

// -o OUTPUT, refused where a file is unless --force is given.
void AddRequiredOutput(CLI::App* command, Arguments& a, const char* what, bool withForm)
{
    command->add_option("-o,--output", a.output, what)->required();
    AddOutputOptions(command, a, withForm);
}

void AddInspectCommands(CLI::App& app, Arguments& a, Runner& run)
{
    AddFileOption(Command(app, run, "tree", "print the group tree of a library file", [&] { return RunTree(a.file); }),
                  a);

    auto* info = Command(app, run, "info", "describe a library file: form, version, counts, storage",
                         [&] { return RunInfo(a.file, a.json); });
    AddFileOption(info, a);
    info->add_flag("--json", a.json, "print JSON");

    auto* convert = Command(app, run, "convert", "save a library file in the other form", [&] {
        return RunConvert(a.file, a.output, a.outputOptions.form, a.streamVersion, a.outputOptions.force);
    });
    AddFileOption(convert, a, "IN", "library file to read");
    convert->add_option("OUT", a.output, "library file to write")->required();
    convert->add_option("--form", a.outputOptions.form, "container or stream")
        ->required()
        ->check(CLI::IsMember({"container", "stream"}));
    convert->add_option("--format-version", a.streamVersion, "format version of the stream form")
        ->check(StreamVersionValidator());
    AddOutputOptions(convert, a, false);

    auto* exporter = Command(app, run, "export", "write a library file's symbols, groups and pictures as JSON",
                             [&] { return RunExport(a.file, a.output, a.imageDirectory, a.outputOptions.force); });
    AddFileOption(exporter, a);
    exporter->add_flag("--json", a.json, "JSON output (the only format)")->required();
    exporter->add_option("-o,--output", a.output, "JSON file (default: standard output)");
    exporter->add_option("--images", a.imageDirectory,
                         "write each picture as <ID>.png into this directory (default: pictures inside the JSON)");
    AddOutputOptions(exporter, a, false);

    auto* importer = Command(app, run, "import", "make the library a JSON export describes",
                             [&] { return RunImport(a.file, a.output, a.imageDirectory, a.outputOptions); });
    AddFileOption(importer, a, "JSON", "JSON file written by export");
    AddRequiredOutput(importer, a, "library file to write", true);
    importer->add_option("--images", a.imageDirectory, "directory of the <ID>.png files the export wrote");
}

void AddLibraryCommands(CLI::App& app, Arguments& a, Runner& run)
{
    auto* create = Command(app, run, "new", "create an empty library file",
                           [&] { return RunNew(a.file, a.kind, a.outputOptions); });
    AddFileOption(create, a);
    create->add_option("--kind", a.kind, "marker or line")->required()->check(CLI::IsMember({"marker", "line"}));
    AddOutputOptions(create, a, true);

    auto* add = Command(app, run, "add", "add a symbol and print its ID", [&] {
        a.add.file = a.file;
        return RunAdd(a.add);
    });
    AddFileOption(add, a);
    add->add_option("--name", a.add.name, "name of the new symbol")->required();
    add->add_option("--group", a.add.group, "group path, names joined by / (\\/ within a name); missing groups "
                                             "are made (default: the root)");
    add->add_option("--shape", a.add.shape, "marker shape")->check(CLI::IsMember(ShapeNames()));
    add->add_option("--size", a.add.size, "marker size in pixels; for --picture the longer side (default 32)")
        ->check(CLI::Range(1, LqExample::MarkerSymbol::maxSize));
    add->add_option("--colour", a.add.colour, std::string("fill colour, ") + colourHelp)->check(ColourValidator());
    add->add_option("--outline", a.add.outline, std::string("outline colour, ") + colourHelp + " (default: the fill)")
        ->check(ColourValidator());
    add->add_option("--rotation", a.add.rotation, "degrees, counter-clockwise (default 0)");
    add->add_option("--picture", a.add.picture, "PNG or SVG file: a marker showing this picture, alpha kept");
    add->add_option("--width", a.add.width, "line width in logical units, above 0");
    add->add_option("--dashes", a.add.dashes, "dash pattern A,B,...: on and off lengths (default: solid)")
        ->delimiter(',');

    auto* folder = Command(app, run, "add-folder",
                           "add every PNG and SVG under DIR as a picture marker named after its file, in the group "
                           "of its subfolder",
                           [&] { return RunAddFolder(a.file, a.output, a.size); });
    AddFileOption(folder, a);
    folder->add_option("DIR", a.output, "folder of pictures")->required();
    folder->add_option("--size", a.size, "longer side of each picture in pixels")
        ->check(CLI::Range(1, LqExample::MarkerSymbol::maxSize))
        ->default_val(defaultPictureSize);

    auto* rename = Command(app, run, "rename", "rename a symbol", [&] { return RunRename(a.file, a.id, a.name); });
    AddFileOption(rename, a);
    rename->add_option("ID", a.id, "symbol ID")->required();
    rename->add_option("NAME", a.name, "new name")->required();

    auto* move = Command(app, run, "move", "move symbols into a group",
                         [&] { return RunMove(a.file, a.ids, a.groupPath); });
    AddFileOption(move, a);
    move->add_option("ID", a.ids, "symbol IDs")->required();
    move->add_option("--group", a.groupPath, "group path (made when missing; / for the root)")->required();

    auto* remove = Command(app, run, "remove", "remove symbols", [&] { return RunRemove(a.file, a.ids); });
    AddFileOption(remove, a);
    remove->add_option("ID", a.ids, "symbol IDs")->required();

    auto* group = Command(app, run, "group",
                          "create PATH, rename PATH NEWNAME, move PATH NEWPARENT (/ for the root) or remove PATH (its "
                          "symbols and groups go to its parent)",
                          [&] { return RunGroup(a.file, a.groupAction, a.groupPath, a.groupArgument); });
    AddFileOption(group, a);
    group->add_option("ACTION", a.groupAction, "create, rename, move or remove")
        ->required()
        ->check(CLI::IsMember({"create", "rename", "move", "remove"}));
    group->add_option("PATH", a.groupPath, "group path, names joined by / (\\/ within a name)")->required();
    group->add_option("ARGUMENT", a.groupArgument, "the new name (rename) or the new parent's path (move)");

    auto* merge = Command(app, run, "merge",
                          "write FILE with the symbols of the others added: new IDs where taken, free names where "
                          "taken, groups merged by path, pictures copied",
                          [&] { return RunMerge(a.file, a.others, a.output, a.outputOptions); });
    AddFileOption(merge, a);
    merge->add_option("OTHER", a.others, "libraries to add (either form)")->required();
    AddRequiredOutput(merge, a, "library file to write", true);
}

void AddPictureCommands(CLI::App& app, Arguments& a, Runner& run)
{
    auto* thumbnails = Command(app, run, "thumbnails",
                               "write one RGBA PNG per symbol, <ID>.png, transparent around the symbol; lines as a "
                               "sample stroke",
                               [&] { return RunThumbnails(a.file, a.output, a.size, a.outputOptions.force); });
    AddFileOption(thumbnails, a);
    AddRequiredOutput(thumbnails, a, "directory for the thumbnails", false);
    thumbnails->add_option("--size", a.size, "side of each thumbnail in pixels; larger pictures are scaled down")
        ->check(CLI::Range(8, 1024))
        ->default_val(defaultThumbnailSize);

    auto* sheet = Command(app, run, "sheet",
                          "draw a labelled contact sheet grouped by group; large libraries spread over OUT-1.png, "
                          "OUT-2.png, ...",
                          [&] { return RunSheet(a.file, a.output, a.outputOptions.force); });
    AddFileOption(sheet, a);
    AddRequiredOutput(sheet, a, "PNG file", false);
}

void AddDemoCommands(CLI::App& app, Arguments& a, Runner& run)
{
    auto* demo = Command(app, run, "demo",
                         "build a sample library, save and load it in both forms, check and time them, and draw the "
                         "gallery",
                         [&] { return RunDemo(a.demo); });
    demo->add_option("-d,--dir", a.demo.directory, "work directory (default: a new one under $TMPDIR)");
    demo->add_option("--count", a.demo.markerCount, "number of markers")->check(CLI::Range(1, 5000));
    demo->add_option("--repeat", a.demo.repeat, "timed saves and loads of each form")->check(CLI::Range(1, 1000));
    demo->add_flag("!--no-gallery", a.demo.gallery, "skip the gallery");
    demo->add_flag("--force", a.demo.force, "replace the files of an earlier run in the work directory");

    auto* gallery = Command(app, run, "gallery", "draw contact sheets of the special fills",
                            [&] { return RunGallery(a.output, a.outputOptions.force); });
    AddRequiredOutput(gallery, a, "directory for the sheets", false);

    FillOptions& fill = a.fill;
    auto* command = Command(app, run, "fill", "draw one fill into a PNG (or a PDF from the printer surface)", [&] {
        a.fill.output = a.output;
        a.fill.force = a.outputOptions.force;
        a.fill.colour1 = Colour(a.colour1);
        a.fill.colour2 = Colour(a.colour2);
        return RunFill(a.fill);
    });
    AddRequiredOutput(command, a, "PNG or PDF file", false);
    command->add_option("--kind", fill.kind, "linear, radial, conical, square, plain or transparent")
        ->check(CLI::IsMember({"linear", "radial", "conical", "square", "plain", "transparent"}));
    command->add_option("--shape", fill.shape, "rectangle, polygon or multipolygon")
        ->check(CLI::IsMember({"rectangle", "polygon", "multipolygon"}));
    command->add_option("--surface", fill.surface, "window16, window24, window32, printer, native or image")
        ->check(CLI::IsMember({"window16", "window24", "window32", "printer", "native", "image"}));
    command->add_option("--colour1", a.colour1, std::string("first colour (the transparent fill's colour), ") +
                                                    colourHelp)
        ->check(ColourValidator());
    command->add_option("--colour2", a.colour2, std::string("second colour, ") + colourHelp)->check(ColourValidator());
    command->add_option("--angle", fill.angle, "gradient angle in degrees, counter-clockwise");
    command->add_option("--offset-x", fill.offsetX,
                        "gradient centre shift in percent of the width; positive moves it right");
    command->add_option("--offset-y", fill.offsetY,
                        "gradient centre shift in percent of the height; positive moves it up");
    command->add_option("--transparency", fill.transparency, "percent of the background that shows through, 0 to 100")
        ->check(CLI::Range(0, 100));
    command->add_option("--width", fill.width, "surface width in pixels")->check(CLI::Range(8, 8000));
    command->add_option("--height", fill.height, "surface height in pixels")->check(CLI::Range(8, 8000));
}

}  // namespace

int main(int argc, char** argv)
{
    // Past a file-size limit a write should fail and be reported, not kill the program.
    std::signal(SIGXFSZ, SIG_IGN);
    CLI::App app{"lqsymbol: symbol libraries (marker and line examples) and special fills.\n"
                 "Exit codes: 0 success, 1 a file is bad or cannot be read or written, 2 usage error or refused "
                 "output."};
    app.require_subcommand(1);
    app.set_version_flag("--version", "lqsymbol " LQ_VERSION);
    app.add_flag("-q,--quiet", ToolVerbosity().quiet, "print results only: no remarks, no progress");
    app.add_flag("--progress", ToolVerbosity().progress, "show progress even when standard error is not a terminal");
    // Options of the program (--version, -q, --progress) are also taken after a subcommand.
    app.fallthrough();
    app.option_defaults()->always_capture_default();

    Arguments arguments;
    Runner run;
    AddLibraryCommands(app, arguments, run);
    AddInspectCommands(app, arguments, run);
    AddPictureCommands(app, arguments, run);
    AddDemoCommands(app, arguments, run);

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
