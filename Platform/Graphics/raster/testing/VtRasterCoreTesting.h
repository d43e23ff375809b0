#pragma once

// The raster core's interface for white-box tests and benchmarks: the span
// writers, scans and their stretch writers, shapes and pixel copies the
// graphics library paints with.
// Code outside Platform/Graphics reaches the core through this header and
// the target LqRasterCoreTesting only; the core's own headers stay off its
// include path.

#include "../VtPixelCopy_p.h"
#include "../VtRasterShapes_p.h"
#include "../VtRasterStretch_p.h"
