#pragma once

#include <algorithm>

namespace VTC {

// Ascending, unstable sort of the range [first, last).
template <typename T>
void Sort(T* first, T* last)
{
    std::sort(first, last);
}

}  // namespace VTC
