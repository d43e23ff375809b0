#include <climits>
#include <cmath>
#include <limits>

#include "FillTestSupport.h"

using namespace FillTest;

namespace {

class Limits : public FillTestBase {};

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr int kOpacities[] = {INT_MIN, INT_MIN + 1, -1, 0, 1, 50, 99, 100, 101, INT_MAX};

}  // namespace

// TransparentDraw takes any int as its opacity: what the unsigned tests send
// to the opaque copy is drawn opaque, on both strategies, without overflow.
TEST_F(Limits, KeyedDrawingTakesEveryOpacity)
{
    for (int opacity : kOpacities) {
        SCOPED_TRACE(opacity);
        Surface window = Window(12, 12);
        Image target(VtGraphicsManager::NewImage(0));
        target->CreateImage(12, 12, 1, 32, nullptr, nullptr);
        target->Fill(kPaper);
        Surface imageBacked(VtGraphicsManager::CreateImageGraphics(target.get()));
        Image image = ImageFor(window.get(), 4, 4, kInk);
        VtEspecialFill::TransparentDraw(window.get(), image.get(), 2, 2, kPaper, opacity);
        VtEspecialFill::TransparentDraw(imageBacked.get(), image.get(), 2, 2, kPaper, opacity);
        const bool opaque = static_cast<unsigned>(opacity) > 99;
        EXPECT_EQ(PixelAt(window.get(), 3, 3), opaque ? Rgb(kInk) : opacity == 0 ? Rgb(kPaper)
                                                                                  : Blended(kInk, kPaper, 100 - opacity));
        // The pixel strategy copies for 0 as well (its test is opacity - 1, unsigned).
        const bool copies = static_cast<unsigned>(opacity) - 1u > 98u;
        EXPECT_EQ(PixelAt(imageBacked.get(), 3, 3), copies ? Rgb(kInk) : Blended(kInk, kPaper, 100 - opacity));
        // Far off either surface nothing is drawn, and nothing overflows.
        for (int at : {INT_MIN, INT_MIN + 3, INT_MAX - 3, INT_MAX}) {
            VtEspecialFill::TransparentDraw(window.get(), image.get(), at, at, kPaper, opacity);
            VtEspecialFill::TransparentDraw(imageBacked.get(), image.get(), at, 0, kPaper, opacity);
        }
    }
}

// A non-finite angle is taken as 0, by the axis geometry, the generators, the
// fills and the native-gradient surface alike; huge finite angles are used as
// they are.
TEST_F(Limits, NonFiniteAnglesAreZero)
{
    ZedaPoint start, end, zeroStart, zeroEnd;
    VtEspecialFill::GetEndPointOfColor(0.0, {0, 0, 100, 50}, zeroStart, zeroEnd);
    for (double angle : {kNaN, kInfinity, -kInfinity}) {
        VtEspecialFill::GetEndPointOfColor(angle, {0, 0, 100, 50}, start, end);
        EXPECT_EQ(std::make_pair(start, end), std::make_pair(zeroStart, zeroEnd)) << angle;
    }
    const auto paint = [](VtGraphics* s, double angle, int kind) {
        s->GetTargetImage()->Fill(kPaper);
        VtEspecialFill::GradientRectangle(s, {3, 2, 37, 25}, kFrom, kTo, angle, 10, -20, kind, 20);
        return BytesOf(s->GetTargetImage());
    };
    for (int kind = VT_GRADIENT_LINEAR; kind <= VT_GRADIENT_SQUARE; ++kind) {
        Surface window = Window(40, 30);
        Surface native(VtGraphicsManager::CreateNativeGradientGraphics(40, 30, 32));
        for (VtGraphics* s : {window.get(), native.get()}) {
            const Bytes zero = paint(s, 0.0, kind);
            for (double angle : {kNaN, kInfinity, -kInfinity})
                EXPECT_EQ(paint(s, angle, kind), zero) << kind << ' ' << angle;
            for (double angle : {1e300, -1e300, std::numeric_limits<double>::max()})
                paint(s, angle, kind);
        }
    }
}

