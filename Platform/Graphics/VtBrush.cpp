#include "VtBrush.h"

#include "VtGraphicsLog_p.h"
#include "VtObjectAccounting_p.h"
#include "VtObjectMemory_p.h"

namespace VTC {

void* VtBrush::operator new(std::size_t size) { return gfx::TakeObjectMemory(size); }

void VtBrush::operator delete(void* block, std::size_t size) noexcept { gfx::GiveObjectMemory(block, size); }

VtBrush::~VtBrush() { gfx::CountDestroyed(); }

bool VtBrush::CreateBrush(int style, unsigned int colour, int /*reserved1*/, int /*reserved2*/,
                          const ZEDA::ZedaSize& /*size*/, int /*reserved3*/)
{
    if (created_ || (style != VT_BRUSH_SOLID && style != VT_BRUSH_NULL)) {
        gfx::GraphicsLog("Platform/Graphics/VtBrush").Fail("GBr001");
        return false;
    }
    created_ = true;
    style_ = style;
    colour_ = colour;
    return true;
}

void VtBrush::ReleaseBrush()
{
    created_ = false;
    style_ = VT_BRUSH_SOLID;
    colour_ = 0;
}

}  // namespace VTC
