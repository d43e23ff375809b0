#include "VtImage.h"
