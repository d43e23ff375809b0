#include "Progress.h"

#include <unistd.h>

#include <cstdio>

namespace LqTool {

namespace {

using Clock = std::chrono::steady_clock;
constexpr auto quietStart = std::chrono::seconds(1);
constexpr auto redrawEvery = std::chrono::milliseconds(100);

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
      enabled_(!ToolVerbosity().quiet && (ToolVerbosity().progress || ::isatty(STDERR_FILENO))),
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

}  // namespace LqTool
