#include "VtLogFile.h"

#include <cstdio>
#include <cstdlib>
#include <deque>
#include <mutex>

namespace VTC {

namespace {

constexpr std::size_t kDefaultCapacity = 100000;

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using LogFileHandle = std::unique_ptr<std::FILE, FileCloser>;

LogFileHandle OpenForAppend(const std::string& path) { return LogFileHandle(std::fopen(path.c_str(), "a")); }

}  // namespace

struct VtLogFile::State {
    mutable std::mutex mutex;
    std::deque<VtLogRecord> records;
    std::size_t capacity = kDefaultCapacity;
    LogFileHandle file;

    void Trim()
    {
        while (records.size() > capacity)
            records.pop_front();
    }
};

VtLogFile* VtLogFile::GetInstance(bool)
{
    // Never destroyed: code running in static destructors may still log.
    static VtLogFile* const instance = new VtLogFile();
    return instance;
}

VtLogFile::VtLogFile() : state_(std::make_unique<State>())
{
    if (const char* path = std::getenv("LQ_LOG_FILE"); path && *path)
        state_->file = OpenForAppend(path);
}

VtLogFile::~VtLogFile() = default;

void VtLogFile::RecordLog(int level, const char* code, const char* source, int line)
{
    VtLogRecord record{level, code ? code : "", source ? source : "", line};
    const std::lock_guard lock(state_->mutex);
    if (state_->file) {
        std::fprintf(state_->file.get(), "%d %s %s:%d\n", level, record.code.c_str(), record.source.c_str(), line);
        std::fflush(state_->file.get());
    }
    if (state_->capacity == 0)
        return;
    state_->records.push_back(std::move(record));
    state_->Trim();
}

std::vector<VtLogRecord> VtLogFile::GetRecords() const
{
    const std::lock_guard lock(state_->mutex);
    return {state_->records.begin(), state_->records.end()};
}

std::size_t VtLogFile::GetRecordCount() const
{
    const std::lock_guard lock(state_->mutex);
    return state_->records.size();
}

void VtLogFile::ClearRecords()
{
    const std::lock_guard lock(state_->mutex);
    state_->records.clear();
}

void VtLogFile::SetCapacity(std::size_t records)
{
    const std::lock_guard lock(state_->mutex);
    state_->capacity = records;
    state_->Trim();
}

bool VtLogFile::SetLogPath(const std::string& path)
{
    LogFileHandle file;
    if (!path.empty()) {
        file = OpenForAppend(path);
        if (!file)
            return false;
    }
    const std::lock_guard lock(state_->mutex);
    state_->file = std::move(file);
    return true;
}

}  // namespace VTC
