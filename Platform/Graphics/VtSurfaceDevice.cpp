#include "VtSurfaceDevice.h"

#include <cairo-pdf.h>
#include <cairo-svg.h>

#include <algorithm>
#include <cstring>
#include <utility>
#include <variant>

#include "VtGraphicsInternal.h"
#include "VtMask.h"
#include "VtPixelCopy_p.h"

namespace VTC::gfx {

namespace {

constexpr const char* kSource = "Platform/Graphics/VtGraphics";

struct SurfaceDeleter {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
using SurfacePtr = std::unique_ptr<cairo_surface_t, SurfaceDeleter>;

struct ContextDeleter {
    void operator()(cairo_t* cr) const { cairo_destroy(cr); }
};
using ContextPtr = std::unique_ptr<cairo_t, ContextDeleter>;

RegionPtr IntersectClips(const cairo_region_t* a, const cairo_region_t* b)
{
    if (a == nullptr && b == nullptr) {
        return nullptr;
    }
    RegionPtr result = CopyRegion(a != nullptr ? a : b);
    if (a != nullptr && b != nullptr) {
        cairo_region_intersect(result.get(), b);
    }
    return result;
}

void CopyRows(const RasterView& target, const RasterView& source, const ZedaRect& r, int dx, int dy)
{
    const int bytesPerPixel = target.format.bpp / 8;
    const auto length = static_cast<std::size_t>(r.Width()) * static_cast<std::size_t>(bytesPerPixel);
    raster::RowCopier copier(length * static_cast<std::size_t>(r.Height()));
    for (int y = r.top; y < r.bottom; ++y) {
        copier.Copy(target.Row(y) + static_cast<std::ptrdiff_t>(r.left) * bytesPerPixel,
                    source.Row(y - dy) + static_cast<std::ptrdiff_t>(r.left - dx) * bytesPerPixel, length);
    }
}

// Whether a blit writes every pixel of `dest`, so that nothing under it need
// be prepared first.
bool WritesEveryPixel(const ZedaRect& dest, uint32_t rop, const cairo_region_t* clip)
{
    const cairo_rectangle_int_t r{dest.left, dest.top, dest.Width(), dest.Height()};
    return rop == VT_ROP_COPY && (clip == nullptr || cairo_region_contains_rectangle(clip, &r) == CAIRO_REGION_OVERLAP_IN);
}

// Pixels drawn on a raster image: the image's own, or the selected one.
class RasterDevice : public SurfaceDevice {
public:
    ZedaSize Size() const override
    {
        const VtImage* image = Current();
        return image != nullptr ? ZedaSize(image->GetWidth(), image->GetHeight()) : ZedaSize();
    }

    void Draw(const ShapeOp& op, const cairo_region_t* clip) override
    {
        if (const VtImage* image = Current(); image != nullptr && image->IsCreated()) {
            PaintShape(VtGraphicsInternals::View(*image), op, clip);
        }
    }

    bool Blit(const ZedaRect& dest, const BlitSource& source, uint32_t rop, const cairo_region_t* clip) override
    {
        const VtImage* image = Current();
        if (image == nullptr || !image->IsCreated()) {
            return false;
        }
        const RasterView target = WritesEveryPixel(dest, rop, clip) ? VtGraphicsInternals::ViewForOverwrite(*image, dest)
                                                                    : VtGraphicsInternals::View(*image);
        if (source.view.data == target.data) {
            // Within one image the rows read could already have been written.
            const PixelBlock copy(source, dest.Width(), dest.Height());
            BlitToRaster(target, dest, copy.Source(), rop, clip);
        } else {
            BlitToRaster(target, dest, source, rop, clip);
        }
        return true;
    }

