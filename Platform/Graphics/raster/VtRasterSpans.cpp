#include "VtRasterSpans_p.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace VTC::gfx::raster {

namespace {

void Fill24(unsigned char* p, std::size_t count, uint32_t raw)
{
    // Four pixels make three words, so most of the run is written a word at a time.
    unsigned char pattern[12];
    for (int i = 0; i < 4; ++i) {
        pattern[3 * i] = static_cast<unsigned char>(raw);
        pattern[3 * i + 1] = static_cast<unsigned char>(raw >> 8);
        pattern[3 * i + 2] = static_cast<unsigned char>(raw >> 16);
    }
    for (; count >= 4; count -= 4, p += 12) {
        std::memcpy(p, pattern, 12);
    }
    std::memcpy(p, pattern, 3 * count);
}

void Fill1(unsigned char* row, int x0, int x1, bool set)
{
    for (int x = x0; x < x1;) {
        const int bit = x & 7;
        const int n = std::min(8 - bit, x1 - x);
        const auto bits = static_cast<unsigned char>((0xFF00u >> n & 0xFFu) >> bit);
        row[x >> 3] = set ? (row[x >> 3] | bits) : (row[x >> 3] & ~bits);
        x += n;
    }
}

ZedaRect RectAt(const cairo_region_t* region, int i)
{
    cairo_rectangle_int_t r;
    cairo_region_get_rectangle(region, i, &r);
    return {r.x, r.y, r.x + r.width, r.y + r.height};
}

}  // namespace

SpanWriter::SpanWriter(const Pixels& pixels, uint32_t raw, const cairo_region_t* clip)
    : pixels_(pixels), raw_(raw), clip_(nullptr), limits_(0, 0, pixels.width, pixels.height)
{
    if (pixels.data == nullptr) {
        limits_ = {};
        return;
    }
    if (clip == nullptr) {
        return;
    }
    cairo_rectangle_int_t extents;
    cairo_region_get_extents(clip, &extents);
    limits_.Intersection({extents.x, extents.y, extents.x + extents.width, extents.y + extents.height});
    if (cairo_region_num_rectangles(clip) > 1) {
        clip_ = clip;
    }
}

SpanWriter::SpanWriter(const ZedaRect& limits, RunSink& sink) : raw_(0), clip_(nullptr), limits_(limits), sink_(&sink) {}

void SpanWriter::WriteClipped(int y, int x0, int x1) const
{
    if (sink_ != nullptr) {
        sink_->Run(y, x0, x1);
    } else if (clip_ != nullptr) {
        WriteThroughClip(y, x0, x1);
    } else {
        Write(y, x0, x1);
    }
}

void SpanWriter::Box(const ZedaRect& box)
{
    // Compared, never subtracted: a box may reach from one end of the int range to the other.
    const int top = std::max(box.top, limits_.top), bottom = std::min(box.bottom, limits_.bottom);
    for (int y = top; y < bottom; ++y) {
        Span(y, box.left, box.right);
    }
}

// A region's rectangles come in bands of equal top and bottom, top to bottom
// and left to right within a band.
void SpanWriter::WriteThroughClip(int y, int x0, int x1) const
{
    const int count = cairo_region_num_rectangles(clip_);
    int lo = 0;
    for (int hi = count; lo < hi;) {
        const int mid = (lo + hi) / 2;
        if (RectAt(clip_, mid).bottom <= y) {
            lo = mid + 1;
        } else {
            hi = mid;
        }
    }
    for (int i = lo; i < count; ++i) {
        const ZedaRect r = RectAt(clip_, i);
        if (r.top > y || r.left >= x1) {
            return;
        }
        Write(y, std::max(x0, r.left), std::min(x1, r.right));
    }
}

void SpanWriter::Write(int y, int x0, int x1) const
{
    if (x0 >= x1) {
        return;
    }
    unsigned char* row = pixels_.data + static_cast<std::ptrdiff_t>(y) * pixels_.stride;
    const auto count = static_cast<std::size_t>(x1 - x0);
    switch (pixels_.bpp) {
    case 32:
        // Rows start on 4-byte boundaries.
        std::fill_n(reinterpret_cast<uint32_t*>(row) + x0, count, raw_);
        return;
    case 24:
        Fill24(row + static_cast<std::ptrdiff_t>(x0) * 3, count, raw_);
        return;
    case 16:
        std::fill_n(reinterpret_cast<uint16_t*>(row) + x0, count, static_cast<uint16_t>(raw_));
        return;
    case 8:
        std::memset(row + x0, static_cast<int>(raw_ & 0xFFu), count);
        return;
    default:
        Fill1(row, x0, x1, (raw_ & 1u) != 0);
    }
}

}  // namespace VTC::gfx::raster
