#pragma once

#include "LqExport.h"

namespace ZEDA {

// Coordinates are 32-bit two's complement numbers: sums and differences that
// leave the int range wrap around, as the hardware's do, instead of being
// undefined. A rectangle wider or higher than INT_MAX thus has a negative
// width or height and counts as empty.
constexpr int WrappingAdd(int a, int b)
{
    return static_cast<int>(static_cast<unsigned>(a) + static_cast<unsigned>(b));
}
constexpr int WrappingSub(int a, int b)
{
    return static_cast<int>(static_cast<unsigned>(a) - static_cast<unsigned>(b));
}
constexpr int WrappingMul(int a, int b)
{
    return static_cast<int>(static_cast<unsigned>(a) * static_cast<unsigned>(b));
}

struct LQ_EXPORT ZedaPoint {
    int x = 0;
    int y = 0;

    constexpr ZedaPoint() = default;
    constexpr ZedaPoint(int px, int py) : x(px), y(py) {}

    void Offset(int dx, int dy)
    {
        x = WrappingAdd(x, dx);
        y = WrappingAdd(y, dy);
    }
    void Offset(const ZedaPoint& d) { Offset(d.x, d.y); }
    friend constexpr bool operator==(const ZedaPoint&, const ZedaPoint&) = default;
};

struct LQ_EXPORT ZedaSize {
    int cx = 0;
    int cy = 0;

    constexpr ZedaSize() = default;
    constexpr ZedaSize(int w, int h) : cx(w), cy(h) {}
    friend constexpr bool operator==(const ZedaSize&, const ZedaSize&) = default;
};

// Right and bottom are exclusive.
struct LQ_EXPORT ZedaRect {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    constexpr ZedaRect() = default;
    constexpr ZedaRect(int l, int t, int r, int b) : left(l), top(t), right(r), bottom(b) {}
    constexpr ZedaRect(const ZedaPoint& topLeft, const ZedaSize& size)
        : left(topLeft.x), top(topLeft.y), right(WrappingAdd(topLeft.x, size.cx)),
          bottom(WrappingAdd(topLeft.y, size.cy))
    {
    }

    constexpr int Width() const { return WrappingSub(right, left); }
    constexpr int Height() const { return WrappingSub(bottom, top); }
    constexpr ZedaSize Size() const { return {Width(), Height()}; }
    constexpr bool IsEmpty() const { return Width() <= 0 || Height() <= 0; }
    constexpr ZedaPoint TopLeft() const { return {left, top}; }
    constexpr ZedaPoint BottomRight() const { return {right, bottom}; }
    // Integer midpoint, truncated toward zero (exact for any edges).
    constexpr ZedaPoint CenterPoint() const
    {
        return {static_cast<int>((static_cast<long long>(left) + right) / 2),
                static_cast<int>((static_cast<long long>(top) + bottom) / 2)};
    }
    constexpr bool PtInRect(const ZedaPoint& p) const
    {
        return p.x >= left && p.x < right && p.y >= top && p.y < bottom;
    }

    // Swaps the edges so that left <= right and top <= bottom.
    void Normalize();
    // Becomes the overlap with `other`, or all zero when they do not overlap
    // (either being empty counts as no overlap). Returns !IsEmpty().
    bool Intersection(const ZedaRect& other);
    void Inflate(int d) { Inflate(d, d); }
    void Inflate(int dx, int dy)
    {
        left = WrappingSub(left, dx);
        top = WrappingSub(top, dy);
        right = WrappingAdd(right, dx);
        bottom = WrappingAdd(bottom, dy);
    }
    void Offset(int dx, int dy)
    {
        left = WrappingAdd(left, dx);
        right = WrappingAdd(right, dx);
        top = WrappingAdd(top, dy);
        bottom = WrappingAdd(bottom, dy);
    }

    friend constexpr bool operator==(const ZedaRect&, const ZedaRect&) = default;
};

}  // namespace ZEDA
