#pragma once

#include "LqBase.h"

namespace VTC {

using ZEDA::ZedaPoint;
using ZEDA::ZedaRect;
using ZEDA::ZedaSize;

class VtGraphics;
class VtImage;

// The `kind` of the gradient fills; any other kind fills plainly in colour1.
enum VtGradientKind : int {
    VT_GRADIENT_LINEAR = 10,
    VT_GRADIENT_RADIAL = 11,
    VT_GRADIENT_CONICAL = 12,
    VT_GRADIENT_SQUARE = 13,
};

// Gradient and transparent fills and blits onto a drawing surface. Every
// operation is static; an instance carries no state. Transparency is the
// percentage of the surface that shows through (0 opaque, 100 invisible),
// except in TransparentDraw, which takes an opacity.
class LQ_EXPORT VtEspecialFill {
public:
    VtEspecialFill() = default;
    virtual ~VtEspecialFill();

    // Colour geometry.
    static ZedaSize GetScreenSize();
    static double CalAzimuth(const ZedaPoint& from, const ZedaPoint& to);
    static void GetColor(const ZedaPoint& start, const ZedaPoint& end, unsigned int startColor,
                         unsigned int endColor, const ZedaPoint& point, unsigned int& color);
    static void GetSectionPoint(const ZedaPoint& p1, const ZedaPoint& p2, ZedaPoint& point);
    static void GetVerticalPoint(const ZedaPoint& p1, const ZedaPoint& p2, ZedaPoint& point);
    static void GetEndPointOfColor(double angle, const ZedaRect& rect, ZedaPoint& start, ZedaPoint& end);

    // Gradient images; the caller owns the result.
    static VtImage* GetLinearImage(VtGraphics* graphics, const ZedaRect& rect, unsigned int colour1,
                                   unsigned int colour2, double angle, int offsetX, int offsetY);
    static VtImage* GetRadialImage(VtGraphics* graphics, const ZedaRect& rect, unsigned int colour1,
                                   unsigned int colour2, int offsetX, int offsetY);
    static VtImage* GetConicalImage(VtGraphics* graphics, const ZedaRect& rect, unsigned int colour1,
                                    unsigned int colour2, int offsetX, int offsetY, double angle);
    static VtImage* GetSquareImage(VtGraphics* graphics, const ZedaRect& rect, unsigned int colour1,
                                   unsigned int colour2, int offsetX, int offsetY, double angle);

    // Gradient shape fills; kind 10 linear, 11 radial, 12 conical, 13 square, other plain.
    static bool GradientRectangle(VtGraphics* graphics, const ZedaRect& rect, unsigned int colour1,
                                  unsigned int colour2, double angle, int offsetX, int offsetY, int kind,
                                  int transparency);
    static bool GradientPolygon(VtGraphics* graphics, const ZedaPoint* points, int count, unsigned int colour1,
                                unsigned int colour2, double angle, int offsetX, int offsetY, int kind,
                                int transparency);
    static bool GradientPolyPolygon(VtGraphics* graphics, const ZedaPoint* points, const int* counts, int polyCount,
                                    unsigned int colour1, unsigned int colour2, double angle, int offsetX,
                                    int offsetY, int kind, int transparency);

    // Pixel access in the 16-, 24- and 32-bit layouts.
    static void SetPixel(const unsigned char& bitCount, unsigned char* pixel, const unsigned char& blue,
                         const unsigned char& green, const unsigned char& red, const unsigned char& alpha);
    static void GetPixel(const unsigned char& bitCount, const unsigned char* pixel, unsigned char& blue,
                         unsigned char& green, unsigned char& red, unsigned char& alpha);

    // Blits.
    static bool TransparentBitblt(VtGraphics* graphics, VtImage* image, int x, int y, int width, int height,
                                  int transparency);
    static bool TransparentBitbltMask(VtGraphics* graphics, VtImage* image, VtImage* mask, int x, int y,
                                      int width, int height, int transparency);
    static void TransparentDraw(VtGraphics* graphics, VtImage* image, int x, int y, unsigned int colour,
                                int opacity);

    // Transparent shape fills.
    static bool TransparentRectangle(VtGraphics* graphics, const ZedaRect& rect, unsigned int colour,
                                     int transparency);
    static bool TransparentPolygon(VtGraphics* graphics, const ZedaPoint* points, int count, unsigned int colour,
                                   int transparency);
    static bool TransparentPolyPolygon(VtGraphics* graphics, const ZedaPoint* points, const int* counts,
                                       int polyCount, unsigned int colour, int transparency);
};

}  // namespace VTC
