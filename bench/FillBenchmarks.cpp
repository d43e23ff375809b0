// The renderer's blend kernels and whole calls beside pixman's and cairo's
// own compositing of the same pixels.

#include <benchmark/benchmark.h>
#include <cairo.h>
#include <malloc.h>
#include <pixman.h>

#include <cmath>
#include <cstring>
#include <cstdint>
#include <numbers>
#include <vector>

#include "LqGraphics.h"
#include "VtEspecialFill.h"
#include "VtBlendKernelsTesting.h"

namespace {

using VTC::VtEspecialFill;
using VTC::VtGraphics;
using VTC::VtGraphicsManager;
using VTC::VtImage;
namespace detail = VTC::EspecialFillDetail;

constexpr int kTransparency = 40;
constexpr double kOpacity = (100 - kTransparency) / 100.0;

int Stride(int width, int bits) { return (width * bits / 8 + 3) / 4 * 4; }

// Two pixel buffers of one size, filled with varied bytes.
struct PixelPair {
    int width, height, bits, stride;
    std::vector<unsigned char> source, target;

    PixelPair(int w, int h, int b) : width(w), height(h), bits(b), stride(Stride(w, b))
    {
        const std::size_t bytes = static_cast<std::size_t>(stride) * static_cast<std::size_t>(h);
        source.resize(bytes);
        target.resize(bytes);
        for (std::size_t i = 0; i < bytes; ++i) {
            source[i] = static_cast<unsigned char>(i * 31 + 7);
            target[i] = static_cast<unsigned char>(i * 17 + 3);
        }
    }
    std::size_t BlendedBytes() const
    {
        return static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * static_cast<std::size_t>(bits / 8);
    }
};

void SetCounters(benchmark::State& state, std::size_t pixels)
{
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * pixels));
}

// The whole calls also run with the allocator's thresholds pinned to those of a
// fresh process (heap:0: blocks of 128 KiB and more are mapped on allocation
// and unmapped on free) and to those glibc moves to once a block of 32 MiB was
// freed (heap:1: such blocks stay in the heap). The platform's figures should
// not depend on it.
void PinAllocatorThresholds(benchmark::State& state, int heapArgument)
{
    const bool used = state.range(heapArgument) != 0;
    mallopt(M_MMAP_THRESHOLD, used ? 32 << 20 : 128 << 10);
    mallopt(M_TRIM_THRESHOLD, used ? 1 << 30 : 128 << 10);
}

void WithHeaps(benchmark::internal::Benchmark* b, std::initializer_list<std::vector<int64_t>> argsList)
{
    for (const auto& args : argsList)
        for (int heap : {0, 1}) {
            std::vector<int64_t> withHeap = args;
            withHeap.push_back(heap);
            b->Args(withHeap);
        }
}

// ---- (a) the blend of TransparentBitblt ----

void BM_BlendKernel(benchmark::State& state)
{
    PixelPair pair(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)),
                   static_cast<int>(state.range(2)));
    const std::uint32_t keep = pair.bits == 32 ? detail::ColourBytesMask32() : 0xFFFFFFFFu;
    const std::size_t rowBytes = static_cast<std::size_t>(pair.width * pair.bits / 8);
    for (auto _ : state) {
        for (int row = 0; row < pair.height; ++row) {
            const std::size_t at = static_cast<std::size_t>(row) * static_cast<std::size_t>(pair.stride);
            detail::BlendBytes(pair.source.data() + at, pair.target.data() + at, rowBytes, kTransparency, keep);
        }
        benchmark::ClobberMemory();
    }
    SetCounters(state, static_cast<std::size_t>(pair.width) * static_cast<std::size_t>(pair.height));
}

