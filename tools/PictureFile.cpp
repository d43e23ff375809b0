#include "PictureFile.h"

#include <librsvg/rsvg.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <memory>

#include "CairoPicture.h"
#include "Png.h"

namespace LqTool {

using LqExample::RasterImage;

namespace {

struct ObjectDeleter {
    void operator()(RsvgHandle* handle) const { g_object_unref(handle); }
};
struct ErrorDeleter {
    void operator()(GError* error) const { g_error_free(error); }
};
using SvgHandle = std::unique_ptr<RsvgHandle, ObjectDeleter>;
using ErrorPtr = std::unique_ptr<GError, ErrorDeleter>;

std::string Extension(const std::string& path)
{
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

// The drawing's own size in pixels; a drawing without one (only a viewBox,
// or percentages) is taken as a square.
void SvgSize(RsvgHandle* handle, double& width, double& height)
{
    if (rsvg_handle_get_intrinsic_size_in_pixels(handle, &width, &height) && width > 0 && height > 0)
        return;
    gboolean hasWidth = FALSE;
    gboolean hasHeight = FALSE;
    gboolean hasViewBox = FALSE;
    RsvgLength lengthW{};
    RsvgLength lengthH{};
    RsvgRectangle viewBox{};
    rsvg_handle_get_intrinsic_dimensions(handle, &hasWidth, &lengthW, &hasHeight, &lengthH, &hasViewBox, &viewBox);
    if (hasViewBox && viewBox.width > 0 && viewBox.height > 0) {
        width = viewBox.width;
        height = viewBox.height;
    } else {
        width = height = 1;
    }
}

bool LoadSvg(const std::string& path, int side, RasterImage& picture, std::string& error)
{
    GError* rawError = nullptr;
    SvgHandle handle(rsvg_handle_new_from_file(path.c_str(), &rawError));
    ErrorPtr loadError(rawError);
    if (!handle) {
        error = loadError ? loadError->message : "not an SVG drawing";
        return false;
    }
    double width = 0;
    double height = 0;
    SvgSize(handle.get(), width, height);
    const double scale = side / std::max(width, height);
    const int pixelsWide = std::max(1, static_cast<int>(std::lround(width * scale)));
    const int pixelsHigh = std::max(1, static_cast<int>(std::lround(height * scale)));
    Surface surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, pixelsWide, pixelsHigh));
    Context context(cairo_create(surface.get()));
    const RsvgRectangle viewport{0, 0, static_cast<double>(pixelsWide), static_cast<double>(pixelsHigh)};
    rawError = nullptr;
    const bool drawn = rsvg_handle_render_document(handle.get(), context.get(), &viewport, &rawError);
    ErrorPtr renderError(rawError);
    if (!drawn) {
        error = renderError ? renderError->message : "the drawing cannot be rendered";
        return false;
    }
    picture = SurfacePicture(surface.get());
    return true;
}

}  // namespace

bool IsPictureFile(const std::string& path)
{
    const std::string extension = Extension(path);
    return extension == ".png" || extension == ".svg";
}

bool LoadPictureFile(const std::string& path, int side, RasterImage& picture, std::string& error)
{
    if (Extension(path) == ".svg")
        return LoadSvg(path, side, picture, error);
    RasterImage original;
    if (!ReadPng(path, original, error))
        return false;
    picture = ScaleToFit(original, side);
    return true;
}

}  // namespace LqTool
