#include <cairo-pdf.h>

#include <cmath>

#include "VtCairoDocument_p.h"
#include "VtGraphicsManager.h"
#include "VtImage_p.h"
#include "VtRasterDevice_p.h"

namespace VTC::gfx {

namespace {

constexpr GraphicsLog kLog{"Platform/Graphics/surfaces/VtPrinterDevice"};

// Pages store 24-bit pixels red first, as paper surfaces do.
constexpr PixelFormat kPageFormat{24, true};

// A page raster at printer resolution in logical units of 0.1 mm, which can
// also be written as a PDF page.
class PrinterDevice final : public OwnRasterDevice {
public:
    PrinterDevice(std::unique_ptr<VtImage> pixels, int dpi) : OwnRasterDevice(std::move(pixels)), dpi_(dpi) {}

    int Kind() const override { return VT_SURFACE_PRINTER; }
    bool IsPrinting() const override { return true; }
    double InitialScale() const override { return dpi_ / 254.0; }

    bool SavePdf(const std::string& path) override
    {
        const RasterView view = VtImageAccess::View(*Current());
        const double pointsPerPixel = 72.0 / dpi_;
        SurfacePtr document(
            cairo_pdf_surface_create(path.c_str(), view.width * pointsPerPixel, view.height * pointsPerPixel));
        if (CheckDocument(document.get()) == nullptr) {
            return false;
        }
        SurfacePtr page = ConvertToCairo(view, CAIRO_FORMAT_RGB24, [](uint32_t colour) { return colour | 0xFF000000u; });
        ContextPtr cr(cairo_create(document.get()));
        cairo_scale(cr.get(), pointsPerPixel, pointsPerPixel);
        cairo_set_source_surface(cr.get(), page.get(), 0, 0);
        cairo_pattern_set_filter(cairo_get_source(cr.get()), CAIRO_FILTER_NEAREST);
        cairo_paint(cr.get());
        cr.reset();
        return FinishDocument(document.get());
    }

private:
    int dpi_;
};

std::unique_ptr<SurfaceDevice> MakePrinterDevice(int widthMm10, int heightMm10, int dpi)
{
    if (widthMm10 <= 0 || heightMm10 <= 0 || dpi <= 0) {
        kLog.Fail("GMg002");
        return nullptr;
    }
    const double pixelsPerUnit = dpi / 254.0;
    auto paper = MakePaper(static_cast<int>(std::lround(widthMm10 * pixelsPerUnit)),
                           static_cast<int>(std::lround(heightMm10 * pixelsPerUnit)), kPageFormat);
    if (!paper->IsCreated()) {
        kLog.Fail("GMg003");
        return nullptr;
    }
    return std::make_unique<PrinterDevice>(std::move(paper), dpi);
}

}  // namespace

}  // namespace VTC::gfx

namespace VTC {

VtGraphics* VtGraphicsManager::CreatePrintGraphics(int widthMm10, int heightMm10, int dpi)
{
    return Adopt(gfx::MakePrinterDevice(widthMm10, heightMm10, dpi));
}

}  // namespace VTC
