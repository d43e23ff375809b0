#include "VtCommandList_p.h"
#include "VtGraphicsManager.h"
#include "VtRasterDevice_p.h"

namespace VTC::gfx {

namespace {

constexpr GraphicsLog kLog{"Platform/Graphics/surfaces/VtRecordingDevice"};

// Paper for the recording to be read back on, drawn by nobody else.
class PaperDevice final : public OwnRasterDevice {
public:
    using OwnRasterDevice::OwnRasterDevice;
    int Kind() const override { return VT_SURFACE_RECORDING; }
};

// Keeps the drawing as commands; reading back plays them onto white paper,
// which is kept and brought up to date as commands are added.
class RecordingDevice final : public SurfaceDevice {
public:
    explicit RecordingDevice(std::unique_ptr<VtImage> paper) : paper_(std::move(paper)) {}

    int Kind() const override { return VT_SURFACE_RECORDING; }
    PixelFormat Format() const override { return paper_.Format(); }
    bool IsRecording() const override { return true; }
    ZedaSize Size() const override { return paper_.Size(); }

    void Draw(const ShapeOp& op, const cairo_region_t* clip) override { commands_.AddDraw(op, clip); }

    bool Blit(const ZedaRect& dest, const BlitSource& source, uint32_t rop, const cairo_region_t* clip) override
    {
        commands_.AddBlit(dest, source, rop, clip);
        return true;
    }

    const VtImage* ReadBack() override
    {
        for (; played_ < commands_.Commands().size(); ++played_) {
            commands_.Play(played_, paper_, nullptr);
        }
        return paper_.ReadBack();
    }

    VtImage* TargetImage() override
    {
        ReadBack();
        return paper_.TargetImage();
    }

    bool Replay(SurfaceDevice& target, const cairo_region_t* clip) const override
    {
        bool allPlayed = true;
        for (std::size_t i = 0; i < commands_.Commands().size(); ++i) {
            allPlayed = commands_.Play(i, target, clip) && allPlayed;
        }
        return allPlayed;
    }

private:
    PaperDevice paper_;
    CommandList commands_;
    std::size_t played_ = 0;
};

}  // namespace

}  // namespace VTC::gfx

namespace VTC {

VtGraphics* VtGraphicsManager::CreateRecordingGraphics(int width, int height, int bitsPerPixel)
{
    // Recordings stand for paper: 24-bit pixels red first.
    return Adopt(
        gfx::NewOwnRasterDevice<gfx::RecordingDevice>(width, height, {bitsPerPixel, bitsPerPixel == 24}, gfx::kLog));
}

}  // namespace VTC
