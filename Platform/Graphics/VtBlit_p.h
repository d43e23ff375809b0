#pragma once

// Raster operations from one block of pixels onto another.

#include <cairo.h>

#include <cstdint>
#include <vector>

#include "VtPalette.h"
#include "VtPixels_p.h"

namespace VTC::gfx {

using ZEDA::ZedaPoint;

// Pixels to blit: the source pixel of target pixel (x, y) of the destination
// rectangle is (x - dest.left + origin.x, y - dest.top + origin.y) of `view`,
// which the caller guarantees to lie inside it; `background` is the colour of
// the surface they came from (for colour-to-mono blits).
struct BlitSource {
    RasterView view;
    ZedaPoint origin;
    uint32_t background;
};

// A copy of a rectangle of pixels in their own format, for blits whose source
// does not outlive the call or overlaps the target.
class PixelBlock {
public:
    // A copy of width x height pixels of `source` from its origin.
    PixelBlock(const BlitSource& source, int width, int height);
    // Pixel (i, j) is the source pixel (columns[i], rows[j]).
    static PixelBlock Sampled(const RasterView& source, const std::vector<int>& columns, const std::vector<int>& rows,
                              uint32_t background);
    RasterView View() const;
    BlitSource Source() const { return {View(), {0, 0}, background_}; }
    int Width() const { return width_; }
    int Height() const { return height_; }

private:
    PixelBlock(const RasterView& source, int width, int height, uint32_t background);

    std::vector<unsigned char> bytes_;
    VtPalette palette_;
    int width_;
    int height_;
    int stride_;
    PixelFormat format_;
    uint32_t background_;
};

// Applies a raster operation from `source` onto `target` at `dest`, through
// `clip`. Parts outside the target are skipped.
void BlitToRaster(const RasterView& target, const ZedaRect& dest, const BlitSource& source, uint32_t rop,
                  const cairo_region_t* clip);

}  // namespace VTC::gfx
