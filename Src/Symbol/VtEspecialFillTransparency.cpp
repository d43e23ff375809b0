#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <optional>
#include <vector>

#include "LqGraphics.h"
#include "VtEspecialFill.h"
#include "VtEspecialFillRegion_p.h"
#include "VtEspecialFill_p.h"
#include "VtBlendKernels_p.h"
#include "VtModuleLog_p.h"

namespace VTC {

using namespace EspecialFillDetail;

namespace {

using PixelBuffer = VtPixelBuffer;

VtImageInfo ImageInfoOf(const VtImage* image)
{
    VtImageInfo info;
    ResetImageInfo(info);
    image->GetImageInfo(info);
    return info;
}

std::size_t PixelBytes(const VtImageInfo& info)
{
    return static_cast<std::size_t>(std::max(info.rowBytes, 0)) * static_cast<std::size_t>(std::max(info.height, 0));
}

// A pixel buffer of the image's size from the platform's recycled pixel
// memory, so that repeated calls fault nothing in; empty when out of memory.
PixelBuffer NewPixelBuffer(const VtImageInfo& info) { return PixelBuffer(PixelBytes(info)); }

// Draws `image` onto `target` at (x, y) with a raster operation, through `memory`.
bool DrawThrough(VtGraphics* target, int x, int y, int width, int height, VtGraphics* memory, VtImage* image,
                 unsigned int rop)
{
    VtImage* previous = memory->SelectImage(image);
    const bool copied = target->BitBlt(x, y, width, height, memory, 0, 0, rop);
    memory->SelectImage(previous);
    return copied;
}

// Copies the surface under (x, y, width, height) into `image`.
void Capture(VtGraphics* memory, VtImage* image, int width, int height, VtGraphics* surface, int x, int y)
{
    VtImage* previous = memory->SelectImage(image);
    memory->BitBlt(0, 0, width, height, surface, x, y, VT_ROP_COPY);
    memory->SelectImage(previous);
}

// How much of the image a blit of this logical extent covers.
void BlendedArea(VtGraphics* graphics, const VtImageInfo& info, int width, int height, int& cols, int& rows)
{
    ZedaSize extent(width, height);
    graphics->LogicalToDeviceSize(extent);
    cols = std::min(info.width, extent.cx);
    rows = std::min(info.height, extent.cy);
}

int ClampPercent(int value) { return std::clamp(value, 0, 100); }

// source over target at transparency t for the top-left cols x rows pixels.
void BlendArea(const unsigned char* source, unsigned char* target, const VtImageInfo& info, int cols, int rows,
               unsigned t)
{
    if (cols <= 0 || rows <= 0)
        return;
    const std::size_t stride = static_cast<std::size_t>(info.rowBytes);
    const auto width = static_cast<std::size_t>(cols);
    if (info.bitsPerPixel == 32 && width * 4 == stride) {
        // Whole rows, one after another: one kernel call.
        BlendBytes(source, target, stride * static_cast<std::size_t>(rows), t, ColourBytesMask32());
        return;
    }
    for (std::size_t row = 0; row < static_cast<std::size_t>(rows); ++row) {
        const unsigned char* s = source + row * stride;
        unsigned char* d = target + row * stride;
        switch (info.bitsPerPixel) {
        case 32:
            BlendBytes(s, d, width * 4, t, ColourBytesMask32());
            break;
        case 24:
            BlendBytes(s, d, width * 3, t, 0xFFFFFFFFu);
            break;
        case 16:
            BlendPixels16(s, d, width, t);
            break;
        default:
            return;
        }
    }
}

// Whether the mask pixel at `mask` is black in the channels that get blended.
bool IsMaskOpen(const unsigned char* mask, int bitsPerPixel)
{
    switch (bitsPerPixel) {
    case 32:
        return IsLittleEndianHost() ? (mask[0] | mask[1] | mask[2]) == 0 : (mask[1] | mask[2] | mask[3]) == 0;
    case 24:
        return (mask[0] | mask[1] | mask[2]) == 0;
    default:
        return (mask[0] | mask[1]) == 0;
    }
}

// As BlendArea, only where the mask is black.
void BlendMaskedArea(const unsigned char* source, unsigned char* target, const unsigned char* mask,
                     const VtImageInfo& info, int cols, int rows, unsigned t)
{
    const int bits = info.bitsPerPixel;
    if (cols <= 0 || rows <= 0 || (bits != 32 && bits != 24 && bits != 16))
        return;
    const std::size_t pixelBytes = static_cast<std::size_t>(bits / 8);
    const std::uint32_t keep = bits == 32 ? ColourBytesMask32() : 0xFFFFFFFFu;
    for (std::size_t row = 0; row < static_cast<std::size_t>(rows); ++row) {
        const std::size_t rowStart = row * static_cast<std::size_t>(info.rowBytes);
        for (std::size_t col = 0; col < static_cast<std::size_t>(cols); ++col) {
            const std::size_t at = rowStart + col * pixelBytes;
            if (!IsMaskOpen(mask + at, bits))
                continue;
            if (bits == 16)
                BlendPixels16(source + at, target + at, 1, t);
            else
                BlendBytes(source + at, target + at, pixelBytes, t, keep);
        }
    }
}

// The blits refuse a zero extent; a negative one goes on.
bool HasExtent(int width, int height)
{
    if (width == 0 || height == 0) {
        especialFillLog.Fail("EEa005");
        return false;
    }
    return true;
}

// Where a blit puts its image, in the surface's logical units.
struct BlitPlace {
    int x, y, width, height;
};

// The blended path of the blits: the surface under the blit is captured into
// `background`, the image blended over it in memory (only where the mask is
// black, when there is one) and the result copied to the surface; false,
// unlogged, when a buffer cannot be had.
bool BlendOntoSurface(VtGraphics* graphics, VtGraphics* memory, VtImage* background, VtImage* image, VtImage* mask,
                      const VtImageInfo& info, const BlitPlace& place, unsigned t)
{
    Capture(memory, background, info.width, info.height, graphics, place.x, place.y);
    PixelBuffer source = NewPixelBuffer(info), target = NewPixelBuffer(info);
    PixelBuffer maskBits = mask != nullptr ? NewPixelBuffer(info) : PixelBuffer();
    if (!source || !target || (mask != nullptr && !maskBits))
        return false;
    const auto byteCount = static_cast<long long>(PixelBytes(info));
    image->GetBits(byteCount, source.Data());
    background->GetBits(byteCount, target.Data());
    if (mask != nullptr)
        mask->GetBits(byteCount, maskBits.Data());
    int cols = 0, rows = 0;
    BlendedArea(graphics, info, place.width, place.height, cols, rows);
    if (mask != nullptr)
        BlendMaskedArea(source.Data(), target.Data(), maskBits.Data(), info, cols, rows, t);
    else
        BlendArea(source.Data(), target.Data(), info, cols, rows, t);
    background->SetBits(byteCount, target.Data());
    source = PixelBuffer();
    target = PixelBuffer();
    maskBits = PixelBuffer();

    return DrawThrough(graphics, place.x, place.y, place.width, place.height, memory, background, VT_ROP_COPY);
}

}  // namespace

bool VtEspecialFill::TransparentBitblt(VtGraphics* graphics, VtImage* image, int x, int y, int width, int height,
                                       int transparency)
{
    if (!HasExtent(width, height))
        return false;
    const int t = ClampPercent(transparency);
    if (t == 100)
        return true;
    Owned<VtImage> background;  // destroyed after the memory graphics
    const Owned<VtGraphics> memory = NewMemoryGraphics(graphics);
    if (!memory) {
        especialFillLog.Fail("EGd003");
        return false;
    }
    const VtImageInfo info = ImageInfoOf(image);
    if (t == 0 || info.bitsPerPixel < 16)
        return DrawThrough(graphics, x, y, width, height, memory.get(), image, VT_ROP_COPY);
    background = NewCompatibleImage(graphics, info.width, info.height);
    if (!background) {
        especialFillLog.Fail("EGd004");
        especialFillLog.Fail("EGc037");
        return false;
    }
    return BlendOntoSurface(graphics, memory.get(), background.get(), image, nullptr, info, {x, y, width, height},
                            static_cast<unsigned>(t));
}

bool VtEspecialFill::TransparentBitbltMask(VtGraphics* graphics, VtImage* image, VtImage* mask, int x, int y,
                                           int width, int height, int transparency)
{
    if (!HasExtent(width, height))
        return false;
    const int t = ClampPercent(transparency);
    if (t == 100)
        return true;
    const VtImageInfo info = ImageInfoOf(image);
    const VtImageInfo maskInfo = ImageInfoOf(mask);
    if (info.width != maskInfo.width || info.height != maskInfo.height ||
        info.bitsPerPixel != maskInfo.bitsPerPixel) {
        especialFillLog.Fail("EGc001");
        return false;
    }
    Owned<VtImage> background;  // destroyed after the memory graphics
    const Owned<VtGraphics> memory = NewMemoryGraphics(graphics);
    if (!memory) {
        especialFillLog.Fail("EGd002");
        return false;
    }
    if (t == 0 || info.bitsPerPixel < 16) {
        DrawThrough(graphics, x, y, width, height, memory.get(), mask, VT_ROP_AND);
        return DrawThrough(graphics, x, y, width, height, memory.get(), image, VT_ROP_OR);
    }
    background = NewCompatibleImage(graphics, info.width, info.height);
    if (!background) {
        especialFillLog.Fail("EGd007");
        return false;
    }
    return BlendOntoSurface(graphics, memory.get(), background.get(), image, mask, info, {x, y, width, height},
                            static_cast<unsigned>(t));
}

namespace {

// Key-colour drawing through raster operations; opacity as TransparentDraw takes it.
void DrawKeyedByRasterOps(VtGraphics* graphics, VtImage* image, int x, int y, unsigned int colour, int opacity)
{
    const VtImageInfo info = ImageInfoOf(image);
    const int w = info.width, h = info.height;
    // Made G1, G2, G3, mask, result; destroyed the images first, then G1, G2, G3.
    Owned<VtGraphics> resultGraphics, maskGraphics, imageGraphics;
    Owned<VtImage> resultImage, maskImage;
    imageGraphics.reset(VtGraphicsManager::NewGraphics(0));
    maskGraphics.reset(VtGraphicsManager::NewGraphics(0));
    resultGraphics.reset(VtGraphicsManager::NewGraphics(0));
    maskImage.reset(VtGraphicsManager::NewImage(0));
    resultImage.reset(VtGraphicsManager::NewImage(0));
    if (!imageGraphics || !maskGraphics || !resultGraphics) {
        especialFillLog.Fail("EGd002", 400);
        return;
    }
    // A graphics that cannot follow the surface's format still draws in its own.
    imageGraphics->CreateCompatibleGraphics(graphics);
    maskGraphics->CreateCompatibleGraphics(graphics);
    resultGraphics->CreateCompatibleGraphics(graphics);
    if (!resultImage || !resultImage->CreateCompatibleImage(graphics, w, h)) {
        especialFillLog.Fail("EGd004", 400);
        return;
    }
    VtPalette palette;
    palette.RemoveAll();
    if (!maskImage || !maskImage->CreateImage(w, h, 1, 1, &palette, nullptr)) {
        especialFillLog.Fail("EGd004", 400);
        return;
    }
    VtImage* previousImage = imageGraphics->SelectImage(image);
    VtImage* previousMask = maskGraphics->SelectImage(maskImage.get());
    VtImage* previousResult = resultGraphics->SelectImage(resultImage.get());
    imageGraphics->SetBackgroundColour(ZEDARGB(ZEDAREDVAL(colour), ZEDAGREENVAL(colour), ZEDABLUEVAL(colour)));

    maskGraphics->BitBlt(0, 0, w, h, imageGraphics.get(), 0, 0, VT_ROP_COPY);
    resultGraphics->BitBlt(0, 0, w, h, graphics, x, y, VT_ROP_COPY);
    resultGraphics->BitBlt(0, 0, w, h, imageGraphics.get(), 0, 0, VT_ROP_XOR);
    resultGraphics->BitBlt(0, 0, w, h, maskGraphics.get(), 0, 0, VT_ROP_AND);
    resultGraphics->BitBlt(0, 0, w, h, imageGraphics.get(), 0, 0, VT_ROP_XOR);
    if (static_cast<unsigned>(opacity) > 99)
        graphics->BitBlt(x, y, w, h, resultGraphics.get(), 0, 0, VT_ROP_COPY);
    else
        VtEspecialFill::TransparentBitblt(graphics, resultImage.get(), x, y, w, h, 100 - opacity);

    imageGraphics->SelectImage(previousImage);
    maskGraphics->SelectImage(previousMask);
    resultGraphics->SelectImage(previousResult);
}

// Key-colour drawing straight into the pixels of an image-backed surface.
void DrawKeyedByPixels(VtGraphics* graphics, VtImage* image, int x, int y, unsigned int colour, int opacity)
{
    const VtImageInfo info = ImageInfoOf(image);
    VtImage* target = graphics->GetTargetImage();
    if (target == nullptr)
        return;
    VtImageInfo surfaceInfo = ImageInfoOf(target);
    std::vector<unsigned char> source, pixels;
    try {
        source.resize(PixelBytes(info));
        pixels.resize(PixelBytes(surfaceInfo));
    } catch (const std::bad_alloc&) {
        return;
    }
    image->GetBits(static_cast<long long>(source.size()), source.data());
    target->GetBits(static_cast<long long>(pixels.size()), pixels.data());

    const int w = info.width, h = info.height;
    const int dw = surfaceInfo.width, dh = surfaceInfo.height;
    // Far from the surface the ends are clipped exactly, not wrapped.
    const auto yEnd = static_cast<int>(std::min<long long>(dh, static_cast<long long>(y) + h));
    const auto xEnd = static_cast<int>(std::min<long long>(static_cast<long long>(x) + w, dw));
    if (std::max(y, 0) > dh || yEnd < 0 || xEnd < 0 || std::max(x, 0) > dw)
        return;
    const int cols = std::min(w, xEnd - std::max(x, 0));
    const int rows = std::min(yEnd - std::max(y, 0), h);
    const double f = opacity / 100.0;
    const double g = (100.0 - opacity) / 100.0;
    const bool copySource = static_cast<unsigned>(opacity) - 1u > 98u;
    const unsigned char sourceBits = info.bitsPerPixel;
    const unsigned char surfaceBits = surfaceInfo.bitsPerPixel;
    const long long sourcePixel = sourceBits / 8, surfacePixel = surfaceBits / 8;
    const auto mix = [&](unsigned char s, unsigned char d) { return static_cast<unsigned char>(s * f + d * g); };

    // Rows are stepped by the widths, and a negative x or y does not shift the
    // start; a pixel that this puts outside the surface's buffer is skipped.
    for (long long r = 0; r < rows; ++r) {
        for (long long c = 0; c < cols; ++c) {
            const long long from = (r * w + c) * sourcePixel;
            const long long to = ((r + y) * dw + x + c) * surfacePixel;
            if (to < 0 || to + surfacePixel > static_cast<long long>(pixels.size()))
                continue;
            unsigned char sb = 0, sg = 0, sr = 0, sa = 0, db = 0, dg = 0, dr = 0, da = 0;
            VtEspecialFill::GetPixel(sourceBits, source.data() + from, sb, sg, sr, sa);
            VtEspecialFill::GetPixel(surfaceBits, pixels.data() + to, db, dg, dr, da);
            if (sb == ZEDAREDVAL(colour) && sg == ZEDAGREENVAL(colour) && sr == ZEDABLUEVAL(colour))
                continue;
            da = 0;
            if (copySource) {
                db = sb;
                dg = sg;
                dr = sr;
            } else {
                db = mix(sb, db);
                dg = mix(sg, dg);
                dr = mix(sr, dr);
            }
            VtEspecialFill::SetPixel(surfaceBits, pixels.data() + to, db, dg, dr, da);
        }
    }
    surfaceInfo.bits = pixels.data();
    graphics->DrawImageData(0, dh, dw, -dh, 0, 0, dw, dh, surfaceInfo);
}

}  // namespace

void VtEspecialFill::TransparentDraw(VtGraphics* graphics, VtImage* image, int x, int y, unsigned int colour,
                                     int opacity)
{
    if (graphics->GetSurfaceKind() == VT_SURFACE_IMAGE)
        DrawKeyedByPixels(graphics, image, x, y, colour, opacity);
    else
        DrawKeyedByRasterOps(graphics, image, x, y, colour, opacity);
}

namespace {

// Plain device pixels on a surface while the guard lives: coordinate mode 0,
// and origin (0, 0) where the mode was not 0 already.
class DeviceCoordinates {
public:
    explicit DeviceCoordinates(VtGraphics* graphics)
        : graphics_(graphics), previousMode_(graphics->SetCoordinateMode(0)), previousOrigin_(graphics->GetOrigin())
    {
        if (previousMode_ != 0)
            previousOrigin_ = graphics->SetOrigin(ZedaPoint(0, 0));
    }
    DeviceCoordinates(const DeviceCoordinates&) = delete;
    DeviceCoordinates& operator=(const DeviceCoordinates&) = delete;
    ~DeviceCoordinates() { Restore(); }

