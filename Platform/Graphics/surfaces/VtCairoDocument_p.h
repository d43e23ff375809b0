#pragma once

// cairo surfaces and documents for the devices that write PDF or SVG.

#include <cairo.h>

#include "VtCairoImage_p.h"

namespace VTC::gfx {

// The document, or null ("GGr010" logged) when cairo could not open it. A
// document surface in an error state is only finished: painting onto one
// leaks inside cairo.
cairo_surface_t* CheckDocument(cairo_surface_t* document);

// Finishes the document; false ("GGr012" logged) when it could not be written.
bool FinishDocument(cairo_surface_t* document);

}  // namespace VTC::gfx
