#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "LqGraphics.h"
#include "LqTestSupport.h"
#include "LqToolkit.h"

namespace VTC::test {

using ZEDA::ZedaPoint;
using ZEDA::ZedaRect;
using ZEDA::ZedaSize;
using Manager = VtGraphicsManager;
template <typename T> using Owned = std::unique_ptr<T>;

constexpr unsigned int kWhite = ZEDARGB(255, 255, 255);
constexpr unsigned int kBlack = ZEDARGB(0, 0, 0);
constexpr unsigned int kRed = ZEDARGB(255, 0, 0);
constexpr unsigned int kBlue = ZEDARGB(0, 0, 255);
constexpr unsigned int kGreen = ZEDARGB(0, 255, 0);

// A new image, all bytes 0 unless filled.
inline Owned<VtImage> MakeImage(int width, int height, int bpp, std::optional<unsigned int> fill = {})
{
    Owned<VtImage> image(Manager::NewImage(0));
    EXPECT_TRUE(image->CreateImage(width, height, 1, bpp, nullptr, nullptr));
    if (fill)
        image->Fill(*fill);
    return image;
}

inline Owned<VtPen> MakePen(unsigned int colour, double width, int style = VT_PEN_SOLID)
{
    Owned<VtPen> pen(Manager::NewPen(0));
    EXPECT_TRUE(pen->CreatePen(style, colour, 0, 0, width));
    return pen;
}

inline Owned<VtBrush> MakeBrush(unsigned int colour, int style = VT_BRUSH_SOLID)
{
    Owned<VtBrush> brush(Manager::NewBrush(0));
    EXPECT_TRUE(brush->CreateBrush(style, colour, 100, 0, ZedaSize(0, 0), 0));
    return brush;
}

inline Owned<VtRgn> MakeRegion(const ZedaRect& r, const std::vector<ZedaPoint>& polygon = {})
{
    Owned<VtRgn> region(Manager::NewRgn(0));
    EXPECT_TRUE(polygon.empty() ? region->CreateRectRegion(r.left, r.top, r.right, r.bottom)
                                : region->CreatePolygonRegion(polygon.data(), static_cast<int>(polygon.size())));
    return region;
}

inline Owned<VtRgn> MakeRegion(const std::vector<ZedaPoint>& polygon) { return MakeRegion({}, polygon); }

inline Owned<VtGraphics> GraphicsOn(VtImage* image) { return Owned<VtGraphics>(Manager::CreateImageGraphics(image)); }

inline Owned<VtGraphics> MemoryOn(VtGraphics* reference, VtImage* image)
{
    Owned<VtGraphics> memory(Manager::NewGraphics(0));
    EXPECT_TRUE(memory->CreateCompatibleGraphics(reference));
    memory->SelectImage(image);
    return memory;
}

// Selects a pen and a brush, which must outlive the graphics' drawing.
using Tools = std::pair<Owned<VtPen>, Owned<VtBrush>>;
inline Tools Use(VtGraphics& graphics, Owned<VtPen> pen, Owned<VtBrush> brush)
{
    graphics.SelectPen(pen.get());
    graphics.SelectBrush(brush.get());
    return {std::move(pen), std::move(brush)};
}

inline void FillRect(VtGraphics& graphics, const ZedaRect& rect, unsigned int colour)
{
    const Tools tools = Use(graphics, MakePen(kBlack, 0, VT_PEN_NULL), MakeBrush(colour));
    graphics.DrawRectangle(rect);
    Use(graphics, nullptr, nullptr);
}

// f(x, y) for every pixel, row by row; Grid keeps the results.
template <typename F>
void ForEachPixel(int width, int height, F&& f)
{
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            f(x, y);
}

template <typename F>
auto Grid(int width, int height, F&& f)
{
    std::vector<decltype(f(0, 0))> values;
    ForEachPixel(width, height, [&](int x, int y) { values.push_back(f(x, y)); });
    return values;
}

template <typename Colour>
Owned<VtImage> PaintedImage(int width, int height, int bpp, Colour&& colour)
{
    auto image = MakeImage(width, height, bpp);
    ForEachPixel(width, height, [&](int x, int y) { image->SetPixelColour(x, y, colour(x, y)); });
    return image;
}

// Per pixel: its colour, or whether it is `colour` (alpha aside).
inline std::vector<unsigned int> ColoursOf(const VtImage& image)
{
    return Grid(image.GetWidth(), image.GetHeight(), [&](int x, int y) { return image.GetPixelColour(x, y); });
}

inline std::vector<unsigned int> ColoursAt(const VtImage& image, std::initializer_list<ZedaPoint> points)
{
    std::vector<unsigned int> colours;
    for (const ZedaPoint& p : points)
        colours.push_back(image.GetPixelColour(p.x, p.y));
    return colours;
}

inline std::vector<bool> ColourMask(const VtImage& image, unsigned int colour)
{
    return Grid(image.GetWidth(), image.GetHeight(),
                [&](int x, int y) { return ((image.GetPixelColour(x, y) ^ colour) & 0xFFFFFFu) == 0; });
}

// Bounding box of the pixels of `colour`; empty when there are none.
inline ZedaRect ColourBounds(const VtImage& image, unsigned int colour)
{
    ZedaRect box;
    ForEachPixel(image.GetWidth(), image.GetHeight(), [&](int x, int y) {
        if (((image.GetPixelColour(x, y) ^ colour) & 0xFFFFFFu) == 0)
            box = box.IsEmpty() ? ZedaRect(x, y, x + 1, y + 1)
                                : ZedaRect(std::min(box.left, x), box.top, std::max(box.right, x + 1), y + 1);
    });
    return box;
}

// The log records written since the last call, as "level code".
inline std::vector<std::string> TakeLog()
{
    std::vector<std::string> records;
    for (const VtLogRecord& record : lqtest::TakeLogRecords())
        records.push_back(std::to_string(record.level) + ' ' + record.code);
    return records;
}

using lqtest::ReadFileText;

using lqtest::TempDir;

}  // namespace VTC::test
