#pragma once

// The clip regions of the polygon fills.

#include "LqBase.h"
#include "VtEspecialFill_p.h"

namespace VTC {

class VtGraphics;
class VtRgn;

namespace EspecialFillDetail {

// Intersects the region with the screen; false (logged) when the screen
// region cannot be made.
bool ClipRegionToScreen(VtRgn& region);

// The region of a polygon given in logical units, or null: `noRegionCode` is
// logged when no region object can be had, "EFd009" when the points give no
// region.
Owned<VtRgn> NewPolygonRegion(VtGraphics* graphics, const ZEDA::ZedaPoint* points, int count,
                              const char* noRegionCode);

// The same for polyCount polygons of counts[i] points each.
Owned<VtRgn> NewPolyPolygonRegion(VtGraphics* graphics, const ZEDA::ZedaPoint* points, const int* counts,
                                  int polyCount, const char* noRegionCode);

}  // namespace EspecialFillDetail
}  // namespace VTC