void BM_BlendDoubleLoop(benchmark::State& state)
{
    PixelPair pair(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)),
                   static_cast<int>(state.range(2)));
    const int pixelBytes = pair.bits / 8;
    const int o = 100 - kTransparency;
    for (auto _ : state) {
        for (int row = 0; row < pair.height; ++row) {
            const unsigned char* s = pair.source.data() + static_cast<std::size_t>(row) * pair.stride;
            unsigned char* d = pair.target.data() + static_cast<std::size_t>(row) * pair.stride;
            for (int i = 0; i < pair.width * pixelBytes; ++i) {
                d[i] = (pixelBytes == 4 && i % 4 == 3)
                           ? 0
                           : static_cast<unsigned char>(static_cast<int>(s[i] * o / 100.0 + d[i] * kTransparency / 100.0));
            }
        }
        benchmark::ClobberMemory();
    }
    SetCounters(state, static_cast<std::size_t>(pair.width) * static_cast<std::size_t>(pair.height));
}

void BM_PixmanConstantAlphaOver(benchmark::State& state)
{
    PixelPair pair(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)),
                   static_cast<int>(state.range(2)));
    const pixman_format_code_t format = pair.bits == 32 ? PIXMAN_x8r8g8b8 : PIXMAN_r8g8b8;
    pixman_image_t* source = pixman_image_create_bits(format, pair.width, pair.height,
                                                      reinterpret_cast<std::uint32_t*>(pair.source.data()), pair.stride);
    pixman_image_t* target = pixman_image_create_bits(format, pair.width, pair.height,
                                                      reinterpret_cast<std::uint32_t*>(pair.target.data()), pair.stride);
    const pixman_color_t alpha = {0, 0, 0, static_cast<std::uint16_t>(kOpacity * 0xFFFF)};
    pixman_image_t* mask = pixman_image_create_solid_fill(&alpha);
    for (auto _ : state) {
        pixman_image_composite32(PIXMAN_OP_OVER, source, mask, target, 0, 0, 0, 0, 0, 0, pair.width, pair.height);
        benchmark::ClobberMemory();
    }
    pixman_image_unref(mask);
    pixman_image_unref(target);
    pixman_image_unref(source);
    SetCounters(state, static_cast<std::size_t>(pair.width) * static_cast<std::size_t>(pair.height));
}

void BM_TransparentBitblt(benchmark::State& state)
{
    PinAllocatorThresholds(state, 3);
    const int width = static_cast<int>(state.range(0)), height = static_cast<int>(state.range(1));
    VtGraphics* surface = VtGraphicsManager::CreateWindowGraphics(width, height, static_cast<int>(state.range(2)));
    VtImage* image = VtGraphicsManager::NewImage(0);
    image->CreateCompatibleImage(surface, width, height);
    image->Fill(ZEDARGB(200, 40, 90));
    bool ok = true;
    for (auto _ : state)
        ok = VtEspecialFill::TransparentBitblt(surface, image, 0, 0, width, height, kTransparency) && ok;
    if (!ok)
        state.SkipWithError("TransparentBitblt failed");
    delete image;
    delete surface;
    SetCounters(state, static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
}

void BlitSizes(benchmark::internal::Benchmark* b)
{
    for (int bits : {32, 24}) {
        b->Args({1920, 1080, bits});
        b->Args({256, 256, bits});
        b->Args({64, 64, bits});
    }
    b->ArgNames({"w", "h", "bits"})->Unit(benchmark::kMicrosecond);
}

// The colour blend of TransparentRectangle beside pixman's solid OVER.
void BM_ConstantBlendKernel(benchmark::State& state)
{
    PixelPair pair(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)),
                   static_cast<int>(state.range(2)));
    const unsigned char colour[4] = {20, 200, 250, 0};
    const std::size_t pixelBytes = static_cast<std::size_t>(pair.bits / 8);
    const detail::ConstantBlend blend(colour, pixelBytes, kTransparency,
                                      pair.bits == 32 ? detail::ColourBytesMask32() : 0xFFFFFFFFu);
    const std::size_t rowBytes = static_cast<std::size_t>(pair.width) * pixelBytes;
    for (auto _ : state) {
        for (int row = 0; row < pair.height; ++row)
            blend.Apply(pair.target.data() + static_cast<std::size_t>(row) * pair.stride, rowBytes);
        benchmark::ClobberMemory();
    }
    SetCounters(state, static_cast<std::size_t>(pair.width) * static_cast<std::size_t>(pair.height));
}

