#pragma once

#include <string>

#include "RasterImage.h"

namespace LqTool {

// Whether a file name ends in .png or .svg (any case).
bool IsPictureFile(const std::string& path);

// Reads a PNG or an SVG file (SVG drawn by librsvg) into a picture whose
// longer side is `side` pixels, transparency kept.
bool LoadPictureFile(const std::string& path, int side, LqExample::RasterImage& picture, std::string& error);

}  // namespace LqTool
