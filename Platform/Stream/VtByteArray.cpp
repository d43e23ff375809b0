#include "VtByteArray.h"
