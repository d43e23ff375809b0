#pragma once

#include "VtRegion_p.h"

namespace VTC::gfx {

// Polygon regions keep the pixels within 2^20 of the origin on either axis,
// which bounds the rows one must scan whatever the polygon spans.
constexpr int kRegionReach = 1 << 20;
constexpr ZEDA::ZedaRect kRegionSpace{-kRegionReach, -kRegionReach, kRegionReach, kRegionReach};

// The even-odd interior of the polygons within the region space, sampled at
// pixel centres.
RegionPtr RasterisePolygons(const ZEDA::ZedaPoint* points, const int* counts, int polyCount);

}  // namespace VTC::gfx
