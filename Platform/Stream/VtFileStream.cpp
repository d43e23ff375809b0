#include "VtFileStream.h"
