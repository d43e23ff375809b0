#pragma once

#include "VtSort.h"
#include "ZedaColour.h"
#include "ZedaGeometry.h"
#include "ZedaGradient.h"
#include "ZedaUnicodeString.h"
