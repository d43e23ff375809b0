#include <functional>
#include <tuple>

#include "FillTestSupport.h"

using namespace FillTest;

namespace {

class FailurePaths : public FillTestBase {};

constexpr auto kNone = VT_FAULT_KIND_COUNT;
constexpr auto kGraphics = {VT_FAULT_NEW_GRAPHICS, VT_FAULT_COMPATIBLE_GRAPHICS};
constexpr auto kImage = {VT_FAULT_NEW_IMAGE, VT_FAULT_COMPATIBLE_IMAGE};

// Faults to inject one at a time (kNone: a refusal), the calls of their kind
// to let through first, and the log each must leave.
using Outcome = std::tuple<std::vector<VtFaultKind>, int, std::vector<std::string>>;

}  // namespace

// Every refusal and every failing allocation is logged with its own codes and
// leaves the pixels, the surface's state and the live-object count as they were.
TEST_F(FailurePaths, EachFaultLogsItsCodesAndLeavesEverythingAsItWas)
{
    // A clip, a pen and a brush of the test's own, to be found as they were;
    // the pen and the brush outlive the surface they are selected into.
    const std::unique_ptr<VtPen> pen(VtGraphicsManager::NewPen(0));
    const std::unique_ptr<VtBrush> brush(VtGraphicsManager::NewBrush(0));
    const std::unique_ptr<VtRgn> clip(VtGraphicsManager::NewRgn(0));
    Surface surface = Window(30, 30), shallow = Window(1, 1, 24);
    VtGraphics* s = surface.get();
    Scramble(s->GetTargetImage(), 2);
    s->SetOrigin(ZedaPoint(3, 2));
    clip->CreateRectRegion(0, 0, 28, 29);
    s->SelectClipRegion(clip.get(), VT_CLIP_REPLACE);
    s->SelectPen(pen.get());
    s->SelectBrush(brush.get());
    Image image = ImageFor(s, 8, 8, kInk), mask = ImageFor(s, 8, 8, 0), shortMask = ImageFor(s, 8, 7, 0);
    Image otherDepth = ImageFor(shallow.get(), 8, 8, 0);
    Surface vector(VtGraphicsManager::CreateVectorGraphics(testing::TempDir() + "f.svg", VT_VECTOR_SVG, 9, 9, false));
    const ZedaPoint triangle[] = {{0, 0}, {20, 0}, {0, 20}}, offScreen[] = {{3000, 0}, {3100, 0}, {3000, 100}};
    const int three[] = {3};
    const ZedaRect square(1, 1, 9, 9);
    const Bytes before = BytesOf(s->GetTargetImage());
    const SurfaceState state = StateOf(s);
    const int live = VtGraphicsManager::GetLiveObjectCount();
    const auto check = [&](const std::string& name, const std::function<bool()>& call, std::vector<Outcome> outcomes) {
        for (const auto& [faults, skip, log] : outcomes)
            for (VtFaultKind fault : faults) {
                SCOPED_TRACE(::testing::Message() << name << ", fault " << fault << " after " << skip);
                if (fault != kNone)
                    VtGraphicsManager::InjectFault(fault, skip);
                EXPECT_FALSE(call());
                VtGraphicsManager::ClearFaults();
                EXPECT_EQ(TakeLog(), log);
                EXPECT_EQ(BytesOf(s->GetTargetImage()), before);
                EXPECT_EQ(StateOf(s), state);
                EXPECT_EQ(VtGraphicsManager::GetLiveObjectCount(), live);
            }
    };

    const auto blit = [&](int w, int h) { return VtEspecialFill::TransparentBitblt(s, image.get(), 4, 4, w, h, 40); };
    check("blit", [&] { return blit(0, 8) || blit(8, 0); }, {{{kNone}, 0, {"300:EEa005", "300:EEa005"}}});
    check("blit", [&] { return blit(8, 8); },
          {{kGraphics, 0, {"300:EGd003"}}, {kImage, 0, {"300:EGd004", "300:EGc037"}}});
    const auto masked = [&](VtImage* m, int w) {
        return VtEspecialFill::TransparentBitbltMask(s, image.get(), m, 4, 4, w, 8, 40);
    };
    check("masked", [&] { return masked(mask.get(), 0) || masked(shortMask.get(), 8) || masked(otherDepth.get(), 8); },
          {{{kNone}, 0, {"300:EEa005", "300:EGc001", "300:EGc001"}}});
    check("masked", [&] { return masked(mask.get(), 8); },
          {{kGraphics, 0, {"300:EGd002"}}, {kImage, 0, {"300:EGd007"}}});
    check("keyed", [&] { return VtEspecialFill::TransparentDraw(s, image.get(), 4, 4, 0, 100), false; },
          {{{VT_FAULT_NEW_GRAPHICS}, 0, {"400:EGd002"}}, {{VT_FAULT_NEW_GRAPHICS}, 2, {"400:EGd002"}},
           {{VT_FAULT_NEW_IMAGE}, 1, {"400:EGd004"}},
           {{VT_FAULT_NEW_IMAGE, VT_FAULT_COMPATIBLE_IMAGE, VT_FAULT_CREATE_IMAGE}, 0, {"400:EGd004"}}});

    const auto rectangle = [&](ZedaRect r, int t) { return VtEspecialFill::TransparentRectangle(s, r, kInk, t); };
    check("off screen", [&] { return rectangle({-60, 0, -10, 10}, 40) || rectangle({1930, 0, 1990, 10}, 40); },
          {{{kNone}, 0, {"300:EEf002", "300:EEf002"}}});
    check("opaque rectangle", [&] { return rectangle(square, 0); },
          {{{VT_FAULT_NEW_BRUSH, VT_FAULT_NEW_PEN}, 0, {"300:EGe001"}}});
    check("rectangle", [&] { return rectangle(square, 40); },
          {{kGraphics, 0, {"300:EGd002"}}, {kGraphics, 1, {"300:EGd003"}}, {kImage, 0, {"300:EGd007", "300:EGd004"}},
           {kImage, 1, {"300:EGd006"}}});
    // Vector documents take no transparent fill, silently.
    check("vector", [&] {
        return VtEspecialFill::TransparentRectangle(vector.get(), square, kInk, 40) ||
               VtEspecialFill::TransparentPolygon(vector.get(), triangle, 3, kInk, 40) ||
               VtEspecialFill::TransparentPolyPolygon(vector.get(), triangle, three, 1, kInk, 40);
    }, {{{kNone}, 0, {}}});
    for (bool poly : {false, true}) {
        const auto transparent = [&](const ZedaPoint* p) {
            return poly ? VtEspecialFill::TransparentPolyPolygon(s, p, three, 1, kInk, 40)
                        : VtEspecialFill::TransparentPolygon(s, p, 3, kInk, 40);
        };
        const auto gradient = [&](int n) {
            const int counts[] = {n};
            const int linear = VT_GRADIENT_LINEAR;
            return poly ? VtEspecialFill::GradientPolyPolygon(s, triangle, counts, 1, kFrom, kTo, 0, 0, 0, linear, 0)
                        : VtEspecialFill::GradientPolygon(s, triangle, n, kFrom, kTo, 0, 0, 0, linear, 0);
        };
        const std::string name = poly ? "polypolygon" : "polygon";
        check(name, [&] { return transparent(triangle); },
              {{{VT_FAULT_NEW_RGN}, 0, {poly ? "300:EFd009" : "300:EEf006"}}, {{VT_FAULT_NEW_RGN}, 1, {"300:EFd009"}},
               {{VT_FAULT_CREATE_REGION}, 0, {"300:EFd009"}}});
        check(name, [&] { return transparent(offScreen); }, {{{kNone}, 0, {"300:EEf005"}}});
        check("gradient " + name, [&] { return gradient(3); },
              {{{VT_FAULT_NEW_RGN, VT_FAULT_CREATE_REGION}, 0, {"300:EFd009"}},
               {{VT_FAULT_NEW_RGN}, 1, {"300:EFd009"}}});
        // An empty region is refused with a different code by each call.
        check("gradient " + name, [&] { return gradient(2); }, {{{kNone}, 0, {poly ? "300:EEf005" : "300:EFd009"}}});
    }

    const auto gradient = [&](ZedaRect r, unsigned int colour2) {
        return VtEspecialFill::GradientRectangle(s, r, kFrom, colour2, 0, 0, 0, VT_GRADIENT_RADIAL, 0);
    };
    check("gradient, no width", [&] { return gradient({5, 5, 5, 30}, kTo); }, {{{kNone}, 0, {"300:EEf007"}}});
    // A generator's failure is logged once, by the generator.
    check("gradient", [&] { return gradient(square, kTo); }, {{{VT_FAULT_NEW_IMAGE}, 0, {"300:EGd004"}}});
    check("plain gradient", [&] { return gradient(square, kFrom); },
          {{{VT_FAULT_NEW_BRUSH, VT_FAULT_NEW_PEN}, 0, {"300:EGe001"}}});
    const char* names[] = {"linear", "radial", "conical", "square"};
    for (std::size_t g = 0; g < kGenerators.size(); ++g) {
        const auto make = [&](ZedaRect r) { return bool(Image(kGenerators[g](s, r))); };
        check(names[g], [&] { return make({0, 0, 1, 50}) || make({0, 0, 50, 1}) || make({1930, 0, 1990, 9}); },
              {{{kNone}, 0, {"300:EEa003", "300:EEa003", "300:EEa003"}}});
        // Linear gradients draw without a brush, and rings about a centre outside without a dot.
        check(names[g], [&] { return make({0, 0, 50, 50}); },
              {{kGraphics, 0, {"300:EGd001"}}, {kImage, 0, {"300:EGd004"}},
               {g < 2 ? std::vector{VT_FAULT_NEW_PEN} : std::vector{VT_FAULT_NEW_PEN, VT_FAULT_NEW_BRUSH}, 0,
                {"300:EGe001"}}});
    }
    check("radial, centred", [&] { return bool(Image(VtEspecialFill::GetRadialImage(s, square, kFrom, kTo, 0, 0))); },
          {{{VT_FAULT_NEW_BRUSH}, 0, {"300:EGe001"}}});
    check("linear, empty", [&] { return bool(Image(kGenerators[0](s, {5, 5, 5, 50}))); },
          {{{kNone}, 0, {"300:EEf002"}}});
}

