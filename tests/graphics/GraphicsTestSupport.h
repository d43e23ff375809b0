#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "LqGraphics.h"

namespace VTC::test {

template <typename T>
using Owned = std::unique_ptr<T>;

inline Owned<VtImage> MakeImage(int width, int height, int bpp)
{
    Owned<VtImage> image(VtGraphicsManager::NewImage(0));
    EXPECT_TRUE(image->CreateImage(width, height, 1, bpp, nullptr, nullptr));
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
    EXPECT_TRUE(brush->CreateBrush(style, colour, 100, 0, ZEDA::ZedaSize(0, 0), 0));
    return brush;
}

// An image-backed graphics on `image`, in plain device pixels.
inline Owned<VtGraphics> GraphicsOn(VtImage* image)
{
    return Owned<VtGraphics>(VtGraphicsManager::CreateImageGraphics(image));
}

// Pixels whose colour (red, green, blue) is `colour`, as a rectangle list check.
inline std::vector<std::string> ColourMap(const VtImage& image, unsigned int colour)
{
    std::vector<std::string> rows;
    for (int y = 0; y < image.GetHeight(); ++y) {
        std::string row;
        for (int x = 0; x < image.GetWidth(); ++x) {
            row += ((image.GetPixelColour(x, y) ^ colour) & 0xFFFFFFu) == 0 ? '#' : '.';
        }
        rows.push_back(row);
    }
    return rows;
}

// Bounding box of the pixels of `colour`; empty when there are none.
inline ZEDA::ZedaRect ColourBounds(const VtImage& image, unsigned int colour)
{
    ZEDA::ZedaRect box{image.GetWidth(), image.GetHeight(), 0, 0};
    int found = 0;
    for (int y = 0; y < image.GetHeight(); ++y) {
        for (int x = 0; x < image.GetWidth(); ++x) {
            if (((image.GetPixelColour(x, y) ^ colour) & 0xFFFFFFu) == 0) {
                box.left = std::min(box.left, x);
                box.top = std::min(box.top, y);
                box.right = std::max(box.right, x + 1);
                box.bottom = std::max(box.bottom, y + 1);
                ++found;
            }
        }
    }
    return found ? box : ZEDA::ZedaRect();
}

inline int CountColour(const VtImage& image, unsigned int colour)
{
    int count = 0;
    for (int y = 0; y < image.GetHeight(); ++y) {
        for (int x = 0; x < image.GetWidth(); ++x) {
            count += ((image.GetPixelColour(x, y) ^ colour) & 0xFFFFFFu) == 0;
        }
    }
    return count;
}

inline std::string ReadFileBytes(const std::filesystem::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

class TempDir {
public:
    TempDir()
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "lq-gfx-XXXXXX").string();
        path_ = mkdtemp(pattern.data());
    }
    ~TempDir() { std::filesystem::remove_all(path_); }
    std::string operator/(const std::string& name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

constexpr unsigned int kWhite = ZEDARGB(255, 255, 255);
constexpr unsigned int kBlack = ZEDARGB(0, 0, 0);
constexpr unsigned int kRed = ZEDARGB(255, 0, 0);
constexpr unsigned int kBlue = ZEDARGB(0, 0, 255);
constexpr unsigned int kGreen = ZEDARGB(0, 255, 0);

}  // namespace VTC::test