void BM_PixmanSolidOver(benchmark::State& state)
{
    PixelPair pair(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)),
                   static_cast<int>(state.range(2)));
    const pixman_format_code_t format = pair.bits == 32 ? PIXMAN_x8r8g8b8 : PIXMAN_r8g8b8;
    pixman_image_t* target = pixman_image_create_bits(format, pair.width, pair.height,
                                                      reinterpret_cast<std::uint32_t*>(pair.target.data()), pair.stride);
    const auto a = static_cast<std::uint16_t>(kOpacity * 0xFFFF);
    // Premultiplied, as pixman takes colours.
    const pixman_color_t colour = {static_cast<std::uint16_t>(250 * 257 * kOpacity),
                                   static_cast<std::uint16_t>(200 * 257 * kOpacity),
                                   static_cast<std::uint16_t>(20 * 257 * kOpacity), a};
    pixman_image_t* solid = pixman_image_create_solid_fill(&colour);
    for (auto _ : state) {
        pixman_image_composite32(PIXMAN_OP_OVER, solid, nullptr, target, 0, 0, 0, 0, 0, 0, pair.width, pair.height);
        benchmark::ClobberMemory();
    }
    pixman_image_unref(solid);
    pixman_image_unref(target);
    SetCounters(state, static_cast<std::size_t>(pair.width) * static_cast<std::size_t>(pair.height));
}

BENCHMARK(BM_BlendKernel)->Apply(BlitSizes);
BENCHMARK(BM_ConstantBlendKernel)->Apply(BlitSizes);
BENCHMARK(BM_PixmanSolidOver)->Apply(BlitSizes);
BENCHMARK(BM_PixmanConstantAlphaOver)->Apply(BlitSizes);
BENCHMARK(BM_BlendDoubleLoop)->Apply(BlitSizes);
// What the prescribed sequence of TransparentBitblt moves, done with plain
// memcpy on five buffers that stay mapped: capture (surface to background),
// two copies out (image and background to buffers), the blend, one copy back
// and the final blit. No implementation of that sequence can go faster.
void BM_PrescribedCopies(benchmark::State& state)
{
    PixelPair surfaceAndImage(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)),
                              static_cast<int>(state.range(2)));
    PixelPair buffers(surfaceAndImage.width, surfaceAndImage.height, surfaceAndImage.bits);
    std::vector<unsigned char> background(surfaceAndImage.source.size(), 1);
    unsigned char* surface = surfaceAndImage.target.data();
    const unsigned char* image = surfaceAndImage.source.data();
    const std::size_t bytes = background.size();
    const std::uint32_t keep = surfaceAndImage.bits == 32 ? detail::ColourBytesMask32() : 0xFFFFFFFFu;
    for (auto _ : state) {
        std::memcpy(background.data(), surface, bytes);
        std::memcpy(buffers.source.data(), image, bytes);
        std::memcpy(buffers.target.data(), background.data(), bytes);
        detail::BlendBytes(buffers.source.data(), buffers.target.data(), bytes, kTransparency, keep);
        std::memcpy(background.data(), buffers.target.data(), bytes);
        std::memcpy(surface, background.data(), bytes);
        benchmark::ClobberMemory();
    }
    SetCounters(state, static_cast<std::size_t>(surfaceAndImage.width) * static_cast<std::size_t>(surfaceAndImage.height));
}

BENCHMARK(BM_PrescribedCopies)->Apply(BlitSizes);
BENCHMARK(BM_TransparentBitblt)->Apply([](auto* b) {
    for (int bits : {32, 24})
        WithHeaps(b, {{64, 64, bits}, {256, 256, bits}, {1920, 1080, bits}});
    b->ArgNames({"w", "h", "bits", "heap"})->Unit(benchmark::kMicrosecond);
});

