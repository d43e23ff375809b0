#include "VtGraphicsManager.h"
#include "VtRasterDevice_p.h"

namespace VTC::gfx {

namespace {

constexpr GraphicsLog kLog{"Platform/Graphics/surfaces/VtWindowDevice"};

// An on-screen raster, held in memory without a display.
class WindowDevice final : public OwnRasterDevice {
public:
    using OwnRasterDevice::OwnRasterDevice;
    int Kind() const override { return VT_SURFACE_WINDOW; }
};

}  // namespace

}  // namespace VTC::gfx

namespace VTC {

VtGraphics* VtGraphicsManager::CreateWindowGraphics(int width, int height, int bitsPerPixel)
{
    return Adopt(gfx::NewOwnRasterDevice<gfx::WindowDevice>(width, height, {bitsPerPixel, false}, gfx::kLog));
}

}  // namespace VTC
