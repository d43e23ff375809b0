#pragma once

// Surfaces, pixel probes and bookkeeping shared by the renderer's tests.

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "LqGraphics.h"
#include "LqToolkit.h"
#include "VtEspecialFill.h"

namespace FillTest {

using VTC::VtEspecialFill;
using VTC::VtGraphics;
using VTC::VtGraphicsManager;
using VTC::VtImage;
using ZEDA::ZedaPoint;
using ZEDA::ZedaRect;
using ZEDA::ZedaSize;

struct GraphicsDeleter {
    void operator()(VtGraphics* g) const { delete g; }
};
struct ImageDeleter {
    void operator()(VtImage* i) const { delete i; }
};
using Surface = std::unique_ptr<VtGraphics, GraphicsDeleter>;
using Image = std::unique_ptr<VtImage, ImageDeleter>;

inline Surface Window(int width, int height, int bits = 32)
{
    return Surface(VtGraphicsManager::CreateWindowGraphics(width, height, bits));
}

// An image in the surface's format, every pixel `colour`.
inline Image ImageFor(VtGraphics* surface, int width, int height, unsigned int colour)
{
    Image image(VtGraphicsManager::NewImage(0));
    image->CreateCompatibleImage(surface, width, height);
    image->Fill(colour);
    return image;
}

// Fills an image with varied bytes, so that every blend is visible.
inline void Scramble(VtImage* image, unsigned seed)
{
    unsigned char* bits = image->GetBitsPointer();
    const std::size_t bytes = static_cast<std::size_t>(image->GetRowBytes()) * image->GetHeight();
    for (std::size_t i = 0; i < bytes; ++i)
        bits[i] = static_cast<unsigned char>((i * 37 + seed * 101 + (i >> 7) * 13) & 0xFF);
}

inline std::vector<unsigned char> BytesOf(const VtImage* image)
{
    const unsigned char* bits = image->GetBitsPointer();
    return {bits, bits + static_cast<std::size_t>(image->GetRowBytes()) * image->GetHeight()};
}

// As BytesOf, with the fourth byte of 32-bit pixels (alpha) left out.
inline std::vector<unsigned char> ColourBytesOf(const VtImage* image)
{
    std::vector<unsigned char> bytes = BytesOf(image);
    if (image->GetBitsPerPixel() == 32)
        for (std::size_t i = 3; i < bytes.size(); i += 4)
            bytes[i] = 0;
    return bytes;
}

// The raw bytes of pixel (x, y) of an image.
inline std::vector<unsigned char> PixelBytes(const VtImage* image, int x, int y)
{
    const int bytes = image->GetBitsPerPixel() / 8;
    const unsigned char* at = image->GetBitsPointer() + y * image->GetRowBytes() + x * bytes;
    return {at, at + bytes};
}

inline unsigned int Rgb(unsigned int colour) { return colour & 0x00FFFFFFu; }

inline unsigned int PixelAt(VtGraphics* surface, int x, int y)
{
    return Rgb(surface->GetTargetImage()->GetPixelColour(x, y));
}

inline unsigned char Blend(unsigned s, unsigned d, int t)
{
    return static_cast<unsigned char>(static_cast<int>(s * (100 - t) / 100.0 + d * t / 100.0));
}

// What the log holds from the renderer, as "level:code".
inline std::vector<std::string> RendererLog()
{
    std::vector<std::string> codes;
    for (const auto& record : VTC::VtLogFile::GetInstance(false)->GetRecords())
        if (record.source == "Src/Symbol/VtEspecialFill")
            codes.push_back(std::to_string(record.level) + ":" + record.code);
    return codes;
}

// The parts of a surface that the renderer must leave as it found them.
struct SurfaceState {
    int mode = 0;
    ZedaPoint origin;
    bool clipped = false;
    ZedaRect clipBounds;
    friend bool operator==(const SurfaceState&, const SurfaceState&) = default;
};

inline SurfaceState StateOf(VtGraphics* surface)
{
    SurfaceState state;
    state.mode = surface->GetCoordinateMode();
    state.origin = surface->GetOrigin();
    state.clipped = surface->GetClipRegion() != nullptr;
    if (state.clipped)
        state.clipBounds = surface->GetClipRegion()->GetBoundingRect();
    return state;
}

// Each test starts with an empty log and no pending faults, and checks that
// everything the renderer made is gone by the end.
class FillTestBase : public ::testing::Test {
protected:
    void SetUp() override
    {
        VtGraphicsManager::ClearFaults();
        VTC::VtLogFile::GetInstance(false)->ClearRecords();
        VTC::VtToolkit::SetScreenSize(1920, 1080);
        live_ = VtGraphicsManager::GetLiveObjectCount();
    }
    void TearDown() override
    {
        VtGraphicsManager::ClearFaults();
        VTC::VtToolkit::ResetScreenSize();
        EXPECT_EQ(VtGraphicsManager::GetLiveObjectCount(), live_) << "objects leaked by the renderer";
    }
    static void ClearLog() { VTC::VtLogFile::GetInstance(false)->ClearRecords(); }

private:
    int live_ = 0;
};

// Selects a pen and a brush of the test's own into a surface, and tells
// whether they are still the ones selected.
class SelectionProbe {
public:
    explicit SelectionProbe(VtGraphics* surface) : surface_(surface)
    {
        pen_ = VtGraphicsManager::NewPen(0);
        brush_ = VtGraphicsManager::NewBrush(0);
        pen_->CreatePen(VTC::VT_PEN_NULL, 0, 0, 0, 0.0);
        brush_->CreateBrush(VTC::VT_BRUSH_NULL, 0, 100, 0, ZedaSize(0, 0), 0);
        previousPen_ = surface_->SelectPen(pen_);
        previousBrush_ = surface_->SelectBrush(brush_);
    }
    ~SelectionProbe()
    {
        surface_->SelectPen(previousPen_);
        surface_->SelectBrush(previousBrush_);
        delete pen_;
        delete brush_;
    }
    SelectionProbe(const SelectionProbe&) = delete;
    SelectionProbe& operator=(const SelectionProbe&) = delete;

    bool Unchanged() const
    {
        VtGraphics* s = surface_;
        VTC::VtPen* pen = s->SelectPen(pen_);
        VTC::VtBrush* brush = s->SelectBrush(brush_);
        return pen == pen_ && brush == brush_;
    }

private:
    VtGraphics* surface_;
    VTC::VtPen* pen_;
    VTC::VtBrush* brush_;
    VTC::VtPen* previousPen_;
    VTC::VtBrush* previousBrush_;
};

// True when `call` makes exactly `count` graphics through the manager: the
// fault waits for call count + 1 and is then met by a probe.
template <typename Call>
bool MakesExactlyGraphics(int count, Call call)
{
    VtGraphicsManager::InjectFault(VTC::VT_FAULT_NEW_GRAPHICS, count);
    call();
    VtGraphics* probe = VtGraphicsManager::NewGraphics(0);
    const bool exact = probe == nullptr;
    delete probe;
    VtGraphicsManager::ClearFaults();
    return exact;
}

}  // namespace FillTest
