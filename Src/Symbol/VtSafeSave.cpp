#include "VtSafeSave.h"

#include <algorithm>

#include "LqCompactFile.h"
#include "LqStream.h"
#include "VtSymbolLib.h"

namespace VTC {

namespace {

const char16_t* const libraryEntryKey = u"SymbolStoreInCF";
// Any version but the container one selects the stream form.
constexpr unsigned int comparedStreamVersion = 20050302;

bool IsContainerForm(unsigned int fileVersion)
{
    return fileVersion == 0 || fileVersion == VtSymbolLib::containerVersion;
}

bool HoldsLibrary(const ZedaUnicodeString& path, unsigned int fileVersion)
{
    if (!IsContainerForm(fileVersion))
        return VtFile::GetLength(path) > 0;
    VtCompactFile container;
    if (container.Open(path, g_stStringBlank, VT_CF_MODE_READ) != VT_CF_OK ||
        container.GetIndexInfo() == VT_CF_INDEX_FOREIGN)
        return false;
    VtByteArray bytes;
    long long size = 0;
    return container.Lookup(libraryEntryKey, bytes, size, 0) == VT_CF_OK && size > 0;
}

}  // namespace

bool SaveSymbolLibSafely(VtSymbolLib& lib, const ZedaUnicodeString& path, unsigned int fileVersion,
                         const std::function<bool(const ZedaUnicodeString& written)>& check, std::string* error)
{
    const ZedaUnicodeString previousLibPath = lib.GetLibPath();
    std::string reason;
    bool committed = false;
    {
        VtFileReplacer replacer(path.ToUtf8());
        if (!replacer.IsReady()) {
            reason = replacer.GetError();
        } else {
            const ZedaUnicodeString temporary = ZedaUnicodeString::FromUtf8(replacer.GetTemporaryPath());
            if (!lib.SaveToFile(temporary, fileVersion))
                reason = "the library cannot be saved";
            else if (!HoldsLibrary(temporary, fileVersion) || !check(temporary))
                reason = "the saved library does not read back as it was";
            else if (!replacer.Commit())
                reason = replacer.GetError();
            else
                committed = true;
        }
        // The container the save left open is the temporary file: let it go
        // before that file is removed or renamed away from under it.
        if (!committed && IsContainerForm(fileVersion))
            lib.SetExternalStorage(nullptr);
    }
    if (!committed) {
        lib.SetLibPath(previousLibPath);
        if (error)
            *error = reason;
        return false;
    }
    lib.SetLibPath(path);
    if (IsContainerForm(fileVersion) && !lib.LoadFromFile(path)) {
        if (error)
            *error = "saved, but the saved file cannot be opened again";
        return false;
    }
    return true;
}

bool HaveSameStreamImage(VtSymbolLib& a, VtSymbolLib& b)
{
    VtMemoryStream imageA;
    VtMemoryStream imageB;
    imageA.Open(VT_STREAM_WRITE);
    imageB.Open(VT_STREAM_WRITE);
    return a.SaveToStream(imageA, comparedStreamVersion, 1) && b.SaveToStream(imageB, comparedStreamVersion, 1) &&
           imageA.GetLength() == imageB.GetLength() &&
           std::equal(imageA.GetData(), imageA.GetData() + imageA.GetLength(), imageB.GetData());
}

}  // namespace VTC
