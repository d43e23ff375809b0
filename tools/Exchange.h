#pragma once

#include <string>

#include <nlohmann/json.hpp>

#include "ResourceSymbolLib.h"

// The pictures of the JSON exchange format, shared by export and import.
namespace LqTool {

using Json = nlohmann::ordered_json;

class OutputBatch;

// "picture" of a symbol: null, or width, height, the CRC-32 of its pixel
// bytes, and either "file" (<ID>.png, added to `files` to be written into
// `imageDirectory`) or "png" (the PNG file's bytes in base64) when there is
// no directory. Throws std::runtime_error when the picture cannot be read.
Json PictureJson(const LqExample::ResourceSymbolLib& lib, int id, const std::string& imageDirectory,
                 OutputBatch& files);
// The file name PictureJson writes a symbol's picture to.
std::string PictureFileName(int id);

// CRC-32 of a picture's pixel bytes, as the exchange format and the
// resource cache give it.
std::string PixelChecksum(const LqExample::RasterImage& picture);

}  // namespace LqTool
