#pragma once

#include <utility>
#include <vector>

#include "LqBase.h"

namespace VTC {

// Colour table of an 8-bit image: ZEDARGBA values.
class LQ_EXPORT VtPalette {
public:
    VtPalette() = default;
    explicit VtPalette(std::vector<unsigned int> colours) : colours_(std::move(colours)) {}

    int GetCount() const { return static_cast<int>(colours_.size()); }
    unsigned int GetColour(int index) const { return colours_.at(static_cast<std::size_t>(index)); }
    void SetColours(std::vector<unsigned int> colours) { colours_ = std::move(colours); }
    void RemoveAll() { colours_.clear(); }

private:
    std::vector<unsigned int> colours_;
};

}  // namespace VTC
