#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "VtGraphics.h"
#include "VtRgn.h"
#include "VtSurfaceDevice.h"

namespace VTC {

class VtPen;
class VtBrush;

struct VtGraphics::State {
    int kind = VT_SURFACE_MEMORY;
    bool printing = false;
    bool recording = false;
    gfx::PixelFormat format;  // of the images compatible with this surface
    std::unique_ptr<gfx::SurfaceDevice> device;

    int mode = 1;
    double scale = 1.0;
    ZedaPoint origin;

    VtPen* pen = nullptr;
    VtBrush* brush = nullptr;
    unsigned int background = ZEDARGB(255, 255, 255);

    std::unique_ptr<VtRgn> clip;
    // What each SelectClipRegion handed back (null entries for "no clip"), as
    // a stack. Selecting one back supersedes it and every later entry; they
    // are released at the next clip change, from `supersededFrom` on.
    std::vector<std::unique_ptr<VtRgn>> handedBack;
    std::size_t supersededFrom = SIZE_MAX;

    bool counted = false;
};

// The manager builds every graphics through these.
std::unique_ptr<VtGraphics::State> MakeGraphicsState(int kind, gfx::PixelFormat format,
                                                     std::unique_ptr<gfx::SurfaceDevice> device);

}  // namespace VTC
