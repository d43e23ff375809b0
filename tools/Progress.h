#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

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

// "label: stage, N.N s" on standard error for one long piece of work that
// cannot count its steps (saving a library and checking what was written),
// redrawn by a thread of its own once the work has taken more than a second;
// the same rules as Progress. The line is ended when the object goes.
class StageProgress {
public:
    StageProgress(std::string label, std::string stage);
    ~StageProgress();
    StageProgress(const StageProgress&) = delete;
    StageProgress& operator=(const StageProgress&) = delete;

    void Stage(std::string stage);

private:
    void Tick(std::stop_token stop);
    void Draw(bool last);  // with mutex_ held

    std::string label_;
    std::string stage_;
    bool shown_ = false;
    std::size_t drawnLength_ = 0;
    std::chrono::steady_clock::time_point start_;
    std::mutex mutex_;
    std::condition_variable_any wake_;
    std::jthread ticker_;  // last: started once the rest is ready
};

}  // namespace LqTool
