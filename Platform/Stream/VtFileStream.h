#pragma once

#include <memory>

#include "VtStream.h"

namespace VTC {

// A buffered stream over a file. Direction 1 creates or truncates, 2 opens an
// existing file for reading, 3 opens (creating if missing) for both.
class LQ_EXPORT VtFileStream : public VtStream {
public:
    VtFileStream();
    ~VtFileStream() override;  // flushes and closes

    bool Open(const ZedaUnicodeString& path, int direction, int bufferSize = 8192);
    // Flushes pending writes; false if they could not all be written.
    bool Flush();
    bool Close();

    unsigned long Save(const unsigned char* bytes, unsigned long count) override;
    unsigned long Load(unsigned char* bytes, unsigned long count) override;
    long long GetPosition() const override;
    bool SetPosition(long long offset, int whence) override;
    long long GetLength() const override;
    bool IsOpen() const override;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace VTC
