#pragma once

// Memory for the platform's small objects: graphics, images, pens, brushes,
// regions and their parts, which the fills make and destroy by the dozen per
// call.

#include <cstddef>

namespace VTC::gfx {

// Blocks a thread gives back are kept by that thread, per size class, for its
// next object of about that size, so that objects made and destroyed per call
// take nothing from the heap once the first call has run. A block may be given
// back by another thread than the one that took it. Under the sanitizers every
// block comes from the heap, so that they still see each object's lifetime.
void* TakeObjectMemory(std::size_t size);
void GiveObjectMemory(void* block, std::size_t size) noexcept;

// Class-level allocation through that memory, for the platform's private classes.
struct PooledObject {
    static void* operator new(std::size_t size) { return TakeObjectMemory(size); }
    static void operator delete(void* block, std::size_t size) noexcept { GiveObjectMemory(block, size); }
};

}  // namespace VTC::gfx
