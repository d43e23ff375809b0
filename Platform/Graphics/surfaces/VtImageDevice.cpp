#include "VtGraphicsManager.h"
#include "VtRasterDevice_p.h"

namespace VTC::gfx {

namespace {

constexpr GraphicsLog kLog{"Platform/Graphics/surfaces/VtImageDevice"};

// Draws on a target image (GetTargetImage); the one kind that may be marked
// as printing, which makes its 24-bit pixels red first.
class ImageDevice final : public SelectingDevice {
public:
    using SelectingDevice::SelectingDevice;
    int Kind() const override { return VT_SURFACE_IMAGE; }
    bool SetPrinting(bool printing) override
    {
        MarkPrinting(printing);
        return true;
    }
};

std::unique_ptr<SurfaceDevice> MakeImageDevice(VtImage* target)
{
    if (target == nullptr || !target->IsCreated()) {
        kLog.Fail("GMg002");
        return nullptr;
    }
    return std::make_unique<ImageDevice>(target, PixelFormat{target->GetBitsPerPixel(), target->IsRedFirst()});
}

}  // namespace

std::unique_ptr<SurfaceDevice> MakeUnboundImageDevice() { return std::make_unique<ImageDevice>(nullptr); }

}  // namespace VTC::gfx

namespace VTC {

VtGraphics* VtGraphicsManager::CreateImageGraphics(VtImage* target) { return Adopt(gfx::MakeImageDevice(target)); }

}  // namespace VTC