    const VtImage* ReadBack() override
    {
        const VtImage* image = Current();
        return image != nullptr && image->IsCreated() ? image : nullptr;
    }

protected:
    virtual VtImage* Current() const = 0;
};

class OwnRasterDevice : public RasterDevice {
public:
    explicit OwnRasterDevice(std::unique_ptr<VtImage> pixels) : pixels_(std::move(pixels)) {}
    VtImage* TargetImage() override { return pixels_.get(); }

protected:
    VtImage* Current() const override { return pixels_.get(); }

private:
    std::unique_ptr<VtImage> pixels_;
};

class SelectingDevice : public RasterDevice {
public:
    explicit SelectingDevice(VtImage* initial) : selected_(initial) {}
    VtImage* TargetImage() override { return selected_; }
    bool SelectsImages() const override { return true; }
    VtImage* SelectImage(VtImage* image) override { return std::exchange(selected_, image); }

protected:
    VtImage* Current() const override { return selected_; }

private:
    VtImage* selected_;
};

// A cairo image of `view`'s size whose pixel (x, y) is pixelAt(colour of view's (x, y)).
template <typename PixelAt>
SurfacePtr ConvertToCairo(const RasterView& view, cairo_format_t format, PixelAt&& pixelAt)
{
    SurfacePtr surface(cairo_image_surface_create(format, view.width, view.height));
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) {
        return surface;
    }
    unsigned char* data = cairo_image_surface_get_data(surface.get());
    const int stride = cairo_image_surface_get_stride(surface.get());
    for (int y = 0; y < view.height; ++y) {
        auto* row = reinterpret_cast<uint32_t*>(data + static_cast<std::ptrdiff_t>(y) * stride);
        for (int x = 0; x < view.width; ++x) {
            row[x] = pixelAt(RawToColour(view, ReadRaw(view, x, y)) & 0xFFFFFFu);
        }
    }
    cairo_surface_mark_dirty(surface.get());
    return surface;
}

// The page as an RGB24 cairo image, for PDF output.
SurfacePtr ToCairoImage(const RasterView& view)
{
    return ConvertToCairo(view, CAIRO_FORMAT_RGB24, [](uint32_t colour) { return colour | 0xFF000000u; });
}

// A document surface in an error state is only finished: painting onto one
// leaks inside cairo.
cairo_surface_t* CheckDocument(cairo_surface_t* document)
{
    if (cairo_surface_status(document) != CAIRO_STATUS_SUCCESS) {
        LogFailure("GGr010", kSource, __LINE__);
        return nullptr;
    }
    return document;
}

bool FinishDocument(cairo_surface_t* document)
{
    cairo_surface_finish(document);
    if (cairo_surface_status(document) != CAIRO_STATUS_SUCCESS) {
        LogFailure("GGr012", kSource, __LINE__);
        return false;
    }
    return true;
}

class PageDevice : public OwnRasterDevice {
public:
    PageDevice(std::unique_ptr<VtImage> pixels, int dpi) : OwnRasterDevice(std::move(pixels)), dpi_(dpi) {}

    bool SavePdf(const std::string& path) override
    {
        const RasterView view = VtGraphicsInternals::View(*TargetImage());
        const double pointsPerPixel = 72.0 / dpi_;
        SurfacePtr document(
            cairo_pdf_surface_create(path.c_str(), view.width * pointsPerPixel, view.height * pointsPerPixel));
        if (CheckDocument(document.get()) == nullptr) {
            return false;
        }
        SurfacePtr page = ToCairoImage(view);
        ContextPtr cr(cairo_create(document.get()));
        cairo_scale(cr.get(), pointsPerPixel, pointsPerPixel);
        cairo_set_source_surface(cr.get(), page.get(), 0, 0);
        cairo_pattern_set_filter(cairo_get_source(cr.get()), CAIRO_FILTER_NEAREST);
        cairo_paint(cr.get());
        cr.reset();
        return FinishDocument(document.get());
    }

private:
    int dpi_;
};

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

// Keeps the drawing as commands and paints them onto a cairo SVG or PDF
// surface whenever the document is written.
class VectorDevice : public SurfaceDevice {
public:
    VectorDevice(const std::string& path, VtVectorFormat format, int width, int height)
        : path_(path), format_(format), width_(width), height_(height)
    {
    }

