#include <gtest/gtest.h>

#include <cstdlib>

#include "VtToolkit.h"

using VTC::VtToolkit;

// A size set in the program wins over LQ_SCREEN_SIZE, which wins over 1920 x 1080.
TEST(VtToolkit, ScreenSizeFromProgramEnvironmentOrDefault)
{
    const auto expectSize = [](int width, int height, const char* why) {
        EXPECT_EQ(VtToolkit::GetScreenSize(0), width) << why;
        EXPECT_EQ(VtToolkit::GetScreenSize(1), height) << why;
    };
    unsetenv("LQ_SCREEN_SIZE");
    expectSize(1920, 1080, "default");
    for (const char* malformed : {"800", "800x", "x600", "800x600x2", "-800x600", "0x600", "abcxdef", "800 x600", ""}) {
        setenv("LQ_SCREEN_SIZE", malformed, 1);
        expectSize(1920, 1080, malformed);
    }
    setenv("LQ_SCREEN_SIZE", "3840X2160", 1);
    expectSize(3840, 2160, "environment");
    VtToolkit::SetScreenSize(1024, 768);
    expectSize(1024, 768, "set");
    VtToolkit::ResetScreenSize();
    unsetenv("LQ_SCREEN_SIZE");
}
