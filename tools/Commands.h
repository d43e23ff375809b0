#pragma once

#include <string>

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
};
int RunDemo(const DemoOptions& options);

int RunGallery(const std::string& directory);

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
