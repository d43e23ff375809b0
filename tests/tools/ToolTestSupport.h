#pragma once

// Runs the lqsymbol program as a user would, in a private work directory
// whose tmp/ is the program's TMPDIR.

#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "LqTestSupport.h"

namespace lqtool {

namespace fs = std::filesystem;

struct Outcome {
    int code = -1;
    std::string out;
    std::string err;
};

using lqtest::ReadFileText;
using lqtest::WriteFile;

inline std::string Quote(const std::string& text)
{
    std::string quoted = "'";
    for (const char c : text)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

// The names in a directory, sorted.
inline std::vector<std::string> Listing(const fs::path& directory)
{
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(directory))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

class ToolWorkspace : public ::testing::Test {
protected:
    static void MakeRoot(const std::string& prefix)
    {
        folder = std::make_unique<lqtest::PrivateTmpdir>(prefix);
        root = folder->Root();
    }
    static void RemoveRoot() { folder.reset(); }

    // Runs lqsymbol with `arguments`; `prefix` goes before it on the shell's
    // command line (an environment setting, prlimit, setpriv).
    static Outcome Lq(const std::vector<std::string>& arguments, const std::string& prefix = "")
    {
        static int counter = 0;
        const fs::path out = root / ("out" + std::to_string(counter) + ".txt");
        const fs::path err = root / ("err" + std::to_string(counter++) + ".txt");
        std::string command = prefix + Quote(LQSYMBOL_PATH);
        for (const std::string& argument : arguments)
            command += " " + Quote(argument);
        command += " >" + Quote(out.string()) + " 2>" + Quote(err.string()) + " </dev/null";
        const int status = std::system(command.c_str());
        Outcome run;
        run.code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        run.out = ReadFileText(out);
        run.err = ReadFileText(err);
        fs::remove(out);
        fs::remove(err);
        return run;
    }

    static std::string Work(const std::string& name) { return (root / name).string(); }

    static inline std::unique_ptr<lqtest::PrivateTmpdir> folder;
    static inline fs::path root;
};

// The same with a directory of its own for each test, named after the test.
class PerTestWorkspace : public ToolWorkspace {
protected:
    void SetUp() override
    {
        directory = Work(::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::create_directory(directory);
    }

    std::string In(const std::string& name) const { return directory + "/" + name; }

    std::string directory;
};

}  // namespace lqtool
