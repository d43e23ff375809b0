#pragma once

#include <memory>
#include <string>
#include <vector>

#include "LqBase.h"
#include "LqGraphics.h"
#include "RasterImage.h"

// Small drawing helpers of the gallery and the fill command.
namespace LqTool {

using GraphicsPtr = std::unique_ptr<VTC::VtGraphics>;
using ImagePtr = std::unique_ptr<VTC::VtImage>;

// A solid brush and an invisible pen selected into a graphics for as long
// as the object lives.
class SolidPaint {
public:
    SolidPaint(VTC::VtGraphics& graphics, unsigned int colour);
    ~SolidPaint();
    SolidPaint(const SolidPaint&) = delete;
    SolidPaint& operator=(const SolidPaint&) = delete;

private:
    VTC::VtGraphics& graphics_;
    std::unique_ptr<VTC::VtPen> pen_;
    std::unique_ptr<VTC::VtBrush> brush_;
    VTC::VtPen* previousPen_ = nullptr;
    VTC::VtBrush* previousBrush_ = nullptr;
};

// The surfaces the gallery draws on.
enum class SurfaceKind { Window16, Window24, Window32, Printer, Native, Image };
const char* SurfaceName(SurfaceKind kind);
bool ParseSurfaceName(const std::string& text, SurfaceKind& kind);
// A surface of width x height device pixels; printer pages are made at
// 150 dpi, so that their logical units (0.1 mm) cover the same pixels.
GraphicsPtr MakeSurface(SurfaceKind kind, int width, int height, ImagePtr& backing);

// The logical rectangle that covers the whole surface.
ZEDA::ZedaRect LogicalBounds(const VTC::VtGraphics& graphics);
// A checkerboard of 8-pixel squares over `bounds`, to show what shows through.
void DrawCheckerboard(VTC::VtGraphics& graphics, const ZEDA::ZedaRect& bounds);

// Shapes within `bounds`: a five-pointed star, and a ring of two squares
// plus a triangle (points, one count per part).
std::vector<ZEDA::ZedaPoint> StarPoints(const ZEDA::ZedaRect& bounds);
std::vector<ZEDA::ZedaPoint> MultiPolygonPoints(const ZEDA::ZedaRect& bounds, std::vector<int>& counts);

// The surface's pixels (through a scratch PNG file in the temporary
// directory when it has no image).
bool SurfacePixels(VTC::VtGraphics& graphics, LqExample::RasterImage& pixels);

// Checks of a surface written by SavePdf or SavePng: a PDF file, or a PNG
// of the surface's size (its pixels read into `pixels`).
bool IsPdfFile(const std::string& path);
bool ReadSurfacePng(const VTC::VtGraphics& graphics, const std::string& path, LqExample::RasterImage& pixels);

// An image compatible with `graphics` holding `picture`, transparent pixels
// replaced by `background`.
ImagePtr CompatibleImage(VTC::VtGraphics& graphics, const LqExample::RasterImage& picture, unsigned int background);

}  // namespace LqTool
