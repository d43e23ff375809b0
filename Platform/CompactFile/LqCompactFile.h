#pragma once

#include "VtCompactFile.h"
