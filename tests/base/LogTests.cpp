#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <vector>

#include "LqTestSupport.h"
#include "VtLogFile.h"

using VTC::VtLogFile;
using VTC::VtLogRecord;

TEST(VtLogFile, KeepsTheNewestRecordsInOrderAndWritesThemWhileAFileIsSet)
{
    VtLogFile* log = VtLogFile::GetInstance(false);
    lqtest::TempDir dir;
    log->ClearRecords();
    log->RecordLog(400, nullptr, nullptr, 0);
    ASSERT_TRUE(log->SetLogPath(dir.Path("log.txt").string()));
    log->RecordLog(300, "EGa038", "Src/Symbol/VtSymbolLib", 42);
    log->RecordLog(400, "EEa005", "Src/Symbol/VtEspecialFill", 7);
    ASSERT_TRUE(log->SetLogPath(""));
    EXPECT_FALSE(log->SetLogPath(dir.Path("missing/log.txt").string()));
    EXPECT_EQ(log->GetRecords(), (std::vector<VtLogRecord>{{400, "", "", 0}, {300, "EGa038", "Src/Symbol/VtSymbolLib", 42},
                                                           {400, "EEa005", "Src/Symbol/VtEspecialFill", 7}}));
    std::stringstream written;
    written << std::ifstream(dir.Path("log.txt")).rdbuf();
    EXPECT_EQ(written.str(), "300 EGa038 Src/Symbol/VtSymbolLib:42\n400 EEa005 Src/Symbol/VtEspecialFill:7\n");

    // 100,000 by default, fewer when asked; shrinking trims at once.
    for (int line = 0; line < 100005; ++line)
        log->RecordLog(300, "EGa038", "src", line);
    EXPECT_EQ(log->GetRecordCount(), 100000u);
    EXPECT_EQ(log->GetRecords().front().line, 5);
    log->SetCapacity(3);
    EXPECT_EQ(log->GetRecords().front().line, 100002);
    EXPECT_EQ(log->GetRecordCount(), 3u);
    // Growing again after the ring wrapped keeps the order and appends after the newest.
    log->RecordLog(300, "EGa038", "src", 7);
    log->SetCapacity(5);
    log->RecordLog(300, "EGa038", "src", 8);
    std::vector<int> lines;
    for (const VtLogRecord& record : log->GetRecords())
        lines.push_back(record.line);
    EXPECT_EQ(lines, (std::vector<int>{100003, 100004, 7, 8}));
    log->SetCapacity(0);
    log->RecordLog(300, "EGa038", "src", 9);
    EXPECT_EQ(log->GetRecordCount(), 0u);
    log->SetCapacity(100000);
    log->ClearRecords();
}

TEST(VtLogFile, KeepsTextsWholeReadsThemAtEachCallAndWritesBufferedLinesOnFlush)
{
    VtLogFile* log = VtLogFile::GetInstance(false);
    lqtest::TempDir dir;
    log->ClearRecords();
    ASSERT_TRUE(log->SetLogPath(dir.Path("log.txt").string()));
    const std::string longSource(300, 's');
    log->RecordLog(300, "ABCDEFGHIJKLMNOPQRST", longSource.c_str(), 3);
    // A buffer whose text changes between calls is read anew each time.
    char code[] = "EGa001";
    log->RecordLog(300, code, "src", 4);
    code[5] = '2';
    log->RecordLog(300, code, "src", 5);
    log->Flush();
    std::stringstream written;
    written << std::ifstream(dir.Path("log.txt")).rdbuf();
    EXPECT_EQ(written.str(), "300 ABCDEFGHIJKLMNOPQRST " + longSource + ":3\n300 EGa001 src:4\n300 EGa002 src:5\n");
    ASSERT_TRUE(log->SetLogPath(""));
    EXPECT_EQ(log->GetRecords(), (std::vector<VtLogRecord>{{300, "ABCDEFGHIJKLMNOPQRST", longSource, 3},
                                                           {300, "EGa001", "src", 4},
                                                           {300, "EGa002", "src", 5}}));
    log->ClearRecords();
}
