// The resource cache files: an index ("sc00") and a data file ("sc") read
// from any bytes, every record it accepts read, and a picture appended to a
// cache that opened reads back. Input: 4 bytes (little-endian) giving the
// index's length, the index, then the data file.

#include "FuzzSupport.h"
#include "ResourceCache.h"

namespace {

using LqExample::RasterImage;
using LqExample::ResourceCache;
using ZEDA::ZedaUnicodeString;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 4)
        return 0;
    lqfuzz::ClearLog();
    const std::size_t claimed = data[0] | data[1] << 8 | data[2] << 16 | static_cast<std::size_t>(data[3]) << 24;
    const std::size_t indexBytes = std::min(claimed, size - 4);
    const ZedaUnicodeString base = ZedaUnicodeString::FromUtf8(lqfuzz::WorkPath("cache.sc"));
    lqfuzz::WriteFile(ResourceCache::IndexPath(base).ToUtf8(), data + 4, indexBytes);
    lqfuzz::WriteFile(ResourceCache::DataPath(base).ToUtf8(), data + 4 + indexBytes, size - 4 - indexBytes);
    lqfuzz::WriteFile(ResourceCache::LockPath(base).ToUtf8(), data, 0);

    ResourceCache cache;
    std::string error;
    if (!cache.Open(base, error))
        return 0;
    long long pixelBytes = 0;
    for (const auto& entry : cache.GetEntries()) {
        RasterImage picture;
        if (cache.Read(entry.ref, picture, error))
            lqfuzz::Require(picture.width == entry.width && picture.height == entry.height, "a picture of another size");
        pixelBytes += 4LL * entry.width * entry.height;
    }
    lqfuzz::Require(pixelBytes <= static_cast<long long>(size), "records describe more pixels than the files hold");

    RasterImage added(2, 3);
    for (std::size_t i = 0; i < added.pixels.size(); ++i)
        added.pixels[i] = 0x01020304u * static_cast<unsigned int>(i + 1);
    const LqExample::ResourceRef ref = cache.Append(added);
    lqfuzz::Require(!ref.IsNull(), "a picture cannot be appended to a cache that opened");
    ResourceCache reopened;
    RasterImage back;
    lqfuzz::Require(reopened.Open(base, error) && reopened.Read(ref, back, error) && back == added,
                    "an appended picture does not read back");
    return 0;
}
