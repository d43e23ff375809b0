#include "VtSymbol.h"

namespace VTC {

VtSymbol::~VtSymbol() = default;

const ZedaUnicodeString g_stStringBlank(u"");

}  // namespace VTC
