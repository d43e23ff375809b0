// The lqsymbol commands that read a library file: tree, info (text and
// JSON), export (JSON and pictures) and convert (to either form). The first
// byte picks the command; the rest is the file. Each command must leave its
// input as it was, write no more than 32 bytes per input byte plus 64 KiB,
// and print no control character but the line end. The file lies in the
// system's temporary directory and is named like a cache file, as a user's
// file may be.

#include <fcntl.h>
#include <sys/stat.h>

#include "Commands.h"
#include "FuzzSupport.h"

namespace {

constexpr long long outputPerInputByte = 32;
constexpr long long outputConstant = 64 * 1024;

// Standard output goes to a file whose length is the command's output.
int g_stdout = -1;

void ResetOutput()
{
    std::fflush(stdout);
    if (ftruncate(g_stdout, 0) != 0 || lseek(g_stdout, 0, SEEK_SET) != 0)
        lqfuzz::Finding("the output file cannot be reset");
}

long long DirectoryBytes(const std::string& path)
{
    long long total = 0;
    for (const std::string& name : lqfuzz::ListDirectory(path)) {
        total += lqfuzz::FileBytes(path + "/" + name);
        unlink((path + "/" + name).c_str());
    }
    return total;
}

long long OutputBytes()
{
    std::fflush(stdout);
    struct stat info {};
    return fstat(g_stdout, &info) == 0 ? info.st_size : 0;
}

bool OutputIsPrintable()
{
    for (const unsigned char c : lqfuzz::ReadFile(lqfuzz::WorkPath("stdout")))
        if ((c < 0x20 && c != '\n') || c == 0x7F)
            return false;
    return true;
}

long long RunCommand(std::uint8_t selector, const std::string& input)
{
    const std::string written = lqfuzz::WorkPath("written");
    const std::string pictures = lqfuzz::WorkPath("pictures");
    switch (selector % 6) {
    case 0: LqTool::RunTree(input); break;
    case 1: LqTool::RunInfo(input, false); break;
    case 2: LqTool::RunInfo(input, true); break;
    case 3: LqTool::RunExport(input, "", pictures, true); break;
    case 4: LqTool::RunConvert(input, written, "container", 20050302, true); break;
    default: LqTool::RunConvert(input, written, "stream", 20050302, true); break;
    }
    const long long bytes = OutputBytes() + lqfuzz::FileBytes(written) + DirectoryBytes(pictures);
    unlink(written.c_str());
    for (const char* side : {"-journal", "-wal", "-shm"})
        unlink((written + side).c_str());
    return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    lqfuzz::UsePrivateTemporaryDirectory();
    g_stdout = open(lqfuzz::WorkPath("stdout").c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (g_stdout < 0 || dup2(g_stdout, STDOUT_FILENO) < 0)
        lqfuzz::Finding("standard output cannot be redirected");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 1)
        return 0;
    lqfuzz::ClearLog();
    ResetOutput();
    const std::string input = lqfuzz::WorkPath("tmp/input.sc");
    lqfuzz::WriteFile(input, data + 1, size - 1);
    const long long output = RunCommand(data[0], input);
    lqfuzz::Require(OutputIsPrintable(), "a command printed a control character");
    lqfuzz::Require(output <= outputPerInputByte * static_cast<long long>(size) + outputConstant,
                    "a command wrote more than its bound");
    const lqfuzz::Bytes after = lqfuzz::ReadFile(input);
    lqfuzz::Require(after.size() == size - 1 && std::equal(after.begin(), after.end(), data + 1),
                    "a command changed the file it read");
    lqfuzz::RequireNoTemporaryFiles();
    for (const char* side : {"-journal", "-wal", "-shm"})
        unlink((input + side).c_str());
    return 0;
}
