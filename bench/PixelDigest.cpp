// Prints one digest line per random drawing: shapes, clips, blits and the
// renderer's fills on images and surfaces of every depth and every kind. Two builds of the
// graphics platform draw the same pixels exactly when their outputs are equal,
// so a faster painter is checked against the one it replaces with
//   lq_pixel_digest 4000 > new.txt; <old build>/lq_pixel_digest 4000 > old.txt; cmp old.txt new.txt

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

#include "LqGraphics.h"
#include "VtEspecialFill.h"

namespace {

using namespace VTC;
using ZEDA::ZedaPoint;
using ZEDA::ZedaRect;

class Random {
public:
    explicit Random(unsigned seed) : engine_(seed) {}
    int Between(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(engine_); }
    bool Chance(int percent) { return Between(0, 99) < percent; }
    unsigned Colour() { return ZEDARGB(Between(0, 255), Between(0, 255), Between(0, 255)); }
    ZedaPoint Point(int w, int h) { return {Between(-w / 4, w + w / 4), Between(-h / 4, h + h / 4)}; }
    ZedaRect Rect(int w, int h) { return {Between(-w / 4, w), Between(-h / 4, h), Between(0, w + w / 4), Between(0, h + h / 4)}; }

private:
    std::mt19937 engine_;
};

uint64_t Digest(const VtImage* image)
{
    std::vector<unsigned char> bytes(static_cast<std::size_t>(image->GetRowBytes()) *
                                     static_cast<std::size_t>(image->GetHeight()));
    image->GetBits(static_cast<long long>(bytes.size()), bytes.data());
    uint64_t hash = 1469598103934665603ull;
    for (unsigned char b : bytes)
        hash = (hash ^ b) * 1099511628211ull;
    return hash;
}

VtRgn* RandomRegion(Random& rnd, int w, int h)
{
    VtRgn* region = VtGraphicsManager::NewRgn(0);
    if (rnd.Chance(50)) {
        const ZedaRect r = rnd.Rect(w, h);
        region->CreateRectRegion(r.left, r.top, r.right, r.bottom);
    } else {
        std::vector<ZedaPoint> points(static_cast<std::size_t>(rnd.Between(3, 7)));
        for (auto& p : points)
            p = rnd.Point(w, h);
        region->CreatePolygonRegion(points.data(), static_cast<int>(points.size()));
    }
    return region;
}

// One random shape with a random pen and brush.
void DrawShape(Random& rnd, VtGraphics* g, int w, int h, VtPen* pen, VtBrush* brush)
{
    pen->ReleasePen();
    brush->ReleaseBrush();
    const int widths[] = {0, 1, 2, 3, 4, 5, 7, 8, 12, 25};
    pen->CreatePen(rnd.Chance(15) ? VT_PEN_NULL : VT_PEN_SOLID, rnd.Colour(), 0, 0, widths[rnd.Between(0, 9)]);
    brush->CreateBrush(rnd.Chance(30) ? VT_BRUSH_NULL : VT_BRUSH_SOLID, rnd.Colour(), 100, 0, {0, 0}, 0);
    g->SelectPen(rnd.Chance(10) ? nullptr : pen);
    g->SelectBrush(rnd.Chance(10) ? nullptr : brush);
    const bool axis = rnd.Chance(40);
    switch (rnd.Between(0, 4)) {
    case 0: {
        const ZedaPoint a = rnd.Point(w, h);
        ZedaPoint b = rnd.Point(w, h);
        if (axis)
            (rnd.Chance(50) ? b.x : b.y) = rnd.Chance(50) ? a.x : a.y;
        if (axis && rnd.Chance(50))
            b = rnd.Chance(50) ? ZedaPoint(b.x, a.y) : ZedaPoint(a.x, b.y);
        g->DrawLine(a, b);
        break;
    }
    case 1: {
        std::vector<ZedaPoint> points(static_cast<std::size_t>(rnd.Between(2, 8)));
        for (auto& p : points)
            p = rnd.Point(w, h);
        g->DrawPolygon(points.data(), static_cast<int>(points.size()));
        break;
    }
    case 2:
        g->DrawRectangle(rnd.Rect(w, h));
        break;
    case 3:
        g->DrawEllipse(rnd.Rect(w, h));
        break;
    default:
        g->DrawArc(rnd.Rect(w, h), rnd.Point(w, h), rnd.Chance(30) ? ZedaPoint(0, 0) : rnd.Point(w, h));
        break;
    }
}

const int kDepths[] = {1, 8, 16, 24, 32};

// Shapes and blits on memory graphics over images of every depth.
uint64_t DrawingCase(Random& rnd)
{
    const int bpp = kDepths[rnd.Between(0, 4)];
    const int w = rnd.Between(1, rnd.Chance(10) ? 700 : 120), h = rnd.Between(1, rnd.Chance(10) ? 500 : 120);
    VtImage* image = VtGraphicsManager::NewImage(0);
    image->CreateImage(w, h, 1, bpp, nullptr, nullptr);
    image->Fill(rnd.Colour());
    VtGraphics* g = VtGraphicsManager::NewGraphics(VT_SURFACE_MEMORY);
    VtImage* previous = g->SelectImage(image);
    if (rnd.Chance(20)) {
        g->SetOrigin({rnd.Between(-20, 20), rnd.Between(-20, 20)});
        g->SetScale(rnd.Chance(50) ? 1.0 : 0.5 * rnd.Between(1, 5));
    }
    if (rnd.Chance(40)) {
        VtRgn* region = RandomRegion(rnd, w, h);
        g->SelectClipRegion(region, VT_CLIP_REPLACE);
        delete region;
    }
    VtPen* pen = VtGraphicsManager::NewPen(0);
    VtBrush* brush = VtGraphicsManager::NewBrush(0);
    VtImage* other = VtGraphicsManager::NewImage(0);
    const int ow = rnd.Between(1, 150), oh = rnd.Between(1, 150);
    other->CreateImage(ow, oh, 1, rnd.Chance(50) ? bpp : kDepths[rnd.Between(0, 4)], nullptr, nullptr);
    other->Fill(rnd.Colour());
    VtGraphics* source = VtGraphicsManager::NewGraphics(VT_SURFACE_MEMORY);
    VtImage* previousOther = source->SelectImage(other);
    const unsigned rops[] = {VT_ROP_COPY, VT_ROP_AND, VT_ROP_OR, VT_ROP_XOR};
    for (int n = rnd.Between(1, 10); n > 0; --n) {
        if (rnd.Chance(75)) {
            DrawShape(rnd, g, w, h, pen, brush);
            DrawShape(rnd, source, ow, oh, pen, brush);
            continue;
        }
        const ZedaPoint at = rnd.Point(w, h), from = rnd.Point(ow, oh);
        const unsigned rop = rops[rnd.Between(0, 3)];
        if (rnd.Chance(30))  // overlapping copies within one image
            g->BitBlt(at.x, at.y, rnd.Between(0, w), rnd.Between(0, h), g, rnd.Between(-5, w), rnd.Between(-5, h), rop);
        else
            g->BitBlt(at.x, at.y, rnd.Between(-20, ow + 20), rnd.Between(-20, oh + 20), source, from.x, from.y, rop);
    }
    g->SelectPen(nullptr);
    g->SelectBrush(nullptr);
    source->SelectPen(nullptr);
    source->SelectBrush(nullptr);
    const uint64_t digest = Digest(image) ^ (Digest(other) * 31);
    source->SelectImage(previousOther);
    g->SelectImage(previous);
    delete source;
    delete other;
    delete pen;
    delete brush;
    delete g;
    delete image;
    return digest;
}

// The renderer's fills on a window surface, which paint through the platform.
uint64_t FillCase(Random& rnd)
{
    const int bpp = kDepths[rnd.Between(2, 4)];
    const int w = rnd.Between(2, rnd.Chance(10) ? 900 : 200), h = rnd.Between(2, rnd.Chance(10) ? 700 : 200);
    VtGraphics* surface = VtGraphicsManager::CreateWindowGraphics(w, h, bpp);
    const double angles[] = {0.0, 0.6, 1.5707963267948966, 2.5, 3.141592653589793, 4.0, 5.5};
    if (rnd.Chance(30)) {
        VtRgn* region = RandomRegion(rnd, w, h);
        surface->SelectClipRegion(region, VT_CLIP_REPLACE);
        delete region;
    }
    for (int n = rnd.Between(1, 3); n > 0; --n) {
        const ZedaRect rect = rnd.Rect(w, h);
        switch (rnd.Between(0, 3)) {
        case 0:
            VtEspecialFill::GradientRectangle(surface, rect, rnd.Colour(), rnd.Colour(), angles[rnd.Between(0, 6)],
                                              rnd.Between(-100, 100), rnd.Between(-100, 100), rnd.Between(10, 13),
                                              rnd.Between(0, 100));
            break;
        case 1:
            VtEspecialFill::TransparentRectangle(surface, rect, rnd.Colour(), rnd.Between(0, 100));
            break;
        case 2: {
            std::vector<ZedaPoint> points(static_cast<std::size_t>(rnd.Between(3, 7)));
            for (auto& p : points)
                p = rnd.Point(w, h);
            VtEspecialFill::TransparentPolygon(surface, points.data(), static_cast<int>(points.size()), rnd.Colour(),
                                               rnd.Between(0, 100));
            break;
        }
        default: {
            VtImage* image = VtGraphicsManager::NewImage(0);
            image->CreateCompatibleImage(surface, rnd.Between(1, w), rnd.Between(1, h));
            image->Fill(rnd.Colour());
            const ZedaPoint at = rnd.Point(w, h);
            VtEspecialFill::TransparentBitblt(surface, image, at.x, at.y, image->GetWidth(), image->GetHeight(),
                                              rnd.Between(0, 100));
            delete image;
            break;
        }
        }
    }
    const uint64_t digest = Digest(surface->GetTargetImage());
    delete surface;
    return digest;
}

// One surface of each kind but the vector document, which cannot be read back.
VtGraphics* RandomSurface(Random& rnd, int w, int h, VtImage* backing)
{
    const int bpp = kDepths[rnd.Between(2, 4)];
    switch (rnd.Between(0, 3)) {
    case 0:
        return VtGraphicsManager::CreatePrintGraphics(w * 2, h * 2, 127);
    case 1:
        return VtGraphicsManager::CreateRecordingGraphics(w, h, bpp);
    case 2:
        return VtGraphicsManager::CreateNativeGradientGraphics(w, h, bpp);
    default: {
        backing->CreateImage(w, h, 1, bpp, nullptr, nullptr);
        backing->Fill(rnd.Colour());
        VtGraphics* g = VtGraphicsManager::CreateImageGraphics(backing);
        g->SetPrinting(rnd.Chance(50));
        return g;
    }
    }
}

// The renderer's fills and a shape on printer pages, recordings (replayed
// onto a window as well), native-gradient and image-backed surfaces, and a
// memory graphics made compatible with each.
uint64_t SurfaceCase(Random& rnd)
{
    const int w = rnd.Between(2, 160), h = rnd.Between(2, 160);
    VtImage* backing = VtGraphicsManager::NewImage(0);
    VtGraphics* surface = RandomSurface(rnd, w, h, backing);
    VtGraphics* memory = VtGraphicsManager::NewGraphics(0);
    memory->CreateCompatibleGraphics(surface);
    VtImage* memoryImage = VtGraphicsManager::NewImage(0);
    memoryImage->CreateCompatibleImage(surface, w, h);
    memoryImage->Fill(rnd.Colour());
    VtImage* previous = memory->SelectImage(memoryImage);
    const double angles[] = {0.0, 0.6, 1.5707963267948966, 2.5, 3.141592653589793, 4.0, 5.5};
    for (VtGraphics* g : {surface, memory}) {
        const ZedaSize size = g->GetDeviceSize();
        if (rnd.Chance(30)) {
            VtRgn* region = RandomRegion(rnd, size.cx, size.cy);
            g->SelectClipRegion(region, VT_CLIP_REPLACE);
            delete region;
        }
        VtPen* pen = VtGraphicsManager::NewPen(0);
        VtBrush* brush = VtGraphicsManager::NewBrush(0);
        DrawShape(rnd, g, w, h, pen, brush);
        g->SelectPen(nullptr);
        g->SelectBrush(nullptr);
        delete pen;
        delete brush;
        VtEspecialFill::GradientRectangle(g, rnd.Rect(w, h), rnd.Colour(), rnd.Colour(), angles[rnd.Between(0, 6)],
                                          rnd.Between(-100, 100), rnd.Between(-100, 100), rnd.Between(10, 13),
                                          rnd.Between(0, 100));
        VtEspecialFill::TransparentRectangle(g, rnd.Rect(w, h), rnd.Colour(), rnd.Between(0, 100));
    }
    uint64_t digest = Digest(surface->GetTargetImage()) ^ (Digest(memoryImage) * 31);
    if (surface->IsRecording()) {
        VtGraphics* window = VtGraphicsManager::CreateWindowGraphics(w, h, 32);
        surface->Replay(window);
        digest ^= Digest(window->GetTargetImage()) * 17;
        delete window;
    }
    memory->SelectImage(previous);
    delete memory;
    delete memoryImage;
    delete surface;
    delete backing;
    return digest;
}

}  // namespace

int main(int argc, char** argv)
{
    const int cases = argc > 1 ? std::atoi(argv[1]) : 2000;
    for (int i = 0; i < cases; ++i) {
        Random rnd(static_cast<unsigned>(i));
        const char kind = i % 4 == 3 ? 'f' : i % 8 == 1 ? 's' : 'd';
        const uint64_t digest = kind == 'f' ? FillCase(rnd) : kind == 's' ? SurfaceCase(rnd) : DrawingCase(rnd);
        std::printf("%d %c %016llx\n", i, kind, static_cast<unsigned long long>(digest));
    }
    return VtGraphicsManager::GetLiveObjectCount() == 0 ? 0 : 1;
}
