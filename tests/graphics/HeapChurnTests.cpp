// Objects the fills make and destroy per call take nothing from the heap once
// their kinds have been made before. Every allocation of the process is
// counted here, so this test runs alone in its program, and only where no
// sanitizer replaces the allocator.

#include <cstddef>
#include <cstdlib>

#include "GraphicsTestSupport.h"

extern "C" void* __libc_malloc(std::size_t size);

namespace {
thread_local std::size_t t_allocations = 0;
}

extern "C" void* malloc(std::size_t size)
{
    ++t_allocations;
    return __libc_malloc(size);
}

namespace VTC::test {
namespace {

TEST(HeapChurnTest, ObjectsMadeAndDestroyedPerCallAllocateNothing)
{
    Owned<VtGraphics> window(Manager::CreateWindowGraphics(64, 64, 32));
    const auto perCall = [&] {
        Owned<VtGraphics> memory(Manager::NewGraphics(0));
        memory->CreateCompatibleGraphics(window.get());
        Owned<VtImage> image(Manager::NewImage(0));
        image->CreateCompatibleImage(window.get(), 64, 64);
        Owned<VtPen> pen(Manager::NewPen(0));
        Owned<VtBrush> brush(Manager::NewBrush(0));
        Owned<VtRgn> region(Manager::NewRgn(0));
        VtImage* previous = memory->SelectImage(image.get());
        memory->BitBlt(0, 0, 64, 64, window.get(), 0, 0, VT_ROP_COPY);
        window->BitBlt(0, 0, 64, 64, memory.get(), 0, 0, VT_ROP_COPY);
        memory->SelectImage(previous);
    };
    perCall();
    const std::size_t before = t_allocations;
    perCall();
    EXPECT_EQ(t_allocations - before, 0u);
}

}  // namespace
}  // namespace VTC::test
