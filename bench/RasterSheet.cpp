// Draws the shapes whose pixels the raster core decides (rings, ellipses,
// slanted wide lines, turned outlines, a point outline and a square gradient
// about a centre on its edge), enlarged four times, into a PNG: run against
// two builds of the graphics library to see what changed.

#include <cstdio>
#include <memory>

#include "LqGraphics.h"
#include "VtEspecialFill.h"

namespace {

using namespace VTC;
using ZEDA::ZedaPoint;
using ZEDA::ZedaRect;

constexpr int kWidth = 240, kHeight = 130, kZoom = 4;

void DrawShapes(VtGraphics* g)
{
    std::unique_ptr<VtPen> pen(VtGraphicsManager::NewPen(0));
    std::unique_ptr<VtBrush> brush(VtGraphicsManager::NewBrush(0));
    const auto usePen = [&](unsigned colour, int width) {
        pen->ReleasePen();
        pen->CreatePen(VT_PEN_SOLID, colour, 0, 0, width);
        g->SelectPen(pen.get());
    };
    g->SelectBrush(nullptr);
    const int widths[] = {1, 2, 3, 6};
    for (int i = 0; i < 4; ++i) {  // rings and ellipses
        usePen(ZEDARGB(30, 60, 200), widths[i]);
        g->DrawArc(ZedaRect(4 + 30 * i, 4, 30 + 30 * i, 30), {0, 0}, {0, 0});
        g->DrawEllipse(ZedaRect(124 + 28 * i, 4, 146 + 28 * i, 30 - 3 * i));
    }
    for (int i = 0; i < 4; ++i) {  // slanted wide lines
        usePen(ZEDARGB(200, 60, 30), widths[i]);
        g->DrawLine({6 + 30 * i, 62}, {26 + 30 * i, 36});
        g->DrawLine({126 + 30 * i, 40}, {150 + 30 * i, 58});
    }
    for (int i = 0; i < 4; ++i) {  // turned squares, and outlines of one point
        usePen(ZEDARGB(20, 140, 60), widths[i]);
        const ZedaPoint square[] = {{16 + 30 * i, 66}, {28 + 30 * i, 76}, {18 + 30 * i, 88}, {6 + 30 * i, 78}};
        g->DrawPolygon(square, 4);
        const ZedaPoint dot[] = {{140 + 20 * i, 78}, {140 + 20 * i, 78}, {140 + 20 * i, 78}};
        g->DrawPolygon(dot, 3);
    }
    brush->CreateBrush(VT_BRUSH_SOLID, ZEDARGB(240, 180, 40), 100, 0, {0, 0}, 0);
    g->SelectBrush(brush.get());
    g->SelectPen(nullptr);
    for (int i = 0; i < 4; ++i)  // filled ellipses with their outline
        g->DrawEllipse(ZedaRect(6 + 28 * i, 96, 26 + 28 * i + i, 124 - 2 * i));
    g->SelectBrush(nullptr);
    g->SelectPen(nullptr);
    // A turned square gradient about a centre on the rectangle's right edge.
    VtEspecialFill::GradientRectangle(g, ZedaRect(128, 94, 236, 126), ZEDARGB(0, 10, 200), ZEDARGB(240, 130, 20), 0.7,
                                      50, 0, 13, 0);
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: lq_raster_sheet OUT.png\n");
        return 2;
    }
    std::unique_ptr<VtGraphics> sheet(VtGraphicsManager::CreateWindowGraphics(kWidth, kHeight, 32));
    sheet->GetTargetImage()->Fill(ZEDARGB(255, 255, 255));
    DrawShapes(sheet.get());
    std::unique_ptr<VtGraphics> large(VtGraphicsManager::CreateWindowGraphics(kWidth * kZoom, kHeight * kZoom, 32));
    VtImageInfo info;
    sheet->GetTargetImage()->GetImageInfo(info);
    large->DrawImageData(0, 0, kWidth * kZoom, kHeight * kZoom, 0, 0, kWidth, kHeight, info);
    return large->SavePng(argv[1]) ? 0 : 1;
}
