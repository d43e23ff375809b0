#pragma once

#include <optional>
#include <string>
#include <vector>

// The subcommands of lqsymbol. Each returns the process exit code: 0 on
// success, 1 when a file cannot be read or written or a check fails, 2 for a
// usage error or a refused output.
namespace LqTool {

constexpr int exitOk = 0;
constexpr int exitFailure = 1;
constexpr int exitUsage = 2;

// Prints "lqsymbol: <subject>: <message>" on stderr and returns exitFailure.
int Report(const std::string& subject, const std::string& message);
// The same message, returning exitUsage.
int Refuse(const std::string& subject, const std::string& message);

int RunTree(const std::string& path);
int RunInfo(const std::string& path, bool json);
int RunConvert(const std::string& in, const std::string& out, const std::string& form, unsigned int streamVersion,
               bool force);
int RunExport(const std::string& path, const std::string& output, const std::string& imageDirectory, bool force);

struct DemoOptions {
    std::string directory;  // empty: a fresh directory in the temporary directory
    int markerCount = 48;
    int repeat = 5;
    bool gallery = true;
    bool force = false;  // replace the files of an earlier run in `directory`
};
int RunDemo(const DemoOptions& options);

// Refuses (exitUsage) a directory that holds sheets already, unless `force`.
int RunGallery(const std::string& directory, bool force);

// Where a new library file goes: its form (empty: by the extension) and
// whether an existing file may be replaced.
struct OutputOptions {
    std::string form;
    bool force = false;
};

constexpr int defaultPictureSize = 32;     // pixels, the longer side of a picture marker
constexpr int defaultThumbnailSize = 64;   // pixels, the side of a thumbnail

int RunNew(const std::string& path, const std::string& kind, const OutputOptions& output);

struct AddOptions {
    std::string file;
    std::string name;
    std::string group;
    std::optional<std::string> shape;
    std::optional<int> size;
    std::optional<std::string> colour;
    std::optional<std::string> outline;
    std::optional<double> rotation;
    std::optional<std::string> picture;
    std::optional<double> width;
    std::optional<std::vector<int>> dashes;
};
int RunAdd(const AddOptions& options);
int RunAddFolder(const std::string& file, const std::string& directory, int size);
int RunRename(const std::string& file, int id, const std::string& name);
int RunMove(const std::string& file, const std::vector<int>& ids, const std::string& groupPath);
int RunRemove(const std::string& file, const std::vector<int>& ids);

// group FILE create|rename|move|remove PATH [ARGUMENT]
int RunGroup(const std::string& file, const std::string& action, const std::string& path,
             const std::string& argument);

int RunMerge(const std::string& file, const std::vector<std::string>& others, const std::string& output,
             const OutputOptions& options);
int RunImport(const std::string& json, const std::string& output, const std::string& imageDirectory,
              const OutputOptions& options);
int RunThumbnails(const std::string& file, const std::string& directory, int size, bool force);
int RunSheet(const std::string& file, const std::string& output, bool force);

struct FillOptions {
    std::string output;
    std::string kind = "linear";  // linear, radial, conical, square, plain, transparent
    std::string shape = "rectangle";  // rectangle, polygon, multipolygon
    std::string surface = "window32";  // window16, window24, window32, printer, native
    unsigned int colour1 = 0xFF1F4E9A;
    unsigned int colour2 = 0xFFF2C14E;
    double angle = 0.0;  // degrees
    int offsetX = 0;
    int offsetY = 0;
    int transparency = 0;
    int width = 320;
    int height = 240;
    bool force = false;
};
int RunFill(const FillOptions& options);

}  // namespace LqTool
