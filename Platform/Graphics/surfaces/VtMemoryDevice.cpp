#include "VtGraphicsManager.h"
#include "VtObjectAccounting_p.h"
#include "VtRasterDevice_p.h"

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

// A memory graphics, or an image-backed one (kind 9) selecting no image yet.
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

}  // namespace

}  // namespace VTC::gfx

namespace VTC {

VtGraphics* VtGraphicsManager::NewGraphics(int type)
{
    if (gfx::TakeFault(VT_FAULT_NEW_GRAPHICS)) {
        return nullptr;
    }
    return Adopt(gfx::MakeNewGraphicsDevice(type == 0 ? GetCurGraphicsType() : type));
}

}  // namespace VTC