    // Puts mode and origin back now (once).
    void Restore()
    {
        if (graphics_ == nullptr)
            return;
        graphics_->SetCoordinateMode(previousMode_);
        graphics_->SetOrigin(previousOrigin_);
        graphics_ = nullptr;
    }

private:
    VtGraphics* graphics_;
    int previousMode_;
    ZedaPoint previousOrigin_;
};

// A document kind of the framework that this platform does not make; like
// vector documents it cannot be read back.
constexpr int kForeignDocumentKind = 5;

bool TakesNoTransparentFill(VtGraphics* graphics)
{
    const int kind = graphics->GetSurfaceKind();
    return kind == VT_SURFACE_VECTOR || kind == kForeignDocumentKind;
}

// Cuts a large rectangle into tiles of at most 2000 device pixels a side.
void FillInTiles(VtGraphics* graphics, const ZedaRect& rect, unsigned int colour, int t)
{
    ZedaSize tile(2000, 2000);
    graphics->DeviceToLogicalSize(tile);
    const int tw = tile.cx, th = tile.cy;
    ZedaRect whole = rect;
    whole.Normalize();
    const int left = whole.left, top = whole.top, right = whole.right, bottom = whole.bottom;
    const int nx = whole.Width() / tw, ny = whole.Height() / th;
    const int remX = whole.Width() % tw, remY = whole.Height() % th;
    const auto fill = [&](int l, int tp, int r, int b) {
        VtEspecialFill::TransparentRectangle(graphics, ZedaRect(l, tp, r, b), colour, t);
    };
    for (int j = 1; j <= ny; ++j)
        for (int i = 0; i < nx; ++i)
            fill(left + i * tw, top + (j - 1) * th, left + (i + 1) * tw, top + j * th);
    if (remX != 0)
        for (int k = 0; k < ny; ++k)
            fill(right - remX, top + k * th, right, top + (k + 1) * th);
    if (remY != 0) {
        for (int i = 0; i < nx; ++i)
            fill(left + i * tw, bottom - remY, left + (i + 1) * tw, bottom);
        if (remX != 0)
            fill(right - remX, bottom - remY, right, bottom);
    }
}

// The colour blended into captured pixels: see the blend kernels.
void FillArea(unsigned char* pixels, const VtImageInfo& info, unsigned int colour, unsigned t, bool redFirst)
{
    const unsigned char red = ZEDAREDVAL(colour), green = ZEDAGREENVAL(colour), blue = ZEDABLUEVAL(colour);
    const std::size_t stride = static_cast<std::size_t>(info.rowBytes);
    const auto rows = static_cast<std::size_t>(std::max(info.height, 0));
    if (info.bitsPerPixel == 32 || info.bitsPerPixel == 24) {
        const bool wide = info.bitsPerPixel == 32;
        const std::size_t pixelBytes = wide ? 4 : 3;
        unsigned char pixel[4] = {blue, green, red, 0};
        if (wide && !IsLittleEndianHost()) {
            pixel[0] = 0, pixel[1] = red, pixel[2] = green, pixel[3] = blue;
        } else if (!wide && redFirst) {
            pixel[0] = red, pixel[2] = blue;
        }
        // Every pixel that starts before rowBytes - 2, row padding included.
        const std::size_t perRow =
            stride > 2 ? std::min(stride, (stride - 2 + pixelBytes - 1) / pixelBytes * pixelBytes) : 0;
        const ConstantBlend blend(pixel, pixelBytes, t, wide ? ColourBytesMask32() : 0xFFFFFFFFu, perRow);
        if (perRow == stride) {
            blend.Apply(pixels, rows * stride);  // rows of whole pixels follow each other
            return;
        }
        for (std::size_t row = 0; row < rows; ++row)
            blend.Apply(pixels + row * stride, perRow);
    } else if (info.bitsPerPixel == 16) {
        const unsigned red5 = red > 7 ? red >> 3 : 0;
        const unsigned green6 = green > 3 ? green >> 2 : 0;
        const unsigned blue5 = blue > 7 ? blue >> 3 : 0;
        for (std::size_t row = 0; row < rows; ++row)
            FillPixels16(pixels + row * stride, static_cast<std::size_t>(std::max(info.width, 0)), red5, green6,
                         blue5, t);
    }
}

}  // namespace

bool VtEspecialFill::TransparentRectangle(VtGraphics* graphics, const ZedaRect& rect, unsigned int colour,
                                          int transparency)
{
    if (TakesNoTransparentFill(graphics))
        return false;
    const int t = ClampPercent(transparency);
    if (t == 100)
        return true;
    if (t == 0)
        return DrawOpaqueRectangle(graphics, rect, colour);

    ZedaRect area = rect;
    graphics->LogicalToDeviceRect(area);
    area.Normalize();
    if (IsScreenSurface(graphics))
        area.Intersection(ScreenRect());
    if (VtGraphicsManager::GetCurGraphicsType() == VT_SURFACE_IMAGE && !IsScreenSurface(graphics)) {
        if (const VtImage* target = graphics->GetTargetImage(); target != nullptr) {
            const VtImageInfo targetInfo = ImageInfoOf(target);
            area.Intersection(ZedaRect(0, 0, targetInfo.width, targetInfo.height));
        }
    }
    if (area.IsEmpty()) {
        especialFillLog.Fail("EEf002");
        return false;
    }
    if (!IsScreenSurface(graphics) && (area.Width() > 3999 || area.Height() > 3999)) {
        // Tiles are cut from the logical rectangle, which must have a size.
        ZedaRect whole = rect;
        whole.Normalize();
        if (whole.IsEmpty()) {
            especialFillLog.Fail("EEf002");
            return false;
        }
        FillInTiles(graphics, rect, colour, t);
        return true;
    }

    // Destroyed capturing graphics and capture first, then the coordinates
    // put back, then the output graphics and image.
    Owned<VtImage> result;
    Owned<VtGraphics> output;
    std::optional<DeviceCoordinates> coordinates;
    Owned<VtImage> capture;
    Owned<VtGraphics> capturing = NewMemoryGraphics(graphics);
    if (!capturing) {
        especialFillLog.Fail("EGd002");
        return false;
    }
    output = NewMemoryGraphics(graphics);
    if (!output) {
        especialFillLog.Fail("EGd003");
        return false;
    }
    capture = NewCompatibleImage(graphics, area.Width(), area.Height());
    if (!capture) {
        especialFillLog.Fail("EGd007");
        especialFillLog.Fail("EGd004");
        return false;
    }
    result = NewCompatibleImage(graphics, area.Width(), area.Height());
    if (!result) {
        especialFillLog.Fail("EGd006");
        return false;
    }

    coordinates.emplace(graphics);
    Capture(capturing.get(), capture.get(), area.Width(), area.Height(), graphics, area.left, area.top);
    const VtImageInfo info = ImageInfoOf(capture.get());
    if (info.bitsPerPixel < 16) {
        coordinates->Restore();
        return DrawOpaqueRectangle(graphics, rect, colour);
    }
    PixelBuffer pixels = NewPixelBuffer(info);
    if (!pixels)
        return false;
    const auto byteCount = static_cast<long long>(PixelBytes(info));
    capture->GetBits(byteCount, pixels.Data());
    const bool redFirst = graphics->IsRecording() || graphics->IsPrinting();
    FillArea(pixels.Data(), info, colour, static_cast<unsigned>(t), redFirst);
    result->SetBits(byteCount, pixels.Data());
    pixels = PixelBuffer();
    // The capture is done with before the result goes out.
    capturing.reset();
    capture.reset();
    return DrawThrough(graphics, area.left, area.top, area.Width(), area.Height(), output.get(), result.get(),
                       VT_ROP_COPY);
}

namespace {

// Fills the bounds of a clip region through TransparentRectangle.
bool TransparentRegion(VtGraphics* graphics, VtRgn& region, unsigned int colour, int transparency)
{
    if (IsScreenSurface(graphics) && !ClipRegionToScreen(region))
        return false;
    ZedaRect bounds = region.GetBoundingRect();
    if (bounds.IsEmpty()) {
        especialFillLog.Fail("EEf005");
        return false;
    }
    VtRgn* previousClip = graphics->SelectClipRegion(&region, VT_CLIP_INTERSECT);
    graphics->DeviceToLogicalRect(bounds);
    const bool result = VtEspecialFill::TransparentRectangle(graphics, bounds, colour, transparency);
    graphics->SelectClipRegion(previousClip, VT_CLIP_REPLACE);
    return result;
}

}  // namespace

bool VtEspecialFill::TransparentPolygon(VtGraphics* graphics, const ZedaPoint* points, int count, unsigned int colour,
                                        int transparency)
{
    if (TakesNoTransparentFill(graphics))
        return false;
    // A missing region object logs "EEf006" here, but "EFd009" for a set of polygons.
    const Owned<VtRgn> region = NewPolygonRegion(graphics, points, count, "EEf006");
    return region && TransparentRegion(graphics, *region, colour, transparency);
}

bool VtEspecialFill::TransparentPolyPolygon(VtGraphics* graphics, const ZedaPoint* points, const int* counts,
                                            int polyCount, unsigned int colour, int transparency)
{
    if (TakesNoTransparentFill(graphics))
        return false;
    const Owned<VtRgn> region = NewPolyPolygonRegion(graphics, points, counts, polyCount, "EFd009");
    return region && TransparentRegion(graphics, *region, colour, transparency);
}

}  // namespace VTC
