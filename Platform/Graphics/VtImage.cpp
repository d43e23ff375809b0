#include "VtImage.h"

#include <cairo.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <vector>

#include "VtCairoImage_p.h"
#include "VtGraphicsLog_p.h"
#include "VtImage_p.h"
#include "VtObjectAccounting_p.h"
#include "VtPixelCopy_p.h"
#include "VtPixelMemory_p.h"
#include "VtObjectMemory_p.h"

namespace VTC {

using ZEDA::ZedaRect;

namespace {

constexpr gfx::GraphicsLog kLog{"Platform/Graphics/VtImage"};

VtPalette GreyPalette()
{
    std::vector<unsigned int> colours(256);
    for (int i = 0; i < 256; ++i) {
        colours[static_cast<std::size_t>(i)] = ZEDARGB(i, i, i);
    }
    return VtPalette(std::move(colours));
}

// The pixel rows of one image, taken from and given back to the platform's
// pixel memory, which keeps large blocks mapped for the next image.
class PixelBytes {
public:
    PixelBytes() = default;
    PixelBytes(const PixelBytes&) = delete;
    PixelBytes& operator=(const PixelBytes&) = delete;
    ~PixelBytes() { gfx::raster::PixelMemory::Give(data_, capacity_); }

    // `fresh`: the block was newly mapped, so all 0.
    bool Allocate(std::size_t size, bool& fresh)
    {
        std::size_t capacity = 0;
        unsigned char* data = gfx::raster::PixelMemory::Take(size, capacity, fresh);
        if (data == nullptr) {
            return false;
        }
        gfx::raster::PixelMemory::Give(data_, capacity_);
        data_ = data;
        capacity_ = capacity;
        size_ = size;
        return true;
    }

    unsigned char* data() const { return data_; }
    std::size_t size() const { return size_; }

private:
    unsigned char* data_ = nullptr;
    std::size_t capacity_ = 0;
    std::size_t size_ = 0;
};

// Whether width x height pixels of `bpp` bits, rows padded to 4 bytes, are
// more than an image holds.
bool IsBeyondLimit(int width, int height, int bpp)
{
    const long long rowBytes = (static_cast<long long>(width) * bpp + 31) / 32 * 4;
    return height > 0 && rowBytes > VtImage::kMaxPixelBytes / height;
}

}  // namespace

struct VtImage::State : gfx::PooledObject {
    int width = 0;
    int height = 0;
    int stride = 0;
    gfx::PixelFormat format;
    PixelBytes bits;
    // A new image is all bytes 0, but a reused block is zeroed only once its
    // pixels are looked at: most new images are overwritten whole first.
    bool zeroPending = false;
    VtPalette palette;
    bool counted = false;

