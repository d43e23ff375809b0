#pragma once

#include "LineSymbol.h"
#include "ResourceSymbolLib.h"

namespace LqExample {

// A library of line symbols (library type 1, stamp "Line", magic "LQLN").
class LQ_EXPORT LineSymbolLib : public ResourceSymbolLibOf<LineSymbol, 1, 0x4E4C514C> {
public:
    // The line symbol of that ID, or null (without a log line).
    LineSymbol* GetLine(int id) const { return FindOfKind(id); }
};

}  // namespace LqExample
