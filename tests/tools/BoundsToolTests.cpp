// The reading commands on a large hostile library stay within the bounds of
// docs/robustness.md: output at most 32 bytes per input byte plus 64 KiB, and
// a heap of at most 64 bytes per input byte plus 128 MiB, enforced with
// prlimit. The sanitizer build reserves shadow memory that no such limit
// allows, so there the limit is left out and only the output is checked.

#include <nlohmann/json.hpp>

#include "MarkerSymbolLib.h"
#include "ToolTestSupport.h"
#include "VtSymbolGroup.h"

#if defined(__SANITIZE_ADDRESS__)
#define LQ_UNDER_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define LQ_UNDER_SANITIZER 1
#endif
#endif

namespace {

using namespace lqtool;

constexpr int chains = 20;
constexpr int depth = 1000;

// 20,000 groups in 20 chains 1,000 deep, a marker in each: indented to its
// depth, the JSON of this file ran to hundreds of megabytes.
void WriteDeepLibrary(const std::string& path)
{
    using namespace LqExample;
    MarkerSymbolLib lib;
    for (int chain = 0; chain < chains; ++chain) {
        VTC::VtSymbolGroup* group =
            lib.GetRootGroup()->CreateChildGroup(ZEDA::ZedaUnicodeString::FromUtf8("chain " + std::to_string(chain)));
        for (int level = 0; level < depth; ++level) {
            if (level > 0)
                group = group->CreateChildGroup(u"g");
            ASSERT_NE(group, nullptr);
            lib.AddSymbol(new MarkerSymbol(chain * depth + level + 1, u"m", MarkerShape::Circle, 8, 0), group);
        }
    }
    ASSERT_EQ(lib.SaveToFile(ZEDA::ZedaUnicodeString::FromUtf8(path), 20050302), 1) << lib.GetLastError();
}

class BoundsTest : public ToolWorkspace {
protected:
    static void SetUpTestSuite() { MakeRoot("lq-bounds-tests-"); }
    static void TearDownTestSuite() { RemoveRoot(); }
};

TEST_F(BoundsTest, ReadingCommandsStayWithinTheirBoundsUnderAMemoryLimit)
{
#ifdef LQ_UNDER_SANITIZER
    GTEST_SKIP() << "takes 20 minutes under the sanitizers, and their shadow memory defeats the limit";
#endif
    const std::string library = Work("deep.lqs");
    ASSERT_NO_FATAL_FAILURE(WriteDeepLibrary(library));
    const long long input = static_cast<long long>(fs::file_size(library));
    const long long outputBound = 32 * input + 64 * 1024;
#ifdef LQ_UNDER_SANITIZER
    const std::string limit;
#else
    const std::string limit = "prlimit --data=" + std::to_string(64 * input + (128LL << 20)) + " ";
#endif
    const std::string written = Work("written");
    const std::vector<std::vector<std::string>> commands = {
        {"tree", library},
        {"info", library, "--json"},
        {"export", library, "--json", "-o", written, "--force"},
        {"convert", library, written, "--form", "container", "--force"},
        {"convert", library, written, "--form", "stream", "--force"},
    };
    for (const auto& command : commands) {
        const Outcome run = Lq(command, limit);
        EXPECT_EQ(run.code, 0) << command[0] << ": " << run.err;
        const long long output = static_cast<long long>(run.out.size()) +
                                 (fs::exists(written) ? static_cast<long long>(fs::file_size(written)) : 0);
        EXPECT_LE(output, outputBound) << command[0];
        fs::remove(written);
    }
    const Outcome exported = Lq({"export", library, "--json"}, limit);
    ASSERT_EQ(exported.code, 0) << exported.err;
    EXPECT_EQ(nlohmann::json::parse(exported.out)["groups"].size(), chains * depth + 1u);
}

}  // namespace
