#pragma once

// What lies behind a VtGraphics: pixels in memory, a vector document, or a
// list of recorded commands. One device class per surface kind, each in its
// own file of this folder; a device answers for itself what it is and what it
// can do, so nothing outside this folder asks for a kind.

#include <cairo.h>

#include <memory>
#include <string>

#include "VtBlit_p.h"
#include "VtGradientFill_p.h"
#include "VtGraphicsTypes.h"
#include "VtImage.h"
#include "VtObjectMemory_p.h"
#include "VtPixels_p.h"
#include "VtShape_p.h"

namespace VTC::gfx {

using ZEDA::ZedaSize;

// Gradients a surface draws itself, exactly per pixel. `box` is the
// gradient's frame in device pixels.
class NativeGradients {
public:
    virtual void DrawLinear(const ZedaRect& box, const GradientParams& params, const cairo_region_t* clip) = 0;
    virtual void DrawRadial(const ZedaRect& box, const GradientParams& params, const cairo_region_t* clip) = 0;
    // Fills all of `image`, whose pixel (0, 0) is the top-left of `box`.
    virtual void PaintSquare(const RasterView& image, const ZedaRect& box, const GradientParams& params) const = 0;

protected:
    ~NativeGradients() = default;
};

class SurfaceDevice : public PooledObject {
public:
    virtual ~SurfaceDevice() = default;

    // What the surface is (VtSurfaceKind) and how its pixels are stored.
    virtual int Kind() const = 0;
    virtual PixelFormat Format() const = 0;
    virtual bool IsPrinting() const { return false; }
    virtual bool IsRecording() const { return false; }
    // Device pixels per logical unit that a new graphics on it starts with.
    virtual double InitialScale() const { return 1.0; }
    // False for surfaces whose printing state is fixed.
    virtual bool SetPrinting(bool printing);
    // Takes the pixel format, printing and recording state of `reference`;
    // false for surfaces that cannot change them.
    virtual bool BecomeCompatible(const SurfaceDevice& reference);

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

    // The gradients this surface draws itself, or null.
    virtual NativeGradients* Gradients() { return nullptr; }
};

}  // namespace VTC::gfx
