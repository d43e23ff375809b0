#include "VtGraphicsManager.h"

#include <array>
#include <atomic>
#include <cmath>
#include <mutex>

#include "LqToolkit.h"
#include "VtBrush.h"
#include "VtGraphics.h"
#include "VtGraphicsInternal.h"
#include "VtGraphicsState.h"
#include "VtImage.h"
#include "VtPen.h"
#include "VtRgn.h"

namespace VTC {

namespace {

constexpr const char* kSource = "Platform/Graphics/VtGraphicsManager";

std::atomic<int> g_liveObjects{0};
std::atomic<int> g_curGraphicsType{VT_SURFACE_MEMORY};

// Remaining calls before an injected fault fires, per kind; -1 when none.
std::mutex g_faultMutex;
std::array<int, VT_FAULT_KIND_COUNT> g_faultCountdown = [] {
    std::array<int, VT_FAULT_KIND_COUNT> countdown{};
    countdown.fill(-1);
    return countdown;
}();

bool IsRasterDepth(int bpp) { return bpp == 16 || bpp == 24 || bpp == 32; }

// Surfaces that stand for paper store 24-bit pixels red first.
gfx::PixelFormat PaperFormat(int bpp) { return {bpp, bpp == 24}; }

// A factory call fails when a fault was injected for it, or, with a log
// record, for a type other than 0.
bool IsRefused(VtFaultKind fault, int type)
{
    if (gfx::TakeFault(fault)) {
        return true;
    }
    if (type != 0) {
        gfx::LogFailure("GMg001", kSource, __LINE__);
        return true;
    }
    return false;
}

}  // namespace

namespace gfx {

void CountCreated() { g_liveObjects.fetch_add(1, std::memory_order_relaxed); }
void CountDestroyed() { g_liveObjects.fetch_sub(1, std::memory_order_relaxed); }

bool TakeFault(VtFaultKind kind)
{
    if (kind < 0 || kind >= VT_FAULT_KIND_COUNT) {
        return false;
    }
    const std::lock_guard lock(g_faultMutex);
    int& countdown = g_faultCountdown[static_cast<std::size_t>(kind)];
    if (countdown < 0) {
        return false;
    }
    return countdown-- == 0;
}

void LogFailure(const char* code, const char* source, int line)
{
    VtLogFile::GetInstance(false)->RecordLog(300, code, source, line);
}

}  // namespace gfx

VtGraphics* VtGraphicsManager::Adopt(std::unique_ptr<VtGraphics::State> state)
{
    state->counted = true;
    gfx::CountCreated();
    return new VtGraphics(std::move(state));
}

VtGraphics* VtGraphicsManager::NewGraphics(int type)
{
    if (gfx::TakeFault(VT_FAULT_NEW_GRAPHICS)) {
        return nullptr;
    }
    const int kind = type == 0 ? GetCurGraphicsType() : type;
    if (kind != VT_SURFACE_MEMORY && kind != VT_SURFACE_IMAGE) {
        gfx::LogFailure("GMg001", kSource, __LINE__);
        return nullptr;
    }
    return Adopt(MakeGraphicsState(kind, {}, gfx::MakeSelectingDevice(nullptr)));
}

VtImage* VtGraphicsManager::NewImage(int type)
{
    if (IsRefused(VT_FAULT_NEW_IMAGE, type)) {
        return nullptr;
    }
    return VtGraphicsInternals::MakeImage(true).release();
}

VtPen* VtGraphicsManager::NewPen(int type)
{
    if (IsRefused(VT_FAULT_NEW_PEN, type)) {
        return nullptr;
    }
    gfx::CountCreated();
    return new VtPen();
}

VtBrush* VtGraphicsManager::NewBrush(int type)
{
    if (IsRefused(VT_FAULT_NEW_BRUSH, type)) {
        return nullptr;
    }
    gfx::CountCreated();
    return new VtBrush();
}

VtRgn* VtGraphicsManager::NewRgn(int type)
{
    if (IsRefused(VT_FAULT_NEW_RGN, type)) {
        return nullptr;
    }
    return VtGraphicsInternals::MakeRgn(true).release();
}

namespace {

// A surface of `kind` drawing on white paper of its own, or null (logged).
std::unique_ptr<VtGraphics::State> OwnRasterState(int kind, int width, int height, int bitsPerPixel)
{
    if (width <= 0 || height <= 0 || !IsRasterDepth(bitsPerPixel)) {
        gfx::LogFailure("GMg002", kSource, __LINE__);
        return nullptr;
    }
    const gfx::PixelFormat format{bitsPerPixel, false};
    auto paper = gfx::MakePaper(width, height, format);
    if (!paper->IsCreated()) {
        gfx::LogFailure("GMg003", kSource, __LINE__);
        return nullptr;
    }
    return MakeGraphicsState(kind, format, gfx::MakeOwnRasterDevice(std::move(paper)));
}

}  // namespace

int VtGraphicsManager::GetCurGraphicsType() { return g_curGraphicsType.load(); }
void VtGraphicsManager::SetCurGraphicsType(int type) { g_curGraphicsType.store(type); }

VtGraphics* VtGraphicsManager::CreateWindowGraphics(int width, int height, int bitsPerPixel)
{
    auto state = OwnRasterState(VT_SURFACE_WINDOW, width, height, bitsPerPixel);
    return state ? Adopt(std::move(state)) : nullptr;
}

VtGraphics* VtGraphicsManager::CreateImageGraphics(VtImage* target)
{
    if (target == nullptr || !target->IsCreated()) {
        gfx::LogFailure("GMg002", kSource, __LINE__);
        return nullptr;
    }
    const gfx::PixelFormat format{target->GetBitsPerPixel(), target->IsRedFirst()};
    return Adopt(MakeGraphicsState(VT_SURFACE_IMAGE, format, gfx::MakeSelectingDevice(target)));
}

VtGraphics* VtGraphicsManager::CreatePrintGraphics(int widthMm10, int heightMm10, int dpi)
{
    if (widthMm10 <= 0 || heightMm10 <= 0 || dpi <= 0) {
        gfx::LogFailure("GMg002", kSource, __LINE__);
        return nullptr;
    }
    const double pixelsPerUnit = dpi / 254.0;
    const auto width = static_cast<int>(std::lround(widthMm10 * pixelsPerUnit));
    const auto height = static_cast<int>(std::lround(heightMm10 * pixelsPerUnit));
    const gfx::PixelFormat format = PaperFormat(24);
    auto paper = gfx::MakePaper(width, height, format);
    if (!paper->IsCreated()) {
        gfx::LogFailure("GMg003", kSource, __LINE__);
        return nullptr;
    }
    auto state = MakeGraphicsState(VT_SURFACE_PRINTER, format, gfx::MakePageDevice(std::move(paper), dpi));
    state->printing = true;
    state->scale = pixelsPerUnit;
    return Adopt(std::move(state));
}

VtGraphics* VtGraphicsManager::CreateRecordingGraphics(int width, int height, int bitsPerPixel)
{
    if (width <= 0 || height <= 0 || !IsRasterDepth(bitsPerPixel)) {
        gfx::LogFailure("GMg002", kSource, __LINE__);
        return nullptr;
    }
    const gfx::PixelFormat format = PaperFormat(bitsPerPixel);
    auto state = MakeGraphicsState(VT_SURFACE_RECORDING, format, gfx::MakeRecordingDevice(width, height, format));
    state->recording = true;
    return Adopt(std::move(state));
}

VtGraphics* VtGraphicsManager::CreateVectorGraphics(const std::string& path, VtVectorFormat format, int width,
                                                    int height, bool printing)
{
    if (path.empty() || width <= 0 || height <= 0 || (format != VT_VECTOR_SVG && format != VT_VECTOR_PDF)) {
        gfx::LogFailure("GMg002", kSource, __LINE__);
        return nullptr;
    }
    auto state = MakeGraphicsState(VT_SURFACE_VECTOR, {32, false}, gfx::MakeVectorDevice(path, format, width, height));
    state->printing = printing;
    return Adopt(std::move(state));
}

VtGraphics* VtGraphicsManager::CreateNativeGradientGraphics(int width, int height, int bitsPerPixel)
{
    auto state = OwnRasterState(VT_SURFACE_NATIVE_GRADIENT, width, height, bitsPerPixel);
    return state ? Adopt(std::move(state)) : nullptr;
}

void VtGraphicsManager::InjectFault(VtFaultKind what, int skip)
{
    if (what < 0 || what >= VT_FAULT_KIND_COUNT || skip < 0) {
        gfx::LogFailure("GMg004", kSource, __LINE__);
        return;
    }
    const std::lock_guard lock(g_faultMutex);
    g_faultCountdown[static_cast<std::size_t>(what)] = skip;
}

void VtGraphicsManager::ClearFaults()
{
    const std::lock_guard lock(g_faultMutex);
    g_faultCountdown.fill(-1);
}

int VtGraphicsManager::GetLiveObjectCount() { return g_liveObjects.load(); }

}  // namespace VTC
