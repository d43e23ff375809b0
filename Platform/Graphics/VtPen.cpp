#include "VtPen.h"
