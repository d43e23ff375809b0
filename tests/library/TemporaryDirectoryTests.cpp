// Libraries that lie in the system's temporary directory, or anywhere whose
// path contains it, leave the user's files beside them alone: the library's
// own cache files live in a private folder that no user's path can contain.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "LqStream.h"
#include "MarkerSymbolLib.h"

namespace {

namespace fs = std::filesystem;
using namespace LqExample;
using ZEDA::ZedaUnicodeString;

std::string Contents(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// Saves a one-marker library with a picture at `path`, plus `tail` bytes.
void SaveLibrary(const fs::path& path, const std::string& tail)
{
    MarkerSymbolLib lib;
    lib.AddSymbol(new MarkerSymbol(1, u"dot", MarkerShape::Circle, 8, 0xFF0000FF));
    ASSERT_TRUE(lib.SetSymbolImage(1, RasterImage(2, 2, 0xFFFFFFFF))) << lib.GetLastError();
    ASSERT_EQ(lib.SaveToFile(ZedaUnicodeString::FromUtf8(path.string()), 20050302), 1) << lib.GetLastError();
    std::ofstream(path, std::ios::binary | std::ios::app) << tail;
}

TEST(TemporaryDirectory, FilesBesideALibraryInTheSystemTemporaryDirectoryAreKept)
{
    const fs::path system = std::getenv("TMPDIR");
    // A folder elsewhere whose path contains the system's temporary path.
    const fs::path lookalike = system.parent_path() / ("home" + system.string()) / "u";
    fs::create_directories(lookalike);
    ASSERT_NE(lookalike.string().find(system.string() + "/"), std::string::npos);
    ASSERT_NE(ZedaUnicodeString::FromUtf8(system.string() + "/").Find(VTC::VtFile::GetTemporaryPath()), 0);

    for (const fs::path& folder : {system, lookalike}) {
        for (const auto& [name, tail] : {std::pair{"notes.lqs", ""}, {"lib.sc", ""}, {"damaged.lqs", "12345"}}) {
            const fs::path library = folder / name;
            SaveLibrary(library, tail);
            const std::string saved = Contents(library);
            const std::string stem = fs::path(name).stem().string();
            for (const char* extension : {".lock", ".sc00", ".tmp"})
                std::ofstream(folder / (stem + extension)) << "the user's " << extension;
            if (library.extension() != ".sc")
                std::ofstream(folder / (stem + ".sc")) << "the user's .sc";
            {
                MarkerSymbolLib lib;
                if (lib.LoadFromFile(ZedaUnicodeString::FromUtf8(library.string()))) {
                    EXPECT_TRUE(lib.SetSymbolImage(1, RasterImage(3, 3, 0xFF00FF00))) << lib.GetLastError();
                }
            }
            EXPECT_EQ(Contents(library), saved) << library;
            for (const char* extension : {".lock", ".sc00", ".tmp"})
                EXPECT_EQ(Contents(folder / (stem + extension)), std::string("the user's ") + extension) << library;
            if (library.extension() != ".sc") {
                EXPECT_EQ(Contents(folder / (stem + ".sc")), "the user's .sc") << library;
            }
        }
    }
    fs::remove_all(system.parent_path() / "home");
}

}  // namespace
