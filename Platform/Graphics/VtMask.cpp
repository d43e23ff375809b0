#include "VtMask_p.h"

#include "VtRegion_p.h"

namespace VTC::gfx {

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "A1 masks are read with the first pixel in the lowest bit");

MaskSurface::MaskSurface(const ZEDA::ZedaRect& area) : area_(area)
{
    surface_ = cairo_image_surface_create(CAIRO_FORMAT_A1, area.Width(), area.Height());
    context_ = cairo_create(surface_);
    cairo_set_antialias(context_, CAIRO_ANTIALIAS_NONE);
    cairo_translate(context_, -static_cast<double>(area.left), -static_cast<double>(area.top));
}

MaskSurface::~MaskSurface()
{
    cairo_destroy(context_);
    cairo_surface_destroy(surface_);
}

bool MaskSurface::IsValid() const
{
    return cairo_surface_status(surface_) == CAIRO_STATUS_SUCCESS && cairo_status(context_) == CAIRO_STATUS_SUCCESS;
}

void MaskSurface::Clip(const cairo_region_t* clip)
{
    cairo_new_path(context_);
    AppendRegionPath(context_, clip, area_);
    cairo_clip(context_);
}

void AppendRegionPath(cairo_t* cr, const cairo_region_t* region, const ZEDA::ZedaRect& area)
{
    RegionPtr visible = CopyRegion(region);
    const cairo_rectangle_int_t bounds{area.left, area.top, area.Width(), area.Height()};
    cairo_region_intersect_rectangle(visible.get(), &bounds);
    const int count = cairo_region_num_rectangles(visible.get());
    for (int i = 0; i < count; ++i) {
        cairo_rectangle_int_t r;
        cairo_region_get_rectangle(visible.get(), i, &r);
        cairo_rectangle(cr, r.x, r.y, r.width, r.height);
    }
}

}  // namespace VTC::gfx
