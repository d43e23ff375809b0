#pragma once

#include <string_view>

#include "ResourceSymbolLib.h"

namespace LqExample {

enum class MarkerShape : int { Circle, Square, Triangle, Diamond, Pentagon, Hexagon, Star, Cross, Saltire, Arrow };
constexpr int markerShapeCount = 10;

LQ_EXPORT const char* GetShapeName(MarkerShape shape);
// Accepts the names GetShapeName gives; false for any other text.
LQ_EXPORT bool ParseShapeName(std::string_view text, MarkerShape& shape);

// A point symbol: a filled, outlined shape of a given size and rotation, and
// a picture of it kept in the library's resource cache.
class LQ_EXPORT MarkerSymbol : public ResourceSymbol {
public:
    static constexpr int maxSize = 1024;

    MarkerSymbol() = default;
    MarkerSymbol(int id, const ZedaUnicodeString& symbolName, MarkerShape markerShape, int markerSize,
                 unsigned int fillColour, double rotationDegrees = 0.0);

    MarkerShape shape = MarkerShape::Circle;
    int size = 16;  // pixels across, 1 .. maxSize
    unsigned int colour = ZEDARGB(0, 0, 0);
    unsigned int outlineColour = ZEDARGB(0, 0, 0);
    double rotation = 0.0;  // degrees, counter-clockwise

    // Stream fields: int shape, int size, int colour, int outline colour, double rotation.
    bool Write(VTC::VtStream& stream) const;
    // False, leaving the symbol as it was, when a field is missing or out of range.
    bool Read(VTC::VtStream& stream);
};

}  // namespace LqExample