// ---- (b) shape fills on a 32-bit window surface ----

constexpr int kSurfaceWidth = 1920, kSurfaceHeight = 1080;
constexpr unsigned int kColour1 = ZEDARGB(250, 200, 20), kColour2 = ZEDARGB(10, 60, 220);

ZEDA::ZedaRect Square(int side) { return side >= kSurfaceWidth ? ZEDA::ZedaRect(0, 0, 1920, 1080) : ZEDA::ZedaRect(8, 8, 8 + side, 8 + side); }

void BM_GradientRectangle(benchmark::State& state)
{
    PinAllocatorThresholds(state, 2);
    VtGraphics* surface = VtGraphicsManager::CreateWindowGraphics(kSurfaceWidth, kSurfaceHeight, 32);
    const ZEDA::ZedaRect rect = Square(static_cast<int>(state.range(1)));
    const int kind = static_cast<int>(state.range(0));
    bool ok = true;
    for (auto _ : state) {
        // Inflated by one pixel, the full-screen rectangle reaches past the
        // screen, so the blit is clipped; the result is what counts here.
        ok = VtEspecialFill::GradientRectangle(surface, rect, kColour1, kColour2, 0.6, 10, -20, kind, kTransparency) && ok;
    }
    if (!ok)
        state.SkipWithError("GradientRectangle failed");
    delete surface;
    SetCounters(state, static_cast<std::size_t>(rect.Width()) * static_cast<std::size_t>(rect.Height()));
}

void SetStop(cairo_pattern_t* pattern, double at, unsigned int colour)
{
    cairo_pattern_add_color_stop_rgba(pattern, at, ZEDAREDVAL(colour) / 255.0, ZEDAGREENVAL(colour) / 255.0,
                                      ZEDABLUEVAL(colour) / 255.0, kOpacity);
}

// cairo's own gradient of the same rectangle: range(0) 0 linear, 1 radial.
void BM_CairoGradient(benchmark::State& state)
{
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, kSurfaceWidth, kSurfaceHeight);
    cairo_t* cr = cairo_create(surface);
    cairo_set_antialias(cr, CAIRO_ANTIALIAS_NONE);
    const ZEDA::ZedaRect rect = Square(static_cast<int>(state.range(1)));
    for (auto _ : state) {
        cairo_pattern_t* pattern =
            state.range(0) == 0
                ? cairo_pattern_create_linear(rect.left, rect.bottom, rect.right, rect.top)
                : cairo_pattern_create_radial(rect.left + rect.Width() / 2.0, rect.top + rect.Height() / 2.0, 0,
                                              rect.left + rect.Width() / 2.0, rect.top + rect.Height() / 2.0,
                                              std::hypot(rect.Width(), rect.Height()) / 2);
        SetStop(pattern, 0, kColour1);
        SetStop(pattern, 1, kColour2);
        cairo_set_source(cr, pattern);
        cairo_rectangle(cr, rect.left, rect.top, rect.Width(), rect.Height());
        cairo_fill(cr);
        cairo_pattern_destroy(pattern);
        cairo_surface_flush(surface);
    }
    cairo_destroy(cr);
    cairo_surface_destroy(surface);
    SetCounters(state, static_cast<std::size_t>(rect.Width()) * static_cast<std::size_t>(rect.Height()));
}

BENCHMARK(BM_GradientRectangle)->Apply([](auto* b) {
    for (int kind : {10, 11, 12, 13})
        WithHeaps(b, {{kind, 64}, {kind, 256}, {kind, 1920}});
    b->ArgNames({"kind", "side", "heap"})->Unit(benchmark::kMicrosecond);
});
BENCHMARK(BM_CairoGradient)->Apply([](auto* b) {
    for (int kind : {0, 1})
        for (int side : {64, 256, 1920})
            b->Args({kind, side});
    b->ArgNames({"kind", "side"})->Unit(benchmark::kMicrosecond);
});

