#pragma once

#include <cstddef>

#include "LqBase.h"

namespace VTC {

// A pen: style 0 a solid line `width` logical units wide (0 = one pixel), style 5 no outline.
class LQ_EXPORT VtPen {
public:
    virtual ~VtPen();
    VtPen(const VtPen&) = delete;
    VtPen& operator=(const VtPen&) = delete;

    // Made and destroyed by the dozen per call: the platform recycles their memory.
    static void* operator new(std::size_t size);
    static void operator delete(void* block, std::size_t size) noexcept;

    // False when the pen is already defined (ReleasePen first) or the style is unknown.
    bool CreatePen(int style, unsigned int colour, int reserved1, int reserved2, double width);
    void ReleasePen();
    bool IsCreated() const { return created_; }
    int GetStyle() const { return style_; }
    unsigned int GetColour() const { return colour_; }
    double GetWidth() const { return width_; }

protected:
    VtPen() = default;
    friend class VtGraphicsManager;

private:
    bool created_ = false;
    int style_ = 0;
    unsigned int colour_ = 0;
    double width_ = 0.0;
};

}  // namespace VTC
