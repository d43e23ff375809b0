#include "SymbolFields.h"

#include "Colour.h"
#include "LineSymbol.h"
#include "MarkerSymbol.h"

namespace LqTool {

using LqExample::LineSymbol;
using LqExample::MarkerSymbol;

namespace {

unsigned int ColourField(const Json& fields, const char* key)
{
    unsigned int colour = 0;
    if (!ParseColour(fields.at(key).get<std::string>(), colour))
        throw std::invalid_argument(std::string(key) + " is not a colour (#RRGGBB or #AARRGGBB)");
    return colour;
}

std::unique_ptr<MarkerSymbol> MarkerFromFields(const Json& fields)
{
    auto marker = std::make_unique<MarkerSymbol>();
    if (!LqExample::ParseShapeName(fields.at("shape").get<std::string>(), marker->shape))
        throw std::invalid_argument("unknown shape " + fields.at("shape").get<std::string>());
    marker->size = fields.at("size").get<int>();
    if (marker->size < 1 || marker->size > MarkerSymbol::maxSize)
        throw std::invalid_argument("size out of range (1 to " + std::to_string(MarkerSymbol::maxSize) + ")");
    marker->colour = ColourField(fields, "colour");
    marker->outlineColour = ColourField(fields, "outlineColour");
    marker->rotation = fields.at("rotation").get<double>();
    return marker;
}

std::unique_ptr<LineSymbol> LineFromFields(const Json& fields)
{
    auto line = std::make_unique<LineSymbol>();
    line->width = fields.at("width").get<double>();
    if (!(line->width > 0 && line->width <= LineSymbol::maxWidth))
        throw std::invalid_argument("width out of range (above 0, at most " +
                                    std::to_string(static_cast<int>(LineSymbol::maxWidth)) + ")");
    line->colour = ColourField(fields, "colour");
    line->dashes = fields.at("dashes").get<std::vector<int>>();
    if (static_cast<int>(line->dashes.size()) > LineSymbol::maxDashCount)
        throw std::invalid_argument("more than " + std::to_string(LineSymbol::maxDashCount) + " dashes");
    for (const int dash : line->dashes)
        if (dash < 1 || dash > LineSymbol::maxDashLength)
            throw std::invalid_argument("dash length out of range (1 to " +
                                        std::to_string(LineSymbol::maxDashLength) + ")");
    return line;
}

}  // namespace

Json SymbolFields(const VTC::VtSymbol& symbol)
{
    if (const auto* marker = dynamic_cast<const MarkerSymbol*>(&symbol))
        return {{"shape", LqExample::GetShapeName(marker->shape)},
                {"size", marker->size},
                {"colour", FormatColour(marker->colour)},
                {"outlineColour", FormatColour(marker->outlineColour)},
                {"rotation", marker->rotation}};
    if (const auto* line = dynamic_cast<const LineSymbol*>(&symbol))
        return {{"width", line->width}, {"colour", FormatColour(line->colour)}, {"dashes", line->dashes}};
    return Json::object();
}

std::unique_ptr<LqExample::ResourceSymbol> SymbolFromFields(LibraryKind kind, int id,
                                                            const ZEDA::ZedaUnicodeString& name, const Json& fields,
                                                            std::string& error)
{
    std::unique_ptr<LqExample::ResourceSymbol> symbol;
    try {
        if (kind == LibraryKind::Marker)
            symbol = MarkerFromFields(fields);
        else if (kind == LibraryKind::Line)
            symbol = LineFromFields(fields);
    } catch (const std::exception& problem) {
        error = problem.what();
        return nullptr;
    }
    if (!symbol) {
        error = "unknown kind of library";
        return nullptr;
    }
    symbol->ID = id;
    symbol->name = name;
    return symbol;
}

}  // namespace LqTool
