#include "VtMemoryStream.h"
