#pragma once

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
    // Clips handed back by SelectClipRegion stay valid until the graphics goes.
    std::vector<std::unique_ptr<VtRgn>> retiredClips;

    bool counted = false;
};

// The manager builds every graphics through these.
std::unique_ptr<VtGraphics::State> MakeGraphicsState(int kind, gfx::PixelFormat format,
                                                     std::unique_ptr<gfx::SurfaceDevice> device);

}  // namespace VTC
