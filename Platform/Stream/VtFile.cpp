#include "VtFile.h"