    bool IsCreated() const { return width > 0; }
    gfx::RasterView RawView()
    {
        return {bits.data(), width, height, stride, format, format.bpp == 8 ? &palette : nullptr};
    }
    // The pixels as they stand.
    gfx::RasterView View()
    {
        ZeroAllBut({});
        return RawView();
    }
    unsigned char* Bytes()
    {
        ZeroAllBut({});
        return bits.data();
    }
    // Does a pending zero fill outside `keep`, which the caller overwrites.
    void ZeroAllBut(ZedaRect keep)
    {
        if (!zeroPending) {
            return;
        }
        zeroPending = false;
        const std::size_t rowBytes = static_cast<std::size_t>(stride);
        // Cut to the image by comparisons only: a rectangle from the far ends of
        // the int range need not have a width that an int holds.
        keep = {std::clamp(keep.left, 0, width), std::clamp(keep.top, 0, height), std::clamp(keep.right, 0, width),
                std::clamp(keep.bottom, 0, height)};
        if (keep.left >= keep.right || keep.top >= keep.bottom) {
            std::memset(bits.data(), 0, bits.size());
            return;
        }
        const auto bitOffset = [&](int x) { return static_cast<std::size_t>(x) * static_cast<std::size_t>(format.bpp); };
        // Whole bytes only: a 1-bit row keeps the partial bytes at the edges zeroed.
        const std::size_t keepFrom = bitOffset(keep.left) / 8 + (bitOffset(keep.left) % 8 != 0 ? 1 : 0);
        const std::size_t keepTo = bitOffset(keep.right) / 8;
        unsigned char* data = bits.data();
        std::memset(data, 0, rowBytes * static_cast<std::size_t>(keep.top));
        const bool wholeRows = keepFrom == 0 && keepTo == rowBytes;
        for (int y = keep.top; y < keep.bottom && !wholeRows; ++y) {
            unsigned char* row = data + rowBytes * static_cast<std::size_t>(y);
            if (keepTo > keepFrom) {
                std::memset(row, 0, keepFrom);
                std::memset(row + keepTo, 0, rowBytes - keepTo);
            } else {
                std::memset(row, 0, rowBytes);
            }
        }
        std::memset(data + rowBytes * static_cast<std::size_t>(keep.bottom), 0,
                    rowBytes * static_cast<std::size_t>(height - keep.bottom));
    }
    long long ByteCount() const { return static_cast<long long>(stride) * height; }
};

VtImage::VtImage() : state_(std::make_unique<State>()) {}

void* VtImage::operator new(std::size_t size) { return gfx::TakeObjectMemory(size); }

void VtImage::operator delete(void* block, std::size_t size) noexcept { gfx::GiveObjectMemory(block, size); }

VtImage::~VtImage()
{
    if (state_->counted) {
        gfx::CountDestroyed();
    }
}

bool VtImageAccess::Allocate(VtImage& image, int width, int height, gfx::PixelFormat format,
                                   const void* bits)
{
    const int stride = gfx::StrideFor(width, format.bpp);
    if (width <= 0 || height <= 0 || !gfx::IsSupportedDepth(format.bpp) || stride < 0 ||
        IsBeyondLimit(width, height, format.bpp)) {
        return false;
    }
    auto& s = *image.state_;
    const std::size_t size = static_cast<std::size_t>(stride) * static_cast<std::size_t>(height);
    bool fresh = false;
    if (!s.bits.Allocate(size, fresh)) {
        return false;
    }
    s.zeroPending = bits == nullptr && !fresh;
    if (bits != nullptr) {
        std::memcpy(s.bits.data(), bits, size);
    }
    s.width = width;
    s.height = height;
    s.stride = stride;
    s.format = format;
    s.palette = format.bpp == 8 ? GreyPalette() : VtPalette();
    return true;
}

std::unique_ptr<VtImage> VtImageAccess::MakeImage(bool counted)
{
    std::unique_ptr<VtImage> image(new VtImage());
    image->state_->counted = counted;
    if (counted) {
        gfx::CountCreated();
    }
    return image;
}

gfx::RasterView VtImageAccess::View(const VtImage& image) { return image.state_->View(); }

gfx::RasterView VtImageAccess::ViewForOverwrite(const VtImage& image, const ZedaRect& rect)
{
    image.state_->ZeroAllBut(rect);
    return image.state_->RawView();
}

namespace {

// Allocates for CreateImage and CreateCompatibleImage, or says why not.
bool AllocateOrFail(VtImage& image, int width, int height, gfx::PixelFormat format, const void* bits)
{
    if (IsBeyondLimit(width, height, format.bpp)) {
        kLog.Fail("GIm006");
        return false;
    }
    if (!VtImageAccess::Allocate(image, width, height, format, bits)) {
        kLog.Fail("GIm002");
        return false;
    }
    return true;
}

}  // namespace

bool VtImage::CreateCompatibleImage(VtGraphics* reference, int width, int height)
{
    if (gfx::TakeFault(VT_FAULT_COMPATIBLE_IMAGE)) {
        return false;
    }
    if (reference == nullptr) {
        kLog.Fail("GIm001");
        return false;
    }
    return AllocateOrFail(*this, width, height, gfx::CompatibleFormat(*reference), nullptr);
}

bool VtImage::CreateImage(int width, int height, int planes, int bitsPerPixel, const VtPalette* palette,
                          const void* bits)
{
    if (gfx::TakeFault(VT_FAULT_CREATE_IMAGE)) {
        return false;
    }
    if (planes != 1) {
        kLog.Fail("GIm002");
        return false;
    }
    if (!AllocateOrFail(*this, width, height, {bitsPerPixel, false}, bits)) {
        return false;
    }
    if (bitsPerPixel == 8 && palette != nullptr && palette->GetCount() > 0) {
        state_->palette = *palette;
    }
    return true;
}

bool VtImage::IsCreated() const { return state_->IsCreated(); }

bool VtImage::GetImageInfo(VtImageInfo& info) const
{
    if (!IsCreated()) {
        return false;
    }
    info.width = state_->width;
    info.height = state_->height;
    info.rowBytes = state_->stride;
    info.planes = 1;
    info.bitsPerPixel = static_cast<unsigned char>(state_->format.bpp);
    info.reserved1 = state_->format.bpp == 24 && state_->format.redFirst ? 1 : 0;
    info.palette = state_->format.bpp == 8 ? state_->palette : VtPalette();
    info.bits = state_->Bytes();
    return true;
}

long long VtImage::GetBits(long long byteCount, void* buffer) const
{
    if (buffer == nullptr || byteCount <= 0) {
        return 0;
    }
    const long long count = std::min(byteCount, state_->ByteCount());
    if (count > 0 && state_->zeroPending) {
        std::memset(buffer, 0, static_cast<std::size_t>(count));
    } else if (count > 0) {
        gfx::raster::CopyBytes(static_cast<unsigned char*>(buffer), state_->bits.data(), static_cast<std::size_t>(count));
    }
    return count;
}

long long VtImage::SetBits(long long byteCount, const void* buffer)
{
    if (buffer == nullptr || byteCount <= 0) {
        return 0;
    }
    const long long count = std::min(byteCount, state_->ByteCount());
    if (count <= 0) {
        return count;
    }
    if (state_->zeroPending) {  // only the bytes not written here need the zero fill
        std::memset(state_->bits.data() + count, 0, state_->bits.size() - static_cast<std::size_t>(count));
        state_->zeroPending = false;
    }
    gfx::raster::CopyBytes(state_->bits.data(), static_cast<const unsigned char*>(buffer), static_cast<std::size_t>(count));
    return count;
}

int VtImage::GetWidth() const { return state_->width; }
int VtImage::GetHeight() const { return state_->height; }
int VtImage::GetBitsPerPixel() const { return IsCreated() ? state_->format.bpp : 0; }
int VtImage::GetRowBytes() const { return state_->stride; }
bool VtImage::IsRedFirst() const { return state_->format.bpp == 24 && state_->format.redFirst; }
unsigned char* VtImage::GetBitsPointer() { return IsCreated() ? state_->Bytes() : nullptr; }
const unsigned char* VtImage::GetBitsPointer() const { return IsCreated() ? state_->Bytes() : nullptr; }

unsigned int VtImage::GetPixelColour(int x, int y) const
{
    const auto view = state_->View();
    if (!view.IsValid() || !view.Bounds().PtInRect({x, y})) {
        return 0;
    }
    return gfx::RawToColour(view, gfx::ReadRaw(view, x, y));
}

void VtImage::SetPixelColour(int x, int y, unsigned int colour)
{
    const auto view = state_->View();
    if (view.IsValid() && view.Bounds().PtInRect({x, y})) {
        gfx::WriteRaw(view, x, y, gfx::ColourToRaw(view, colour));
    }
}

void VtImage::Fill(unsigned int colour)
{
    const auto view = state_->View();
    if (!view.IsValid()) {
        return;
    }
    const uint32_t raw = gfx::ColourToRaw(view, colour);
    for (int y = 0; y < view.height; ++y) {
        gfx::FillSpan(view, y, 0, view.width, raw);
    }
}

bool VtImage::SavePng(const std::string& path) const
{
    const auto view = state_->View();
    if (!view.IsValid()) {
        kLog.Fail("GIm003");
        return false;
    }
    const gfx::SurfacePtr surface =
        gfx::ConvertToCairo(view, CAIRO_FORMAT_RGB24, [](uint32_t colour) { return colour | 0xFF000000u; });
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) {
        kLog.Fail("GIm004");
        return false;
    }
    if (cairo_surface_write_to_png(surface.get(), path.c_str()) != CAIRO_STATUS_SUCCESS) {
        kLog.Fail("GIm005");
        return false;
    }
    return true;
}

}  // namespace VTC
