#include "support/Allocations.h"

// Counted without any order between threads: two threads that allocate would otherwise never be
// seen to race, whatever else they do.
void* operator new(std::size_t size) {
    const bool fails = tests::AllocationFault::isDue();
    void* const block = fails ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    tests::liveBlocks.fetch_add(1, std::memory_order_relaxed);
    return block;
}

void operator delete(void* block) noexcept {
    tests::liveBlocks.fetch_sub(block != nullptr ? 1 : 0, std::memory_order_relaxed);
    std::free(block);
}
void operator delete(void* block, std::size_t /*size*/) noexcept { operator delete(block); }
