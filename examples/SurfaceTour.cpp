// A tour of the graphics platform and the special-fill renderer: one small scene drawn onto every kind of surface,
// each written out as a file. Run it as
//     surface_tour [output directory]        (default: ./surface-tour)
// and compare the pictures: they should all look alike, whatever the surface's pixel format or resolution.

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "LqGraphics.h"
#include "LqToolkit.h"
#include "VtEspecialFill.h"

namespace {

using VTC::VtEspecialFill;
using VTC::VtGraphics;
using VTC::VtGraphicsManager;
using ZEDA::ZedaPoint;
using ZEDA::ZedaRect;
using ZEDA::ZedaSize;

// Everything VtGraphicsManager makes is destroyed with delete, so std::unique_ptr owns it.
using GraphicsPtr = std::unique_ptr<VtGraphics>;
using ImagePtr = std::unique_ptr<VTC::VtImage>;

// The scene is laid out in logical units on a 320 x 240 canvas.
constexpr int kWidth = 320;
constexpr int kHeight = 240;

// Pen widths are in logical units; a width of 0 is one pixel at any scale, kNoPen a pen that draws no outline.
constexpr double kNoPen = -1.0;

// A graphics never owns the pen and brush selected into it: this keeps both alive while they are selected and
// selects the previous ones back before they are destroyed.
class Paint {
public:
    Paint(VtGraphics& graphics, unsigned int penColour, double penWidth, unsigned int brushColour = 0)
        : graphics_(graphics), pen_(VtGraphicsManager::NewPen(0)), brush_(VtGraphicsManager::NewBrush(0))
    {
        const int penStyle = penWidth < 0 ? VTC::VT_PEN_NULL : VTC::VT_PEN_SOLID;
        pen_->CreatePen(penStyle, penColour, 0, 0, std::max(penWidth, 0.0));
        brush_->CreateBrush(VTC::VT_BRUSH_SOLID, brushColour, 0, 0, ZedaSize(), 0);
        previousPen_ = graphics_.SelectPen(pen_.get());
        previousBrush_ = graphics_.SelectBrush(brush_.get());
    }
    ~Paint()
    {
        graphics_.SelectPen(previousPen_);
        graphics_.SelectBrush(previousBrush_);
    }

private:
    VtGraphics& graphics_;
    std::unique_ptr<VTC::VtPen> pen_;
    std::unique_ptr<VTC::VtBrush> brush_;
    VTC::VtPen* previousPen_ = nullptr;
    VTC::VtBrush* previousBrush_ = nullptr;
};

// A checkerboard picture in the surface's own pixel format, as the renderer's blits expect. Images are in device
// pixels, so its size comes from the extent it will cover in logical units.
ImagePtr MakePicture(VtGraphics& graphics, ZedaSize extent)
{
    graphics.LogicalToDeviceSize(extent);
    ImagePtr image(VtGraphicsManager::NewImage(0));
    if (!image->CreateCompatibleImage(&graphics, extent.cx, extent.cy))
        return nullptr;
    for (int y = 0; y < extent.cy; ++y)
        for (int x = 0; x < extent.cx; ++x) {
            const bool dark = (x * 4 / extent.cx + y * 4 / extent.cy) % 2 == 0;
            image->SetPixelColour(x, y, dark ? ZEDARGB(30, 60, 120) : ZEDARGB(255, 200, 40));
        }
    return image;
}

void DrawScene(VtGraphics& g)
{
    // Paper: memory images start black, so the scene paints its own background.
    {
        Paint paper(g, 0, kNoPen, ZEDARGB(250, 246, 235));
        g.DrawRectangle(ZedaRect(0, 0, kWidth, kHeight));
    }

    // A linear gradient, left to right (angles are radians, counter-clockwise). A native-gradient surface fills
    // its clip's box instead of the rectangle, so clip to the rectangle (regions are in device pixels) first;
    // there the call returns false for linear and radial kinds although it drew them.
    const ZedaRect gradient(16, 16, 144, 96);
    ZedaRect box = gradient;
    g.LogicalToDeviceRect(box);
    std::unique_ptr<VTC::VtRgn> clip(VtGraphicsManager::NewRgn(0));
    clip->CreateRectRegion(box.left, box.top, box.right, box.bottom);
    VTC::VtRgn* previousClip = g.SelectClipRegion(clip.get(), VTC::VT_CLIP_INTERSECT);
    VtEspecialFill::GradientRectangle(&g, gradient, ZEDARGB(255, 140, 0), ZEDARGB(90, 40, 160), 0.0, 0, 0,
                                      VTC::VT_GRADIENT_LINEAR, /*transparency*/ 0);
    g.SelectClipRegion(previousClip, VTC::VT_CLIP_REPLACE);

    // Plain shapes: the pen draws the outline, the brush fills the inside.
    {
        Paint paint(g, ZEDARGB(20, 30, 90), 4, ZEDARGB(140, 200, 240));
        g.DrawRectangle(ZedaRect(176, 16, 304, 96));
    }
    {
        Paint paint(g, ZEDARGB(160, 20, 20), 2, ZEDARGB(250, 210, 60));
        g.DrawEllipse(ZedaRect(16, 120, 144, 224));
    }
    {
        // Arcs and lines use only the pen. The upper half of a circle, counter-clockwise from its right end to its
        // left end, closed by a one-pixel line (which draws its first pixel and not its last).
        Paint paint(g, ZEDARGB(0, 130, 60), 3);
        g.DrawArc(ZedaRect(176, 120, 304, 224), ZedaPoint(304, 172), ZedaPoint(176, 172));
    }
    {
        Paint paint(g, ZEDARGB(0, 0, 0), 0);
        g.DrawLine(ZedaPoint(176, 172), ZedaPoint(304, 172));
    }

    // A picture blitted opaque (transparency 0) under the half circle.
    if (ImagePtr picture = MakePicture(g, ZedaSize(48, 40)))
        VtEspecialFill::TransparentBitblt(&g, picture.get(), 216, 180, 48, 40, 0);

    // A triangle through which half of what lies under it shows (transparency 50). A transparent fill reads the
    // surface back, which a vector document cannot do: there it returns false, and the triangle is drawn opaque.
    const ZedaPoint triangle[] = {{100, 60}, {230, 60}, {165, 190}};
    if (!VtEspecialFill::TransparentPolygon(&g, triangle, 3, ZEDARGB(0, 160, 80), 50)) {
        Paint paint(g, 0, kNoPen, ZEDARGB(0, 160, 80));
        g.DrawPolygon(triangle, 3);
    }
}

// One line per file.
bool Report(bool written, const std::filesystem::path& file)
{
    std::printf("%s %s\n", written ? "wrote" : "FAILED", file.c_str());
    return written;
}

// Draws the scene onto a surface that can be read back and saves what it shows as <name>.png.
bool Tour(const std::filesystem::path& dir, const std::string& name, VtGraphics* surface)
{
    const std::filesystem::path png = dir / (name + ".png");
    if (surface != nullptr)
        DrawScene(*surface);
    return Report(surface != nullptr && surface->SavePng(png), png);
}

}  // namespace

