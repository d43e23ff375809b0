#include "VtLogFile.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <mutex>
#include <string_view>
#include <unordered_map>

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

// The texts of records (codes and sources), each kept once; records refer to
// them by number. The texts a program logs are a handful of fixed strings, so
// after the first record of each, recording neither allocates nor copies text:
// a small cache by address finds the number, checked against the text.
class TextTable {
public:
    static constexpr std::uint16_t full = 0xFFFF;  // the number of every text past the table's size

    std::uint16_t Number(const char* text)
    {
        if (text == nullptr)
            text = "";
        Recent& recent = recent_[(reinterpret_cast<std::uintptr_t>(text) >> 3) % recent_.size()];
        if (recent.text == text && SameText(Text(recent.number), text))
            return recent.number;
        const auto found = numbers_.find(std::string_view(text));
        std::uint16_t number = full;
        if (found != numbers_.end()) {
            number = found->second;
        } else if (texts_.size() < full) {
            number = static_cast<std::uint16_t>(texts_.size());
            texts_.emplace_back(text);
            numbers_.emplace(texts_.back(), number);
        }
        recent = {text, number};
        return number;
    }

    const std::string& Text(std::uint16_t number) const
    {
        static const std::string tooMany = "(more distinct texts than the log keeps)";
        return number == full ? tooMany : texts_[number];
    }

private:
    // Stops at the first difference, so a short text is never read past its end.
    static bool SameText(const std::string& kept, const char* text)
    {
        return std::strncmp(kept.c_str(), text, kept.size() + 1) == 0;
    }

    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
    };
    struct Recent {
        const char* text = nullptr;
        std::uint16_t number = 0;
    };

    std::deque<std::string> texts_;  // never moved, so the map's keys stay valid
    std::unordered_map<std::string_view, std::uint16_t, Hash, std::equal_to<>> numbers_;
    std::array<Recent, 64> recent_{};
};

// A record as kept in memory: its texts by number.
struct StoredRecord {
    int level = 0;
    int line = 0;
    std::uint16_t code = 0;
    std::uint16_t source = 0;
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

    std::vector<VtLogRecord> Records(const TextTable& texts) const
    {
        std::vector<VtLogRecord> records;
        records.reserve(count_);
        for (std::size_t i = 0; i < count_; ++i) {
            const StoredRecord& record = slots_[(start_ + i) % slots_.size()];
            records.push_back({record.level, texts.Text(record.code), texts.Text(record.source), record.line});
        }
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
    TextTable texts;
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
    const std::lock_guard lock(state_->mutex);
    const StoredRecord record{level, line, state_->texts.Number(code), state_->texts.Number(source)};
    if (state_->file) {
        std::fprintf(state_->file.get(), "%d %s %s:%d\n", level, state_->texts.Text(record.code).c_str(),
                     state_->texts.Text(record.source).c_str(), line);
    }
    state_->ring.Push(record);
}

std::vector<VtLogRecord> VtLogFile::GetRecords() const
{
    const std::lock_guard lock(state_->mutex);
    return state_->ring.Records(state_->texts);
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
