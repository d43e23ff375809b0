#include "VtEspecialFill.h"
