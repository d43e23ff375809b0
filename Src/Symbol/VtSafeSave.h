#pragma once

#include <functional>
#include <string>

#include "LqBase.h"

namespace VTC {

class VtSymbolLib;

// Saves `lib` to `path` in format `fileVersion` as SaveToFile does, without
// ever losing the file already at `path`. SaveToFile deletes an old container
// before it writes the new one, so a full disk or a crash in between loses
// the library; this saves into a temporary sibling instead, syncs it, checks
// it and only then renames it over `path`.
//
// The check: a container must open and hold the library entry, a stream file
// must not be empty, and `check` must accept the temporary path. The saving
// code does not report every failed write (a full disk may leave a container
// without some of its entries), so `check` should load the file into a fresh
// library and compare; the overload below does exactly that.
//
// On success the library refers to `path`: GetLibPath() is `path`, and a
// library saved in the container form is reloaded from `path`, so that the
// container it keeps open as its storage is the final file (its symbols and
// groups are then new objects: keep IDs, not pointers, across the call). On
// failure the
// file at `path` is byte for byte what it was, the temporary file is removed,
// the library keeps its symbols, holds no container any more, and `error`
// (when given) says what failed.
LQ_EXPORT bool SaveSymbolLibSafely(VtSymbolLib& lib, const ZEDA::ZedaUnicodeString& path, unsigned int fileVersion,
                                   const std::function<bool(const ZEDA::ZedaUnicodeString& written)>& check,
                                   std::string* error = nullptr);

// Whether two libraries write the same bytes in the stream form: the same
// symbols, order, names, fields and groups, and whatever else the concrete
// library carries in that form (the example libraries: their pictures).
LQ_EXPORT bool HaveSameStreamImage(VtSymbolLib& a, VtSymbolLib& b);

// The same for a concrete library class that can be default-constructed: the
// saved file is loaded into a fresh `Library` and must give the same stream
// image as `lib`.
template <typename Library>
bool SaveSymbolLibSafely(Library& lib, const ZEDA::ZedaUnicodeString& path, unsigned int fileVersion,
                         std::string* error = nullptr)
{
    const auto reloadsTheSame = [&lib](const ZEDA::ZedaUnicodeString& written) {
        Library reloaded;
        return reloaded.LoadFromFile(written) != 0 && HaveSameStreamImage(lib, reloaded);
    };
    return SaveSymbolLibSafely(static_cast<VtSymbolLib&>(lib), path, fileVersion, reloadsTheSame, error);
}

}  // namespace VTC
