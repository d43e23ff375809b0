#pragma once

#include <cstddef>

#include <memory>
#include <string>

#include "LqBase.h"
#include "VtGraphicsTypes.h"

namespace VTC {

using ZEDA::ZedaPoint;
using ZEDA::ZedaRect;
using ZEDA::ZedaSize;

class VtImage;
class VtPen;
class VtBrush;
class VtRgn;
struct VtImageInfo;

// A drawing surface. Every kind maps logical units to device pixels by a scale
// and an origin: device = logical x scale + origin; coordinate mode 0 means
// plain device pixels (scale 1, origin ignored). Shapes are rasterised without
// anti-aliasing so that adjacent bands meet exactly. Made by VtGraphicsManager
// and destroyed with delete.
class LQ_EXPORT VtGraphics {
public:
    virtual ~VtGraphics();
    VtGraphics(const VtGraphics&) = delete;
    VtGraphics& operator=(const VtGraphics&) = delete;

    // Made and destroyed by the dozen per call: the platform recycles their memory.
    static void* operator new(std::size_t size);
    static void operator delete(void* block, std::size_t size) noexcept;

    // Kind and device state.
    int GetSurfaceKind() const;
    bool IsPrinting() const;
    bool IsRecording() const;
    void SetPrinting(bool printing);  // image-backed graphics only
    int GetBitsPerPixel() const;
    bool IsRedFirst() const;  // 24-bit pixels stored red, green, blue
    ZedaSize GetDeviceSize() const;

    // Makes this memory graphics compatible with `reference` (pixel format,
    // printing and recording state); false on failure.
    bool CreateCompatibleGraphics(VtGraphics* reference);

    // Selection; each returns what was selected before. The graphics never
    // owns what is selected into it.
    VtImage* SelectImage(VtImage* image);
    VtPen* SelectPen(VtPen* pen);
    VtBrush* SelectBrush(VtBrush* brush);
    VtImage* GetTargetImage();

    // Drawing in logical units with the selected pen and brush.
    void DrawLine(const ZedaPoint& from, const ZedaPoint& to);
    void DrawPolygon(const ZedaPoint* points, int count);
    void DrawRectangle(const ZedaRect& rect);
    void DrawEllipse(const ZedaRect& bounds);
    // The arc of the inscribed ellipse, counter-clockwise from the ray through
    // `start` to the ray through `end`; start equal to end draws the whole outline.
    void DrawArc(const ZedaRect& bounds, const ZedaPoint& start, const ZedaPoint& end);

    // Block copy of width x height from `source` at (srcX, srcY) with a bitwise
    // raster operation (VtRasterOp), through this surface's clip. Copying colour
    // into a 1-bit target makes 1 where red, green and blue equal the source's
    // background colour; 1 bits copied into colour give white, 0 bits black.
    bool BitBlt(int x, int y, int width, int height, VtGraphics* source, int srcX, int srcY, unsigned int rop);
    // Draws raw pixel rows described by `info` (its bits point at them). A
    // negative width or height gives the rectangle from its other edge.
    bool DrawImageData(int x, int y, int width, int height, int srcX, int srcY, int srcWidth, int srcHeight,
                       const VtImageInfo& info);
    unsigned int SetBackgroundColour(unsigned int colour);  // returns the previous one
    unsigned int GetBackgroundColour() const;

    // Coordinates.
    int SetCoordinateMode(int mode);  // returns the previous mode
    int GetCoordinateMode() const;
    ZedaPoint GetOrigin() const;
    ZedaPoint SetOrigin(const ZedaPoint& origin);  // returns the previous origin
    void SetScale(double scale);                    // device pixels per logical unit
    double GetScale() const;
    void LogicalToDeviceRect(ZedaRect& rect) const;
    void DeviceToLogicalRect(ZedaRect& rect) const;
    void LogicalToDeviceSize(ZedaSize& size) const;
    void DeviceToLogicalSize(ZedaSize& size) const;
    void LogicalToDevicePoints(ZedaPoint* points, int count) const;
    void DeviceToLogicalPoints(ZedaPoint* points, int count) const;

    // Clipping: mode 1 intersects the clip with `region`, mode 5 replaces it
    // (null = no clip). The region is copied. The previous clip is returned
    // (null for none); it stays owned by the graphics and valid until it has
    // been selected back with mode 5. Handed-out clips form a stack: selecting
    // one back (or null, back to a null handed out) supersedes it and every
    // clip handed out after it, including the one that call returns; these
    // stay readable until the next SelectClipRegion, which releases them.
    // Properly nested use (narrow, draw, select the returned clip back) keeps
    // memory bounded; clips never selected back live as long as the graphics.
    VtRgn* SelectClipRegion(VtRgn* region, int mode);
    VtRgn* GetClipRegion() const;

    // Surface-native gradients (kind 8 only; false or null elsewhere). They fill
    // the current clip's bounding box, or the whole surface without a clip.
    bool DrawLinearGradient(unsigned int colour1, unsigned int colour2, int offsetX, int offsetY, double angle);
    bool DrawRadialGradient(unsigned int colour1, unsigned int colour2, int offsetX, int offsetY, double angle);
    VtImage* CreateSquareGradientImage(unsigned int colour1, unsigned int colour2, int offsetX, int offsetY,
                                       double angle);

    // Output. PNG from every surface that can be read back; PDF from printer
    // pages and vector documents. A recording replays onto any other surface.
    bool SavePng(const std::string& path);
    bool SavePdf(const std::string& path);
    bool Replay(VtGraphics* target) const;

    struct State;

protected:
    explicit VtGraphics(std::unique_ptr<State> state);
    friend class VtGraphicsManager;

private:
    std::unique_ptr<State> state_;
};

}  // namespace VTC
