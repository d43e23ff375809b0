#pragma once

// What lies behind a VtGraphics: pixels in memory, a vector document, or a
// list of recorded commands.

#include <cairo.h>

#include <memory>
#include <string>
#include <vector>

#include "VtGraphicsTypes.h"
#include "VtImage.h"
#include "VtPixels.h"
#include "VtShape.h"

namespace VTC::gfx {

using ZEDA::ZedaSize;

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

class SurfaceDevice {
public:
    virtual ~SurfaceDevice() = default;

    virtual ZedaSize Size() const = 0;
    virtual void Draw(const ShapeOp& op, const cairo_region_t* clip) = 0;
    virtual bool Blit(const ZedaRect& dest, const BlitSource& source, uint32_t rop, const cairo_region_t* clip) = 0;
    // The pixels as they stand, or null for a surface that cannot be read back.
    virtual const VtImage* ReadBack() = 0;
    // The image the drawing lands on, where there is one.
    virtual VtImage* TargetImage() = 0;

    // Memory and image-backed graphics draw on a selected image.
    virtual bool SelectsImages() const { return false; }
    virtual VtImage* SelectImage(VtImage* image);

    virtual bool SavePdf(const std::string& path);
    // Plays recorded commands onto `target`, through `clip` as well.
    virtual bool Replay(SurfaceDevice& target, const cairo_region_t* clip) const;
};

// A raster surface owning its pixels (window, native-gradient).
std::unique_ptr<SurfaceDevice> MakeOwnRasterDevice(std::unique_ptr<VtImage> pixels);
// A raster surface on the selected image, which it does not own.
std::unique_ptr<SurfaceDevice> MakeSelectingDevice(VtImage* initial);
// A printer page: pixels at `dpi` that can also be written as a PDF page.
std::unique_ptr<SurfaceDevice> MakePageDevice(std::unique_ptr<VtImage> pixels, int dpi);
std::unique_ptr<SurfaceDevice> MakeRecordingDevice(int width, int height, PixelFormat format);
// A vector document written to `path` when the device is destroyed.
std::unique_ptr<SurfaceDevice> MakeVectorDevice(const std::string& path, VtVectorFormat format, int width,
                                                int height);

// White pixels of `format`, owned by the graphics library (not counted).
std::unique_ptr<VtImage> MakePaper(int width, int height, PixelFormat format);

}  // namespace VTC::gfx
