#include "Progress.h"

#include <unistd.h>

#include <cstdio>

namespace LqTool {

namespace {

using Clock = std::chrono::steady_clock;
constexpr auto quietStart = std::chrono::seconds(1);
constexpr auto redrawEvery = std::chrono::milliseconds(100);

bool ProgressShown()
{
    return !ToolVerbosity().quiet && (ToolVerbosity().progress || ::isatty(STDERR_FILENO));
}

}  // namespace

Verbosity& ToolVerbosity()
{
    static Verbosity verbosity;
    return verbosity;
}

void Remark(const std::string& text)
{
    if (!ToolVerbosity().quiet)
        std::printf("%s\n", text.c_str());
}

Progress::Progress(std::string label, long total)
    : label_(std::move(label)), total_(total),
      enabled_(ProgressShown()),
      start_(Clock::now()), lastDrawn_(start_)
{
}

Progress::~Progress()
{
    if (shown_)
        Draw(true);
}

void Progress::Advance(long steps)
{
    done_ += steps;
    if (!enabled_)
        return;
    const auto now = Clock::now();
    if (now - start_ < quietStart || (shown_ && now - lastDrawn_ < redrawEvery))
        return;
    lastDrawn_ = now;
    shown_ = true;
    Draw(false);
}

void Progress::Draw(bool last)
{
    std::fprintf(stderr, "\r%s: %ld/%ld%s", label_.c_str(), done_, total_, last ? "\n" : "");
    std::fflush(stderr);
}

StageProgress::StageProgress(std::string label, std::string stage)
    : label_(std::move(label)), stage_(std::move(stage)), start_(Clock::now())
{
    if (ProgressShown())
        ticker_ = std::jthread([this](std::stop_token stop) { Tick(stop); });
}

StageProgress::~StageProgress()
{
    if (!ticker_.joinable())
        return;
    ticker_.request_stop();
    ticker_.join();
    if (shown_)
        Draw(true);
}

void StageProgress::Stage(std::string stage)
{
    const std::lock_guard lock(mutex_);
    stage_ = std::move(stage);
}

void StageProgress::Tick(std::stop_token stop)
{
    const auto never = [] { return false; };
    std::unique_lock lock(mutex_);
    wake_.wait_for(lock, stop, quietStart, never);
    while (!stop.stop_requested()) {
        shown_ = true;
        Draw(false);
        wake_.wait_for(lock, stop, redrawEvery, never);
    }
}

void StageProgress::Draw(bool last)
{
    const double seconds = std::chrono::duration<double>(Clock::now() - start_).count();
    char text[64];
    std::snprintf(text, sizeof text, ", %.1f s", seconds);
    std::string line = label_ + ": " + stage_ + text;
    // Spaces over what is left of a longer line drawn before.
    const std::size_t length = line.size();
    line.append(drawnLength_ > length ? drawnLength_ - length : 0, ' ');
    drawnLength_ = length;
    std::fprintf(stderr, "\r%s%s", line.c_str(), last ? "\n" : "");
    std::fflush(stderr);
}

}  // namespace LqTool
