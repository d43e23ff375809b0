#pragma once

#include "LqExport.h"
#include "ZedaUnicodeString.h"

namespace VTC {

using ZEDA::ZedaUnicodeString;

// Direction codes of Open.
enum VtStreamDirection : int { VT_STREAM_WRITE = 1, VT_STREAM_READ = 2, VT_STREAM_READWRITE = 3 };

// A binary stream with a little-endian encoding: WriteInt 4 bytes two's
// complement, WriteInt64 8 bytes, a string as an int count of UTF-16 code
// units followed by the units, 2 bytes each.
//
// A read that cannot be satisfied in full (past the end, a negative count, a
// string longer than what is left) leaves its target untouched, reads nothing,
// and puts the stream into the failed state; from then on reads return nothing
// until SetPosition succeeds. Nothing is thrown.
class LQ_EXPORT VtStream {
public:
    virtual ~VtStream();
    VtStream(const VtStream&) = delete;
    VtStream& operator=(const VtStream&) = delete;

    // Raw bytes; both return the count moved (all or nothing for Load).
    virtual unsigned long Save(const unsigned char* bytes, unsigned long count) = 0;
    virtual unsigned long Load(unsigned char* bytes, unsigned long count) = 0;
    virtual long long GetPosition() const = 0;
    // whence 0 = from the beginning, 1 = from the current position, 2 = from the end.
    // A position outside 0..length fails and leaves the position alone; a
    // successful seek clears the failed state.
    virtual bool SetPosition(long long offset, int whence) = 0;
    virtual long long GetLength() const = 0;
    virtual bool IsOpen() const = 0;

    bool IsFailed() const { return failed_; }
    void ClearFailed() { failed_ = false; }
    long long GetRemaining() const;

    bool WriteInt(const int& value);
    bool ReadInt(int& value);
    bool WriteInt64(const long long& value);
    bool ReadInt64(long long& value);

    VtStream& operator<<(const ZedaUnicodeString& text);
    VtStream& operator>>(ZedaUnicodeString& text);  // on failure text becomes empty

protected:
    VtStream() = default;
    void SetFailed() { failed_ = true; }
    // All-or-nothing read used by every typed read above.
    bool ReadExactly(unsigned char* bytes, unsigned long count);
    // The target of SetPosition(offset, whence); false when it falls outside 0..length.
    static bool ResolvePosition(long long position, long long length, long long offset, int whence,
                                long long& target);

private:
    bool failed_ = false;
};

}  // namespace VTC
