#pragma once

#include "LqExport.h"
#include "ZedaUnicodeString.h"

namespace VTC {

using ZEDA::ZedaUnicodeString;

// File-system helpers. Paths are UTF-16 here and UTF-8 on the file system.
class LQ_EXPORT VtFile {
public:
    // The process's private temporary directory, always ending in '/': a
    // folder of its own, made with a unique name inside the system's
    // temporary directory ($TMPDIR, else /tmp) on first use, readable by the
    // user alone, and removed at exit when it is empty. Since only the
    // library's own files lie in it, no user's file can ever be taken for a
    // cache file.
    static ZedaUnicodeString GetTemporaryPath();
    // Creates an empty file `dir` + `prefix` + a unique part + ".tmp" and gives
    // its path in `result` (unique 0 = choose the unique part; any other value
    // is used as it stands, and the file is then not created). Returns the
    // unique value used, 0 on failure.
    static unsigned int GetTemporaryFileName(const ZedaUnicodeString& dir, const ZedaUnicodeString& prefix,
                                             unsigned int unique, ZedaUnicodeString& result);
    // Replaces (or adds) the extension of the last path component; `ext` may
    // come with or without its dot.
    static ZedaUnicodeString ChangeExt(const ZedaUnicodeString& path, const ZedaUnicodeString& ext);
    // The path without the extension of its last component.
    static ZedaUnicodeString StripExt(const ZedaUnicodeString& path);
    static bool IsExist(const ZedaUnicodeString& path);
    static bool Delete(const ZedaUnicodeString& path);
    // Copies a file; refuses to replace an existing `to` unless `overwrite`.
    static bool Copy(const ZedaUnicodeString& from, const ZedaUnicodeString& to, int overwrite);
    // Byte length of a file, -1 when it cannot be read.
    static long long GetLength(const ZedaUnicodeString& path);
};

}  // namespace VTC
