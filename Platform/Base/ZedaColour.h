#pragma once

#include "LqExport.h"

// A colour is one 32-bit value: alpha in the top byte, then red, green, blue.
#define ZEDARGBA(r, g, b, a)                                                                  \
    ((unsigned int)((((unsigned int)(unsigned char)(a)) << 24) |                              \
                    (((unsigned int)(unsigned char)(r)) << 16) |                              \
                    (((unsigned int)(unsigned char)(g)) << 8) | ((unsigned int)(unsigned char)(b))))
#define ZEDARGB(r, g, b) ZEDARGBA(r, g, b, 255)
#define ZEDAREDVAL(c) ((unsigned char)(((unsigned int)(c) >> 16) & 0xFF))
#define ZEDAGREENVAL(c) ((unsigned char)(((unsigned int)(c) >> 8) & 0xFF))
#define ZEDABLUEVAL(c) ((unsigned char)((unsigned int)(c) & 0xFF))
#define ZEDAALPHAVAL(c) ((unsigned char)(((unsigned int)(c) >> 24) & 0xFF))

namespace ZEDA {

// The value 1; its lowest-addressed byte is 1 exactly on a little-endian host.
extern LQ_EXPORT const unsigned int un_bigendina;

}  // namespace ZEDA
