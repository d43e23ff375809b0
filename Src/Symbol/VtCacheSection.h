#pragma once

#include "LqBase.h"

namespace VTC {

using ZEDA::ZedaUnicodeString;

class VtStream;

// The fields of a cache section as VtSymbolLib::SaveCacheToLib writes them
// after a library stream's image.
struct LQ_EXPORT VtCacheSectionLayout {
    ZedaUnicodeString stamp;     // the stored stamp bytes as UTF-16 units ("Mar", "Li")
    long long firstLength = 0;   // of the "sc" file
    long long secondLength = 0;  // of the "sc00" file
    long long bytes = 0;         // of the whole section
};

// The one reader of a cache section: the marker "Cache", then the stamp (an
// 8-byte length and that many bytes), then the "sc" and "sc00" files (each an
// 8-byte length and its bytes). The library's own loading reads the fields one
// by one while it copies the files out; a concrete library can check a whole
// section first with Scan.
class LQ_EXPORT VtCacheSection {
public:
    // Reads a string and tells whether it is the marker; a stream that throws
    // while reading holds no section.
    static bool ReadMarker(VtStream& stream);
    // Reads a stored length and cuts it to what the rest of the stream holds,
    // so that nothing is allocated or copied for bytes that are not there.
    // False when the length was missing, negative or too long.
    static bool ReadLength(VtStream& stream, long long& length);
    // Reads `length` bytes as little-endian UTF-16 units (an odd last byte is
    // dropped). Only a text as long as a stamp word is read into memory: a
    // longer stamp gives an empty text and is left for the caller to skip.
    static ZedaUnicodeString ReadStamp(VtStream& stream, long long length);
    // Reads a whole section from the stream's position, skipping the files'
    // bytes, and returns to that position. False when the marker is missing,
    // a file is empty or any length reaches past the end.
    static bool Scan(VtStream& stream, VtCacheSectionLayout& layout);
};

}  // namespace VTC
