#include "VtGraphicsManager.h"

#include <atomic>

#include "VtBrush.h"
#include "VtGraphics.h"
#include "VtGraphicsLog_p.h"
#include "VtGraphicsState_p.h"
#include "VtImage_p.h"
#include "VtObjectAccounting_p.h"
#include "VtPen.h"
#include "VtRgn_p.h"
#include "surfaces/VtSurfaceDevice_p.h"

namespace VTC {

namespace {

constexpr gfx::GraphicsLog kLog{"Platform/Graphics/VtGraphicsManager"};

std::atomic<int> g_curGraphicsType{VT_SURFACE_MEMORY};

// A factory call fails when a fault was injected for it, or, with a log
// record, for a type other than 0.
bool IsRefused(VtFaultKind fault, int type)
{
    if (gfx::TakeFault(fault)) {
        return true;
    }
    if (type != 0) {
        kLog.Fail("GMg001");
        return true;
    }
    return false;
}

}  // namespace

VtGraphics* VtGraphicsManager::Adopt(std::unique_ptr<gfx::SurfaceDevice> device)
{
    if (!device) {
        return nullptr;
    }
    gfx::CountCreated();
    return new VtGraphics(std::make_unique<VtGraphics::State>(std::move(device)));
}

VtImage* VtGraphicsManager::NewImage(int type)
{
    if (IsRefused(VT_FAULT_NEW_IMAGE, type)) {
        return nullptr;
    }
    return VtImageAccess::MakeImage(true).release();
}

VtPen* VtGraphicsManager::NewPen(int type)
{
    if (IsRefused(VT_FAULT_NEW_PEN, type)) {
        return nullptr;
    }
    gfx::CountCreated();
    return new VtPen();
}

VtBrush* VtGraphicsManager::NewBrush(int type)
{
    if (IsRefused(VT_FAULT_NEW_BRUSH, type)) {
        return nullptr;
    }
    gfx::CountCreated();
    return new VtBrush();
}

VtRgn* VtGraphicsManager::NewRgn(int type)
{
    if (IsRefused(VT_FAULT_NEW_RGN, type)) {
        return nullptr;
    }
    return VtRgnAccess::MakeRgn(true).release();
}

int VtGraphicsManager::GetCurGraphicsType() { return g_curGraphicsType.load(); }
void VtGraphicsManager::SetCurGraphicsType(int type) { g_curGraphicsType.store(type); }

void VtGraphicsManager::InjectFault(VtFaultKind what, int skip)
{
    if (what < 0 || what >= VT_FAULT_KIND_COUNT || skip < 0) {
        kLog.Fail("GMg004");
        return;
    }
    gfx::ArmFault(what, skip);
}

void VtGraphicsManager::ClearFaults() { gfx::DisarmFaults(); }

bool VtGraphicsManager::IsFaultPending(VtFaultKind what) { return gfx::IsFaultArmed(what); }

int VtGraphicsManager::GetLiveObjectCount() { return gfx::LiveObjectCount(); }

}  // namespace VTC
