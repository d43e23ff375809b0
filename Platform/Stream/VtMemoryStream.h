#pragma once

#include <vector>

#include "VtStream.h"

namespace VTC {

// A stream over a growable block of memory.
class LQ_EXPORT VtMemoryStream : public VtStream {
public:
    VtMemoryStream();
    ~VtMemoryStream() override;

    // direction: VtStreamDirection; initialSize is the capacity reserved.
    bool Open(int direction, long long initialSize = 1024);
    // Opens for reading (and writing, with direction 3) over a copy of `bytes`.
    bool Open(const unsigned char* bytes, long long count, int direction = VT_STREAM_READ);
    void Close();

    const unsigned char* GetData() const;

    unsigned long Save(const unsigned char* bytes, unsigned long count) override;
    unsigned long Load(unsigned char* bytes, unsigned long count) override;
    long long GetPosition() const override;
    bool SetPosition(long long offset, int whence) override;
    long long GetLength() const override;
    bool IsOpen() const override;

private:
    std::vector<unsigned char> data_;
    long long position_ = 0;
    int direction_ = 0;
};

}  // namespace VTC
