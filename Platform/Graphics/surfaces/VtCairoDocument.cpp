#include "VtCairoDocument_p.h"

#include "VtGraphicsLog_p.h"

namespace VTC::gfx {

namespace {

constexpr GraphicsLog kLog{"Platform/Graphics/surfaces/VtCairoDocument"};

}  // namespace

cairo_surface_t* CheckDocument(cairo_surface_t* document)
{
    if (cairo_surface_status(document) != CAIRO_STATUS_SUCCESS) {
        kLog.Fail("GGr010");
        return nullptr;
    }
    return document;
}

bool FinishDocument(cairo_surface_t* document)
{
    cairo_surface_finish(document);
    if (cairo_surface_status(document) != CAIRO_STATUS_SUCCESS) {
        kLog.Fail("GGr012");
        return false;
    }
    return true;
}

}  // namespace VTC::gfx
