#pragma once

#include <memory>
#include <string>

#include "LqBase.h"
#include "VtGraphics.h"
#include "VtGraphicsTypes.h"

namespace VTC {

class VtGraphics;
class VtImage;
class VtPen;
class VtBrush;
class VtRgn;
namespace gfx {
class SurfaceDevice;
}

// Factory of every graphics object, and the test seams. Each surface kind's
// Create... (and NewGraphics) is defined in its device's file under
// surfaces/, beside the device it adopts.
class LQ_EXPORT VtGraphicsManager {
public:
    // type 0 = the current graphics type: a memory graphics (kind 2), or an
    // image-backed graphics (kind 9) while GetCurGraphicsType() is 9.
    static VtGraphics* NewGraphics(int type);
    static VtImage* NewImage(int type);
    static VtPen* NewPen(int type);
    static VtBrush* NewBrush(int type);
    static VtRgn* NewRgn(int type);
    static int GetCurGraphicsType();  // 2 until set
    static void SetCurGraphicsType(int type);

    // Surfaces.
    static VtGraphics* CreateWindowGraphics(int width, int height, int bitsPerPixel);
    static VtGraphics* CreateImageGraphics(VtImage* target);
    // A page of widthMm10 x heightMm10 tenths of a millimetre rasterised at
    // `dpi`, 24 bits red first; logical unit 0.1 mm.
    static VtGraphics* CreatePrintGraphics(int widthMm10, int heightMm10, int dpi);
    static VtGraphics* CreateRecordingGraphics(int width, int height, int bitsPerPixel);
    // Written to `path` when the graphics is destroyed.
    static VtGraphics* CreateVectorGraphics(const std::string& path, VtVectorFormat format, int width, int height,
                                            bool printing);
    static VtGraphics* CreateNativeGradientGraphics(int width, int height, int bitsPerPixel);

    // Makes the (skip + 1)-th next call of that kind fail once.
    static void InjectFault(VtFaultKind what, int skip = 0);
    static void ClearFaults();
    // True while a fault injected for `what` has not fired yet.
    static bool IsFaultPending(VtFaultKind what);
    // Graphics, images, pens, brushes and regions made here and not yet destroyed.
    static int GetLiveObjectCount();

private:
    // A new graphics drawing on `device` (null: none), counted.
    static VtGraphics* Adopt(std::unique_ptr<gfx::SurfaceDevice> device);
};

}  // namespace VTC