    ~VectorDevice() override { WriteDocument(path_, format_); }

    ZedaSize Size() const override { return {width_, height_}; }

    void Draw(const ShapeOp& op, const cairo_region_t* clip) override
    {
        commands_.emplace_back(DrawCommand{op, clip != nullptr ? CopyRegion(clip) : nullptr});
    }

    bool Blit(const ZedaRect& dest, const BlitSource& source, uint32_t rop, const cairo_region_t* clip) override
    {
        if (rop == VT_ROP_XOR) {
            LogFailure("GGr011", kSource, __LINE__);
            return false;
        }
        commands_.emplace_back(BlitCommand{dest, PixelBlock(source, dest.Width(), dest.Height()), rop,
                                           clip != nullptr ? CopyRegion(clip) : nullptr});
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
        for (const Command& command : commands_) {
            PaintCommand(cr.get(), command);
        }
        cr.reset();
        return FinishDocument(document.get());
    }

    static void PaintCommand(cairo_t* cr, const Command& command)
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

    std::string path_;
    VtVectorFormat format_;
    int width_;
    int height_;
    std::vector<Command> commands_;
};

bool PlayCommand(const Command& command, SurfaceDevice& target, const cairo_region_t* clip)
{
    if (const auto* draw = std::get_if<DrawCommand>(&command)) {
        RegionPtr combined = IntersectClips(draw->clip.get(), clip);
        target.Draw(draw->op, combined.get());
        return true;
    }
    const auto& blit = std::get<BlitCommand>(command);
    RegionPtr combined = IntersectClips(blit.clip.get(), clip);
    return target.Blit(blit.dest, blit.block.Source(), blit.rop, combined.get());
}

// Keeps the drawing as commands; reading back plays them onto white paper,
// which is kept and brought up to date as commands are added.
class RecordingDevice : public SurfaceDevice {
public:
    RecordingDevice(int width, int height, PixelFormat format)
        : paper_(MakeOwnRasterDevice(MakePaper(width, height, format)))
    {
    }

    ZedaSize Size() const override { return paper_->Size(); }

    void Draw(const ShapeOp& op, const cairo_region_t* clip) override
    {
        commands_.emplace_back(DrawCommand{op, clip != nullptr ? CopyRegion(clip) : nullptr});
    }

    bool Blit(const ZedaRect& dest, const BlitSource& source, uint32_t rop, const cairo_region_t* clip) override
    {
        commands_.emplace_back(BlitCommand{dest, PixelBlock(source, dest.Width(), dest.Height()), rop,
                                           clip != nullptr ? CopyRegion(clip) : nullptr});
        return true;
    }

    const VtImage* ReadBack() override
    {
        for (; played_ < commands_.size(); ++played_) {
            PlayCommand(commands_[played_], *paper_, nullptr);
        }
        return paper_->ReadBack();
    }

    VtImage* TargetImage() override
    {
        ReadBack();
        return paper_->TargetImage();
    }

