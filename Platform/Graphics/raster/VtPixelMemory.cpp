#include "VtPixelMemory_p.h"

#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iterator>
#include <mutex>
#include <vector>

namespace VTC::gfx::raster {

namespace {

struct Block {
    unsigned char* data;
    std::size_t capacity;
};

constexpr std::size_t kHugePageBytes = std::size_t{2} << 20;

std::size_t RoundedUp(std::size_t size) { return (size + PixelMemory::kSmallest - 1) / PixelMemory::kSmallest * PixelMemory::kSmallest; }

void Unmap(const Block& block) { munmap(block.data, block.capacity); }
void Free(const Block& block) { std::free(block.data); }

// Never destroyed, so that images in static storage can still give their
// blocks back at exit.
class Keeper {
public:
    // Mapped blocks.
    static Keeper& Large()
    {
        static auto* keeper = new Keeper(PixelMemory::kKeptBlocks, PixelMemory::kKeptBytes, Unmap);
        return *keeper;
    }
    // The allocator's blocks below kSmallest: a call's small images and
    // buffers come back to it without the allocator's bookkeeping.
    static Keeper& Small()
    {
        static auto* keeper = new Keeper(PixelMemory::kKeptSmallBlocks, PixelMemory::kSmallest * PixelMemory::kKeptSmallBlocks, Free);
        return *keeper;
    }

    // The most recently kept block that fits without wasting more than a third of it.
    unsigned char* Reuse(std::size_t size, std::size_t& capacity)
    {
        const std::lock_guard lock(mutex_);
        for (auto it = kept_.rbegin(); it != kept_.rend(); ++it) {
            if (it->capacity >= size && it->capacity - size <= size / 2) {
                const Block block = *it;
                kept_.erase(std::next(it).base());
                keptBytes_ -= block.capacity;
                capacity = block.capacity;
                return block.data;
            }
        }
        return nullptr;
    }

    void Keep(const Block& block)
    {
        std::array<Block, 2> released{};
        std::size_t count = 0;
        {
            const std::lock_guard lock(mutex_);
            kept_.push_back(block);
            keptBytes_ += block.capacity;
            // The oldest go first when too many or too much is kept; the new
            // block alone is at most the limit, so at most two go.
            while (kept_.size() > maxBlocks_ || keptBytes_ > maxBytes_) {
                released[count++] = kept_.front();
                keptBytes_ -= kept_.front().capacity;
                kept_.erase(kept_.begin());
            }
        }
        for (std::size_t i = 0; i < count; ++i) {
            release_(released[i]);
        }
    }

private:
    Keeper(std::size_t maxBlocks, std::size_t maxBytes, void (*release)(const Block&))
        : maxBlocks_(maxBlocks), maxBytes_(maxBytes), release_(release)
    {
        kept_.reserve(maxBlocks + 1);
    }

    const std::size_t maxBlocks_;
    const std::size_t maxBytes_;
    void (*const release_)(const Block&);
    std::mutex mutex_;
    std::vector<Block> kept_;
    std::size_t keptBytes_ = 0;
};

}  // namespace

unsigned char* PixelMemory::Take(std::size_t size, std::size_t& capacity, bool& fresh)
{
    fresh = false;
    if (size < kSmallest) {
        if (unsigned char* kept = Keeper::Small().Reuse(std::max<std::size_t>(size, 1), capacity)) {
            return kept;
        }
        capacity = std::max<std::size_t>(size, 1);
        return static_cast<unsigned char*>(std::malloc(capacity));
    }
    if (unsigned char* kept = Keeper::Large().Reuse(size, capacity)) {
        return kept;
    }
    capacity = RoundedUp(size);
    void* mapped = mmap(nullptr, capacity, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) {
        return nullptr;
    }
    // Full-screen buffers on 2 MiB pages where the system allows: passes over
    // several of them then miss the address cache 512 times less often.
    if (capacity >= kHugePageBytes) {
        madvise(mapped, capacity, MADV_HUGEPAGE);
    }
    fresh = true;
    return static_cast<unsigned char*>(mapped);
}

void PixelMemory::Give(unsigned char* block, std::size_t capacity)
{
    if (block == nullptr) {
        return;
    }
    if (capacity < kSmallest) {
        Keeper::Small().Keep({block, capacity});
        return;
    }
    if (capacity > kKeptBytes) {
        munmap(block, capacity);
        return;
    }
    Keeper::Large().Keep({block, capacity});
}

}  // namespace VTC::gfx::raster