// Rectangles, points and offsets at the ends of the int range are taken as
// given: whatever lands on the surface is drawn, nothing overflows.
TEST_F(Limits, CoordinatesAndOffsetsAtTheIntLimits)
{
    const ZedaRect rects[] = {{INT_MIN, INT_MIN, INT_MAX, INT_MAX}, {INT_MAX - 15, 0, INT_MAX, 10},
                              {INT_MIN, INT_MIN, INT_MIN + 17, INT_MIN + 17}, {-5, INT_MIN, 20, INT_MAX}};
    const int offsets[] = {INT_MIN, -100, 0, 100, INT_MAX};
    Surface window = Window(30, 30);
    Surface printer(VtGraphicsManager::CreatePrintGraphics(80, 80, 100));
    Surface native(VtGraphicsManager::CreateNativeGradientGraphics(30, 30, 24));
    for (VtGraphics* s : {window.get(), printer.get(), native.get()})
        for (const ZedaRect& rect : rects) {
            for (int kind = VT_GRADIENT_LINEAR; kind <= VT_GRADIENT_SQUARE; ++kind)
                for (std::size_t i = 0; i < std::size(offsets); ++i)
                    VtEspecialFill::GradientRectangle(s, rect, kFrom, kTo, 0.9, offsets[i], offsets[4 - i], kind, 30);
            VtEspecialFill::TransparentRectangle(s, rect, kInk, 30);
            // Polygons near the corners (one spanning the whole range has more
            // rows than any region can hold).
            const ZedaPoint corners[] = {rect.TopLeft(), {rect.left + 9, rect.top}, {rect.left, rect.top + 9}};
            VtEspecialFill::TransparentPolygon(s, corners, 3, kInk, 30);
            VtEspecialFill::GradientPolygon(s, corners, 3, kFrom, kTo, 0.3, 0, 0, VT_GRADIENT_LINEAR, 30);
            Image image = ImageFor(s, 5, 5, kInk);
            VtEspecialFill::TransparentBitblt(s, image.get(), rect.left, rect.top, rect.Width(), 5, 30);
            VtEspecialFill::TransparentBitblt(s, image.get(), rect.right, rect.bottom, INT_MAX, INT_MIN, 30);
            ZedaPoint start, end;
            VtEspecialFill::GetEndPointOfColor(2.0, rect, start, end);
            VtEspecialFill::GetEndPointOfColor(5.0, rect, start, end);
        }
    TakeLog();
    // What lies on the surface is still drawn: the right edge of a rectangle
    // reaching past INT_MAX's side is filled.
    window->GetTargetImage()->Fill(kPaper);
    EXPECT_TRUE(VtEspecialFill::TransparentRectangle(window.get(), {20, 0, INT_MAX, 10}, kInk, 0));
    EXPECT_EQ(ColoursAt(window.get(), {{19, 5}, {20, 5}, {29, 9}}), (Colours{Rgb(kPaper), Rgb(kInk), Rgb(kInk)}));
}

// A page is not clipped to the screen, so a gradient's image is as large as
// its rectangle: one past the image limit (here 12 x 1.7 billion pixels, 60
// GB) is refused before any memory is asked for, and nothing is drawn.
TEST_F(Limits, PageGradientsPastTheImageLimitAreRefused)
{
    Surface printer(VtGraphicsManager::CreatePrintGraphics(80, 80, 100));
    printer->GetTargetImage()->Fill(kPaper);
    const Bytes page = BytesOf(printer->GetTargetImage());
    for (int kind = VT_GRADIENT_LINEAR; kind <= VT_GRADIENT_SQUARE; ++kind) {
        EXPECT_FALSE(VtEspecialFill::GradientRectangle(printer.get(), {-5, INT_MIN, 20, INT_MAX}, kFrom, kTo, 0.9, 0,
                                                       0, kind, 30));
        std::vector<std::string> codes;
        for (const VtLogRecord& record : lqtest::TakeLogRecords())
            codes.push_back(record.code);
        EXPECT_EQ(codes, (std::vector<std::string>{"GIm006", "EGd004"})) << kind;
    }
    EXPECT_EQ(BytesOf(printer->GetTargetImage()), page);
}
