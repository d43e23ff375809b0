#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "TempDir.h"
#include "VtLogFile.h"

using VTC::VtLogFile;
using VTC::VtLogRecord;

namespace {

// Leaves the process-wide log as the other tests expect it.
class LogTest : public ::testing::Test {
protected:
    VtLogFile* log = VtLogFile::GetInstance(false);

    void SetUp() override { log->ClearRecords(); }
    void TearDown() override
    {
        log->SetCapacity(100000);
        log->SetLogPath("");
        log->ClearRecords();
    }
};

std::vector<std::string> Lines(const std::filesystem::path& path)
{
    std::ifstream in(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

}  // namespace

TEST_F(LogTest, KeepsRecordsInOrder)
{
    EXPECT_EQ(VtLogFile::GetInstance(true), log);
    log->RecordLog(300, "EGa038", "Src/Symbol/VtSymbolLib", 12);
    log->RecordLog(400, nullptr, nullptr, 0);
    const std::vector<VtLogRecord> expected = {{300, "EGa038", "Src/Symbol/VtSymbolLib", 12}, {400, "", "", 0}};
    EXPECT_EQ(log->GetRecords(), expected);
    EXPECT_EQ(log->GetRecordCount(), 2u);
    log->ClearRecords();
    EXPECT_TRUE(log->GetRecords().empty());
}

TEST_F(LogTest, DropsTheOldestBeyondCapacity)
{
    log->SetCapacity(3);
    for (int line = 1; line <= 5; ++line)
        log->RecordLog(300, "EDb001", "src", line);
    const auto records = log->GetRecords();
    ASSERT_EQ(records.size(), 3u);
    EXPECT_EQ(records.front().line, 3);
    EXPECT_EQ(records.back().line, 5);

    log->SetCapacity(1);  // shrinking trims at once
    ASSERT_EQ(log->GetRecordCount(), 1u);
    EXPECT_EQ(log->GetRecords().front().line, 5);
}

TEST_F(LogTest, DefaultCapacityBoundsMemory)
{
    for (int line = 0; line < 100005; ++line)
        log->RecordLog(300, "EGa038", "src", line);
    EXPECT_EQ(log->GetRecordCount(), 100000u);
    EXPECT_EQ(log->GetRecords().front().line, 5);
}

TEST_F(LogTest, WritesOneLinePerRecordOnlyWhileAFileIsSet)
{
    lqtest::TempDir dir;
    const auto path = dir.Path("log.txt");
    log->RecordLog(300, "EAa001", "before", 1);
    ASSERT_TRUE(log->SetLogPath(path.string()));
    log->RecordLog(300, "EGa038", "Src/Symbol/VtSymbolLib", 42);
    log->RecordLog(400, "EEa005", "Src/Symbol/VtEspecialFill", 7);
    ASSERT_TRUE(log->SetLogPath(""));
    log->RecordLog(300, "EAa002", "after", 2);
    EXPECT_EQ(Lines(path),
              (std::vector<std::string>{"300 EGa038 Src/Symbol/VtSymbolLib:42", "400 EEa005 Src/Symbol/VtEspecialFill:7"}));
    EXPECT_EQ(log->GetRecordCount(), 4u);
    EXPECT_FALSE(log->SetLogPath(dir.Path("missing/log.txt").string()));
}

TEST_F(LogTest, RecordsFromManyThreadsAllArrive)
{
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([this, t] {
            for (int i = 0; i < 2000; ++i)
                log->RecordLog(t, "EGa038", "thread", i);
        });
    for (auto& thread : threads)
        thread.join();
    const auto records = log->GetRecords();
    ASSERT_EQ(records.size(), 8000u);
    std::vector<int> lastLine(4, -1);
    for (const auto& record : records) {
        EXPECT_EQ(record.line, lastLine[static_cast<std::size_t>(record.level)] + 1);  // each thread's order kept
        lastLine[static_cast<std::size_t>(record.level)] = record.line;
    }
}