void BM_TransparentRectangle(benchmark::State& state)
{
    PinAllocatorThresholds(state, 1);
    VtGraphics* surface = VtGraphicsManager::CreateWindowGraphics(kSurfaceWidth, kSurfaceHeight, 32);
    const ZEDA::ZedaRect rect = Square(static_cast<int>(state.range(0)));
    bool ok = true;
    for (auto _ : state)
        ok = VtEspecialFill::TransparentRectangle(surface, rect, kColour1, kTransparency) && ok;
    if (!ok)
        state.SkipWithError("TransparentRectangle failed");
    delete surface;
    SetCounters(state, static_cast<std::size_t>(rect.Width()) * static_cast<std::size_t>(rect.Height()));
}

// A hexagon inscribed in the rectangle.
std::vector<ZEDA::ZedaPoint> Hexagon(const ZEDA::ZedaRect& rect)
{
    std::vector<ZEDA::ZedaPoint> points;
    const double cx = rect.left + rect.Width() / 2.0, cy = rect.top + rect.Height() / 2.0;
    for (int i = 0; i < 6; ++i) {
        const double a = i * std::numbers::pi / 3;
        points.emplace_back(static_cast<int>(cx + rect.Width() / 2.0 * std::cos(a)),
                            static_cast<int>(cy + rect.Height() / 2.0 * std::sin(a)));
    }
    return points;
}

void BM_TransparentPolygon(benchmark::State& state)
{
    PinAllocatorThresholds(state, 1);
    VtGraphics* surface = VtGraphicsManager::CreateWindowGraphics(kSurfaceWidth, kSurfaceHeight, 32);
    const std::vector<ZEDA::ZedaPoint> points = Hexagon(Square(static_cast<int>(state.range(0))));
    bool ok = true;
    for (auto _ : state)
        ok = VtEspecialFill::TransparentPolygon(surface, points.data(), 6, kColour1, kTransparency) && ok;
    if (!ok)
        state.SkipWithError("TransparentPolygon failed");
    delete surface;
}

// cairo filling the same shape: range(1) 0 rectangle, 1 hexagon.
void BM_CairoTransparentFill(benchmark::State& state)
{
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, kSurfaceWidth, kSurfaceHeight);
    cairo_t* cr = cairo_create(surface);
    cairo_set_antialias(cr, CAIRO_ANTIALIAS_NONE);
    const ZEDA::ZedaRect rect = Square(static_cast<int>(state.range(0)));
    const std::vector<ZEDA::ZedaPoint> points = Hexagon(rect);
    for (auto _ : state) {
        cairo_set_source_rgba(cr, ZEDAREDVAL(kColour1) / 255.0, ZEDAGREENVAL(kColour1) / 255.0,
                              ZEDABLUEVAL(kColour1) / 255.0, kOpacity);
        if (state.range(1) == 0) {
            cairo_rectangle(cr, rect.left, rect.top, rect.Width(), rect.Height());
        } else {
            cairo_move_to(cr, points[0].x, points[0].y);
            for (const auto& p : points)
                cairo_line_to(cr, p.x, p.y);
            cairo_close_path(cr);
        }
        cairo_fill(cr);
        cairo_surface_flush(surface);
    }
    cairo_destroy(cr);
    cairo_surface_destroy(surface);
}

void FillSizesWithHeaps(benchmark::internal::Benchmark* b)
{
    WithHeaps(b, {{64}, {256}, {1920}});
    b->ArgNames({"side", "heap"})->Unit(benchmark::kMicrosecond);
}

BENCHMARK(BM_TransparentRectangle)->Apply(FillSizesWithHeaps);
BENCHMARK(BM_TransparentPolygon)->Apply(FillSizesWithHeaps);
BENCHMARK(BM_CairoTransparentFill)->Apply([](auto* b) {
    for (int shape : {0, 1})
        for (int side : {64, 256, 1920})
            b->Args({side, shape});
    b->ArgNames({"side", "shape"})->Unit(benchmark::kMicrosecond);
});

}  // namespace

BENCHMARK_MAIN();
