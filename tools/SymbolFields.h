#pragma once

#include <memory>
#include <string>

#include <nlohmann/json.hpp>

#include "LibraryFile.h"

// A symbol's own fields as JSON, the one description that export, import and
// merge share.
namespace LqTool {

using Json = nlohmann::ordered_json;

// Markers: shape, size, colour, outlineColour, rotation; lines: width,
// colour, dashes. Colours as "#RRGGBB" or "#AARRGGBB".
Json SymbolFields(const VTC::VtSymbol& symbol);

// A new symbol of `kind` with `id`, `name` and the fields of `fields`; null,
// with the reason in `error`, when a field is missing or out of range.
std::unique_ptr<LqExample::ResourceSymbol> SymbolFromFields(LibraryKind kind, int id,
                                                            const ZEDA::ZedaUnicodeString& name, const Json& fields,
                                                            std::string& error);

}  // namespace LqTool
