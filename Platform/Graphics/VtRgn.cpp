#include "VtRgn.h"
