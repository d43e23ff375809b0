#include "VtImage.h"

#include <cairo.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <vector>

#include "VtGraphics.h"
#include "VtGraphicsInternal.h"

namespace VTC {

namespace {

constexpr const char* kSource = "Platform/Graphics/VtImage";

VtPalette GreyPalette()
{
    std::vector<unsigned int> colours(256);
    for (int i = 0; i < 256; ++i) {
        colours[static_cast<std::size_t>(i)] = ZEDARGB(i, i, i);
    }
    return VtPalette(std::move(colours));
}

struct CairoSurfaceDeleter {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};

// Large pixel blocks freed by images are kept for the next image of about the
// same size: the allocator would hand them back to the system on every free
// and each new image would fault every page in again.
class PixelPool {
public:
    static constexpr std::size_t kSmallest = std::size_t{64} << 10;  // smaller blocks are cheap to allocate
    static constexpr std::size_t kKept = 6;
    static constexpr std::size_t kKeptBytes = std::size_t{64} << 20;

    // Never destroyed, so that images living in static storage can still
    // give their blocks back at exit.
    static PixelPool& Instance()
    {
        static auto* pool = new PixelPool();
        return *pool;
    }

    // A block of at least `size` bytes, all 0 when `zeroed`; null when out of memory.
    unsigned char* Take(std::size_t size, bool zeroed, std::size_t& capacity)
    {
        if (unsigned char* reused = Reuse(size, capacity)) {
            if (zeroed) {
                std::memset(reused, 0, size);
            }
            return reused;
        }
        capacity = size;
        return static_cast<unsigned char*>(zeroed ? std::calloc(size, 1) : std::malloc(size));
    }

    void Give(unsigned char* data, std::size_t capacity)
    {
        if (data == nullptr) {
            return;
        }
        if (capacity >= kSmallest && capacity <= kKeptBytes) {
            const std::lock_guard lock(mutex_);
            keptBytes_ += capacity;
            kept_.push_back({data, capacity});
            // The oldest blocks go first when too many or too much is kept.
            while (kept_.size() > kKept || keptBytes_ > kKeptBytes) {
                keptBytes_ -= kept_.front().capacity;
                std::free(kept_.front().data);
                kept_.erase(kept_.begin());
            }
            return;
        }
        std::free(data);
    }

private:
    struct Block {
        unsigned char* data;
        std::size_t capacity;
    };

    // The most recently kept block that fits without wasting more than half of it.
    unsigned char* Reuse(std::size_t size, std::size_t& capacity)
    {
        if (size < kSmallest) {
            return nullptr;
        }
        const std::lock_guard lock(mutex_);
        for (auto it = kept_.rbegin(); it != kept_.rend(); ++it) {
            if (it->capacity >= size && it->capacity / 2 <= size) {
                unsigned char* data = it->data;
                capacity = it->capacity;
                keptBytes_ -= capacity;
                kept_.erase(std::next(it).base());
                return data;
            }
        }
        return nullptr;
    }

    std::mutex mutex_;
    std::vector<Block> kept_;
    std::size_t keptBytes_ = 0;
};

// The pixel rows of one image, taken from and given back to the pool.
class PixelBytes {
public:
    PixelBytes() = default;
    PixelBytes(const PixelBytes&) = delete;
    PixelBytes& operator=(const PixelBytes&) = delete;
    ~PixelBytes() { PixelPool::Instance().Give(data_, capacity_); }

    bool Allocate(std::size_t size, bool zeroed)
    {
        std::size_t capacity = 0;
        unsigned char* data = PixelPool::Instance().Take(size, zeroed, capacity);
        if (data == nullptr) {
            return false;
        }
        PixelPool::Instance().Give(data_, capacity_);
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

}  // namespace

struct VtImage::State {
    int width = 0;
    int height = 0;
    int stride = 0;
    gfx::PixelFormat format;
    PixelBytes bits;
    VtPalette palette;
    bool counted = false;

