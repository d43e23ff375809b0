#pragma once

#include <vector>

#include "LqExport.h"

namespace VTC {

// A growable byte buffer.
class LQ_EXPORT VtByteArray {
public:
    VtByteArray() = default;
    VtByteArray(const unsigned char* bytes, long long count);

    const unsigned char* GetData() const { return bytes_.data(); }
    unsigned char* GetData() { return bytes_.data(); }
    long long GetSize() const { return static_cast<long long>(bytes_.size()); }
    bool IsEmpty() const { return bytes_.empty(); }

    void Append(const unsigned char* bytes, long long count);
    void SetSize(long long size);  // new bytes are 0
    void RemoveAll();

    friend bool operator==(const VtByteArray&, const VtByteArray&) = default;

private:
    std::vector<unsigned char> bytes_;
};

}  // namespace VTC
