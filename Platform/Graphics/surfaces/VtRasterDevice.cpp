#include "VtRasterDevice_p.h"

#include <utility>

#include "VtImage_p.h"

namespace VTC::gfx {

namespace {

// Whether a blit writes every pixel of `dest`, so that nothing under it need
// be prepared first.
bool WritesEveryPixel(const ZedaRect& dest, uint32_t rop, const cairo_region_t* clip)
{
    const cairo_rectangle_int_t r{dest.left, dest.top, dest.Width(), dest.Height()};
    return rop == VT_ROP_COPY &&
           (clip == nullptr || cairo_region_contains_rectangle(clip, &r) == CAIRO_REGION_OVERLAP_IN);
}

}  // namespace

ZedaSize RasterDevice::Size() const
{
    const VtImage* image = Current();
    return image != nullptr ? ZedaSize(image->GetWidth(), image->GetHeight()) : ZedaSize();
}

void RasterDevice::Draw(const ShapeOp& op, const cairo_region_t* clip)
{
    if (const VtImage* image = Current(); image != nullptr && image->IsCreated()) {
        PaintShape(VtImageAccess::View(*image), op, clip);
    }
}

bool RasterDevice::Blit(const ZedaRect& dest, const BlitSource& source, uint32_t rop, const cairo_region_t* clip)
{
    const VtImage* image = Current();
    if (image == nullptr || !image->IsCreated()) {
        return false;
    }
    const RasterView target = WritesEveryPixel(dest, rop, clip) ? VtImageAccess::ViewForOverwrite(*image, dest)
                                                                : VtImageAccess::View(*image);
    if (source.view.data == target.data) {
        // Within one image the rows read could already have been written.
        const PixelBlock copy(source, dest.Width(), dest.Height());
        BlitToRaster(target, dest, copy.Source(), rop, clip);
    } else {
        BlitToRaster(target, dest, source, rop, clip);
    }
    return true;
}

const VtImage* RasterDevice::ReadBack()
{
    const VtImage* image = Current();
    return image != nullptr && image->IsCreated() ? image : nullptr;
}

PixelFormat OwnRasterDevice::Format() const { return {pixels_->GetBitsPerPixel(), pixels_->IsRedFirst()}; }

bool SelectingDevice::BecomeCompatible(const SurfaceDevice& reference)
{
    format_ = reference.Format();
    printing_ = reference.IsPrinting();
    recording_ = reference.IsRecording();
    return true;
}

VtImage* SelectingDevice::SelectImage(VtImage* image) { return std::exchange(selected_, image); }

void SelectingDevice::MarkPrinting(bool printing)
{
    printing_ = printing;
    format_.redFirst = format_.bpp == 24 && (printing_ || recording_);
}

std::unique_ptr<VtImage> MakePaper(int width, int height, PixelFormat format)
{
    std::unique_ptr<VtImage> paper = VtImageAccess::MakeImage(false);
    if (VtImageAccess::Allocate(*paper, width, height, format)) {
        paper->Fill(ZEDARGB(255, 255, 255));
    }
    return paper;
}

std::unique_ptr<VtImage> NewSurfacePaper(int width, int height, PixelFormat format, const GraphicsLog& log,
                                         std::source_location where)
{
    const bool rasterDepth = format.bpp == 16 || format.bpp == 24 || format.bpp == 32;
    if (width <= 0 || height <= 0 || !rasterDepth) {
        log.Fail("GMg002", where);
        return nullptr;
    }
    auto paper = MakePaper(width, height, format);
    if (!paper->IsCreated()) {
        log.Fail("GMg003", where);
        return nullptr;
    }
    return paper;
}

}  // namespace VTC::gfx
