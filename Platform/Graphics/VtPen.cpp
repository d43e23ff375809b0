#include "VtPen.h"

#include <cmath>

#include "VtGraphicsInternal.h"

namespace VTC {

VtPen::~VtPen() { gfx::CountDestroyed(); }

bool VtPen::CreatePen(int style, unsigned int colour, int /*reserved1*/, int /*reserved2*/, double width)
{
    const bool knownStyle = style == VT_PEN_SOLID || style == VT_PEN_NULL;
    if (created_ || !knownStyle || !std::isfinite(width) || width < 0.0) {
        gfx::LogFailure("GPn001", "Platform/Graphics/VtPen", __LINE__);
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
