#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "LqExport.h"

namespace VTC {

struct LQ_EXPORT VtLogRecord {
    int level = 0;
    std::string code;
    std::string source;
    int line = 0;
    friend bool operator==(const VtLogRecord&, const VtLogRecord&) = default;
};

// The process-wide log. The most recent records are kept in memory (100,000 by
// default), 12 bytes each, with their codes and sources kept once (up to 65,534
// distinct texts) so that recording does not allocate; a file receives them
// too, through a buffer, when one is set with SetLogPath or the environment
// variable LQ_LOG_FILE. Thread-safe.
class LQ_EXPORT VtLogFile {
public:
    // The one instance; the flag is accepted for compatibility and ignored.
    static VtLogFile* GetInstance(bool create = false);

    void RecordLog(int level, const char* code, const char* source, int line);

    std::vector<VtLogRecord> GetRecords() const;  // oldest first
    std::size_t GetRecordCount() const;
    void ClearRecords();
    void SetCapacity(std::size_t records);
    // An empty path stops writing to a file. False if the file cannot be opened.
    bool SetLogPath(const std::string& path);
    // Writes the buffered lines out to the file (also done on exit and when the path changes).
    void Flush();

    VtLogFile(const VtLogFile&) = delete;
    VtLogFile& operator=(const VtLogFile&) = delete;

private:
    VtLogFile();
    ~VtLogFile();
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace VTC
