#pragma once

#include "VtLogFile.h"
#include "VtToolkit.h"
