#pragma once

#include <string>

#include "RasterImage.h"

// PNG files of pictures with straight (not premultiplied) alpha, so that a
// picture written and read back is the same, byte for byte.
namespace LqTool {

// Any PNG (grey, palette, 16-bit, with or without alpha) as RGBA.
bool ReadPng(const std::string& path, LqExample::RasterImage& picture, std::string& error);
bool DecodePng(const std::string& bytes, LqExample::RasterImage& picture, std::string& error);
// An RGBA PNG; empty for an empty picture.
std::string EncodePng(const LqExample::RasterImage& picture);

}  // namespace LqTool
