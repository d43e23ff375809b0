#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "LqGraphics.h"
#include "LqToolkit.h"

namespace VTC::test {

using ZEDA::ZedaPoint;
using ZEDA::ZedaRect;
using ZEDA::ZedaSize;
template <typename T> using Owned = std::unique_ptr<T>;

constexpr unsigned int kWhite = ZEDARGB(255, 255, 255);
constexpr unsigned int kBlack = ZEDARGB(0, 0, 0);
constexpr unsigned int kRed = ZEDARGB(255, 0, 0);
constexpr unsigned int kBlue = ZEDARGB(0, 0, 255);
constexpr unsigned int kGreen = ZEDARGB(0, 255, 0);

// A new image, all bytes 0 unless filled.
inline Owned<VtImage> MakeImage(int width, int height, int bpp, std::optional<unsigned int> fill = {})
{
    Owned<VtImage> image(VtGraphicsManager::NewImage(0));
    EXPECT_TRUE(image->CreateImage(width, height, 1, bpp, nullptr, nullptr));
    if (fill)
        image->Fill(*fill);
    return image;
}

inline Owned<VtPen> MakePen(unsigned int colour, double width, int style = VT_PEN_SOLID)
{
    Owned<VtPen> pen(VtGraphicsManager::NewPen(0));
    EXPECT_TRUE(pen->CreatePen(style, colour, 0, 0, width));
    return pen;
}

inline Owned<VtBrush> MakeBrush(unsigned int colour, int style = VT_BRUSH_SOLID)
{
    Owned<VtBrush> brush(VtGraphicsManager::NewBrush(0));
    EXPECT_TRUE(brush->CreateBrush(style, colour, 100, 0, ZedaSize(0, 0), 0));
    return brush;
}

inline Owned<VtRgn> MakeRegion(const ZedaRect& r)
{
    Owned<VtRgn> region(VtGraphicsManager::NewRgn(0));
    EXPECT_TRUE(region->CreateRectRegion(r.left, r.top, r.right, r.bottom));
    return region;
}

inline Owned<VtRgn> MakeRegion(const std::vector<ZedaPoint>& polygon)
{
    Owned<VtRgn> region(VtGraphicsManager::NewRgn(0));
    EXPECT_TRUE(region->CreatePolygonRegion(polygon.data(), static_cast<int>(polygon.size())));
    return region;
}

// An image-backed graphics on `image`, in plain device pixels.
inline Owned<VtGraphics> GraphicsOn(VtImage* image)
{
    return Owned<VtGraphics>(VtGraphicsManager::CreateImageGraphics(image));
}

// A memory graphics compatible with `reference`, drawing on `image`.
inline Owned<VtGraphics> MemoryOn(VtGraphics* reference, VtImage* image)
{
    Owned<VtGraphics> memory(VtGraphicsManager::NewGraphics(0));
    EXPECT_TRUE(memory->CreateCompatibleGraphics(reference));
    memory->SelectImage(image);
    return memory;
}

// A pen and a brush selected into a graphics; they must outlive its drawing.
using Tools = std::pair<Owned<VtPen>, Owned<VtBrush>>;

inline Tools Use(VtGraphics& graphics, Owned<VtPen> pen, Owned<VtBrush> brush)
{
    graphics.SelectPen(pen.get());
    graphics.SelectBrush(brush.get());
    return {std::move(pen), std::move(brush)};
}

// Fills `rect` in `colour` without an outline.
inline void FillRect(VtGraphics& graphics, const ZedaRect& rect, unsigned int colour)
{
    const Tools tools = Use(graphics, MakePen(kBlack, 0, VT_PEN_NULL), MakeBrush(colour));
    graphics.DrawRectangle(rect);
    Use(graphics, nullptr, nullptr);
}

// f(x, y) for every pixel of a width x height grid, row by row.
template <typename F>
auto Grid(int width, int height, F&& f)
{
    std::vector<decltype(f(0, 0))> values;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            values.push_back(f(x, y));
    return values;
}

// An image whose pixel (x, y) is colour(x, y).
template <typename Colour>
Owned<VtImage> PaintedImage(int width, int height, int bpp, Colour&& colour)
{
    auto image = MakeImage(width, height, bpp);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image->SetPixelColour(x, y, colour(x, y));
    return image;
}

// Per pixel: its colour, or whether it is `colour` (alpha aside).
inline std::vector<unsigned int> ColoursOf(const VtImage& image)
{
    return Grid(image.GetWidth(), image.GetHeight(), [&](int x, int y) { return image.GetPixelColour(x, y); });
}

inline std::vector<bool> ColourMask(const VtImage& image, unsigned int colour)
{
    return Grid(image.GetWidth(), image.GetHeight(),
                [&](int x, int y) { return ((image.GetPixelColour(x, y) ^ colour) & 0xFFFFFFu) == 0; });
}

inline int CountColour(const VtImage& image, unsigned int colour)
{
    const std::vector<bool> mask = ColourMask(image, colour);
    return static_cast<int>(std::count(mask.begin(), mask.end(), true));
}

// Bounding box of the pixels of `colour`; empty when there are none.
inline ZedaRect ColourBounds(const VtImage& image, unsigned int colour)
{
    const std::vector<bool> mask = ColourMask(image, colour);
    ZedaRect box;
    for (std::size_t i = 0; i < mask.size(); ++i) {
        const int x = static_cast<int>(i) % image.GetWidth(), y = static_cast<int>(i) / image.GetWidth();
        if (mask[i])
            box = box.IsEmpty() ? ZedaRect(x, y, x + 1, y + 1)
                                : ZedaRect(std::min(box.left, x), box.top, std::max(box.right, x + 1), y + 1);
    }
    return box;
}

// Codes of the log records written since the last call, each of level 300.
inline std::vector<std::string> TakeLoggedCodes()
{
    std::vector<std::string> codes;
    for (const VtLogRecord& record : VtLogFile::GetInstance(false)->GetRecords()) {
        EXPECT_EQ(record.level, 300) << record.code;
        codes.push_back(record.code);
    }
    VtLogFile::GetInstance(false)->ClearRecords();
    return codes;
}

inline std::string ReadFileBytes(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

// A fresh folder, removed with everything in it.
class TempDir {
public:
    ~TempDir() { std::filesystem::remove_all(path_); }
    std::string operator/(const std::string& name) const { return (path_ / name).string(); }

private:
    std::string pattern_ = (std::filesystem::temp_directory_path() / "lq-gfx-XXXXXX").string();
    std::filesystem::path path_ = mkdtemp(pattern_.data());
};

}  // namespace VTC::test
