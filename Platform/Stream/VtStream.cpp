#include "VtStream.h"
