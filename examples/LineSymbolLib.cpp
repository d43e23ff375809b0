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

bool LineSymbolLib::IsOwnKind(const ResourceSymbol& symbol) const
{
    return dynamic_cast<const LineSymbol*>(&symbol) != nullptr;
}

bool LineSymbolLib::WriteFields(VTC::VtStream& stream, const ResourceSymbol& symbol) const
{
    return static_cast<const LineSymbol&>(symbol).Write(stream);
}

bool LineSymbolLib::ReadFields(VTC::VtStream& stream, ResourceSymbol& symbol) const
{
    return static_cast<LineSymbol&>(symbol).Read(stream);
}

}  // namespace LqExample
