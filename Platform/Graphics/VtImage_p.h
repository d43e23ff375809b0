#pragma once

// The graphics library's door into the private state of images.

#include <memory>

#include "VtImage.h"
#include "VtPixels_p.h"

namespace VTC {

struct VtImageAccess {
    // `counted` images take part in the manager's live-object count.
    static std::unique_ptr<VtImage> MakeImage(bool counted);
    static gfx::RasterView View(const VtImage& image);
    // For a caller that writes every pixel of `rect` before anything reads
    // it: a new image's zero fill is done only outside it.
    static gfx::RasterView ViewForOverwrite(const VtImage& image, const ZEDA::ZedaRect& rect);
    // Allocates width x height pixels of `format`, copied from `bits` (rows at
    // the image's stride) or all bytes 0.
    static bool Allocate(VtImage& image, int width, int height, gfx::PixelFormat format,
                         const void* bits = nullptr);
};

namespace gfx {

// The format of images compatible with `graphics`. Defined with VtGraphics,
// so that images, a layer below, need not see surfaces.
PixelFormat CompatibleFormat(const VtGraphics& graphics);

}  // namespace gfx

}  // namespace VTC
