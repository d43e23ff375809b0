#include "VtLogFile.h"
