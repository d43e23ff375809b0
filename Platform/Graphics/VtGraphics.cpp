#include "VtGraphics.h"
