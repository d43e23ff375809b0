#pragma once

#include <cstddef>

#include <memory>

#include "LqBase.h"

namespace VTC {

// A region of device pixels. Polygons use the even-odd rule; a degenerate
// polygon gives an empty region, not a failure.
class LQ_EXPORT VtRgn {
public:
    virtual ~VtRgn();
    VtRgn(const VtRgn&) = delete;
    VtRgn& operator=(const VtRgn&) = delete;

    // Made and destroyed by the dozen per call: the platform recycles their memory.
    static void* operator new(std::size_t size);
    static void operator delete(void* block, std::size_t size) noexcept;

    bool CreateRectRegion(int left, int top, int right, int bottom);
    // False only for a null array or a count below 1.
    bool CreatePolygonRegion(const ZEDA::ZedaPoint* points, int count);
    bool CreatePolyPolygonRegion(const ZEDA::ZedaPoint* points, const int* counts, int polyCount);
    // mode 1: this region becomes the intersection of a and b (either may be this).
    bool CombineRegion(VtRgn* a, VtRgn* b, int mode);
    ZEDA::ZedaRect GetBoundingRect() const;  // empty rect for an empty region
    bool PtInRegion(int x, int y) const;
    bool IsEmpty() const;
    void CopyFrom(const VtRgn& other);

protected:
    VtRgn();
    friend class VtGraphicsManager;
    friend class VtGraphics;

private:
    struct State;
    std::unique_ptr<State> state_;
    friend struct VtRgnAccess;
};

}  // namespace VTC
