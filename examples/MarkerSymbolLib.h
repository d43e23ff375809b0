#pragma once

#include "MarkerSymbol.h"
#include "ResourceSymbolLib.h"

namespace LqExample {

// A library of marker symbols (library type 0, stamp "Marker"), each with
// its picture in the resource cache.
class LQ_EXPORT MarkerSymbolLib : public ResourceSymbolLib {
public:
    static constexpr int streamMagic = 0x4B4D514C;  // "LQMK"

    MarkerSymbolLib() = default;

    int GetLibType() const override { return 0; }
    int GetStreamMagic() const override { return streamMagic; }

    // The marker of that ID, or null (without a log line).
    MarkerSymbol* GetMarker(int id) const;

protected:
    ResourceSymbol* NewSymbol() const override;
    bool IsOwnKind(const ResourceSymbol& symbol) const override;
    bool WriteFields(VTC::VtStream& stream, const ResourceSymbol& symbol) const override;
    bool ReadFields(VTC::VtStream& stream, ResourceSymbol& symbol) const override;
};

}  // namespace LqExample
