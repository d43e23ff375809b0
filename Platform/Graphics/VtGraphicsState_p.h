#pragma once

// What a VtGraphics keeps beside its device: pen, brush, clip and mapping.
// Everything that depends on the kind of surface is the device's.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "VtGraphics.h"
#include "VtObjectMemory_p.h"
#include "VtRgn.h"
#include "surfaces/VtSurfaceDevice_p.h"

namespace VTC {

class VtPen;
class VtBrush;

struct VtGraphics::State : gfx::PooledObject {
    explicit State(std::unique_ptr<gfx::SurfaceDevice> surface)
        : device(std::move(surface)), scale(device->InitialScale())
    {
    }

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
};

}  // namespace VTC
