#include "VtBrush.h"
