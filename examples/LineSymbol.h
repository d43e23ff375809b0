#pragma once

#include <vector>

#include "ResourceSymbolLib.h"

namespace LqExample {

// A line symbol: a stroke of a width and colour, solid or dashed, with an
// optional picture of a sample stroke in the library's resource cache.
class LQ_EXPORT LineSymbol : public ResourceSymbol {
public:
    static constexpr double maxWidth = 1000.0;
    static constexpr int maxDashCount = 32;
    static constexpr int maxDashLength = 10000;

    LineSymbol() = default;
    LineSymbol(int id, const ZedaUnicodeString& symbolName, double lineWidth, unsigned int lineColour,
               std::vector<int> dashPattern = {});

    double width = 1.0;  // logical units, above 0 and at most maxWidth
    unsigned int colour = ZEDARGB(0, 0, 0);
    std::vector<int> dashes;  // alternating on and off lengths; empty = solid

    // Stream fields: double width, int colour, int dash count, the dash lengths.
    bool Write(VTC::VtStream& stream) const;
    // False, leaving the symbol as it was, when a field is missing or out of range.
    bool Read(VTC::VtStream& stream);
};

}  // namespace LqExample
