#include "ZedaColour.h"
