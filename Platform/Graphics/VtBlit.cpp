#include "VtBlit_p.h"

#include <cstring>

#include "VtGraphicsTypes.h"
#include "VtPixelCopy_p.h"
#include "VtRegion_p.h"

namespace VTC::gfx {

namespace {

void CopyRows(const RasterView& target, const RasterView& source, const ZedaRect& r, int dx, int dy)
{
    const int bytesPerPixel = target.format.bpp / 8;
    const auto length = static_cast<std::size_t>(r.Width()) * static_cast<std::size_t>(bytesPerPixel);
    raster::RowCopier copier(length * static_cast<std::size_t>(r.Height()));
    if (r.left - dx == 0 && static_cast<int>(length) == target.stride && target.stride == source.stride) {
        // Whole rows of both, one after another: one copy.
        copier.Copy(target.Row(r.top), source.Row(r.top - dy), length * static_cast<std::size_t>(r.Height()));
        return;
    }
    for (int y = r.top; y < r.bottom; ++y) {
        copier.Copy(target.Row(y) + static_cast<std::ptrdiff_t>(r.left) * bytesPerPixel,
                    source.Row(y - dy) + static_cast<std::ptrdiff_t>(r.left - dx) * bytesPerPixel, length);
    }
}

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

}  // namespace VTC::gfx
