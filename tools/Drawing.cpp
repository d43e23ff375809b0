#include "Drawing.h"

#include <stdlib.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <numbers>

#include "ContactSheet.h"
#include "Png.h"
#include "SymbolRenderer.h"

namespace LqTool {

using VTC::VtGraphics;
using VTC::VtGraphicsManager;
using ZEDA::ZedaPoint;
using ZEDA::ZedaRect;
using ZEDA::ZedaSize;

namespace {

constexpr int printerDpi = 150;

// Printer pages are sized in 0.1 mm; rounding up keeps the page from coming
// out a pixel short when the units are turned back into pixels.
int PixelsToPrinterUnits(int pixels)
{
    return (pixels * 254 + printerDpi - 1) / printerDpi;
}

ZedaPoint Lerp(const ZedaRect& bounds, double fx, double fy)
{
    return {bounds.left + static_cast<int>(std::lround(fx * bounds.Width())),
            bounds.top + static_cast<int>(std::lround(fy * bounds.Height()))};
}

}  // namespace

SolidPaint::SolidPaint(VtGraphics& graphics, unsigned int colour)
    : graphics_(graphics), pen_(VtGraphicsManager::NewPen(0)), brush_(VtGraphicsManager::NewBrush(0))
{
    if (!pen_ || !brush_)
        return;
    pen_->CreatePen(VTC::VT_PEN_NULL, ZEDARGB(0, 0, 0), 0, 0, 0.0);
    brush_->CreateBrush(VTC::VT_BRUSH_SOLID, colour, 100, 0, ZedaSize(0, 0), 0);
    previousPen_ = graphics_.SelectPen(pen_.get());
    previousBrush_ = graphics_.SelectBrush(brush_.get());
}

SolidPaint::~SolidPaint()
{
    if (pen_ && brush_) {
        graphics_.SelectPen(previousPen_);
        graphics_.SelectBrush(previousBrush_);
    }
}

const char* SurfaceName(SurfaceKind kind)
{
    switch (kind) {
    case SurfaceKind::Window16: return "window16";
    case SurfaceKind::Window24: return "window24";
    case SurfaceKind::Window32: return "window32";
    case SurfaceKind::Printer: return "printer";
    case SurfaceKind::Native: return "native";
    case SurfaceKind::Image: return "image";
    }
    return "unknown";
}

bool ParseSurfaceName(const std::string& text, SurfaceKind& kind)
{
    for (const SurfaceKind candidate : {SurfaceKind::Window16, SurfaceKind::Window24, SurfaceKind::Window32,
                                        SurfaceKind::Printer, SurfaceKind::Native, SurfaceKind::Image}) {
        if (text == SurfaceName(candidate)) {
            kind = candidate;
            return true;
        }
    }
    return false;
}

GraphicsPtr MakeSurface(SurfaceKind kind, int width, int height, ImagePtr& backing)
{
    switch (kind) {
    case SurfaceKind::Window16: return GraphicsPtr(VtGraphicsManager::CreateWindowGraphics(width, height, 16));
    case SurfaceKind::Window24: return GraphicsPtr(VtGraphicsManager::CreateWindowGraphics(width, height, 24));
    case SurfaceKind::Window32: return GraphicsPtr(VtGraphicsManager::CreateWindowGraphics(width, height, 32));
    case SurfaceKind::Printer:
        return GraphicsPtr(VtGraphicsManager::CreatePrintGraphics(PixelsToPrinterUnits(width),
                                                                  PixelsToPrinterUnits(height), printerDpi));
    case SurfaceKind::Native: return GraphicsPtr(VtGraphicsManager::CreateNativeGradientGraphics(width, height, 32));
    case SurfaceKind::Image:
        backing.reset(VtGraphicsManager::NewImage(0));
        if (!backing || !backing->CreateImage(width, height, 1, 32, nullptr, nullptr))
            return nullptr;
        return GraphicsPtr(VtGraphicsManager::CreateImageGraphics(backing.get()));
    }
    return nullptr;
}

ZedaRect LogicalBounds(const VtGraphics& graphics)
{
    ZedaRect bounds(ZedaPoint(0, 0), graphics.GetDeviceSize());
    graphics.DeviceToLogicalRect(bounds);
    bounds.Normalize();
    return bounds;
}

void DrawCheckerboard(VtGraphics& graphics, const ZedaRect& bounds)
{
    ZedaSize square(8, 8);
    graphics.DeviceToLogicalSize(square);
    const int step = std::max(1, std::abs(square.cx));
    {
        SolidPaint light(graphics, ZEDARGB(0xF4, 0xF4, 0xF4));
        graphics.DrawRectangle(bounds);
    }
    SolidPaint dark(graphics, ZEDARGB(0xC8, 0xC8, 0xC8));
    for (int y = bounds.top, row = 0; y < bounds.bottom; y += step, ++row)
        for (int x = bounds.left + (row % 2) * step; x < bounds.right; x += 2 * step)
            graphics.DrawRectangle(ZedaRect(x, y, std::min(x + step, bounds.right), std::min(y + step, bounds.bottom)));
}

std::vector<ZedaPoint> StarPoints(const ZedaRect& bounds)
{
    std::vector<ZedaPoint> points;
    for (int i = 0; i < 10; ++i) {
        const double a = (90.0 + 36.0 * i) * std::numbers::pi / 180.0;
        const double r = i % 2 == 0 ? 0.5 : 0.2;
        points.push_back(Lerp(bounds, 0.5 + r * std::cos(a), 0.5 - r * std::sin(a)));
    }
    return points;
}

std::vector<ZedaPoint> MultiPolygonPoints(const ZedaRect& bounds, std::vector<int>& counts)
{
    counts = {4, 4, 3};
    return {Lerp(bounds, 0.05, 0.1), Lerp(bounds, 0.45, 0.1), Lerp(bounds, 0.45, 0.5), Lerp(bounds, 0.05, 0.5),
            Lerp(bounds, 0.55, 0.5), Lerp(bounds, 0.95, 0.5), Lerp(bounds, 0.95, 0.9), Lerp(bounds, 0.55, 0.9),
            Lerp(bounds, 0.1, 0.95), Lerp(bounds, 0.3, 0.6), Lerp(bounds, 0.5, 0.95)};
}

// A PNG file in the temporary directory, removed with the object.
class ScratchPng {
public:
    ScratchPng()
    {
        std::error_code error;
        std::string pattern = (std::filesystem::temp_directory_path(error) / "lqsymbol-surface-XXXXXX.png").string();
        const int descriptor = error ? -1 : ::mkstemps(pattern.data(), 4);
        if (descriptor >= 0) {
            ::close(descriptor);
            path_ = pattern;
        }
    }
    ~ScratchPng()
    {
        if (!path_.empty())
            ::unlink(path_.c_str());
    }
    ScratchPng(const ScratchPng&) = delete;
    ScratchPng& operator=(const ScratchPng&) = delete;

