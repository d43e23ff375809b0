#include "VtLogFile.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

namespace VTC {

namespace {

constexpr std::size_t kDefaultCapacity = 100000;
constexpr std::size_t kFileBufferBytes = 64 * 1024;

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using LogFileHandle = std::unique_ptr<std::FILE, FileCloser>;

// Appending, through a buffer of its own: a record is written out with the
// buffer, at the latest when the path changes or the process exits.
LogFileHandle OpenForAppend(const std::string& path)
{
    LogFileHandle file(std::fopen(path.c_str(), "a"));
    if (file)
        std::setvbuf(file.get(), nullptr, _IOFBF, kFileBufferBytes);
    return file;
}

// A record as kept in memory: its texts copied into fixed fields, so that
// recording never allocates. Codes and sources are short names; longer ones
// keep their first bytes.
struct StoredRecord {
    int level = 0;
    int line = 0;
    char code[16] = {};
    char source[48] = {};

    static void CopyText(char* field, std::size_t size, const char* text)
    {
        const std::size_t length = text ? strnlen(text, size - 1) : 0;
        std::memcpy(field, text ? text : "", length);
        field[length] = '\0';
    }

    StoredRecord() = default;
    StoredRecord(int recordLevel, const char* recordCode, const char* recordSource, int recordLine)
        : level(recordLevel), line(recordLine)
    {
        CopyText(code, sizeof code, recordCode);
        CopyText(source, sizeof source, recordSource);
    }

    VtLogRecord ToRecord() const { return {level, code, source, line}; }
};

// The newest `capacity` records. Storage grows up to the capacity, then the
// oldest record is overwritten. While the ring is not full it starts at 0.
class RecordRing {
public:
    void Push(const StoredRecord& record)
    {
        if (capacity_ == 0)
            return;
        if (count_ < capacity_) {
            if (count_ < slots_.size())
                slots_[count_] = record;
            else
                slots_.push_back(record);
            ++count_;
            return;
        }
        slots_[start_] = record;
        start_ = (start_ + 1) % capacity_;
    }

    std::vector<VtLogRecord> Records() const
    {
        std::vector<VtLogRecord> records;
        records.reserve(count_);
        for (std::size_t i = 0; i < count_; ++i)
            records.push_back(slots_[(start_ + i) % slots_.size()].ToRecord());
        return records;
    }

    std::size_t Count() const { return count_; }

    void Clear()
    {
        start_ = 0;
        count_ = 0;
    }

    // Keeps the newest records that fit, laid out from 0 again.
    void SetCapacity(std::size_t capacity)
    {
        const std::size_t kept = std::min(count_, capacity);
        std::vector<StoredRecord> slots;
        slots.reserve(kept);
        for (std::size_t i = count_ - kept; i < count_; ++i)
            slots.push_back(slots_[(start_ + i) % slots_.size()]);
        slots_ = std::move(slots);
        start_ = 0;
        count_ = kept;
        capacity_ = capacity;
    }

private:
    std::vector<StoredRecord> slots_;
    std::size_t start_ = 0;
    std::size_t count_ = 0;
    std::size_t capacity_ = kDefaultCapacity;
};

}  // namespace

struct VtLogFile::State {
    mutable std::mutex mutex;
    RecordRing ring;
    LogFileHandle file;
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
    const StoredRecord record(level, code, source, line);
    const std::lock_guard lock(state_->mutex);
    if (state_->file)
        std::fprintf(state_->file.get(), "%d %s %s:%d\n", level, record.code, record.source, line);
    state_->ring.Push(record);
}

std::vector<VtLogRecord> VtLogFile::GetRecords() const
{
    const std::lock_guard lock(state_->mutex);
    return state_->ring.Records();
}

std::size_t VtLogFile::GetRecordCount() const
{
    const std::lock_guard lock(state_->mutex);
    return state_->ring.Count();
}

void VtLogFile::ClearRecords()
{
    const std::lock_guard lock(state_->mutex);
    state_->ring.Clear();
}

void VtLogFile::SetCapacity(std::size_t records)
{
    const std::lock_guard lock(state_->mutex);
    state_->ring.SetCapacity(records);
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

void VtLogFile::Flush()
{
    const std::lock_guard lock(state_->mutex);
    if (state_->file)
        std::fflush(state_->file.get());
}

}  // namespace VTC
