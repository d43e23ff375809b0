// fill: one special fill from command-line arguments into a PNG (or PDF).

#include <cstdio>
#include <numbers>

#include "Commands.h"
#include "Drawing.h"
#include "LqStream.h"
#include "Output.h"
#include "VtEspecialFill.h"

namespace LqTool {

using VTC::VtEspecialFill;
using VTC::VtGraphics;
using ZEDA::ZedaRect;

namespace {

// The gradient kind number of a name; -1 for the transparent fill.
int KindNumber(const std::string& kind)
{
    if (kind == "linear")
        return VTC::VT_GRADIENT_LINEAR;
    if (kind == "radial")
        return VTC::VT_GRADIENT_RADIAL;
    if (kind == "conical")
        return VTC::VT_GRADIENT_CONICAL;
    if (kind == "square")
        return VTC::VT_GRADIENT_SQUARE;
    if (kind == "plain")
        return 0;
    return -1;
}

bool Fill(VtGraphics& g, const FillOptions& o, const ZedaRect& rect)
{
    const int kind = KindNumber(o.kind);
    const double angle = o.angle * std::numbers::pi / 180.0;
    std::vector<int> counts;
    const auto points = o.shape == "polygon" ? StarPoints(rect) : MultiPolygonPoints(rect, counts);
    const int count = static_cast<int>(points.size());
    const int parts = static_cast<int>(counts.size());
    if (o.shape == "rectangle")
        return kind < 0 ? VtEspecialFill::TransparentRectangle(&g, rect, o.colour1, o.transparency)
                        : VtEspecialFill::GradientRectangle(&g, rect, o.colour1, o.colour2, angle, o.offsetX,
                                                            o.offsetY, kind, o.transparency);
    if (o.shape == "polygon")
        return kind < 0 ? VtEspecialFill::TransparentPolygon(&g, points.data(), count, o.colour1, o.transparency)
                        : VtEspecialFill::GradientPolygon(&g, points.data(), count, o.colour1, o.colour2, angle,
                                                          o.offsetX, o.offsetY, kind, o.transparency);
    return kind < 0 ? VtEspecialFill::TransparentPolyPolygon(&g, points.data(), counts.data(), parts, o.colour1,
                                                             o.transparency)
                    : VtEspecialFill::GradientPolyPolygon(&g, points.data(), counts.data(), parts, o.colour1,
                                                          o.colour2, angle, o.offsetX, o.offsetY, kind,
                                                          o.transparency);
}

bool EndsWith(const std::string& text, const std::string& suffix)
{
    return text.size() >= suffix.size() && text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

}  // namespace

int RunFill(const FillOptions& options)
{
    SurfaceKind kind = SurfaceKind::Window32;
    if (!ParseSurfaceName(options.surface, kind))
        return Refuse("fill", "unknown surface " + options.surface);
    const bool pdf = EndsWith(options.output, ".pdf");
    if (!pdf && !EndsWith(options.output, ".png"))
        return Refuse(options.output, "fill writes PNG or PDF files: name the output .png or .pdf");
    if (pdf && kind != SurfaceKind::Printer)
        return Refuse(options.output, "only the printer surface writes PDF");
    if (const int refused = CheckOutput(options.output, {}, options.force))
        return refused;
    ImagePtr backing;
    GraphicsPtr surface = MakeSurface(kind, options.width, options.height, backing);
    if (!surface)
        return Report("fill", "the surface cannot be made");
    const ZedaRect bounds = LogicalBounds(*surface);
    DrawCheckerboard(*surface, bounds);
    ZedaRect rect = bounds;
    rect.Inflate(-bounds.Width() / 10, -bounds.Height() / 10);
    if (!Fill(*surface, options, rect))
        return Report("fill", options.kind + " " + options.shape + " on " + options.surface +
                                  " failed; nothing was written");
    std::string error;
    const bool written = VTC::VtFileReplacer::Replace(
        options.output,
        [&](const std::string& temporary) { return pdf ? surface->SavePdf(temporary) : surface->SavePng(temporary); },
        [&](const std::string& temporary) {
            LqExample::RasterImage written;
            return pdf ? IsPdfFile(temporary) : ReadSurfacePng(*surface, temporary, written);
        },
        error);
    if (!written)
        return Report(options.output, error);
    std::printf("%s %s on %s -> %s\n", options.kind.c_str(), options.shape.c_str(), options.surface.c_str(),
                options.output.c_str());
    return exitOk;
}

}  // namespace LqTool