    const std::string& Path() const { return path_; }

private:
    std::string path_;
};

// A surface shows colours only: the fills leave the fourth byte of 32-bit
// pixels 0, which is not transparency on a screen or a page.
bool SurfacePixels(VtGraphics& graphics, LqExample::RasterImage& pixels)
{
    bool read = false;
    if (const VTC::VtImage* target = graphics.GetTargetImage()) {
        read = LqExample::CopyFromImage(*target, pixels);
    } else {
        const ScratchPng scratch;
        read = !scratch.Path().empty() && graphics.SavePng(scratch.Path()) &&
               ReadSurfacePng(graphics, scratch.Path(), pixels);
    }
    for (unsigned int& pixel : pixels.pixels)
        pixel |= 0xFF000000u;
    return read;
}

bool IsPdfFile(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    char head[5] = {};
    in.read(head, sizeof head);
    return in && std::string(head, sizeof head) == "%PDF-";
}

bool ReadSurfacePng(const VtGraphics& graphics, const std::string& path, LqExample::RasterImage& pixels)
{
    std::string error;
    const ZedaSize size = graphics.GetDeviceSize();
    return ReadPng(path, pixels, error) && pixels.width == size.cx && pixels.height == size.cy;
}

ImagePtr CompatibleImage(VtGraphics& graphics, const LqExample::RasterImage& picture, unsigned int background)
{
    ImagePtr image(VtGraphicsManager::NewImage(0));
    if (!image || !image->CreateCompatibleImage(&graphics, picture.width, picture.height))
        return nullptr;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const unsigned int pixel = picture.At(x, y);
            image->SetPixelColour(x, y, ZEDAALPHAVAL(pixel) == 0 ? background : (pixel | 0xFF000000u));
        }
    }
    return image;
}

}  // namespace LqTool
