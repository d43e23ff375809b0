#pragma once

// Copies of pixel memory. Large copies store past the cache: their target
// would not stay there anyway, and a cached store first reads every line it
// writes, a third more memory traffic.

#include <cstddef>

namespace VTC::gfx::raster {

// From this many bytes in one operation on, copies stream.
constexpr std::size_t kStreamingBytes = std::size_t{4} << 20;

// Copies n bytes; the regions do not overlap.
void CopyBytes(unsigned char* target, const unsigned char* source, std::size_t n);

// Row by row, for an operation of `total` bytes in all: streams when the
// total is large; Finish() makes the streamed stores visible.
class RowCopier {
public:
    explicit RowCopier(std::size_t total) : streaming_(total >= kStreamingBytes) {}
    RowCopier(const RowCopier&) = delete;
    RowCopier& operator=(const RowCopier&) = delete;
    ~RowCopier() { Finish(); }

    void Copy(unsigned char* target, const unsigned char* source, std::size_t n) const;
    void Finish();

private:
    bool streaming_;
};

}  // namespace VTC::gfx::raster
