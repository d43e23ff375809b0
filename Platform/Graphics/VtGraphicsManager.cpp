#include "VtGraphicsManager.h"
