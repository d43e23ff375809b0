#pragma once

// Drawing kept as commands, by the recording and the vector-document devices.

#include <variant>
#include <vector>

#include "VtRegion_p.h"
#include "VtSurfaceDevice_p.h"

namespace VTC::gfx {

struct DrawCommand {
    ShapeOp op;
    RegionPtr clip;
};

struct BlitCommand {
    ZedaRect dest;
    PixelBlock block;
    uint32_t rop;
    RegionPtr clip;
};

using Command = std::variant<DrawCommand, BlitCommand>;

class CommandList {
public:
    void AddDraw(const ShapeOp& op, const cairo_region_t* clip);
    // Keeps a copy of the source pixels.
    void AddBlit(const ZedaRect& dest, const BlitSource& source, uint32_t rop, const cairo_region_t* clip);

    const std::vector<Command>& Commands() const { return commands_; }

    // Plays command `index` onto `target`, through `clip` as well; false
    // when the target refuses it.
    bool Play(std::size_t index, SurfaceDevice& target, const cairo_region_t* clip) const;

private:
    std::vector<Command> commands_;
};

}  // namespace VTC::gfx
