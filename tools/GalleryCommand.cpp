// gallery: contact sheets of the special fills on every kind of surface.

#include <cmath>
#include <cstdio>
#include <memory>
#include <numbers>

#include "Commands.h"
#include "ContactSheet.h"
#include "Drawing.h"
#include "Output.h"
#include "LqGraphics.h"
#include "MarkerSymbol.h"
#include "SymbolRenderer.h"
#include "VtEspecialFill.h"

namespace LqTool {

using LqExample::RasterImage;
using VTC::VtEspecialFill;
using VTC::VtGraphics;
using VTC::VtGraphicsManager;
using VTC::VtRgn;
using ZEDA::ZedaPoint;
using ZEDA::ZedaRect;

namespace {

constexpr int cellWidth = 150;
constexpr int cellHeight = 110;
constexpr unsigned int colour1 = ZEDARGB(0x1F, 0x4E, 0x9A);
constexpr unsigned int colour2 = ZEDARGB(0xF2, 0xC1, 0x4E);

struct GradientKind {
    int kind;
    const char* name;
};
constexpr GradientKind gradientKinds[] = {
    {VTC::VT_GRADIENT_LINEAR, "linear"}, {VTC::VT_GRADIENT_RADIAL, "radial"}, {VTC::VT_GRADIENT_CONICAL, "conical"},
    {VTC::VT_GRADIENT_SQUARE, "square"}, {9, "other kind: plain"}};

struct Variant {
    double degrees;
    int offsetX;
    int offsetY;
    int transparency;
};
constexpr Variant variants[] = {{0, 0, 0, 0},   {45, 0, 0, 0},   {90, 0, 0, 0},   {160, 0, 0, 0},
                                {30, 50, -40, 0}, {30, -80, 60, 0}, {30, 0, 0, 30}, {30, 0, 0, 70}};

double Radians(double degrees)
{
    return degrees * std::numbers::pi / 180.0;
}

std::string Label(const Variant& v, bool result)
{
    char text[80];
    std::snprintf(text, sizeof text, "%g deg, off %d,%d\nt %d%%: %s", v.degrees, v.offsetX, v.offsetY,
                  v.transparency, result ? "true" : "false");
    return text;
}

// The sheets go into one batch: a gallery that fails part way leaves the
// one before it as it was.
class Gallery {
public:
    explicit Gallery(std::string directory) : directory_(std::move(directory)) {}

    // Draws one cell on a fresh surface and adds its pixels to the sheet.
    template <typename Draw>
    bool Cell(ContactSheet& sheet, SurfaceKind kind, const std::string& label, Draw draw)
    {
        ImagePtr backing;
        GraphicsPtr surface = MakeSurface(kind, cellWidth, cellHeight, backing);
        if (!surface)
            return Fail(std::string("cannot make a ") + SurfaceName(kind) + " surface");
        const ZedaRect bounds = LogicalBounds(*surface);
        DrawCheckerboard(*surface, bounds);
        ZedaRect inner = bounds;
        inner.Inflate(-bounds.Width() / 12, -bounds.Height() / 10);
        const bool result = draw(*surface, inner);
        RasterImage pixels;
        if (!SurfacePixels(*surface, pixels))
            return Fail("cannot read a surface back");
        sheet.Add(pixels, label + (label.find('\n') == std::string::npos ? (result ? ": true" : ": false") : ""));
        return true;
    }

    bool Save(const ContactSheet& sheet, const std::string& name)
    {
        std::vector<std::string> pages;
        std::string error;
        if (!sheet.Write(Path(name), batch_, pages, error))
            return Fail(Path(name) + ": " + error);
        char line[80];
        std::snprintf(line, sizeof line, "  %-28s %3d cells", name.c_str(), sheet.GetCellCount());
        written_.emplace_back(line);
        return true;
    }

