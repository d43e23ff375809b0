#include "ZedaColour.h"

namespace ZEDA {

const unsigned int un_bigendina = 1;

}  // namespace ZEDA
