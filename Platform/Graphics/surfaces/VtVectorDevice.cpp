#include <cairo-pdf.h>
#include <cairo-svg.h>

#include "VtCairoDocument_p.h"
#include "VtCommandList_p.h"
#include "VtGraphicsLog_p.h"
#include "VtGraphicsManager.h"
#include "VtMask_p.h"

namespace VTC::gfx {

namespace {

constexpr GraphicsLog kLog{"Platform/Graphics/surfaces/VtVectorDevice"};

// A blit onto a vector document can only paint: copy paints every pixel,
// AND paints where the source is not white, OR where it is not black (exact
// for masks); XOR cannot be expressed.
SurfacePtr BlockForVector(const PixelBlock& block, uint32_t rop)
{
    return ConvertToCairo(block.View(), CAIRO_FORMAT_ARGB32, [rop](uint32_t colour) {
        const bool identity = (rop == VT_ROP_AND && colour == 0xFFFFFFu) || (rop == VT_ROP_OR && colour == 0);
        return identity ? 0u : (colour | 0xFF000000u);
    });
}

void PaintCommand(cairo_t* cr, const Command& command)
{
    if (const auto* draw = std::get_if<DrawCommand>(&command)) {
        PaintShape(cr, draw->op, draw->clip.get());
        return;
    }
    const auto& blit = std::get<BlitCommand>(command);
    SurfacePtr image = BlockForVector(blit.block, blit.rop);
    cairo_save(cr);
    cairo_new_path(cr);
    if (blit.clip != nullptr) {
        AppendRegionPath(cr, blit.clip.get(), blit.dest);
    } else {
        cairo_rectangle(cr, blit.dest.left, blit.dest.top, blit.dest.Width(), blit.dest.Height());
    }
    cairo_clip(cr);
    cairo_set_source_surface(cr, image.get(), blit.dest.left, blit.dest.top);
    cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_NEAREST);
    cairo_paint(cr);
    cairo_restore(cr);
}

// An SVG or PDF document that cannot be read back. It keeps the drawing as
// commands and paints them onto a cairo document whenever it is written.
class VectorDevice final : public SurfaceDevice {
public:
    VectorDevice(const std::string& path, VtVectorFormat format, int width, int height, bool printing)
        : path_(path), format_(format), width_(width), height_(height), printing_(printing)
    {
    }

    ~VectorDevice() override { WriteDocument(path_, format_); }

    int Kind() const override { return VT_SURFACE_VECTOR; }
    PixelFormat Format() const override { return {32, false}; }
    bool IsPrinting() const override { return printing_; }
    ZedaSize Size() const override { return {width_, height_}; }

    void Draw(const ShapeOp& op, const cairo_region_t* clip) override { commands_.AddDraw(op, clip); }

    bool Blit(const ZedaRect& dest, const BlitSource& source, uint32_t rop, const cairo_region_t* clip) override
    {
        if (rop == VT_ROP_XOR) {
            kLog.Fail("GGr011");
            return false;
        }
        commands_.AddBlit(dest, source, rop, clip);
        return true;
    }

    const VtImage* ReadBack() override { return nullptr; }
    VtImage* TargetImage() override { return nullptr; }
    bool SavePdf(const std::string& path) override { return WriteDocument(path, VT_VECTOR_PDF); }

private:
    bool WriteDocument(const std::string& path, VtVectorFormat format) const
    {
        SurfacePtr document(format == VT_VECTOR_PDF ? cairo_pdf_surface_create(path.c_str(), width_, height_)
                                                    : cairo_svg_surface_create(path.c_str(), width_, height_));
        if (CheckDocument(document.get()) == nullptr) {
            return false;
        }
        ContextPtr cr(cairo_create(document.get()));
        cairo_set_antialias(cr.get(), CAIRO_ANTIALIAS_NONE);
        for (const Command& command : commands_.Commands()) {
            PaintCommand(cr.get(), command);
        }
        cr.reset();
        return FinishDocument(document.get());
    }

    std::string path_;
    VtVectorFormat format_;
    int width_;
    int height_;
    bool printing_;
    CommandList commands_;
};

std::unique_ptr<SurfaceDevice> MakeVectorDevice(const std::string& path, VtVectorFormat format, int width,
                                                int height, bool printing)
{
    if (path.empty() || width <= 0 || height <= 0 || (format != VT_VECTOR_SVG && format != VT_VECTOR_PDF)) {
        kLog.Fail("GMg002");
        return nullptr;
    }
    return std::make_unique<VectorDevice>(path, format, width, height, printing);
}

}  // namespace

}  // namespace VTC::gfx

namespace VTC {

VtGraphics* VtGraphicsManager::CreateVectorGraphics(const std::string& path, VtVectorFormat format, int width,
                                                    int height, bool printing)
{
    return Adopt(gfx::MakeVectorDevice(path, format, width, height, printing));
}

}  // namespace VTC
