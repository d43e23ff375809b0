#pragma once

// Surfaces, pixel probes and bookkeeping shared by the renderer's tests.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "LqGraphics.h"
#include "LqTestSupport.h"
#include "LqToolkit.h"
#include "VtEspecialFill.h"

namespace FillTest {

using namespace VTC;
using namespace ZEDA;
using Surface = std::unique_ptr<VtGraphics>;
using Image = std::unique_ptr<VtImage>;
using Bytes = std::vector<unsigned char>;
using Colours = std::vector<unsigned int>;

constexpr unsigned int kFrom = ZEDARGB(0, 10, 200), kTo = ZEDARGB(240, 130, 20);
constexpr unsigned int kInk = ZEDARGB(20, 140, 250), kPaper = ZEDARGB(100, 50, 10);

inline Surface Window(int width, int height, int bits = 32, unsigned int colour = kPaper)
{
    Surface surface(VtGraphicsManager::CreateWindowGraphics(width, height, bits));
    surface->GetTargetImage()->Fill(colour);
    return surface;
}

inline Image ImageFor(VtGraphics* surface, int width, int height, unsigned int colour)
{
    Image image(VtGraphicsManager::NewImage(0));
    image->CreateCompatibleImage(surface, width, height);
    image->Fill(colour);
    return image;
}

inline Bytes BytesOf(const VtImage* image)
{
    const unsigned char* bits = image->GetBitsPointer();
    return {bits, bits + static_cast<std::size_t>(image->GetRowBytes()) * image->GetHeight()};
}

// Varied bytes, so that every blend is visible.
inline void Scramble(VtImage* image, unsigned seed)
{
    unsigned char* bits = image->GetBitsPointer();
    for (std::size_t i = 0, n = BytesOf(image).size(); i < n; ++i)
        bits[i] = static_cast<unsigned char>((i * 37 + seed * 101 + (i >> 7) * 13) & 0xFF);
}

inline Bytes PixelBytes(const VtImage* image, int x, int y)
{
    const int bytes = image->GetBitsPerPixel() / 8;
    const unsigned char* at = image->GetBitsPointer() + y * image->GetRowBytes() + x * bytes;
    return {at, at + bytes};
}

inline unsigned int Rgb(unsigned int colour) { return colour & 0x00FFFFFFu; }
inline unsigned int PixelAt(VtGraphics* s, int x, int y) { return Rgb(s->GetTargetImage()->GetPixelColour(x, y)); }

// The colours (without alpha) of a surface at the points.
inline Colours ColoursAt(VtGraphics* s, std::initializer_list<ZedaPoint> points)
{
    Colours colours;
    for (const ZedaPoint& p : points)
        colours.push_back(PixelAt(s, p.x, p.y));
    return colours;
}

// A byte of s over d at transparency t, in the renderer's double formula.
inline unsigned char Blend(unsigned s, unsigned d, int t)
{
    return static_cast<unsigned char>(static_cast<int>(s * (100 - t) / 100.0 + d * t / 100.0));
}

inline unsigned int Blended(unsigned int colour, unsigned int under, int t)
{
    return Rgb(ZEDARGB(Blend(ZEDAREDVAL(colour), ZEDAREDVAL(under), t),
                       Blend(ZEDAGREENVAL(colour), ZEDAGREENVAL(under), t),
                       Blend(ZEDABLUEVAL(colour), ZEDABLUEVAL(under), t)));
}

// The surface bytes after blitting cols x rows of `image` to (x, y) at
// transparency t: copied at 0 and below, blended with the fourth byte of
// 32-bit pixels forced to 0 in between, untouched at 100 and above.
inline Bytes ExpectedBlit(VtGraphics* surface, const VtImage* image, int x, int y, int cols, int rows, int t)
{
    Bytes expected = BytesOf(surface->GetTargetImage());
    const int bytes = image->GetBitsPerPixel() / 8, stride = surface->GetTargetImage()->GetRowBytes();
    const int alpha = bytes < 4 ? -1 : reinterpret_cast<const unsigned char*>(&un_bigendina)[0] == 1 ? 3 : 0;
    const auto field = [&](unsigned s, unsigned d, int shift, unsigned mask) {  // of a 16-bit pixel
        return ((s >> shift & mask) * (100 - t) / 100 + (d >> shift & mask) * t / 100) << shift;
    };
    for (int r = 0; r < rows && t < 100; ++r)
        for (int c = 0; c < cols; ++c) {
            const Bytes s = PixelBytes(image, c, r);
            unsigned char* d = expected.data() + (y + r) * stride + (x + c) * bytes;
            const unsigned sv = s[0] | (s[1] << 8), dv = d[0] | (d[1] << 8);
            const unsigned v = field(sv, dv, 11, 31) | field(sv, dv, 5, 63) | field(sv, dv, 0, 31);
            for (int b = 0; b < bytes; ++b)
                d[b] = t <= 0        ? s[b]
                       : bytes == 2  ? static_cast<unsigned char>(v >> 8 * b)
                       : b == alpha  ? 0
                                     : Blend(s[b], d[b], t);
        }
    return expected;
}

// What the renderer logged since the last take, as "level:code"; the log is cleared.
inline std::vector<std::string> TakeLog()
{
    std::vector<std::string> codes;
    for (const auto& record : lqtest::TakeLogRecords())
        if (record.source == "Src/Symbol/VtEspecialFill")
            codes.push_back(std::to_string(record.level) + ":" + record.code);
    return codes;
}

// What the renderer must leave as it found it: mode, origin, clip bounds, pen and brush.
using SurfaceState = std::tuple<int, ZedaPoint, ZedaRect, VtPen*, VtBrush*>;

inline SurfaceState StateOf(VtGraphics* s)
{
    const VtRgn* clip = s->GetClipRegion();
    SurfaceState state{s->GetCoordinateMode(), s->GetOrigin(), clip ? clip->GetBoundingRect() : ZedaRect(),
                       s->SelectPen(nullptr), s->SelectBrush(nullptr)};
    s->SelectPen(std::get<VtPen*>(state));
    s->SelectBrush(std::get<VtBrush*>(state));
    return state;
}

// Starts with an empty log and a 1920 x 1080 screen; ends with nothing leaked and no log left untaken.
class FillTestBase : public ::testing::Test {
protected:
    void SetUp() override
    {
        VtLogFile::GetInstance(false)->ClearRecords();
        VtToolkit::SetScreenSize(1920, 1080);
        live_ = VtGraphicsManager::GetLiveObjectCount();
    }
    void TearDown() override
    {
        VtGraphicsManager::ClearFaults();
        VtToolkit::ResetScreenSize();
        EXPECT_EQ(VtGraphicsManager::GetLiveObjectCount(), live_) << "objects leaked by the renderer";
        EXPECT_EQ(TakeLog(), std::vector<std::string>{}) << "failures nobody expected";
    }

private:
    int live_ = 0;
};

using Generator = VtImage* (*)(VtGraphics*, const ZedaRect&);

// The four gradient generators with one set of colours, offsets and angle.
inline const std::vector<Generator> kGenerators = {
    [](VtGraphics* g, const ZedaRect& r) { return VtEspecialFill::GetLinearImage(g, r, kFrom, kTo, 0.7, 100, -30); },
    [](VtGraphics* g, const ZedaRect& r) { return VtEspecialFill::GetRadialImage(g, r, kFrom, kTo, 100, -30); },
    [](VtGraphics* g, const ZedaRect& r) { return VtEspecialFill::GetConicalImage(g, r, kFrom, kTo, 100, -30, 0.7); },
    [](VtGraphics* g, const ZedaRect& r) { return VtEspecialFill::GetSquareImage(g, r, kFrom, kTo, 100, -30, 0.7); }};

}  // namespace FillTest