    // The printer page as PDF and PNG; the PNG's pixels go to `raster`.
    bool SavePage(VtGraphics& page, RasterImage& raster)
    {
        std::string error;
        const bool added =
            batch_.Add(
                Path("printer-page.pdf"), [&](const std::string& temporary) { return page.SavePdf(temporary); },
                IsPdfFile, error) &&
            batch_.Add(
                Path("printer-page.png"), [&](const std::string& temporary) { return page.SavePng(temporary); },
                [&](const std::string& temporary) { return ReadSurfacePng(page, temporary, raster); }, error);
        if (!added)
            return Fail("the printer page cannot be written: " + error);
        char line[80];
        std::snprintf(line, sizeof line, "  %-28s page of %dx%d px", "printer-page.pdf, .png", raster.width,
                      raster.height);
        written_.emplace_back(line);
        return true;
    }

    bool Commit()
    {
        std::string error;
        if (!batch_.Commit(error))
            return Fail(error);
        for (const std::string& line : written_)
            std::printf("%s\n", line.c_str());
        return true;
    }

    std::string Path(const std::string& name) const { return directory_ + "/" + name; }

    bool Fail(const std::string& message)
    {
        Report("gallery", message);
        return false;
    }

private:
    std::string directory_;
    OutputBatch batch_;
    std::vector<std::string> written_;
};

// Clips the surface to a logical rectangle for the rest of its short life.
void ClipTo(VtGraphics& surface, ZedaRect rect)
{
    surface.LogicalToDeviceRect(rect);
    const std::unique_ptr<VtRgn> region(VtGraphicsManager::NewRgn(0));
    if (region && region->CreateRectRegion(rect.left, rect.top, rect.right, rect.bottom))
        surface.SelectClipRegion(region.get(), VTC::VT_CLIP_INTERSECT);
}

bool GradientSheet(Gallery& gallery, SurfaceKind kind)
{
    // The native surface is not told the rectangle: it draws over its clip, so
    // each cell clips to its rectangle as a caller filling a shape would. It
    // draws linear, radial and conical itself and the fill then reports false.
    const std::string title = kind == SurfaceKind::Native
                                  ? "Gradients on the native-gradient surface, clipped to each rectangle: it draws "
                                    "linear, radial (and conical as radial) itself, and the fill returns false"
                                  : std::string("Gradient rectangles on a ") + SurfaceName(kind) +
                                        " surface: kinds by row; angle, offsets, transparency and result in each cell";
    ContactSheet sheet(title, std::size(variants), cellWidth, cellHeight);
    for (const GradientKind& gradient : gradientKinds) {
        sheet.NewRow(gradient.name);
        for (const Variant& v : variants) {
            ImagePtr backing;
            GraphicsPtr surface = MakeSurface(kind, cellWidth, cellHeight, backing);
            if (!surface)
                return gallery.Fail(std::string("cannot make a ") + SurfaceName(kind) + " surface");
            const ZedaRect bounds = LogicalBounds(*surface);
            DrawCheckerboard(*surface, bounds);
            ZedaRect inner = bounds;
            inner.Inflate(-bounds.Width() / 12, -bounds.Height() / 10);
            if (kind == SurfaceKind::Native)
                ClipTo(*surface, inner);
            const bool result = VtEspecialFill::GradientRectangle(surface.get(), inner, colour1, colour2,
                                                                  Radians(v.degrees), v.offsetX, v.offsetY,
                                                                  gradient.kind, v.transparency);
            RasterImage pixels;
            if (!SurfacePixels(*surface, pixels))
                return gallery.Fail("cannot read a surface back");
            sheet.Add(pixels, Label(v, result));
        }
    }
    return gallery.Save(sheet, std::string("gradients-") + SurfaceName(kind) + ".png");
}

// One printer page with all four gradients, written as PDF and PNG, and a
// labelled sheet of its cells cut from the page raster.
bool PrinterPage(Gallery& gallery)
{
    constexpr int columns = 5;
    constexpr int rows = 4;
    constexpr double pageDegrees[columns] = {0, 45, 90, 135, 200};
    constexpr int pageTransparency[columns] = {0, 0, 0, 40, 70};
    constexpr int pageWidth = 1754;  // A4 landscape at 150 dpi
    constexpr int pageHeight = 1240;
    ImagePtr backing;
    GraphicsPtr page = MakeSurface(SurfaceKind::Printer, pageWidth, pageHeight, backing);
    if (!page)
        return gallery.Fail("cannot make a printer page");
    const ZedaRect bounds = LogicalBounds(*page);
    DrawCheckerboard(*page, bounds);
    const int cellW = bounds.Width() / columns;
    const int cellH = bounds.Height() / rows;
    ContactSheet sheet("Printer page (150 dpi, 0.1 mm units): gradients by row, cut from the page raster", columns,
                       pageWidth / columns, pageHeight / rows);
    std::vector<std::pair<ZedaRect, std::string>> cells;
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            ZedaRect cell(bounds.left + column * cellW, bounds.top + row * cellH, bounds.left + (column + 1) * cellW,
                          bounds.top + (row + 1) * cellH);
            cell.Inflate(-cellW / 10, -cellH / 8);
            const bool result = VtEspecialFill::GradientRectangle(
                page.get(), cell, colour1, colour2, Radians(pageDegrees[column]), 0, 0, gradientKinds[row].kind,
                pageTransparency[column]);
            Variant v{pageDegrees[column], 0, 0, pageTransparency[column]};
            cells.emplace_back(cell, std::string(gradientKinds[row].name) + ", " + Label(v, result));
        }
    }
    RasterImage raster;
    if (!gallery.SavePage(*page, raster))
        return false;
    for (auto& [cell, label] : cells) {
        page->LogicalToDeviceRect(cell);
        cell.Normalize();
        ZedaRect clipped = cell;
        clipped.Intersection(ZedaRect(0, 0, raster.width, raster.height));
        RasterImage crop(clipped.Width(), clipped.Height());
        for (int y = 0; y < crop.height; ++y)
            for (int x = 0; x < crop.width; ++x)
                crop.At(x, y) = raster.At(clipped.left + x, clipped.top + y);
        sheet.Add(crop, label);
    }
    return gallery.Save(sheet, "gradients-printer.png");
}

