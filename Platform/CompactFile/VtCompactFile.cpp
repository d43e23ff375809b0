#include "VtCompactFile.h"
