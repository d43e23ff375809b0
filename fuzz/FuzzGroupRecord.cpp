// The group record: a tree read from any bytes is written back and read
// again to the same tree.

#include "FuzzSupport.h"
#include "LqStream.h"
#include "VtSymbolGroup.h"
#include "VtSymbolLib.h"

namespace {

// The first byte picks the format version: records up to 20050302 carry a
// legacy value after each name, later ones do not.
unsigned int VersionFor(std::uint8_t selector)
{
    constexpr unsigned int versions[] = {20050302, 20200101, VTC::VtSymbolLib::containerVersion, 1};
    return versions[selector % 4];
}

lqfuzz::Bytes Saved(const VTC::VtSymbolGroup& group, unsigned int version)
{
    VTC::VtMemoryStream stream;
    stream.Open(VTC::VT_STREAM_WRITE);
    group.Save(stream, version, 0);
    return lqfuzz::Bytes(stream.GetData(), stream.GetData() + stream.GetLength());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 1)
        return 0;
    lqfuzz::ClearLog();
    const unsigned int version = VersionFor(data[0]);
    VTC::VtMemoryStream input;
    input.Open(data + 1, static_cast<long long>(size - 1));
    VTC::VtSymbolGroup group;
    group.Load(input, version);

    // Whatever was kept is whole: it survives a round trip unchanged.
    const lqfuzz::Bytes first = Saved(group, version);
    // Counts that a cut record lacked are written as 0: at most a few bytes
    // for each group, and a group takes more than that in the record.
    lqfuzz::Require(first.size() <= 2 * size + 64, "a saved tree far larger than the record it came from");
    VTC::VtMemoryStream again;
    again.Open(first.data(), static_cast<long long>(first.size()));
    VTC::VtSymbolGroup reloaded;
    reloaded.Load(again, version);
    lqfuzz::Require(!again.IsFailed() && again.GetRemaining() == 0, "a saved tree does not read back");
    lqfuzz::Require(Saved(reloaded, version) == first, "a saved tree reads back different");
    return 0;
}
