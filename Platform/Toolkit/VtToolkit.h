#pragma once

#include "LqExport.h"

namespace VTC {

class LQ_EXPORT VtToolkit {
public:
    // which 0 = width, 1 = height, in pixels: the size set with SetScreenSize,
    // else LQ_SCREEN_SIZE=WxH from the environment, else 1920 x 1080.
    static int GetScreenSize(int which);
    static void SetScreenSize(int width, int height);
    static void ResetScreenSize();  // back to the environment or the default
};

}  // namespace VTC
