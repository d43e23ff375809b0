#pragma once

// The graphics library's door into the private state of regions.

#include <memory>

#include "VtRegion_p.h"
#include "VtRgn.h"

namespace VTC {

struct VtRgnAccess {
    // `counted` regions take part in the manager's live-object count.
    static std::unique_ptr<VtRgn> MakeRgn(bool counted);
    static const cairo_region_t* Region(const VtRgn& rgn);
};

}  // namespace VTC
