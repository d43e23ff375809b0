// The progress line of work that cannot count its steps (a save and its
// check): shown after a second, redrawn in place with its stage, ended with
// the work; never for quick work, never with -q.

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>

#include "Progress.h"
#include "ToolTestSupport.h"

namespace {

using namespace lqtool;
using namespace std::chrono_literals;

class ProgressTest : public ToolWorkspace {
protected:
    static void SetUpTestSuite() { MakeRoot("lq-progress-"); }
    static void TearDownTestSuite() { RemoveRoot(); }

    void SetUp() override { LqTool::ToolVerbosity() = {false, true}; }
    void TearDown() override { LqTool::ToolVerbosity() = {}; }

    // What `work` writes on standard error.
    template <typename Task>
    static std::string StandardError(Task work)
    {
        const std::string path = Work("stderr.txt");
        std::fflush(stderr);
        const int saved = ::dup(STDERR_FILENO);
        const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        ::dup2(file, STDERR_FILENO);
        ::close(file);
        work();
        std::fflush(stderr);
        ::dup2(saved, STDERR_FILENO);
        ::close(saved);
        return ReadFileText(path);
    }
};

TEST_F(ProgressTest, LongWorkShowsItsStagesAndEndsTheLine)
{
    const std::string shown = StandardError([] {
        LqTool::StageProgress progress("save big.lqc", "writing");
        std::this_thread::sleep_for(1300ms);
        progress.Stage("checking");
        std::this_thread::sleep_for(300ms);
    });
    EXPECT_EQ(shown.rfind("\rsave big.lqc: writing, 1.", 0), 0u) << shown;
    EXPECT_NE(shown.find("\rsave big.lqc: checking, 1."), std::string::npos) << shown;
    EXPECT_EQ(shown.find("writing", shown.find("checking")), std::string::npos) << "stages go forward: " << shown;
    ASSERT_FALSE(shown.empty());
    EXPECT_EQ(shown.back(), '\n');
    EXPECT_EQ(std::count(shown.begin(), shown.end(), '\n'), 1);
}

TEST_F(ProgressTest, QuickOrQuietWorkShowsNothing)
{
    EXPECT_EQ(StandardError([] {
                  LqTool::StageProgress progress("save small.lqc", "writing");
                  std::this_thread::sleep_for(200ms);
              }),
              "");
    LqTool::ToolVerbosity() = {true, true};
    EXPECT_EQ(StandardError([] {
                  LqTool::StageProgress progress("save big.lqc", "writing");
                  std::this_thread::sleep_for(1200ms);
              }),
              "");
}

}  // namespace
