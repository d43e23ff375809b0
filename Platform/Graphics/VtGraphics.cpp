#include "VtGraphics.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <utility>

#include "VtBrush.h"
#include "VtGraphicsLog_p.h"
#include "VtImage_p.h"
#include "VtObjectAccounting_p.h"
#include "VtRgn_p.h"
#include "VtGraphicsManager.h"
#include "VtGraphicsState_p.h"
#include "VtPen.h"
#include "VtObjectMemory_p.h"

namespace VTC {

namespace {

constexpr gfx::GraphicsLog kLog{"Platform/Graphics/VtGraphics"};

// Halves round up, so that a shape keeps its size wherever the origin puts it.
int RoundToInt(double value)
{
    return static_cast<int>(std::clamp(std::floor(value + 0.5), double(INT_MIN), double(INT_MAX)));
}

const cairo_region_t* ClipOf(const VtGraphics::State& s)
{
    return s.clip ? VtRgnAccess::Region(*s.clip) : nullptr;
}

std::optional<gfx::StrokeStyle> StrokeOf(const VtGraphics::State& s)
{
    if (s.pen == nullptr) {
        return gfx::StrokeStyle{ZEDARGB(0, 0, 0), 1.0};
    }
    if (!s.pen->IsCreated() || s.pen->GetStyle() == VT_PEN_NULL) {
        return std::nullopt;
    }
    const double scale = s.mode != 0 ? s.scale : 1.0;
    return gfx::StrokeStyle{s.pen->GetColour(), std::max(1.0, std::round(s.pen->GetWidth() * scale))};
}

std::optional<uint32_t> FillOf(const VtGraphics::State& s)
{
    if (s.brush == nullptr || !s.brush->IsCreated() || s.brush->GetStyle() == VT_BRUSH_NULL) {
        return std::nullopt;
    }
    return s.brush->GetColour();
}

// Strokes `op` with the selected pen, through the clip.
void Stroke(VtGraphics::State& s, gfx::ShapeOp& op)
{
    op.stroke = StrokeOf(s);
    s.device->Draw(op, ClipOf(s));
}

// Fills `op` with the selected brush and strokes it with the pen.
void FillAndStroke(VtGraphics::State& s, gfx::ShapeOp& op)
{
    op.fill = FillOf(s);
    Stroke(s, op);
}

// A shape drawn within `bounds`, given in logical units.
gfx::ShapeOp BoxedShape(const VtGraphics& graphics, gfx::ShapeOp::Kind kind, const ZedaRect& bounds)
{
    gfx::ShapeOp op(kind);
    op.bounds = bounds;
    graphics.LogicalToDeviceRect(op.bounds);
    op.bounds.Normalize();
    return op;
}

// Which pixels of the surface a native gradient covers: the clip's bounds or
// the whole surface, grown by one pixel on every side as the fill module
// grows the rectangle it places the gradient in.
ZedaRect GradientBox(const VtGraphics::State& s)
{
    const ZedaSize size = s.device->Size();
    ZedaRect box{0, 0, size.cx, size.cy};
    if (s.clip && !box.Intersection(gfx::RegionExtents(ClipOf(s)))) {
        return {};
    }
    box.Inflate(1);
    return box;
}

// The surface's own gradients where its device draws them and there is a
// box to fill; null (logged) otherwise.
gfx::NativeGradients* GradientsFor(VtGraphics::State& s, const ZedaRect& box)
{
    gfx::NativeGradients* gradients = s.device->Gradients();
    if (gradients == nullptr || box.IsEmpty()) {
        kLog.Fail("GGr015");
        return nullptr;
    }
    return gradients;
}

using DrawNative = void (gfx::NativeGradients::*)(const ZedaRect&, const gfx::GradientParams&, const cairo_region_t*);

// Paints a linear or radial gradient that the surface draws itself over
// GradientBox, through the clip; false (logged) where there is none.
bool DrawNativeGradient(VtGraphics::State& s, DrawNative draw, const gfx::GradientParams& params)
{
    const ZedaRect box = GradientBox(s);
    gfx::NativeGradients* gradients = GradientsFor(s, box);
    if (gradients == nullptr) {
        return false;
    }
    (gradients->*draw)(box, params, ClipOf(s));
    return true;
}

}  // namespace

gfx::PixelFormat gfx::CompatibleFormat(const VtGraphics& graphics)
{
    return {graphics.GetBitsPerPixel(), graphics.IsRedFirst()};
}

VtGraphics::VtGraphics(std::unique_ptr<State> state) : state_(std::move(state)) {}

void* VtGraphics::operator new(std::size_t size) { return gfx::TakeObjectMemory(size); }

void VtGraphics::operator delete(void* block, std::size_t size) noexcept { gfx::GiveObjectMemory(block, size); }

VtGraphics::~VtGraphics() { gfx::CountDestroyed(); }

int VtGraphics::GetSurfaceKind() const { return state_->device->Kind(); }
bool VtGraphics::IsPrinting() const { return state_->device->IsPrinting(); }
bool VtGraphics::IsRecording() const { return state_->device->IsRecording(); }

void VtGraphics::SetPrinting(bool printing)
{
    if (!state_->device->SetPrinting(printing)) {
        kLog.Fail("GGr001");
    }
}

int VtGraphics::GetBitsPerPixel() const { return state_->device->Format().bpp; }

bool VtGraphics::IsRedFirst() const
{
    const gfx::PixelFormat format = state_->device->Format();
    return format.bpp == 24 && format.redFirst;
}
ZedaSize VtGraphics::GetDeviceSize() const { return state_->device->Size(); }

bool VtGraphics::CreateCompatibleGraphics(VtGraphics* reference)
{
    if (gfx::TakeFault(VT_FAULT_COMPATIBLE_GRAPHICS)) {
        return false;
    }
    if (reference == nullptr || !state_->device->BecomeCompatible(*reference->state_->device)) {
        kLog.Fail("GGr002");
        return false;
    }
    return true;
}

VtImage* VtGraphics::SelectImage(VtImage* image)
{
    if (!state_->device->SelectsImages()) {
        kLog.Fail("GGr003");
        return nullptr;
    }
    return state_->device->SelectImage(image);
}

VtPen* VtGraphics::SelectPen(VtPen* pen) { return std::exchange(state_->pen, pen); }
VtBrush* VtGraphics::SelectBrush(VtBrush* brush) { return std::exchange(state_->brush, brush); }
VtImage* VtGraphics::GetTargetImage() { return state_->device->TargetImage(); }

void VtGraphics::DrawLine(const ZedaPoint& from, const ZedaPoint& to)
{
    gfx::ShapeOp op(gfx::ShapeOp::Kind::Line);
    op.points = {from, to};
    LogicalToDevicePoints(op.points.data(), 2);
    Stroke(*state_, op);
}

void VtGraphics::DrawPolygon(const ZedaPoint* points, int count)
{
    if (points == nullptr || count < 2) {
        kLog.Fail("GGr004");
        return;
    }
    gfx::ShapeOp op(gfx::ShapeOp::Kind::Polygon);
    op.points.assign(points, points + count);
    LogicalToDevicePoints(op.points.data(), count);
    FillAndStroke(*state_, op);
}

void VtGraphics::DrawRectangle(const ZedaRect& rect)
{
    gfx::ShapeOp op = BoxedShape(*this, gfx::ShapeOp::Kind::Rectangle, rect);
    FillAndStroke(*state_, op);
}

void VtGraphics::DrawEllipse(const ZedaRect& bounds)
{
    gfx::ShapeOp op = BoxedShape(*this, gfx::ShapeOp::Kind::Ellipse, bounds);
    FillAndStroke(*state_, op);
}

void VtGraphics::DrawArc(const ZedaRect& bounds, const ZedaPoint& start, const ZedaPoint& end)
{
    gfx::ShapeOp op = BoxedShape(*this, gfx::ShapeOp::Kind::Arc, bounds);
    op.arcStart = start;
    op.arcEnd = end;
    LogicalToDevicePoints(&op.arcStart, 1);
    LogicalToDevicePoints(&op.arcEnd, 1);
    Stroke(*state_, op);
}

bool VtGraphics::BitBlt(int x, int y, int width, int height, VtGraphics* source, int srcX, int srcY,
                        unsigned int rop)
{
    if (source == nullptr || !gfx::IsKnownRop(rop)) {
        kLog.Fail("GGr005");
        return false;
    }
    const VtImage* pixels = source->state_->device->ReadBack();
    const ZedaSize size = GetDeviceSize();
    if (pixels == nullptr || size.cx <= 0 || size.cy <= 0) {
        kLog.Fail("GGr006");
        return false;
    }
    ZedaRect dest{ZedaPoint(x, y), ZedaSize(width, height)};
    LogicalToDeviceRect(dest);
    dest.Normalize();
    ZedaPoint from{srcX, srcY};
    source->LogicalToDevicePoints(&from, 1);
    // Source pixel = target pixel + shift; keep what lies on both surfaces.
    const int shiftX = ZEDA::WrappingSub(from.x, dest.left);
    const int shiftY = ZEDA::WrappingSub(from.y, dest.top);
    const gfx::RasterView view = VtImageAccess::View(*pixels);
    ZedaRect sourceBounds = view.Bounds();
    sourceBounds.Offset(ZEDA::WrappingSub(0, shiftX), ZEDA::WrappingSub(0, shiftY));
    ZedaRect area = dest;
    if (!area.Intersection({0, 0, size.cx, size.cy}) || !area.Intersection(sourceBounds)) {
        return true;
    }
    const gfx::BlitSource pixelsFrom{
        view, {ZEDA::WrappingAdd(area.left, shiftX), ZEDA::WrappingAdd(area.top, shiftY)}, source->state_->background};
    return state_->device->Blit(area, pixelsFrom, rop, ClipOf(*state_));
}

namespace {

// Nearest-neighbour sampling along one axis: the run of target positions in
// [visibleFrom, visibleTo) whose samples fall inside [validFrom, validTo).
struct AxisSamples {
    int first = 0;
    std::vector<int> sources;
};

AxisSamples SampleAxis(int destStart, int destLength, int srcStart, int srcLength, int visibleFrom, int visibleTo,
                       int validFrom, int validTo)
{
    AxisSamples samples;
    const long long destEnd = static_cast<long long>(destStart) + destLength;
    for (int d = std::max(destStart, visibleFrom); d < std::min<long long>(destEnd, visibleTo); ++d) {
        const double offset = (static_cast<double>(d) - destStart + 0.5) * srcLength / destLength;
        const double s = srcStart + std::floor(offset);
        if (s < validFrom || s >= validTo) {
            continue;
        }
        if (samples.sources.empty()) {
            samples.first = d;
        }
        samples.sources.push_back(static_cast<int>(s));
    }
    return samples;
}

}  // namespace

bool VtGraphics::DrawImageData(int x, int y, int width, int height, int srcX, int srcY, int srcWidth,
                               int srcHeight, const VtImageInfo& info)
{
    const int bpp = info.bitsPerPixel;
    if (info.bits == nullptr || info.width <= 0 || info.height <= 0 || !gfx::IsSupportedDepth(bpp) ||
        info.rowBytes < (static_cast<long long>(info.width) * bpp + 7) / 8) {
        kLog.Fail("GGr007");
        return false;
    }
    ZedaRect dest{ZedaPoint(x, y), ZedaSize(width, height)};
    LogicalToDeviceRect(dest);
    dest.Normalize();
    ZedaRect src{ZedaPoint(srcX, srcY), ZedaSize(srcWidth, srcHeight)};
    src.Normalize();
    const ZedaSize size = GetDeviceSize();
    if (dest.IsEmpty() || src.IsEmpty()) {
        return true;
    }
    const gfx::RasterView source{info.bits, info.width, info.height, info.rowBytes,
                                 gfx::PixelFormat{bpp, bpp == 24 && info.reserved1 == 1}, &info.palette};
    const AxisSamples columns = SampleAxis(dest.left, dest.Width(), src.left, src.Width(), 0, size.cx, 0, info.width);
    const AxisSamples rows = SampleAxis(dest.top, dest.Height(), src.top, src.Height(), 0, size.cy, 0, info.height);
    if (columns.sources.empty() || rows.sources.empty()) {
        return true;
    }
    const auto sampledWidth = static_cast<int>(columns.sources.size());
    const auto sampledHeight = static_cast<int>(rows.sources.size());
    const auto block = gfx::PixelBlock::Sampled(source, columns.sources, rows.sources, state_->background);
    const ZedaRect area{columns.first, rows.first, columns.first + sampledWidth, rows.first + sampledHeight};
    return state_->device->Blit(area, block.Source(), VT_ROP_COPY, ClipOf(*state_));
}

unsigned int VtGraphics::SetBackgroundColour(unsigned int colour) { return std::exchange(state_->background, colour); }
unsigned int VtGraphics::GetBackgroundColour() const { return state_->background; }

int VtGraphics::SetCoordinateMode(int mode) { return std::exchange(state_->mode, mode); }
int VtGraphics::GetCoordinateMode() const { return state_->mode; }
ZedaPoint VtGraphics::GetOrigin() const { return state_->origin; }
ZedaPoint VtGraphics::SetOrigin(const ZedaPoint& origin) { return std::exchange(state_->origin, origin); }

void VtGraphics::SetScale(double scale)
{
    if (!std::isfinite(scale) || scale <= 0.0) {
        kLog.Fail("GGr008");
        return;
    }
    state_->scale = scale;
}

double VtGraphics::GetScale() const { return state_->scale; }

void VtGraphics::LogicalToDeviceRect(ZedaRect& rect) const
{
    ZedaPoint corners[2] = {rect.TopLeft(), rect.BottomRight()};
    LogicalToDevicePoints(corners, 2);
    rect = {corners[0].x, corners[0].y, corners[1].x, corners[1].y};
}

void VtGraphics::DeviceToLogicalRect(ZedaRect& rect) const
{
    ZedaPoint corners[2] = {rect.TopLeft(), rect.BottomRight()};
    DeviceToLogicalPoints(corners, 2);
    rect = {corners[0].x, corners[0].y, corners[1].x, corners[1].y};
}

void VtGraphics::LogicalToDeviceSize(ZedaSize& size) const
{
    if (state_->mode != 0) {
        size = {RoundToInt(size.cx * state_->scale), RoundToInt(size.cy * state_->scale)};
    }
}

void VtGraphics::DeviceToLogicalSize(ZedaSize& size) const
{
    if (state_->mode != 0) {
        size = {RoundToInt(size.cx / state_->scale), RoundToInt(size.cy / state_->scale)};
    }
}

void VtGraphics::LogicalToDevicePoints(ZedaPoint* points, int count) const
{
    if (points == nullptr || state_->mode == 0) {
        return;
    }
    const State& s = *state_;
    if (s.scale == 1.0) {
        // The same integers as the rounding below gives them, without it.
        const auto shifted = [](int v, int by) {
            return static_cast<int>(std::clamp<long long>(static_cast<long long>(v) + by, INT_MIN, INT_MAX));
        };
        for (int i = 0; i < count; ++i) {
            points[i] = {shifted(points[i].x, s.origin.x), shifted(points[i].y, s.origin.y)};
        }
        return;
    }
    for (int i = 0; i < count; ++i) {
        points[i] = {RoundToInt(points[i].x * s.scale + s.origin.x), RoundToInt(points[i].y * s.scale + s.origin.y)};
    }
}

void VtGraphics::DeviceToLogicalPoints(ZedaPoint* points, int count) const
{
    if (points == nullptr || state_->mode == 0) {
        return;
    }
    const State& s = *state_;
    for (int i = 0; i < count; ++i) {
        points[i] = {RoundToInt((points[i].x - s.origin.x) / s.scale),
                     RoundToInt((points[i].y - s.origin.y) / s.scale)};
    }
}

VtRgn* VtGraphics::SelectClipRegion(VtRgn* region, int mode)
{
    if ((mode != VT_CLIP_INTERSECT && mode != VT_CLIP_REPLACE) || (mode == VT_CLIP_INTERSECT && region == nullptr)) {
        kLog.Fail("GGr009");
        return nullptr;
    }
    std::unique_ptr<VtRgn> next;
    if (region != nullptr) {
        next = VtRgnAccess::MakeRgn(false);
        next->CopyFrom(*region);
        if (mode == VT_CLIP_INTERSECT && state_->clip) {
            next->CombineRegion(next.get(), state_->clip.get(), 1);
        }
    }
    State& s = *state_;
    s.handedBack.resize(std::min(s.handedBack.size(), s.supersededFrom));
    s.supersededFrom = SIZE_MAX;
    if (mode == VT_CLIP_REPLACE) {
        // Selecting back a clip handed out earlier ends every nesting opened
        // since; those clips go with the next change, so that this call's
        // caller can still read them.
        const auto selectedBack = std::find_if(s.handedBack.rbegin(), s.handedBack.rend(),
                                               [region](const auto& clip) { return clip.get() == region; });
        if (selectedBack != s.handedBack.rend()) {
            s.supersededFrom = static_cast<std::size_t>(std::distance(selectedBack, s.handedBack.rend())) - 1;
        }
    }
    VtRgn* previous = s.clip.get();
    s.handedBack.push_back(std::move(s.clip));
    s.clip = std::move(next);
    return previous;
}

VtRgn* VtGraphics::GetClipRegion() const { return state_->clip.get(); }

bool VtGraphics::DrawLinearGradient(unsigned int colour1, unsigned int colour2, int offsetX, int offsetY,
                                    double angle)
{
    return DrawNativeGradient(*state_, &gfx::NativeGradients::DrawLinear, {colour1, colour2, offsetX, offsetY, angle});
}

bool VtGraphics::DrawRadialGradient(unsigned int colour1, unsigned int colour2, int offsetX, int offsetY,
                                    double angle)
{
    return DrawNativeGradient(*state_, &gfx::NativeGradients::DrawRadial, {colour1, colour2, offsetX, offsetY, angle});
}

VtImage* VtGraphics::CreateSquareGradientImage(unsigned int colour1, unsigned int colour2, int offsetX,
                                               int offsetY, double angle)
{
    const ZedaRect box = GradientBox(*state_);
    const gfx::NativeGradients* gradients = GradientsFor(*state_, box);
    if (gradients == nullptr) {
        return nullptr;
    }
    std::unique_ptr<VtImage> image(VtGraphicsManager::NewImage(0));
    if (!image || !image->CreateCompatibleImage(this, box.Width(), box.Height())) {
        return nullptr;
    }
    gradients->PaintSquare(VtImageAccess::View(*image), box, {colour1, colour2, offsetX, offsetY, angle});
    return image.release();
}

bool VtGraphics::SavePng(const std::string& path)
{
    const VtImage* pixels = state_->device->ReadBack();
    if (pixels == nullptr) {
        kLog.Fail("GGr006");
        return false;
    }
    return pixels->SavePng(path);
}

bool VtGraphics::SavePdf(const std::string& path) { return state_->device->SavePdf(path); }

bool VtGraphics::Replay(VtGraphics* target) const
{
    if (target == nullptr || target == this) {
        kLog.Fail("GGr014");
        return false;
    }
    return state_->device->Replay(*target->state_->device, ClipOf(*target->state_));
}

}  // namespace VTC
