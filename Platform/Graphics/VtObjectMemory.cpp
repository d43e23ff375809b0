#include "VtObjectMemory_p.h"

#include <array>
#include <cstdlib>
#include <new>

namespace VTC::gfx {

namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kKeepBlocks = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool kKeepBlocks = false;
#else
constexpr bool kKeepBlocks = true;
#endif
#else
constexpr bool kKeepBlocks = true;
#endif

constexpr std::size_t kGranule = 16;
constexpr std::size_t kLargestKept = 512;
constexpr std::size_t kClasses = kLargestKept / kGranule;
constexpr std::size_t kKeptPerClass = 32;

std::size_t ClassOf(std::size_t size) { return (size + kGranule - 1) / kGranule - 1; }

// A freed block holds the link to the next one of its class.
struct FreeBlock {
    FreeBlock* next;
};

class ThreadCache {
public:
    ThreadCache() = default;
    ThreadCache(const ThreadCache&) = delete;
    ThreadCache& operator=(const ThreadCache&) = delete;
    ~ThreadCache();

    void* Take(std::size_t sizeClass)
    {
        FreeBlock* block = heads_[sizeClass];
        if (block == nullptr) {
            return nullptr;
        }
        heads_[sizeClass] = block->next;
        --counts_[sizeClass];
        return block;
    }

    bool Keep(void* memory, std::size_t sizeClass)
    {
        if (counts_[sizeClass] == kKeptPerClass) {
            return false;
        }
        auto* block = static_cast<FreeBlock*>(memory);
        block->next = heads_[sizeClass];
        heads_[sizeClass] = block;
        ++counts_[sizeClass];
        return true;
    }

private:
    std::array<FreeBlock*, kClasses> heads_{};
    std::array<std::size_t, kClasses> counts_{};
};

// Set when this thread's cache is gone (objects destroyed at thread or
// process exit after it go straight back to the heap).
thread_local bool t_cacheGone = false;

ThreadCache::~ThreadCache()
{
    for (FreeBlock* head : heads_) {
        while (head != nullptr) {
            FreeBlock* next = head->next;
            std::free(head);
            head = next;
        }
    }
    t_cacheGone = true;
}

ThreadCache* Cache()
{
    if (!kKeepBlocks || t_cacheGone) {
        return nullptr;
    }
    thread_local ThreadCache cache;
    return &cache;
}

// Every block of a class has the class's whole size, so that any block of it
// serves any request of it.
std::size_t BlockSize(std::size_t size) { return size <= kLargestKept ? (ClassOf(size) + 1) * kGranule : size; }

}  // namespace

void* TakeObjectMemory(std::size_t size)
{
    size = size == 0 ? 1 : size;
    if (ThreadCache* cache = size <= kLargestKept ? Cache() : nullptr) {
        if (void* block = cache->Take(ClassOf(size))) {
            return block;
        }
    }
    if (void* block = std::malloc(BlockSize(size))) {
        return block;
    }
    throw std::bad_alloc();
}

void GiveObjectMemory(void* block, std::size_t size) noexcept
{
    if (block == nullptr) {
        return;
    }
    size = size == 0 ? 1 : size;
    ThreadCache* cache = size <= kLargestKept ? Cache() : nullptr;
    if (cache == nullptr || !cache->Keep(block, ClassOf(size))) {
        std::free(block);
    }
}

}  // namespace VTC::gfx
