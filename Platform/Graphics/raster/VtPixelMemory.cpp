#include "VtPixelMemory_p.h"

#include <sys/mman.h>

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

std::size_t RoundedUp(std::size_t size) { return (size + PixelMemory::kSmallest - 1) / PixelMemory::kSmallest * PixelMemory::kSmallest; }

// Never destroyed, so that images in static storage can still give their
// blocks back at exit.
class Keeper {
public:
    static Keeper& Instance()
    {
        static auto* keeper = new Keeper();
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
        std::vector<Block> released;
        {
            const std::lock_guard lock(mutex_);
            kept_.push_back(block);
            keptBytes_ += block.capacity;
            // The oldest go first when too many or too much is kept.
            while (kept_.size() > PixelMemory::kKeptBlocks || keptBytes_ > PixelMemory::kKeptBytes) {
                released.push_back(kept_.front());
                keptBytes_ -= kept_.front().capacity;
                kept_.erase(kept_.begin());
            }
        }
        for (const Block& b : released) {
            munmap(b.data, b.capacity);
        }
    }

private:
    Keeper() { kept_.reserve(PixelMemory::kKeptBlocks + 1); }

    std::mutex mutex_;
    std::vector<Block> kept_;
    std::size_t keptBytes_ = 0;
};

}  // namespace

unsigned char* PixelMemory::Take(std::size_t size, std::size_t& capacity, bool& fresh)
{
    fresh = false;
    if (size < kSmallest) {
        capacity = size;
        return static_cast<unsigned char*>(std::malloc(size == 0 ? 1 : size));
    }
    if (unsigned char* kept = Keeper::Instance().Reuse(size, capacity)) {
        return kept;
    }
    capacity = RoundedUp(size);
    void* mapped = mmap(nullptr, capacity, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) {
        return nullptr;
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
        std::free(block);
        return;
    }
    if (capacity > kKeptBytes) {
        munmap(block, capacity);
        return;
    }
    Keeper::Instance().Keep({block, capacity});
}

}  // namespace VTC::gfx::raster
