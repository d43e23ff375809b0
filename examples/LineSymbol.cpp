#include "LineSymbol.h"

#include <cmath>

#include "LqStream.h"

namespace LqExample {

LineSymbol::LineSymbol(int id, const ZedaUnicodeString& symbolName, double lineWidth, unsigned int lineColour,
                       std::vector<int> dashPattern)
    : width(lineWidth), colour(lineColour), dashes(std::move(dashPattern))
{
    ID = id;
    name = symbolName;
}

bool LineSymbol::Write(VTC::VtStream& stream) const
{
    bool written = WriteDouble(stream, width) && stream.WriteInt(static_cast<int>(colour)) &&
                   stream.WriteInt(static_cast<int>(dashes.size()));
    for (const int dash : dashes)
        written = written && stream.WriteInt(dash);
    return written;
}

bool LineSymbol::Read(VTC::VtStream& stream)
{
    double storedWidth = 0.0;
    int storedColour = 0;
    int dashCount = 0;
    if (!ReadDouble(stream, storedWidth) || !stream.ReadInt(storedColour) || !stream.ReadInt(dashCount) ||
        !(storedWidth > 0.0 && storedWidth <= maxWidth) || dashCount < 0 || dashCount > maxDashCount)
        return false;
    std::vector<int> storedDashes(static_cast<std::size_t>(dashCount));
    for (int& dash : storedDashes) {
        if (!stream.ReadInt(dash) || dash < 1 || dash > maxDashLength)
            return false;
    }
    width = storedWidth;
    colour = static_cast<unsigned int>(storedColour);
    dashes = std::move(storedDashes);
    return true;
}

}  // namespace LqExample