bool TransparentFillSheet(Gallery& gallery)
{
    ContactSheet sheet("Transparent fills (colour over a checkerboard) and gradient polygons, by surface", 9,
                       cellWidth, cellHeight);
    const unsigned int fill = ZEDARGB(0xC0, 0x20, 0x30);
    for (const SurfaceKind kind : {SurfaceKind::Window32, SurfaceKind::Window24, SurfaceKind::Window16,
                                   SurfaceKind::Printer, SurfaceKind::Image}) {
        sheet.NewRow(SurfaceName(kind));
        for (const int t : {0, 25, 50, 75, 100}) {
            if (!gallery.Cell(sheet, kind, "rectangle t " + std::to_string(t), [&](VtGraphics& g, const ZedaRect& r) {
                    return VtEspecialFill::TransparentRectangle(&g, r, fill, t);
                }))
                return false;
        }
        const bool drawn =
            gallery.Cell(sheet, kind, "star polygon t 40",
                         [&](VtGraphics& g, const ZedaRect& r) {
                             const auto points = StarPoints(r);
                             return VtEspecialFill::TransparentPolygon(&g, points.data(),
                                                                       static_cast<int>(points.size()), fill, 40);
                         }) &&
            gallery.Cell(sheet, kind, "multi-polygon t 40",
                         [&](VtGraphics& g, const ZedaRect& r) {
                             std::vector<int> counts;
                             const auto points = MultiPolygonPoints(r, counts);
                             return VtEspecialFill::TransparentPolyPolygon(&g, points.data(), counts.data(),
                                                                           static_cast<int>(counts.size()), fill, 40);
                         }) &&
            gallery.Cell(sheet, kind, "radial star t 20",
                         [&](VtGraphics& g, const ZedaRect& r) {
                             const auto points = StarPoints(r);
                             return VtEspecialFill::GradientPolygon(&g, points.data(), static_cast<int>(points.size()),
                                                                    colour1, colour2, 0.0, 0, 0,
                                                                    VTC::VT_GRADIENT_RADIAL, 20);
                         }) &&
            gallery.Cell(sheet, kind, "linear multi t 0", [&](VtGraphics& g, const ZedaRect& r) {
                std::vector<int> counts;
                const auto points = MultiPolygonPoints(r, counts);
                return VtEspecialFill::GradientPolyPolygon(&g, points.data(), counts.data(),
                                                           static_cast<int>(counts.size()), colour1, colour2,
                                                           Radians(30), 0, 0, VTC::VT_GRADIENT_LINEAR, 0);
            });
        if (!drawn)
            return false;
    }
    return gallery.Save(sheet, "transparent-fills.png");
}

