#include "VtPen.h"

#include <cmath>

#include "VtGraphicsLog_p.h"
#include "VtObjectAccounting_p.h"
#include "VtObjectMemory_p.h"

namespace VTC {

void* VtPen::operator new(std::size_t size) { return gfx::TakeObjectMemory(size); }

void VtPen::operator delete(void* block, std::size_t size) noexcept { gfx::GiveObjectMemory(block, size); }

VtPen::~VtPen() { gfx::CountDestroyed(); }

bool VtPen::CreatePen(int style, unsigned int colour, int /*reserved1*/, int /*reserved2*/, double width)
{
    const bool knownStyle = style == VT_PEN_SOLID || style == VT_PEN_NULL;
    if (created_ || !knownStyle || !std::isfinite(width) || width < 0.0) {
        gfx::GraphicsLog("Platform/Graphics/VtPen").Fail("GPn001");
        return false;
    }
    created_ = true;
    style_ = style;
    colour_ = colour;
    width_ = width;
    return true;
}

void VtPen::ReleasePen()
{
    created_ = false;
    style_ = VT_PEN_SOLID;
    colour_ = 0;
    width_ = 0.0;
}

}  // namespace VTC
