#pragma once

#include <chrono>
#include <string>

// What the program says besides its results.
namespace LqTool {

struct Verbosity {
    bool quiet = false;     // -q: no progress, no remarks
    bool progress = false;  // --progress: progress even when standard error is not a terminal
};
Verbosity& ToolVerbosity();

// Prints a remark on standard output unless -q was given.
void Remark(const std::string& text);

// "label: done/total" on standard error, redrawn in place, for work that
// has taken more than a second; only on a terminal or with --progress.
class Progress {
public:
    Progress(std::string label, long total);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Advance(long steps = 1);

private:
    void Draw(bool last);

    std::string label_;
    long total_;
    long done_ = 0;
    bool enabled_;
    bool shown_ = false;
    std::chrono::steady_clock::time_point start_;
    std::chrono::steady_clock::time_point lastDrawn_;
};

}  // namespace LqTool
