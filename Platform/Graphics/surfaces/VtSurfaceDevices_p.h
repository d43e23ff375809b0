#pragma once

// One factory per surface kind, each defined in the kind's own file. A
// factory refuses bad arguments with a log record and returns null.

#include <memory>
#include <string>

#include "VtSurfaceDevice_p.h"

namespace VTC::gfx {

// Kind 1: VtWindowDevice.cpp.
std::unique_ptr<SurfaceDevice> MakeWindowDevice(int width, int height, int bitsPerPixel);
// Kind 2: VtMemoryDevice.cpp. What NewGraphics makes for `kind`: a memory
// graphics, or an image-backed one (kind 9), selecting no image yet.
std::unique_ptr<SurfaceDevice> MakeNewGraphicsDevice(int kind);
// Kind 3: VtPrinterDevice.cpp. A page of widthMm10 x heightMm10 tenths of a
// millimetre rasterised at `dpi`.
std::unique_ptr<SurfaceDevice> MakePrinterDevice(int widthMm10, int heightMm10, int dpi);
// Kind 4: VtVectorDevice.cpp. Written to `path` when the device is destroyed.
std::unique_ptr<SurfaceDevice> MakeVectorDevice(const std::string& path, VtVectorFormat format, int width,
                                                int height, bool printing);
// Kind 6: VtRecordingDevice.cpp.
std::unique_ptr<SurfaceDevice> MakeRecordingDevice(int width, int height, int bitsPerPixel);
// Kind 8: VtNativeGradientDevice.cpp.
std::unique_ptr<SurfaceDevice> MakeNativeGradientDevice(int width, int height, int bitsPerPixel);
// Kind 9: VtImageDevice.cpp. Draws on `target`, which must be created.
std::unique_ptr<SurfaceDevice> MakeImageDevice(VtImage* target);
// The same with no image selected yet.
std::unique_ptr<SurfaceDevice> MakeUnboundImageDevice();

}  // namespace VTC::gfx
