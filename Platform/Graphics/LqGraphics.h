#pragma once

#include "VtBrush.h"
#include "VtGraphics.h"
#include "VtGraphicsManager.h"
#include "VtGraphicsTypes.h"
#include "VtImage.h"
#include "VtPen.h"
#include "VtPixelBuffer.h"
#include "VtRgn.h"
