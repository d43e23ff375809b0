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
// must not be empty, and `check`, when given, must accept the temporary path
// (for instance by loading it into a fresh library and comparing).
//
// On success the library refers to `path`: GetLibPath() is `path`, and a
// library saved in the container form is reloaded from `path`, so that the
// container it keeps open as its storage is the final file. On failure the
// file at `path` is byte for byte what it was, the temporary file is removed,
// the library keeps its symbols, holds no container any more, and `error`
// (when given) says what failed.
LQ_EXPORT bool SaveSymbolLibSafely(VtSymbolLib& lib, const ZEDA::ZedaUnicodeString& path, unsigned int fileVersion,
                                   const std::function<bool(const ZEDA::ZedaUnicodeString& written)>& check = {},
                                   std::string* error = nullptr);

}  // namespace VTC
