// Builds a marker library with a picture, saves it safely, loads it back and
// draws a gradient: enough to show that the installed headers compile and the
// installed libraries link and load.

#include <cstdio>

#include "LqGraphics.h"
#include "MarkerSymbolLib.h"
#include "SymbolRenderer.h"
#include "VtEspecialFill.h"
#include "VtSafeSave.h"
#include "VtSymbolGroup.h"

namespace {

int Fail(const char* what)
{
    std::fprintf(stderr, "consumer: %s failed\n", what);
    return 1;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: consumer LIBRARY-FILE\n");
        return 2;
    }
    const auto path = ZEDA::ZedaUnicodeString::FromUtf8(argv[1]);
    LqExample::MarkerSymbolLib lib;
    auto* marker = new LqExample::MarkerSymbol(-1, u"pin", LqExample::MarkerShape::Star, 24, ZEDARGB(200, 30, 30));
    lib.AddSymbol(marker, lib.GetRootGroup()->CreateChildGroup(u"Signs"));
    const int id = marker->ID;  // the container-form save reloads the library: keep IDs, not pointers
    LqExample::RasterImage picture;
    if (!LqExample::RenderMarker(*marker, picture) || !lib.SetSymbolImage(marker->ID, picture))
        return Fail("drawing the marker");
    std::string error;
    if (!VTC::SaveSymbolLibSafely(lib, path, VTC::VtSymbolLib::containerVersion, &error))
        return Fail(("saving: " + error).c_str());
    LqExample::MarkerSymbolLib loaded;
    LqExample::RasterImage reloaded;
    if (!loaded.LoadFromFile(path) || loaded.GetSymbolCount() != 1 || !loaded.GetSymbolImage(id, reloaded) ||
        reloaded != picture)
        return Fail("loading");

    std::unique_ptr<VTC::VtGraphics> window(VTC::VtGraphicsManager::CreateWindowGraphics(64, 48, 32));
    if (!window || !VTC::VtEspecialFill::GradientRectangle(window.get(), ZEDA::ZedaRect(0, 0, 64, 48),
                                                          ZEDARGB(0, 0, 255), ZEDARGB(255, 255, 0), 0.0, 0, 0,
                                                          VTC::VT_GRADIENT_LINEAR, 0))
        return Fail("the gradient");
    std::printf("consumer: saved, loaded and drew with C++ %ld\n", static_cast<long>(__cplusplus));
    return 0;
}
