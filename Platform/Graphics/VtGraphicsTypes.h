#pragma once

namespace VTC {

// What GetSurfaceKind() answers.
enum VtSurfaceKind : int {
    VT_SURFACE_WINDOW = 1,           // on-screen raster (held in memory without a display)
    VT_SURFACE_MEMORY = 2,           // memory graphics drawing on its selected image
    VT_SURFACE_PRINTER = 3,          // page raster at printer resolution, logical unit 0.1 mm
    VT_SURFACE_VECTOR = 4,           // SVG or PDF document; cannot be read back
    VT_SURFACE_RECORDING = 6,        // keeps the drawing as replayable commands
    VT_SURFACE_NATIVE_GRADIENT = 8,  // draws gradients itself, per pixel
    VT_SURFACE_IMAGE = 9,            // draws on a target image (GetTargetImage)
};

// Raster operations of BitBlt, bitwise on raw pixels.
enum VtRasterOp : unsigned int {
    VT_ROP_COPY = 0xCC0020,
    VT_ROP_AND = 0x8800C6,
    VT_ROP_OR = 0xEE0086,
    VT_ROP_XOR = 0x660046,
};

// Modes of SelectClipRegion.
enum VtClipMode : int { VT_CLIP_INTERSECT = 1, VT_CLIP_REPLACE = 5 };

// Pen and brush styles that the module relies on.
enum VtPenStyle : int { VT_PEN_SOLID = 0, VT_PEN_NULL = 5 };
enum VtBrushStyle : int { VT_BRUSH_SOLID = 0, VT_BRUSH_NULL = 1 };

// Test seams: which kind of platform call InjectFault makes fail.
enum VtFaultKind : int {
    VT_FAULT_NEW_GRAPHICS,
    VT_FAULT_NEW_IMAGE,
    VT_FAULT_NEW_PEN,
    VT_FAULT_NEW_BRUSH,
    VT_FAULT_NEW_RGN,
    VT_FAULT_COMPATIBLE_GRAPHICS,  // VtGraphics::CreateCompatibleGraphics
    VT_FAULT_COMPATIBLE_IMAGE,     // VtImage::CreateCompatibleImage
    VT_FAULT_CREATE_IMAGE,         // VtImage::CreateImage
    VT_FAULT_CREATE_REGION,        // VtRgn::CreatePolygonRegion and CreatePolyPolygonRegion
    VT_FAULT_KIND_COUNT
};

enum VtVectorFormat : int { VT_VECTOR_SVG = 0, VT_VECTOR_PDF = 1 };

}  // namespace VTC