// Every kind of fault at the first, second, third... call of its kind, until
// a run goes through with the fault still pending, as SQLite's fault tests
// do. Every run leaves the live-object count and the surface's state as they
// were, and its pixels untouched or as a run without faults draws them; the
// run the fault never reaches is that run.
TEST_F(FailurePaths, EveryFaultAtEveryCallLeavesNothingBehind)
{
    const std::unique_ptr<VtPen> pen(VtGraphicsManager::NewPen(0));
    const std::unique_ptr<VtBrush> brush(VtGraphicsManager::NewBrush(0));
    const std::unique_ptr<VtRgn> clip(VtGraphicsManager::NewRgn(0));
    clip->CreateRectRegion(1, 0, 38, 39);
    const std::function<Surface()> surfaces[] = {
        [] { return Window(40, 40); },
        [] { return Surface(VtGraphicsManager::CreatePrintGraphics(100, 100, 100)); },
        [] { return Surface(VtGraphicsManager::CreateRecordingGraphics(40, 40, 24)); }};
    const ZedaPoint triangle[] = {{2, 1}, {30, 4}, {5, 33}};
    const int three[] = {3};
    const ZedaRect square(2, 3, 31, 29);
    using Fill = std::function<bool(VtGraphics*, VtImage*, VtImage*)>;
    std::vector<std::pair<std::string, Fill>> fills = {
        {"gradient polygon", [&](VtGraphics* s, VtImage*, VtImage*) {
             return VtEspecialFill::GradientPolygon(s, triangle, 3, kFrom, kTo, 2.0, 0, 0, VT_GRADIENT_RADIAL, 0);
         }},
        {"gradient polypolygon", [&](VtGraphics* s, VtImage*, VtImage*) {
             return VtEspecialFill::GradientPolyPolygon(s, triangle, three, 1, kFrom, kTo, 4.0, 0, 0,
                                                        VT_GRADIENT_SQUARE, 50);
         }},
        {"blit", [&](VtGraphics* s, VtImage* image, VtImage*) {
             return VtEspecialFill::TransparentBitblt(s, image, 3, 4, 8, 8, 40);
         }},
        {"masked blit", [&](VtGraphics* s, VtImage* image, VtImage* mask) {
             return VtEspecialFill::TransparentBitbltMask(s, image, mask, 9, 2, 8, 8, 30);
         }},
        {"keyed", [&](VtGraphics* s, VtImage* image, VtImage*) {
             VtEspecialFill::TransparentDraw(s, image, 5, 5, kPaper, 60);
             return true;
         }},
        {"rectangle", [&](VtGraphics* s, VtImage*, VtImage*) {
             return VtEspecialFill::TransparentRectangle(s, square, kInk, 40);
         }},
        {"polygon", [&](VtGraphics* s, VtImage*, VtImage*) {
             return VtEspecialFill::TransparentPolygon(s, triangle, 3, kInk, 60);
         }},
        {"polypolygon", [&](VtGraphics* s, VtImage*, VtImage*) {
             return VtEspecialFill::TransparentPolyPolygon(s, triangle, three, 1, kInk, 20);
         }}};
    for (int kind = VT_GRADIENT_LINEAR; kind <= VT_GRADIENT_SQUARE; ++kind)
        fills.emplace_back("gradient " + std::to_string(kind), [&, kind](VtGraphics* s, VtImage*, VtImage*) {
            return VtEspecialFill::GradientRectangle(s, square, kFrom, kTo, 0.5, 20, -10, kind, 30);
        });
    for (const auto& makeSurface : surfaces)
        for (const auto& [name, fill] : fills) {
            // A surface as the caller leaves it, with an image and a mask in its format.
            const auto prepare = [&] {
                Surface s = makeSurface();
                Scramble(s->GetTargetImage(), 3);
                s->SetOrigin(ZedaPoint(1, 1));
                s->SelectClipRegion(clip.get(), VT_CLIP_REPLACE);
                s->SelectPen(pen.get());
                s->SelectBrush(brush.get());
                Image image = ImageFor(s.get(), 8, 8, kInk), mask = ImageFor(s.get(), 8, 8, 0);
                mask->SetPixelColour(2, 2, ZEDARGB(255, 255, 255));
                return std::make_tuple(std::move(s), std::move(image), std::move(mask));
            };
            auto [reference, referenceImage, referenceMask] = prepare();
            const bool expected = fill(reference.get(), referenceImage.get(), referenceMask.get());
            const Bytes finished = BytesOf(reference->GetTargetImage());
            TakeLog();
            for (int fault = 0; fault < VT_FAULT_KIND_COUNT; ++fault)
                for (int skip = 0;; ++skip) {
                    SCOPED_TRACE(::testing::Message() << name << " on kind " << reference->GetSurfaceKind()
                                                      << ", fault " << fault << " after " << skip);
                    ASSERT_LT(skip, 500) << "a fault that never stops firing";
                    auto [s, image, mask] = prepare();
                    const Bytes before = BytesOf(s->GetTargetImage());
                    const SurfaceState state = StateOf(s.get());
                    const int live = VtGraphicsManager::GetLiveObjectCount();
                    VtGraphicsManager::InjectFault(static_cast<VtFaultKind>(fault), skip);
                    const bool result = fill(s.get(), image.get(), mask.get());
                    const bool reached = !VtGraphicsManager::IsFaultPending(static_cast<VtFaultKind>(fault));
                    VtGraphicsManager::ClearFaults();
                    TakeLog();
                    EXPECT_EQ(VtGraphicsManager::GetLiveObjectCount(), live);
                    EXPECT_EQ(StateOf(s.get()), state);
                    const Bytes after = BytesOf(s->GetTargetImage());
                    if (!reached) {
                        EXPECT_EQ(result, expected);
                        EXPECT_EQ(after, finished);
                        break;
                    }
                    EXPECT_TRUE(after == before || after == finished);
                }
        }
}
