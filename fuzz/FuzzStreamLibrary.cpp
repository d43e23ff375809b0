// A library's stream form (symbols, their fields, the group tree, the cache
// section) read by LoadFromStream and by AppendFromStream. The kind of
// library is chosen at build time (FUZZ_LIBRARY and its FUZZ_SYMBOL).

#include "FuzzSupport.h"
#include "LineSymbolLib.h"
#include "LqStream.h"
#include "MarkerSymbolLib.h"

namespace {

using Library = LqExample::FUZZ_LIBRARY;

lqfuzz::Bytes SavedStream(Library& lib)
{
    VTC::VtMemoryStream stream;
    stream.Open(VTC::VT_STREAM_WRITE);
    if (!lib.SaveToStream(stream, 20050302, 1))
        lqfuzz::Finding("a library that loaded cannot be saved");
    return lqfuzz::Bytes(stream.GetData(), stream.GetData() + stream.GetLength());
}

// A library that loaded is written out and read back with the same symbols.
// Its pictures are read (a damaged one is refused then, by its checksum).
void CheckRoundTrip(Library& lib)
{
    for (int i = 0; i < lib.GetSymbolCount(); ++i) {
        LqExample::RasterImage picture;
        if (lib.HasSymbolImage(lib.GetIDAt(i)))
            lib.GetSymbolImage(lib.GetIDAt(i), picture);
    }
    const lqfuzz::Bytes saved = SavedStream(lib);
    VTC::VtMemoryStream stream;
    stream.Open(saved.data(), static_cast<long long>(saved.size()));
    Library reloaded;
    lqfuzz::Require(reloaded.LoadFromStream(stream, 1) == 1, "a saved library does not load");
    lqfuzz::Require(reloaded.GetSymbolCount() == lib.GetSymbolCount(), "a saved library loads other symbols");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    lqfuzz::UsePrivateTemporaryDirectory();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    lqfuzz::ClearLog();
    {
        Library lib;
        VTC::VtMemoryStream stream;
        stream.Open(data, static_cast<long long>(size));
        if (lib.LoadFromStream(stream, 1))
            CheckRoundTrip(lib);

        // Appended to a library that holds symbols already, into its groups.
        Library host;
        auto* symbol = new LqExample::FUZZ_SYMBOL();
        symbol->ID = 1;
        host.AddSymbol(symbol, nullptr);
        VTC::VtMemoryStream appended;
        appended.Open(data, static_cast<long long>(size));
        const int before = host.GetSymbolCount();
        if (!host.AppendFromStream(appended, 1))
            lqfuzz::Require(host.GetSymbolCount() == before, "a failed append changed the library");
    }
    lqfuzz::RequireNoTemporaryFiles();
    return 0;
}
