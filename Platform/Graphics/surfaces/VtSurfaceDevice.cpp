#include "VtSurfaceDevice_p.h"

#include "VtGraphicsLog_p.h"

namespace VTC::gfx {

namespace {

constexpr GraphicsLog kLog{"Platform/Graphics/surfaces/VtSurfaceDevice"};

}  // namespace

// What a surface cannot do it refuses: these are overridden by the devices
// that can.

bool SurfaceDevice::SetPrinting(bool /*printing*/) { return false; }

bool SurfaceDevice::BecomeCompatible(const SurfaceDevice& /*reference*/) { return false; }

VtImage* SurfaceDevice::SelectImage(VtImage* /*image*/) { return nullptr; }

bool SurfaceDevice::SavePdf(const std::string& /*path*/)
{
    kLog.Fail("GGr013");
    return false;
}

bool SurfaceDevice::Replay(SurfaceDevice& /*target*/, const cairo_region_t* /*clip*/) const
{
    kLog.Fail("GGr014");
    return false;
}

}  // namespace VTC::gfx
