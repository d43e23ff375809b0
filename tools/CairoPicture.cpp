#include "CairoPicture.h"

#include <algorithm>
#include <cmath>

namespace LqTool {

using LqExample::RasterImage;

namespace {

unsigned int Premultiply(unsigned int pixel)
{
    const unsigned int alpha = pixel >> 24;
    if (alpha == 255)
        return pixel;
    auto channel = [&](int shift) { return (((pixel >> shift) & 0xFF) * alpha + 127) / 255 << shift; };
    return (alpha << 24) | channel(16) | channel(8) | channel(0);
}

unsigned int Unpremultiply(unsigned int pixel)
{
    const unsigned int alpha = pixel >> 24;
    if (alpha == 255 || alpha == 0)
        return alpha == 0 ? 0 : pixel;
    auto channel = [&](int shift) {
        return std::min(255u, (((pixel >> shift) & 0xFF) * 255 + alpha / 2) / alpha) << shift;
    };
    return (alpha << 24) | channel(16) | channel(8) | channel(0);
}

// `picture` drawn at `scale` with its top-left corner at (x, y) on a
// transparent surface of width x height.
RasterImage Redraw(const RasterImage& picture, int width, int height, double x, double y, double scale)
{
    Surface source = PictureSurface(picture);
    Surface target(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height));
    Context context(cairo_create(target.get()));
    cairo_translate(context.get(), x, y);
    cairo_scale(context.get(), scale, scale);
    cairo_set_source_surface(context.get(), source.get(), 0, 0);
    cairo_pattern_set_filter(cairo_get_source(context.get()), CAIRO_FILTER_GOOD);
    cairo_paint(context.get());
    return SurfacePicture(target.get());
}

}  // namespace

Surface PictureSurface(const RasterImage& picture)
{
    Surface surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, picture.width, picture.height));
    cairo_surface_flush(surface.get());
    unsigned char* data = cairo_image_surface_get_data(surface.get());
    const int stride = cairo_image_surface_get_stride(surface.get());
    for (int y = 0; data && y < picture.height; ++y) {
        auto* row = reinterpret_cast<unsigned int*>(data + static_cast<std::ptrdiff_t>(y) * stride);
        for (int x = 0; x < picture.width; ++x)
            row[x] = Premultiply(picture.At(x, y));
    }
    cairo_surface_mark_dirty(surface.get());
    return surface;
}

RasterImage SurfacePicture(cairo_surface_t* surface)
{
    cairo_surface_flush(surface);
    const int width = cairo_image_surface_get_width(surface);
    const int height = cairo_image_surface_get_height(surface);
    const unsigned char* data = cairo_image_surface_get_data(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    RasterImage picture(width, height);
    for (int y = 0; data && y < height; ++y) {
        const auto* row = reinterpret_cast<const unsigned int*>(data + static_cast<std::ptrdiff_t>(y) * stride);
        for (int x = 0; x < width; ++x)
            picture.At(x, y) = Unpremultiply(row[x]);
    }
    return picture;
}

RasterImage ScaleToFit(const RasterImage& picture, int side)
{
    const int longer = std::max(picture.width, picture.height);
    if (picture.IsEmpty() || longer == side)
        return picture;
    const double scale = static_cast<double>(side) / longer;
    const int width = std::max(1, static_cast<int>(std::lround(picture.width * scale)));
    const int height = std::max(1, static_cast<int>(std::lround(picture.height * scale)));
    return Redraw(picture, width, height, 0, 0, scale);
}

RasterImage CentreInSquare(const RasterImage& picture, int side)
{
    const int longer = std::max(picture.width, picture.height);
    const RasterImage fitted = longer > side ? ScaleToFit(picture, side) : picture;
    RasterImage square(side, side);
    for (int y = 0; y < fitted.height; ++y)
        for (int x = 0; x < fitted.width; ++x)
            square.At((side - fitted.width) / 2 + x, (side - fitted.height) / 2 + y) = fitted.At(x, y);
    return square;
}

}  // namespace LqTool
