#pragma once

#include "MarkerSymbol.h"
#include "ResourceSymbolLib.h"

namespace LqExample {

// A library of marker symbols (library type 0, stamp "Marker", magic "LQMK"),
// each with its picture in the resource cache.
class LQ_EXPORT MarkerSymbolLib : public ResourceSymbolLibOf<MarkerSymbol, 0, 0x4B4D514C> {
public:
    // The marker of that ID, or null (without a log line).
    MarkerSymbol* GetMarker(int id) const { return FindOfKind(id); }
};

}  // namespace LqExample
