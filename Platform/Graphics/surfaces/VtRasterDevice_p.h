#pragma once

// The raster devices' common part: pixels drawn on an image, the device's
// own (window, printer page, native-gradient surface) or a selected one
// (memory and image-backed graphics).

#include <memory>
#include <utility>

#include "VtGraphicsLog_p.h"
#include "VtSurfaceDevice_p.h"

namespace VTC::gfx {

class RasterDevice : public SurfaceDevice {
public:
    ZedaSize Size() const override;
    void Draw(const ShapeOp& op, const cairo_region_t* clip) override;
    bool Blit(const ZedaRect& dest, const BlitSource& source, uint32_t rop, const cairo_region_t* clip) override;
    const VtImage* ReadBack() override;

protected:
    virtual VtImage* Current() const = 0;
};

class OwnRasterDevice : public RasterDevice {
public:
    explicit OwnRasterDevice(std::unique_ptr<VtImage> pixels) : pixels_(std::move(pixels)) {}
    PixelFormat Format() const override;
    VtImage* TargetImage() override { return pixels_.get(); }

protected:
    VtImage* Current() const override { return pixels_.get(); }

private:
    std::unique_ptr<VtImage> pixels_;
};

// Draws on the image selected into it, which it does not own; takes the
// format and the printing and recording state of a reference surface.
class SelectingDevice : public RasterDevice {
public:
    explicit SelectingDevice(VtImage* initial, PixelFormat format = {}) : selected_(initial), format_(format) {}
    PixelFormat Format() const override { return format_; }
    bool IsPrinting() const override { return printing_; }
    bool IsRecording() const override { return recording_; }
    bool BecomeCompatible(const SurfaceDevice& reference) override;
    VtImage* TargetImage() override { return selected_; }
    bool SelectsImages() const override { return true; }
    VtImage* SelectImage(VtImage* image) override;

protected:
    VtImage* Current() const override { return selected_; }
    void MarkPrinting(bool printing);

private:
    VtImage* selected_;
    PixelFormat format_;
    bool printing_ = false;
    bool recording_ = false;
};

// An image-backed device with no image selected yet (VtImageDevice.cpp), which
// NewGraphics makes in place of a memory graphics while the current type is 9.
std::unique_ptr<SurfaceDevice> MakeUnboundImageDevice();

// White pixels of `format`, owned by the graphics library (not counted).
std::unique_ptr<VtImage> MakePaper(int width, int height, PixelFormat format);

// White paper of width x height pixels of `format` for a surface with
// pixels of its own, or null with a record under `log`: "GMg002" for a bad
// size or depth, "GMg003" when the memory cannot be had.
std::unique_ptr<VtImage> NewSurfacePaper(int width, int height, PixelFormat format, const GraphicsLog& log,
                                         std::source_location where = std::source_location::current());

// A `Device` drawing on white paper of its own, or null with the record of
// NewSurfacePaper.
template <typename Device>
std::unique_ptr<SurfaceDevice> NewOwnRasterDevice(int width, int height, PixelFormat format, const GraphicsLog& log,
                                                  std::source_location where = std::source_location::current())
{
    auto paper = NewSurfacePaper(width, height, format, log, where);
    return paper ? std::make_unique<Device>(std::move(paper)) : nullptr;
}

}  // namespace VTC::gfx
