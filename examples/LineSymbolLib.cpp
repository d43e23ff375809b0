#include "LineSymbolLib.h"

namespace LqExample {

LineSymbol* LineSymbolLib::GetLine(int id) const
{
    const auto found = symbols.find(id);
    return found == symbols.end() ? nullptr : dynamic_cast<LineSymbol*>(found->second);
}

ResourceSymbol* LineSymbolLib::NewSymbol() const
{
    return new LineSymbol;
}

bool LineSymbolLib::WriteFields(VTC::VtStream& stream, const ResourceSymbol& symbol) const
{
    const auto* line = dynamic_cast<const LineSymbol*>(&symbol);
    return line && line->Write(stream);
}

bool LineSymbolLib::ReadFields(VTC::VtStream& stream, ResourceSymbol& symbol) const
{
    return static_cast<LineSymbol&>(symbol).Read(stream);
}

}  // namespace LqExample
