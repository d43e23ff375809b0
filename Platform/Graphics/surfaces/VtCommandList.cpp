#include "VtCommandList_p.h"

namespace VTC::gfx {

namespace {

RegionPtr CopyClip(const cairo_region_t* clip) { return clip != nullptr ? CopyRegion(clip) : nullptr; }

}  // namespace

void CommandList::AddDraw(const ShapeOp& op, const cairo_region_t* clip)
{
    commands_.emplace_back(DrawCommand{op, CopyClip(clip)});
}

void CommandList::AddBlit(const ZedaRect& dest, const BlitSource& source, uint32_t rop, const cairo_region_t* clip)
{
    commands_.emplace_back(BlitCommand{dest, PixelBlock(source, dest.Width(), dest.Height()), rop, CopyClip(clip)});
}

bool CommandList::Play(std::size_t index, SurfaceDevice& target, const cairo_region_t* clip) const
{
    const Command& command = commands_[index];
    if (const auto* draw = std::get_if<DrawCommand>(&command)) {
        RegionPtr combined = IntersectClips(draw->clip.get(), clip);
        target.Draw(draw->op, combined.get());
        return true;
    }
    const auto& blit = std::get<BlitCommand>(command);
    RegionPtr combined = IntersectClips(blit.clip.get(), clip);
    return target.Blit(blit.dest, blit.block.Source(), blit.rop, combined.get());
}

}  // namespace VTC::gfx
