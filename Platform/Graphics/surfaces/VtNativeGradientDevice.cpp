#include "VtGraphicsManager.h"
#include "VtImage_p.h"
#include "VtRasterDevice_p.h"

namespace VTC::gfx {

namespace {

constexpr GraphicsLog kLog{"Platform/Graphics/surfaces/VtNativeGradientDevice"};

// A raster that draws linear, radial and square gradients itself, exactly
// per pixel.
class NativeGradientDevice final : public OwnRasterDevice, public NativeGradients {
public:
    using OwnRasterDevice::OwnRasterDevice;
    int Kind() const override { return VT_SURFACE_NATIVE_GRADIENT; }
    NativeGradients* Gradients() override { return this; }

    void DrawLinear(const ZedaRect& box, const GradientParams& params, const cairo_region_t* clip) override
    {
        PaintLinearGradient(VtImageAccess::View(*Current()), box, params, clip);
    }

    void DrawRadial(const ZedaRect& box, const GradientParams& params, const cairo_region_t* clip) override
    {
        PaintRadialGradient(VtImageAccess::View(*Current()), box, params, clip);
    }

    void PaintSquare(const RasterView& image, const ZedaRect& box, const GradientParams& params) const override
    {
        PaintSquareGradient(image, box, params);
    }
};

}  // namespace

}  // namespace VTC::gfx

namespace VTC {

VtGraphics* VtGraphicsManager::CreateNativeGradientGraphics(int width, int height, int bitsPerPixel)
{
    return Adopt(gfx::NewOwnRasterDevice<gfx::NativeGradientDevice>(width, height, {bitsPerPixel, false}, gfx::kLog));
}

}  // namespace VTC
