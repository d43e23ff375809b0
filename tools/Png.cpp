#include "Png.h"

#include <png.h>

#include "ResourceCache.h"

namespace LqTool {

using LqExample::RasterImage;

namespace {

// RasterImage pixels are ZEDARGBA values in host order: bytes B, G, R, A.
constexpr png_uint_32 pixelFormat = PNG_FORMAT_BGRA;

struct PngImage {
    png_image image{};
    PngImage() { image.version = PNG_IMAGE_VERSION; }
    ~PngImage() { png_image_free(&image); }
    PngImage(const PngImage&) = delete;
    PngImage& operator=(const PngImage&) = delete;
};

bool Finish(PngImage& png, RasterImage& picture, std::string& error)
{
    if (PNG_IMAGE_FAILED(png.image) || png.image.width == 0 || png.image.height == 0 ||
        png.image.width > static_cast<png_uint_32>(LqExample::ResourceCache::maxImageSide) ||
        png.image.height > static_cast<png_uint_32>(LqExample::ResourceCache::maxImageSide)) {
        error = PNG_IMAGE_FAILED(png.image) ? png.image.message : "the picture is empty or too large";
        return false;
    }
    png.image.format = pixelFormat;
    RasterImage result(static_cast<int>(png.image.width), static_cast<int>(png.image.height));
    if (!png_image_finish_read(&png.image, nullptr, result.pixels.data(), 0, nullptr)) {
        error = png.image.message;
        return false;
    }
    picture = std::move(result);
    return true;
}

}  // namespace

bool ReadPng(const std::string& path, RasterImage& picture, std::string& error)
{
    PngImage png;
    png_image_begin_read_from_file(&png.image, path.c_str());
    return Finish(png, picture, error);
}

bool DecodePng(const std::string& bytes, RasterImage& picture, std::string& error)
{
    PngImage png;
    png_image_begin_read_from_memory(&png.image, bytes.data(), bytes.size());
    return Finish(png, picture, error);
}

std::string EncodePng(const RasterImage& picture)
{
    if (picture.IsEmpty())
        return {};
    PngImage png;
    png.image.width = static_cast<png_uint_32>(picture.width);
    png.image.height = static_cast<png_uint_32>(picture.height);
    png.image.format = pixelFormat;
    png_alloc_size_t size = 0;
    if (!png_image_write_get_memory_size(png.image, size, 0, picture.pixels.data(), 0, nullptr))
        return {};
    std::string bytes(size, '\0');
    if (!png_image_write_to_memory(&png.image, bytes.data(), &size, 0, picture.pixels.data(), 0, nullptr))
        return {};
    bytes.resize(size);
    return bytes;
}

}  // namespace LqTool
