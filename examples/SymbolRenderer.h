#pragma once

#include <string>

#include "LineSymbol.h"
#include "MarkerSymbol.h"
#include "RasterImage.h"

namespace VTC {
class VtImage;
}

namespace LqExample {

// Draws the picture of a marker with the framework's graphics: a square of
// size + 2 pixels, transparent around the shape.
LQ_EXPORT bool RenderMarker(const MarkerSymbol& marker, RasterImage& image);
// Draws a sample stroke of a line symbol, `length` pixels long.
LQ_EXPORT bool RenderLineSample(const LineSymbol& line, int length, RasterImage& image);

// Conversions between a RasterImage and a 32-bit VtImage, and PNG output.
LQ_EXPORT bool CopyFromImage(const VTC::VtImage& source, RasterImage& image);
LQ_EXPORT bool SavePng(const RasterImage& image, const std::string& path);

}  // namespace LqExample
