#include "VtBrush.h"

#include "VtGraphicsLog_p.h"
#include "VtObjectAccounting_p.h"

namespace VTC {

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
