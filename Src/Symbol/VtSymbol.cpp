#include "VtSymbol.h"