    bool Replay(SurfaceDevice& target, const cairo_region_t* clip) const override
    {
        bool allPlayed = true;
        for (const Command& command : commands_) {
            allPlayed = PlayCommand(command, target, clip) && allPlayed;
        }
        return allPlayed;
    }

private:
    std::unique_ptr<SurfaceDevice> paper_;
    std::vector<Command> commands_;
    std::size_t played_ = 0;
};

}  // namespace

PixelBlock::PixelBlock(const RasterView& source, int width, int height, uint32_t background)
    : bytes_(static_cast<std::size_t>(StrideFor(width, source.format.bpp)) * static_cast<std::size_t>(height)),
      palette_(source.palette != nullptr ? *source.palette : VtPalette()),
      width_(width),
      height_(height),
      stride_(StrideFor(width, source.format.bpp)),
      format_(source.format),
      background_(background)
{
}

PixelBlock::PixelBlock(const BlitSource& source, int width, int height)
    : PixelBlock(source.view, width, height, source.background)
{
    const RasterView view = View();
    const ZedaPoint& at = source.origin;
    if (format_.bpp >= 8) {
        CopyRows(view, source.view, {0, 0, width_, height_}, -at.x, -at.y);
        return;
    }
    for (int y = 0; y < height_; ++y) {
        for (int x = 0; x < width_; ++x) {
            WriteRaw(view, x, y, ReadRaw(source.view, at.x + x, at.y + y));
        }
    }
}

PixelBlock PixelBlock::Sampled(const RasterView& source, const std::vector<int>& columns,
                               const std::vector<int>& rows, uint32_t background)
{
    PixelBlock block(source, static_cast<int>(columns.size()), static_cast<int>(rows.size()), background);
    const RasterView view = block.View();
    for (int j = 0; j < view.height; ++j) {
        for (int i = 0; i < view.width; ++i) {
            WriteRaw(view, i, j, ReadRaw(source, columns[static_cast<std::size_t>(i)], rows[static_cast<std::size_t>(j)]));
        }
    }
    return block;
}

RasterView PixelBlock::View() const
{
    return {const_cast<unsigned char*>(bytes_.data()), width_, height_, stride_, format_,
            format_.bpp == 8 ? &palette_ : nullptr};
}

void BlitToRaster(const RasterView& target, const ZedaRect& dest, const BlitSource& from, uint32_t rop,
                  const cairo_region_t* clip)
{
    const RasterView& source = from.view;
    const int dx = dest.left - from.origin.x;
    const int dy = dest.top - from.origin.y;
    const PixelConverter convert(source, target, from.background);
    const bool plainCopy = convert.IsIdentity() && rop == VT_ROP_COPY && target.format.bpp >= 8;
    ForEachVisibleRect(dest, target.Bounds(), clip, [&](const ZedaRect& rect) {
        if (plainCopy) {
            CopyRows(target, source, rect, dx, dy);
            return;
        }
        for (int y = rect.top; y < rect.bottom; ++y) {
            for (int x = rect.left; x < rect.right; ++x) {
                const uint32_t s = convert(ReadRaw(source, x - dx, y - dy));
                WriteRaw(target, x, y, ApplyRop(rop, s, ReadRaw(target, x, y)));
            }
        }
    });
}

VtImage* SurfaceDevice::SelectImage(VtImage* /*image*/) { return nullptr; }

bool SurfaceDevice::SavePdf(const std::string& /*path*/)
{
    LogFailure("GGr013", kSource, __LINE__);
    return false;
}

bool SurfaceDevice::Replay(SurfaceDevice& /*target*/, const cairo_region_t* /*clip*/) const
{
    LogFailure("GGr014", kSource, __LINE__);
    return false;
}

std::unique_ptr<VtImage> MakePaper(int width, int height, PixelFormat format)
{
    std::unique_ptr<VtImage> paper = VtGraphicsInternals::MakeImage(false);
    if (VtGraphicsInternals::Allocate(*paper, width, height, format)) {
        paper->Fill(ZEDARGB(255, 255, 255));
    }
    return paper;
}

std::unique_ptr<SurfaceDevice> MakeOwnRasterDevice(std::unique_ptr<VtImage> pixels)
{
    return std::make_unique<OwnRasterDevice>(std::move(pixels));
}

std::unique_ptr<SurfaceDevice> MakeSelectingDevice(VtImage* initial)
{
    return std::make_unique<SelectingDevice>(initial);
}

std::unique_ptr<SurfaceDevice> MakePageDevice(std::unique_ptr<VtImage> pixels, int dpi)
{
    return std::make_unique<PageDevice>(std::move(pixels), dpi);
}

std::unique_ptr<SurfaceDevice> MakeRecordingDevice(int width, int height, PixelFormat format)
{
    return std::make_unique<RecordingDevice>(width, height, format);
}

std::unique_ptr<SurfaceDevice> MakeVectorDevice(const std::string& path, VtVectorFormat format, int width,
                                                int height)
{
    return std::make_unique<VectorDevice>(path, format, width, height);
}

}  // namespace VTC::gfx
