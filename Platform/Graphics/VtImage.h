#pragma once

#include <cstddef>

#include <memory>
#include <string>
#include <vector>

#include "LqBase.h"
#include "VtPalette.h"

namespace VTC {

class VtGraphics;

// What an image tells of itself. Callers set planes 1, bitsPerPixel 0, colour
// white and bits null before the query. reserved1 is 1 for 24-bit pixels
// stored red first (GetImageInfo sets it; DrawImageData honours it).
struct LQ_EXPORT VtImageInfo {
    int width = 0;
    int height = 0;
    int rowBytes = 0;
    unsigned char planes = 1;
    unsigned char bitsPerPixel = 0;
    unsigned char reserved1 = 0;
    unsigned char reserved2 = 0;
    unsigned int colour = ZEDARGB(255, 255, 255);
    VtPalette palette;
    unsigned char* bits = nullptr;
};

// A raster image of 1 (mask; the first pixel in the high bit of a byte, 1 is
// white), 8 (indexed; a grey ramp unless a palette is given), 16 (5-6-5, red
// high), 24 (three bytes, blue first, or red first for images compatible with
// printing or recording surfaces) or 32 bits per pixel (ZEDARGBA values in
// host order). Rows are top-down; the stride is a multiple of 4 bytes. Made by
// VtGraphicsManager::NewImage and destroyed with delete.
class LQ_EXPORT VtImage {
public:
    virtual ~VtImage();
    VtImage(const VtImage&) = delete;
    VtImage& operator=(const VtImage&) = delete;

    // Made and destroyed by the dozen per call: the platform recycles their memory.
    static void* operator new(std::size_t size);
    static void operator delete(void* block, std::size_t size) noexcept;

    // The most bytes of pixels one image holds, rows padded to 4 bytes: 4 GiB
    // (a 24-bit A0 page at 600 dpi takes 1.7 GB). Larger images are refused
    // with a record "GIm006" instead of being asked of the memory.
    static constexpr long long kMaxPixelBytes = 1LL << 32;

    // Allocates width x height pixels in the format of `reference`, all bytes 0.
    bool CreateCompatibleImage(VtGraphics* reference, int width, int height);
    // planes must be 1; bits (rows top-down at this image's stride) may be null for all 0.
    bool CreateImage(int width, int height, int planes, int bitsPerPixel, const VtPalette* palette, const void* bits);
    bool IsCreated() const;

    bool GetImageInfo(VtImageInfo& info) const;
    // Copy min(byteCount, rowBytes x height) bytes out or in; return the count copied.
    long long GetBits(long long byteCount, void* buffer) const;
    long long SetBits(long long byteCount, const void* buffer);

    int GetWidth() const;
    int GetHeight() const;
    int GetBitsPerPixel() const;
    int GetRowBytes() const;
    bool IsRedFirst() const;  // 24-bit byte order
    unsigned char* GetBitsPointer();
    const unsigned char* GetBitsPointer() const;

    // One pixel as ZEDARGBA (alpha 255 for formats without alpha; 1-bit: white or black).
    unsigned int GetPixelColour(int x, int y) const;
    void SetPixelColour(int x, int y, unsigned int colour);
    void Fill(unsigned int colour);
    bool SavePng(const std::string& path) const;

protected:
    VtImage();
    friend class VtGraphicsManager;

private:
    struct State;
    std::unique_ptr<State> state_;
    friend class VtGraphics;
    friend struct VtImageAccess;
};

}  // namespace VTC
