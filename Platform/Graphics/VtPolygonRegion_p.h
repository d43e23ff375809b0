#pragma once

#include "VtRegion_p.h"

namespace VTC::gfx {

// The even-odd interior of the polygons, sampled at pixel centres.
RegionPtr RasterisePolygons(const ZEDA::ZedaPoint* points, const int* counts, int polyCount);

}  // namespace VTC::gfx
