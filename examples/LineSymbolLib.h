#pragma once

#include "LineSymbol.h"
#include "ResourceSymbolLib.h"

namespace LqExample {

// A library of line symbols (library type 1, stamp "Line").
class LQ_EXPORT LineSymbolLib : public ResourceSymbolLib {
public:
    static constexpr int streamMagic = 0x4E4C514C;  // "LQLN"

    LineSymbolLib() = default;

    int GetLibType() const override { return 1; }
    int GetStreamMagic() const override { return streamMagic; }

    // The line symbol of that ID, or null (without a log line).
    LineSymbol* GetLine(int id) const;

protected:
    ResourceSymbol* NewSymbol() const override;
    bool IsOwnKind(const ResourceSymbol& symbol) const override;
    bool WriteFields(VTC::VtStream& stream, const ResourceSymbol& symbol) const override;
    bool ReadFields(VTC::VtStream& stream, ResourceSymbol& symbol) const override;
};

}  // namespace LqExample
