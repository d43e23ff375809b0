#include "VtFileStream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace VTC {

namespace {

int OpenFlags(int direction)
{
    switch (direction) {
    case VT_STREAM_WRITE: return O_WRONLY | O_CREAT | O_TRUNC;
    case VT_STREAM_READ: return O_RDONLY;
    case VT_STREAM_READWRITE: return O_RDWR | O_CREAT;
    default: return -1;
    }
}

// Writes all of `count` bytes at `offset`, retrying short writes.
bool WriteAllAt(int fd, const unsigned char* bytes, std::size_t count, long long offset)
{
    while (count > 0) {
        const ssize_t written = pwrite(fd, bytes, count, offset);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes += written;
        count -= static_cast<std::size_t>(written);
        offset += written;
    }
    return true;
}

// Reads up to `count` bytes at `offset`; returns the count read, -1 on error.
long long ReadAt(int fd, unsigned char* bytes, std::size_t count, long long offset)
{
    std::size_t total = 0;
    while (total < count) {
        const ssize_t got = pread(fd, bytes + total, count - total, offset + static_cast<long long>(total));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return -1;
        if (got == 0)
            break;
        total += static_cast<std::size_t>(got);
    }
    return static_cast<long long>(total);
}

}  // namespace

// One buffer serves either pending writes or cached reads, never both: a
// write drops the read cache, a read or seek flushes pending writes first.
struct VtFileStream::State {
    enum class Mode { Idle, Reading, Writing };

    int fd = -1;
    int direction = 0;
    long long position = 0;
    long long length = 0;
    std::vector<unsigned char> buffer;
    std::size_t capacity = 0;
    Mode mode = Mode::Idle;
    long long bufferStart = 0;  // file offset of buffer[0]

    ~State()
    {
        if (fd >= 0)
            close(fd);
    }

    bool Flush()
    {
        if (mode != Mode::Writing)
            return true;
        const bool ok = WriteAllAt(fd, buffer.data(), buffer.size(), bufferStart);
        DropBuffer();
        if (!ok)
            ResyncLength();
        return ok;
    }

    void DropBuffer()
    {
        buffer.clear();
        mode = Mode::Idle;
    }

    // After a failed write the file holds less than we counted on.
    void ResyncLength()
    {
        struct stat info {};
        if (fstat(fd, &info) == 0)
            length = info.st_size;
        position = std::min(position, length);
    }

    bool IsCached(long long offset) const
    {
        return mode == Mode::Reading && offset >= bufferStart &&
               offset < bufferStart + static_cast<long long>(buffer.size());
    }

    bool Refill()
    {
        buffer.resize(capacity);
        const long long got = ReadAt(fd, buffer.data(), capacity, position);
        if (got <= 0) {
            DropBuffer();
            return false;
        }
        buffer.resize(static_cast<std::size_t>(got));
        bufferStart = position;
        mode = Mode::Reading;
        return true;
    }

    // All or nothing: on failure the position stays where it was.
    bool Read(unsigned char* bytes, std::size_t count)
    {
        if (!Flush())
            return false;
        const long long start = position;
        if (ReadSpan(bytes, count))
            return true;
        position = start;
        return false;
    }

    bool ReadSpan(unsigned char* bytes, std::size_t count)
    {
        while (count > 0) {
            if (!IsCached(position)) {
                if (count >= capacity)
                    return ReadDirect(bytes, count);
                if (!Refill())
                    return false;
            }
            const auto offset = static_cast<std::size_t>(position - bufferStart);
            const std::size_t chunk = std::min(count, buffer.size() - offset);
            std::memcpy(bytes, buffer.data() + offset, chunk);
            bytes += chunk;
            count -= chunk;
            position += static_cast<long long>(chunk);
        }
        return true;
    }

    bool ReadDirect(unsigned char* bytes, std::size_t count)
    {
        if (ReadAt(fd, bytes, count, position) != static_cast<long long>(count))
            return false;
        position += static_cast<long long>(count);
        return true;
    }

    bool Write(const unsigned char* bytes, std::size_t count)
    {
        if (count == 0)
            return true;
        if (mode == Mode::Reading)
            DropBuffer();
        // A write that goes straight to the file must not overtake pending bytes,
        // nor leave an empty pending block anchored at an older position.
        const bool direct = count >= capacity;
        if ((direct || buffer.size() + count > capacity) && !Flush())
            return false;
        if (direct) {
            if (!WriteAllAt(fd, bytes, count, position)) {
                ResyncLength();
                return false;
            }
        } else {
            if (mode == Mode::Idle) {
                mode = Mode::Writing;
                bufferStart = position;
            }
            buffer.insert(buffer.end(), bytes, bytes + count);
        }
        position += static_cast<long long>(count);
        length = std::max(length, position);
        return true;
    }
};

VtFileStream::VtFileStream() = default;

VtFileStream::~VtFileStream() { Close(); }

bool VtFileStream::Open(const ZedaUnicodeString& path, int direction, int bufferSize)
{
    Close();
    const int flags = OpenFlags(direction);
    if (flags < 0)
        return false;
    const std::string name = path.ToUtf8();
    const int fd = open(name.c_str(), flags | O_CLOEXEC, 0666);
    if (fd < 0)
        return false;
    auto state = std::make_unique<State>();
    state->fd = fd;
    struct stat info {};
    if (fstat(fd, &info) != 0 || S_ISDIR(info.st_mode))
        return false;  // the state closes the descriptor
    state->direction = direction;
    state->length = info.st_size;
    state->capacity = static_cast<std::size_t>(std::max(bufferSize, 1));
    state->buffer.reserve(state->capacity);
    state_ = std::move(state);
    ClearFailed();
    return true;
}

bool VtFileStream::Flush() { return state_ && state_->Flush(); }

bool VtFileStream::Close()
{
    if (!state_)
        return false;
    const bool flushed = state_->Flush();
    const int fd = std::exchange(state_->fd, -1);
    const bool closed = close(fd) == 0;
    state_.reset();
    ClearFailed();
    return flushed && closed;
}

unsigned long VtFileStream::Save(const unsigned char* bytes, unsigned long count)
{
    if (!state_ || state_->direction == VT_STREAM_READ || (count > 0 && !bytes) || !state_->Write(bytes, count)) {
        SetFailed();
        return 0;
    }
    return count;
}

unsigned long VtFileStream::Load(unsigned char* bytes, unsigned long count)
{
    if (!state_ || state_->direction == VT_STREAM_WRITE || IsFailed() ||
        static_cast<unsigned long long>(GetRemaining()) < count || (count > 0 && !bytes) ||
        !state_->Read(bytes, count)) {
        SetFailed();
        return 0;
    }
    return count;
}

long long VtFileStream::GetPosition() const { return state_ ? state_->position : 0; }

bool VtFileStream::SetPosition(long long offset, int whence)
{
    if (!state_)
        return false;
    long long target = 0;
    if (!ResolvePosition(state_->position, state_->length, offset, whence, target))
        return false;
    if (target != state_->position && !state_->Flush())
        return false;
    state_->position = target;
    ClearFailed();
    return true;
}

long long VtFileStream::GetLength() const { return state_ ? state_->length : 0; }

bool VtFileStream::IsOpen() const { return state_ != nullptr; }

}  // namespace VTC
