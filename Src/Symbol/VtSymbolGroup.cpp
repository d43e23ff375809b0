#include "VtSymbolGroup.h"
