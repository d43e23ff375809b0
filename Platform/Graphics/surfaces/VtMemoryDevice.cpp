#include "VtRasterDevice_p.h"
#include "VtSurfaceDevices_p.h"

namespace VTC::gfx {

namespace {

constexpr GraphicsLog kLog{"Platform/Graphics/surfaces/VtMemoryDevice"};

// Draws on its selected image; made compatible with another surface by
// VtGraphics::CreateCompatibleGraphics.
class MemoryDevice final : public SelectingDevice {
public:
    MemoryDevice() : SelectingDevice(nullptr) {}
    int Kind() const override { return VT_SURFACE_MEMORY; }
};

}  // namespace

std::unique_ptr<SurfaceDevice> MakeNewGraphicsDevice(int kind)
{
    if (kind == VT_SURFACE_MEMORY) {
        return std::make_unique<MemoryDevice>();
    }
    if (kind == VT_SURFACE_IMAGE) {
        return MakeUnboundImageDevice();
    }
    kLog.Fail("GMg001");
    return nullptr;
}

}  // namespace VTC::gfx
