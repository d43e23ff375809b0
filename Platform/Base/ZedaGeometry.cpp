#include "ZedaGeometry.h"
