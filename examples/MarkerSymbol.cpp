#include "MarkerSymbol.h"

#include <array>
#include <cmath>

#include "LqStream.h"

namespace LqExample {

namespace {

constexpr std::array<const char*, markerShapeCount> shapeNames{
    "circle", "square", "triangle", "diamond", "pentagon", "hexagon", "star", "cross", "saltire", "arrow"};

}  // namespace

const char* GetShapeName(MarkerShape shape)
{
    const auto index = static_cast<std::size_t>(shape);
    return index < shapeNames.size() ? shapeNames[index] : "unknown";
}

bool ParseShapeName(std::string_view text, MarkerShape& shape)
{
    for (std::size_t i = 0; i < shapeNames.size(); ++i) {
        if (text == shapeNames[i]) {
            shape = static_cast<MarkerShape>(i);
            return true;
        }
    }
    return false;
}

MarkerSymbol::MarkerSymbol(int id, const ZedaUnicodeString& symbolName, MarkerShape markerShape, int markerSize,
                           unsigned int fillColour, double rotationDegrees)
    : shape(markerShape), size(markerSize), colour(fillColour), rotation(rotationDegrees)
{
    ID = id;
    name = symbolName;
}

bool MarkerSymbol::Write(VTC::VtStream& stream) const
{
    return stream.WriteInt(static_cast<int>(shape)) && stream.WriteInt(size) &&
           stream.WriteInt(static_cast<int>(colour)) && stream.WriteInt(static_cast<int>(outlineColour)) &&
           WriteDouble(stream, rotation);
}

bool MarkerSymbol::Read(VTC::VtStream& stream)
{
    int storedShape = 0;
    int storedSize = 0;
    int storedColour = 0;
    int storedOutline = 0;
    double storedRotation = 0.0;
    if (!stream.ReadInt(storedShape) || !stream.ReadInt(storedSize) || !stream.ReadInt(storedColour) ||
        !stream.ReadInt(storedOutline) || !ReadDouble(stream, storedRotation))
        return false;
    if (storedShape < 0 || storedShape >= markerShapeCount || storedSize < 1 || storedSize > maxSize ||
        !std::isfinite(storedRotation))
        return false;
    shape = static_cast<MarkerShape>(storedShape);
    size = storedSize;
    colour = static_cast<unsigned int>(storedColour);
    outlineColour = static_cast<unsigned int>(storedOutline);
    rotation = storedRotation;
    return true;
}

}  // namespace LqExample
