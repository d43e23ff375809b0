#pragma once

#include <cstddef>

#include "LqBase.h"

namespace VTC {

// A brush: style 0 solid fill, style 1 no fill.
class LQ_EXPORT VtBrush {
public:
    virtual ~VtBrush();
    VtBrush(const VtBrush&) = delete;
    VtBrush& operator=(const VtBrush&) = delete;

    // Made and destroyed by the dozen per call: the platform recycles their memory.
    static void* operator new(std::size_t size);
    static void operator delete(void* block, std::size_t size) noexcept;

    // False when the brush is already defined (ReleaseBrush first) or the style is unknown.
    bool CreateBrush(int style, unsigned int colour, int reserved1, int reserved2, const ZEDA::ZedaSize& size,
                     int reserved3);
    void ReleaseBrush();
    bool IsCreated() const { return created_; }
    int GetStyle() const { return style_; }
    unsigned int GetColour() const { return colour_; }

protected:
    VtBrush() = default;
    friend class VtGraphicsManager;

private:
    bool created_ = false;
    int style_ = 0;
    unsigned int colour_ = 0;
};

}  // namespace VTC
