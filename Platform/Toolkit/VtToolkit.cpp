#include "VtToolkit.h"
