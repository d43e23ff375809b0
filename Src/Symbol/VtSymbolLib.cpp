#include "VtSymbolLib.h"
