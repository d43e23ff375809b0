#include "ZedaGeometry.h"

#include <algorithm>
#include <utility>

namespace ZEDA {

void ZedaRect::Normalize()
{
    if (left > right)
        std::swap(left, right);
    if (top > bottom)
        std::swap(top, bottom);
}

bool ZedaRect::Intersection(const ZedaRect& other)
{
    const ZedaRect overlap(std::max(left, other.left), std::max(top, other.top), std::min(right, other.right),
                           std::min(bottom, other.bottom));
    *this = (IsEmpty() || other.IsEmpty() || overlap.IsEmpty()) ? ZedaRect() : overlap;
    return !IsEmpty();
}

}  // namespace ZEDA
