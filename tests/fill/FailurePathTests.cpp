#include <functional>

#include "FillTestSupport.h"

using namespace FillTest;

namespace {

class FailurePaths : public FillTestBase {};

constexpr auto kNone = VTC::VT_FAULT_KIND_COUNT;

struct FailureCase {
    const char* name;
    std::function<bool()> call;
    VTC::VtFaultKind fault;
    int skip;
    std::vector<std::string> log;
};

}  // namespace

// Every refusal and every failing allocation is logged with its own codes and
// leaves the pixels, the surface's state and the live-object count as they were.
TEST_F(FailurePaths, EachFaultLogsItsCodesAndLeavesEverythingAsItWas)
{
    Surface surface = Window(30, 30);
    VtGraphics* s = surface.get();
    Scramble(s->GetTargetImage(), 2);
    s->SetOrigin(ZedaPoint(3, 2));
    const std::unique_ptr<VTC::VtRgn> clip(VtGraphicsManager::NewRgn(0));
    clip->CreateRectRegion(0, 0, 28, 29);
    s->SelectClipRegion(clip.get(), VTC::VT_CLIP_REPLACE);
    OwnSelection selection(s);
    Image image = ImageFor(s, 8, 8, ZEDARGB(1, 2, 3)), mask = ImageFor(s, 8, 8, 0), shortMask = ImageFor(s, 8, 7, 0);
    Surface shallow = Window(1, 1, 24);
    Image otherDepth = ImageFor(shallow.get(), 8, 8, 0);
    VtImage* const picture = image.get();
    const ZedaPoint triangle[] = {{0, 0}, {20, 0}, {0, 20}}, offScreen[] = {{3000, 0}, {3100, 0}, {3000, 100}};
    const int three[] = {3};
    const unsigned int ink = ZEDARGB(20, 140, 250);

    const auto blit = [&](int w, int h) {
        return [=] { return VtEspecialFill::TransparentBitblt(s, picture, 4, 4, w, h, 40); };
    };
    const auto masked = [&](VtImage* m, int w) {
        return [=] { return VtEspecialFill::TransparentBitbltMask(s, picture, m, 4, 4, w, 8, 40); };
    };
    const auto draw = [&] {
        VtEspecialFill::TransparentDraw(s, image.get(), 4, 4, 0, 100);
        return false;
    };
    const auto rect = [&](ZedaRect r, int t) { return [=] { return VtEspecialFill::TransparentRectangle(s, r, ink, t); }; };
    const auto polygon = [&](const ZedaPoint* p, bool poly) {
        return [=] {
            return poly ? VtEspecialFill::TransparentPolyPolygon(s, p, three, 1, ink, 40)
                        : VtEspecialFill::TransparentPolygon(s, p, 3, ink, 40);
        };
    };
    const auto gradient = [&](ZedaRect r, unsigned int colour2) {
        return [=] { return VtEspecialFill::GradientRectangle(s, r, kFrom, colour2, 0, 0, 0, 11, 0); };
    };
    const auto gradientPolygon = [&](int n, bool poly) {
        return [=] {
            const int counts[] = {n};
            return poly ? VtEspecialFill::GradientPolyPolygon(s, triangle, counts, 1, kFrom, kTo, 0, 0, 0, 10, 0)
                        : VtEspecialFill::GradientPolygon(s, triangle, n, kFrom, kTo, 0, 0, 0, 10, 0);
        };
    };
    const ZedaRect square(1, 1, 9, 9);
    std::vector<FailureCase> cases = {
        {"blit, no width", blit(0, 8), kNone, 0, {"300:EEa005"}},
        {"blit, no height", blit(8, 0), kNone, 0, {"300:EEa005"}},
        {"blit", blit(8, 8), VTC::VT_FAULT_NEW_GRAPHICS, 0, {"300:EGd003"}},
        {"blit", blit(8, 8), VTC::VT_FAULT_COMPATIBLE_GRAPHICS, 0, {"300:EGd003"}},
        {"blit", blit(8, 8), VTC::VT_FAULT_NEW_IMAGE, 0, {"300:EGd004", "300:EGc037"}},
        {"blit", blit(8, 8), VTC::VT_FAULT_COMPATIBLE_IMAGE, 0, {"300:EGd004", "300:EGc037"}},
        {"masked, no width", masked(mask.get(), 0), kNone, 0, {"300:EEa005"}},
        {"masked, short mask", masked(shortMask.get(), 8), kNone, 0, {"300:EGc001"}},
        {"masked, 24-bit mask", masked(otherDepth.get(), 8), kNone, 0, {"300:EGc001"}},
        {"masked", masked(mask.get(), 8), VTC::VT_FAULT_NEW_GRAPHICS, 0, {"300:EGd002"}},
        {"masked", masked(mask.get(), 8), VTC::VT_FAULT_COMPATIBLE_GRAPHICS, 0, {"300:EGd002"}},
        {"masked", masked(mask.get(), 8), VTC::VT_FAULT_NEW_IMAGE, 0, {"300:EGd007"}},
        {"masked", masked(mask.get(), 8), VTC::VT_FAULT_COMPATIBLE_IMAGE, 0, {"300:EGd007"}},
        {"keyed", draw, VTC::VT_FAULT_NEW_GRAPHICS, 0, {"400:EGd002"}},
        {"keyed", draw, VTC::VT_FAULT_NEW_GRAPHICS, 2, {"400:EGd002"}},
        {"keyed", draw, VTC::VT_FAULT_NEW_IMAGE, 0, {"400:EGd004"}},
        {"keyed", draw, VTC::VT_FAULT_NEW_IMAGE, 1, {"400:EGd004"}},
        {"keyed", draw, VTC::VT_FAULT_COMPATIBLE_IMAGE, 0, {"400:EGd004"}},
        {"keyed", draw, VTC::VT_FAULT_CREATE_IMAGE, 0, {"400:EGd004"}},
        {"rectangle, left of the screen", rect(ZedaRect(-60, 0, -10, 10), 40), kNone, 0, {"300:EEf002"}},
        {"rectangle, right of the screen", rect(ZedaRect(1930, 0, 1990, 10), 40), kNone, 0, {"300:EEf002"}},
        {"rectangle, opaque", rect(square, 0), VTC::VT_FAULT_NEW_BRUSH, 0, {"300:EGe001"}},
        {"rectangle, opaque", rect(square, 0), VTC::VT_FAULT_NEW_PEN, 0, {"300:EGe001"}},
        {"rectangle", rect(square, 40), VTC::VT_FAULT_NEW_GRAPHICS, 0, {"300:EGd002"}},
        {"rectangle", rect(square, 40), VTC::VT_FAULT_COMPATIBLE_GRAPHICS, 0, {"300:EGd002"}},
        {"rectangle", rect(square, 40), VTC::VT_FAULT_NEW_GRAPHICS, 1, {"300:EGd003"}},
        {"rectangle", rect(square, 40), VTC::VT_FAULT_COMPATIBLE_GRAPHICS, 1, {"300:EGd003"}},
        {"rectangle", rect(square, 40), VTC::VT_FAULT_NEW_IMAGE, 0, {"300:EGd007", "300:EGd004"}},
        {"rectangle", rect(square, 40), VTC::VT_FAULT_COMPATIBLE_IMAGE, 0, {"300:EGd007", "300:EGd004"}},
        {"rectangle", rect(square, 40), VTC::VT_FAULT_NEW_IMAGE, 1, {"300:EGd006"}},
        {"rectangle", rect(square, 40), VTC::VT_FAULT_COMPATIBLE_IMAGE, 1, {"300:EGd006"}},
        {"polygon", polygon(triangle, false), VTC::VT_FAULT_NEW_RGN, 0, {"300:EEf006"}},
        {"polypolygon", polygon(triangle, true), VTC::VT_FAULT_NEW_RGN, 0, {"300:EFd009"}},
        {"polygon", polygon(triangle, false), VTC::VT_FAULT_CREATE_REGION, 0, {"300:EFd009"}},
        {"polypolygon", polygon(triangle, true), VTC::VT_FAULT_CREATE_REGION, 0, {"300:EFd009"}},
        {"polygon, screen region", polygon(triangle, false), VTC::VT_FAULT_NEW_RGN, 1, {"300:EFd009"}},
        {"polypolygon, screen region", polygon(triangle, true), VTC::VT_FAULT_NEW_RGN, 1, {"300:EFd009"}},
        {"polygon, off screen", polygon(offScreen, false), kNone, 0, {"300:EEf005"}},
        {"polypolygon, off screen", polygon(offScreen, true), kNone, 0, {"300:EEf005"}},
        {"gradient, no width", gradient(ZedaRect(5, 5, 5, 30), kTo), kNone, 0, {"300:EEf007"}},
        {"gradient, by its generator", gradient(square, kTo), VTC::VT_FAULT_NEW_IMAGE, 0, {"300:EGd004"}},
        {"gradient, plain", gradient(square, kFrom), VTC::VT_FAULT_NEW_BRUSH, 0, {"300:EGe001"}},
        {"gradient, plain", gradient(square, kFrom), VTC::VT_FAULT_NEW_PEN, 0, {"300:EGe001"}},
        // An empty region is refused with a different code by each gradient polygon call.
        {"gradient polygon, a line", gradientPolygon(2, false), kNone, 0, {"300:EFd009"}},
        {"gradient polypolygon, a line", gradientPolygon(2, true), kNone, 0, {"300:EEf005"}},
        {"gradient polygon", gradientPolygon(3, false), VTC::VT_FAULT_NEW_RGN, 0, {"300:EFd009"}},
        {"gradient polypolygon", gradientPolygon(3, true), VTC::VT_FAULT_NEW_RGN, 0, {"300:EFd009"}},
        {"gradient polygon", gradientPolygon(3, false), VTC::VT_FAULT_CREATE_REGION, 0, {"300:EFd009"}},
        {"gradient polypolygon", gradientPolygon(3, true), VTC::VT_FAULT_CREATE_REGION, 0, {"300:EFd009"}},
        {"gradient polygon, screen region", gradientPolygon(3, false), VTC::VT_FAULT_NEW_RGN, 1, {"300:EFd009"}},
        {"linear, empty",
         [&] { return Image(VtEspecialFill::GetLinearImage(s, ZedaRect(5, 5, 5, 50), kFrom, kTo, 0, 0, 0)) != nullptr; },
         kNone, 0, {"300:EEf002"}},
    };
    const ZedaRect ok(0, 0, 50, 50);
    const struct {
        ZedaRect rect;
        VTC::VtFaultKind fault;
        const char* code;
    } generatorCases[] = {
        {ZedaRect(0, 0, 1, 50), kNone, "300:EEa003"},
        {ZedaRect(0, 0, 50, 1), kNone, "300:EEa003"},
        {ZedaRect(2000, 0, 2100, 50), kNone, "300:EEa003"},  // wholly off screen
        {ok, VTC::VT_FAULT_NEW_GRAPHICS, "300:EGd001"},
        {ok, VTC::VT_FAULT_COMPATIBLE_GRAPHICS, "300:EGd001"},
        {ok, VTC::VT_FAULT_NEW_IMAGE, "300:EGd004"},
        {ok, VTC::VT_FAULT_COMPATIBLE_IMAGE, "300:EGd004"},
        {ok, VTC::VT_FAULT_NEW_PEN, "300:EGe001"},
        {ok, VTC::VT_FAULT_NEW_BRUSH, "300:EGe001"},  // all but the linear one use a brush
    };
    const char* names[] = {"linear", "radial", "conical", "square"};
    for (std::size_t g = 0; g < Generators().size(); ++g)
        for (const auto& c : generatorCases)
            if (g != 0 || c.fault != VTC::VT_FAULT_NEW_BRUSH)
                cases.push_back({names[g], [=] { return Image(Generators()[g](s, c.rect)) != nullptr; }, c.fault, 0,
                                 {c.code}});

    const std::vector<unsigned char> before = BytesOf(s->GetTargetImage());
    const SurfaceState state = StateOf(s);
    const int live = VtGraphicsManager::GetLiveObjectCount();
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.name << ", fault " << c.fault << " after " << c.skip);
        ClearLog();
        if (c.fault != kNone)
            VtGraphicsManager::InjectFault(c.fault, c.skip);
        EXPECT_FALSE(c.call());
        VtGraphicsManager::ClearFaults();
        EXPECT_EQ(RendererLog(), c.log);
        EXPECT_EQ(BytesOf(s->GetTargetImage()), before);
        EXPECT_EQ(StateOf(s), state);
        EXPECT_EQ(VtGraphicsManager::GetLiveObjectCount(), live);
    }
}
