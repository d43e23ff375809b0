#pragma once

#include <vector>

#include "LqBase.h"

namespace LqExample {

// A picture of a symbol: width x height ZEDARGBA colours, rows top-down, no
// padding. It is the unit that the resource cache stores.
struct LQ_EXPORT RasterImage {
    int width = 0;
    int height = 0;
    std::vector<unsigned int> pixels;

    RasterImage() = default;
    RasterImage(int w, int h, unsigned int fill = 0)
        : width(w), height(h), pixels(w > 0 && h > 0 ? static_cast<std::size_t>(w) * h : 0, fill)
    {
    }

    bool IsEmpty() const { return width <= 0 || height <= 0; }
    unsigned int& At(int x, int y) { return pixels[static_cast<std::size_t>(y) * width + x]; }
    unsigned int At(int x, int y) const { return pixels[static_cast<std::size_t>(y) * width + x]; }

    friend bool operator==(const RasterImage&, const RasterImage&) = default;
};

}  // namespace LqExample
