#include "VtToolkit.h"

#include <charconv>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <string_view>

namespace VTC {

namespace {

constexpr int kDefaultWidth = 1920;
constexpr int kDefaultHeight = 1080;

struct ScreenSize {
    int width;
    int height;
};

std::mutex g_overrideMutex;
std::optional<ScreenSize> g_override;

std::optional<int> ParsePositive(std::string_view text)
{
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value <= 0)
        return std::nullopt;
    return value;
}

// "WxH" with two positive integers; anything else is ignored.
std::optional<ScreenSize> SizeFromEnvironment()
{
    const char* value = std::getenv("LQ_SCREEN_SIZE");
    if (!value)
        return std::nullopt;
    const std::string_view text(value);
    const std::size_t separator = text.find_first_of("xX");
    if (separator == std::string_view::npos)
        return std::nullopt;
    const auto width = ParsePositive(text.substr(0, separator));
    const auto height = ParsePositive(text.substr(separator + 1));
    if (!width || !height)
        return std::nullopt;
    return ScreenSize{*width, *height};
}

ScreenSize CurrentSize()
{
    {
        const std::lock_guard lock(g_overrideMutex);
        if (g_override)
            return *g_override;
    }
    return SizeFromEnvironment().value_or(ScreenSize{kDefaultWidth, kDefaultHeight});
}

}  // namespace

int VtToolkit::GetScreenSize(int which)
{
    const ScreenSize size = CurrentSize();
    switch (which) {
    case 0: return size.width;
    case 1: return size.height;
    default: return 0;
    }
}

void VtToolkit::SetScreenSize(int width, int height)
{
    if (width <= 0 || height <= 0)
        return;
    const std::lock_guard lock(g_overrideMutex);
    g_override = ScreenSize{width, height};
}

void VtToolkit::ResetScreenSize()
{
    const std::lock_guard lock(g_overrideMutex);
    g_override.reset();
}

}  // namespace VTC