    bool IsCreated() const { return width > 0; }
    gfx::RasterView View()
    {
        return {bits.data(), width, height, stride, format, format.bpp == 8 ? &palette : nullptr};
    }
    long long ByteCount() const { return static_cast<long long>(stride) * height; }
};

VtImage::VtImage() : state_(std::make_unique<State>()) {}

VtImage::~VtImage()
{
    if (state_->counted) {
        gfx::CountDestroyed();
    }
}

bool VtGraphicsInternals::Allocate(VtImage& image, int width, int height, gfx::PixelFormat format,
                                   const void* bits)
{
    const int stride = gfx::StrideFor(width, format.bpp);
    if (width <= 0 || height <= 0 || !gfx::IsSupportedDepth(format.bpp) || stride < 0) {
        return false;
    }
    auto& s = *image.state_;
    const std::size_t size = static_cast<std::size_t>(stride) * static_cast<std::size_t>(height);
    if (!s.bits.Allocate(size, bits == nullptr)) {
        return false;
    }
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

std::unique_ptr<VtImage> VtGraphicsInternals::MakeImage(bool counted)
{
    std::unique_ptr<VtImage> image(new VtImage());
    image->state_->counted = counted;
    if (counted) {
        gfx::CountCreated();
    }
    return image;
}

gfx::RasterView VtGraphicsInternals::View(const VtImage& image) { return image.state_->View(); }

gfx::PixelFormat VtGraphicsInternals::Format(const VtImage& image) { return image.state_->format; }

bool VtImage::CreateCompatibleImage(VtGraphics* reference, int width, int height)
{
    if (gfx::TakeFault(VT_FAULT_COMPATIBLE_IMAGE)) {
        return false;
    }
    if (reference == nullptr) {
        gfx::LogFailure("GIm001", kSource, __LINE__);
        return false;
    }
    const gfx::PixelFormat format{reference->GetBitsPerPixel(), reference->IsRedFirst()};
    if (!VtGraphicsInternals::Allocate(*this, width, height, format)) {
        gfx::LogFailure("GIm002", kSource, __LINE__);
        return false;
    }
    return true;
}

bool VtImage::CreateImage(int width, int height, int planes, int bitsPerPixel, const VtPalette* palette,
                          const void* bits)
{
    if (gfx::TakeFault(VT_FAULT_CREATE_IMAGE)) {
        return false;
    }
    if (planes != 1 || !VtGraphicsInternals::Allocate(*this, width, height, {bitsPerPixel, false}, bits)) {
        gfx::LogFailure("GIm002", kSource, __LINE__);
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
    info.bits = state_->bits.data();
    return true;
}

long long VtImage::GetBits(long long byteCount, void* buffer) const
{
    if (buffer == nullptr || byteCount <= 0) {
        return 0;
    }
    const long long count = std::min(byteCount, state_->ByteCount());
    if (count > 0) {
        std::memcpy(buffer, state_->bits.data(), static_cast<std::size_t>(count));
    }
    return count;
}

long long VtImage::SetBits(long long byteCount, const void* buffer)
{
    if (buffer == nullptr || byteCount <= 0) {
        return 0;
    }
    const long long count = std::min(byteCount, state_->ByteCount());
    if (count > 0) {
        std::memcpy(state_->bits.data(), buffer, static_cast<std::size_t>(count));
    }
    return count;
}

int VtImage::GetWidth() const { return state_->width; }
int VtImage::GetHeight() const { return state_->height; }
int VtImage::GetBitsPerPixel() const { return IsCreated() ? state_->format.bpp : 0; }
int VtImage::GetRowBytes() const { return state_->stride; }
bool VtImage::IsRedFirst() const { return state_->format.bpp == 24 && state_->format.redFirst; }
unsigned char* VtImage::GetBitsPointer() { return IsCreated() ? state_->bits.data() : nullptr; }
const unsigned char* VtImage::GetBitsPointer() const { return IsCreated() ? state_->bits.data() : nullptr; }

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
        gfx::LogFailure("GIm003", kSource, __LINE__);
        return false;
    }
    std::unique_ptr<cairo_surface_t, CairoSurfaceDeleter> surface(
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, view.width, view.height));
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS) {
        gfx::LogFailure("GIm004", kSource, __LINE__);
        return false;
    }
    unsigned char* data = cairo_image_surface_get_data(surface.get());
    const int stride = cairo_image_surface_get_stride(surface.get());
    for (int y = 0; y < view.height; ++y) {
        auto* row = reinterpret_cast<uint32_t*>(data + static_cast<std::ptrdiff_t>(y) * stride);
        for (int x = 0; x < view.width; ++x) {
            row[x] = gfx::RawToColour(view, gfx::ReadRaw(view, x, y)) | 0xFF000000u;
        }
    }
    cairo_surface_mark_dirty(surface.get());
    if (cairo_surface_write_to_png(surface.get(), path.c_str()) != CAIRO_STATUS_SUCCESS) {
        gfx::LogFailure("GIm005", kSource, __LINE__);
        return false;
    }
    return true;
}

}  // namespace VTC
