#include "MarkerSymbolLib.h"

namespace LqExample {

MarkerSymbol* MarkerSymbolLib::GetMarker(int id) const
{
    const auto found = symbols.find(id);
    return found == symbols.end() ? nullptr : dynamic_cast<MarkerSymbol*>(found->second);
}

ResourceSymbol* MarkerSymbolLib::NewSymbol() const
{
    return new MarkerSymbol;
}

bool MarkerSymbolLib::IsOwnKind(const ResourceSymbol& symbol) const
{
    return dynamic_cast<const MarkerSymbol*>(&symbol) != nullptr;
}

bool MarkerSymbolLib::WriteFields(VTC::VtStream& stream, const ResourceSymbol& symbol) const
{
    return static_cast<const MarkerSymbol&>(symbol).Write(stream);
}

bool MarkerSymbolLib::ReadFields(VTC::VtStream& stream, ResourceSymbol& symbol) const
{
    return static_cast<MarkerSymbol&>(symbol).Read(stream);
}

}  // namespace LqExample
