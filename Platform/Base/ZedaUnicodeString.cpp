#include "ZedaUnicodeString.h"