bool BlitSheet(Gallery& gallery)
{
    LqExample::MarkerSymbol marker(1, u"blit", LqExample::MarkerShape::Star, 70, ZEDARGB(0x20, 0x90, 0x40), 10);
    RasterImage picture;
    if (!LqExample::RenderMarker(marker, picture))
        return gallery.Fail("cannot draw the blit picture");
    const unsigned int key = ZEDARGB(255, 0, 255);
    ContactSheet sheet("Blits of a picture: plain, masked (black = shows) and colour-keyed (magenta = hidden)", 7,
                       cellWidth, cellHeight);
    for (const SurfaceKind kind :
         {SurfaceKind::Window32, SurfaceKind::Window24, SurfaceKind::Window16, SurfaceKind::Image}) {
        sheet.NewRow(SurfaceName(kind));
        auto place = [&](VtGraphics& g, const ZedaRect& r) {
            ZedaRect device = r;
            g.LogicalToDeviceRect(device);
            return ZedaPoint(device.left + (device.Width() - picture.width) / 2,
                             device.top + (device.Height() - picture.height) / 2);
        };
        for (const int t : {0, 50}) {
            if (!gallery.Cell(sheet, kind, "bitblt t " + std::to_string(t), [&](VtGraphics& g, const ZedaRect& r) {
                    ImagePtr image = CompatibleImage(g, picture, ZEDARGB(255, 255, 255));
                    const ZedaPoint at = place(g, r);
                    return image && VtEspecialFill::TransparentBitblt(&g, image.get(), at.x, at.y, picture.width,
                                                                      picture.height, t);
                }))
                return false;
        }
        for (const int t : {0, 50}) {
            if (!gallery.Cell(sheet, kind, "mask t " + std::to_string(t), [&](VtGraphics& g, const ZedaRect& r) {
                    RasterImage shape = picture;
                    for (unsigned int& pixel : shape.pixels)
                        pixel = ZEDAALPHAVAL(pixel) == 0 ? ZEDARGB(255, 255, 255) : ZEDARGB(0, 0, 0);
                    ImagePtr image = CompatibleImage(g, picture, ZEDARGB(0, 0, 0));
                    ImagePtr mask = CompatibleImage(g, shape, ZEDARGB(255, 255, 255));
                    const ZedaPoint at = place(g, r);
                    return image && mask &&
                           VtEspecialFill::TransparentBitbltMask(&g, image.get(), mask.get(), at.x, at.y,
                                                                 picture.width, picture.height, t);
                }))
                return false;
        }
        for (const int opacity : {100, 60, 0}) {
            if (!gallery.Cell(sheet, kind, "keyed opacity " + std::to_string(opacity) + "\n(no result)",
                              [&](VtGraphics& g, const ZedaRect& r) {
                                  ImagePtr image = CompatibleImage(g, picture, key);
                                  const ZedaPoint at = place(g, r);
                                  if (image)
                                      VtEspecialFill::TransparentDraw(&g, image.get(), at.x, at.y, key, opacity);
                                  return image != nullptr;
                              }))
                return false;
        }
    }
    return gallery.Save(sheet, "blits.png");
}

}  // namespace

int RunGallery(const std::string& directory, bool force)
{
    for (const char* name : {"gradients-window32.png", "gradients-window24.png", "gradients-window16.png",
                             "gradients-native.png", "gradients-printer.png", "printer-page.pdf", "printer-page.png",
                             "transparent-fills.png", "blits.png"})
        if (const int refused = CheckOutput(directory + "/" + name, {}, force))
            return refused;
    if (const int failed = MakeOutputDirectory(directory))
        return failed;
    std::printf("gallery in %s:\n", directory.c_str());
    Gallery gallery(directory);
    for (const SurfaceKind kind : {SurfaceKind::Window32, SurfaceKind::Window24, SurfaceKind::Window16,
                                   SurfaceKind::Native})
        if (!GradientSheet(gallery, kind))
            return exitFailure;
    if (!PrinterPage(gallery) || !TransparentFillSheet(gallery) || !BlitSheet(gallery) || !gallery.Commit())
        return exitFailure;
    return exitOk;
}

}  // namespace LqTool