int main(int argc, char** argv)
{
    const std::filesystem::path dir = argc > 1 ? argv[1] : "surface-tour";
    std::error_code error;
    std::filesystem::create_directories(dir, error);
    bool ok = !error;

    // Window surfaces keep their pixels in memory, without a display; 16-bit pixels hold 5, 6 and 5 bits of red,
    // green and blue, so their colours come out a little coarser.
    for (const int bits : {16, 24, 32}) {
        GraphicsPtr window(VtGraphicsManager::CreateWindowGraphics(kWidth, kHeight, bits));
        ok &= Tour(dir, "window" + std::to_string(bits), window.get());
    }

    // A memory graphics draws on whichever image is selected into it. Select the previous one back before the
    // image goes: the graphics does not own it.
    {
        ImagePtr image(VtGraphicsManager::NewImage(0));
        image->CreateImage(kWidth, kHeight, 1, 24, nullptr, nullptr);
        GraphicsPtr memory(VtGraphicsManager::NewGraphics(VTC::VT_SURFACE_MEMORY));
        VTC::VtImage* previous = memory->SelectImage(image.get());
        ok &= Tour(dir, "memory", memory.get());
        memory->SelectImage(previous);
    }

    // The printer page's logical unit is 0.1 mm. A page of 128 x 96 mm at 127 dpi is 640 x 480 pixels; a scale of
    // two device pixels per logical unit makes the 320 x 240 scene fill it at twice the windows' resolution.
    {
        GraphicsPtr page(VtGraphicsManager::CreatePrintGraphics(1280, 960, 127));
        page->SetScale(2.0);
        ok &= Tour(dir, "printer", page.get());
        ok &= Report(page->SavePdf(dir / "printer.pdf"), dir / "printer.pdf");
    }

    // A recording keeps the drawing as commands; Replay plays them onto any other surface.
    {
        GraphicsPtr recording(VtGraphicsManager::CreateRecordingGraphics(kWidth, kHeight, 32));
        DrawScene(*recording);
        GraphicsPtr window(VtGraphicsManager::CreateWindowGraphics(kWidth, kHeight, 24));
        ok &= Report(recording->Replay(window.get()) && window->SavePng(dir / "recording-replayed.png"),
                     dir / "recording-replayed.png");
    }

    // The native-gradient surface paints gradients itself, pixel by pixel.
    {
        GraphicsPtr native(VtGraphicsManager::CreateNativeGradientGraphics(kWidth, kHeight, 32));
        ok &= Tour(dir, "native-gradient", native.get());
    }

    // An image-backed graphics draws straight onto its target image; the image must outlive it.
    {
        ImagePtr target(VtGraphicsManager::NewImage(0));
        target->CreateImage(kWidth, kHeight, 1, 32, nullptr, nullptr);
        GraphicsPtr graphics(VtGraphicsManager::CreateImageGraphics(target.get()));
        ok &= Tour(dir, "image-backed", graphics.get());
    }

    // A vector document is written to its path when it is destroyed; SavePdf writes a PDF of it besides.
    {
        const std::filesystem::path svg = dir / "vector.svg";
        std::filesystem::remove(svg, error);  // so that the check below sees this run's document
        GraphicsPtr document(
            VtGraphicsManager::CreateVectorGraphics(svg, VTC::VT_VECTOR_SVG, kWidth, kHeight, /*printing*/ false));
        if (document)
            DrawScene(*document);
        ok &= Report(document && document->SavePdf(dir / "vector.pdf"), dir / "vector.pdf");
        document.reset();
        ok &= Report(std::filesystem::exists(svg), svg);
    }

    // Nothing is thrown: the platform and the renderer record their failures in the log.
    for (const VTC::VtLogRecord& record : VTC::VtLogFile::GetInstance(false)->GetRecords())
        std::fprintf(stderr, "log: %d %s %s:%d\n", record.level, record.code.c_str(), record.source.c_str(),
                     record.line);
    return ok ? 0 : 1;
}
