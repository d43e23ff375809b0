#pragma once

#include "VtByteArray.h"
#include "VtFile.h"
#include "VtFileReplacer.h"
#include "VtFileStream.h"
#include "VtMemoryStream.h"
#include "VtStream.h"
