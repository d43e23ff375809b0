#include <gtest/gtest.h>

#include <cstdlib>

#include "VtToolkit.h"

using VTC::VtToolkit;

namespace {

class ScreenSizeTest : public ::testing::Test {
protected:
    void TearDown() override
    {
        unsetenv("LQ_SCREEN_SIZE");
        VtToolkit::ResetScreenSize();
    }
};

}  // namespace

TEST_F(ScreenSizeTest, SetValueThenEnvironmentThenDefault)
{
    unsetenv("LQ_SCREEN_SIZE");
    EXPECT_EQ(VtToolkit::GetScreenSize(0), 1920);
    EXPECT_EQ(VtToolkit::GetScreenSize(1), 1080);

    setenv("LQ_SCREEN_SIZE", "800x600", 1);
    EXPECT_EQ(VtToolkit::GetScreenSize(0), 800);
    EXPECT_EQ(VtToolkit::GetScreenSize(1), 600);

    VtToolkit::SetScreenSize(1024, 768);
    EXPECT_EQ(VtToolkit::GetScreenSize(0), 1024);
    EXPECT_EQ(VtToolkit::GetScreenSize(1), 768);

    VtToolkit::ResetScreenSize();
    EXPECT_EQ(VtToolkit::GetScreenSize(0), 800);
}

TEST_F(ScreenSizeTest, MalformedEnvironmentIsIgnored)
{
    for (const char* value : {"800", "800x", "x600", "800x600x2", "-800x600", "0x600", "abcxdef", "800 x600", ""}) {
        setenv("LQ_SCREEN_SIZE", value, 1);
        EXPECT_EQ(VtToolkit::GetScreenSize(0), 1920) << value;
        EXPECT_EQ(VtToolkit::GetScreenSize(1), 1080) << value;
    }
    setenv("LQ_SCREEN_SIZE", "3840X2160", 1);
    EXPECT_EQ(VtToolkit::GetScreenSize(0), 3840);
}
