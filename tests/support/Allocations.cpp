#include "support/Allocations.h"

#include <new>

// Every form of the operators but the aligned ones, which are a family of their own: what one form
// allocates another may free.
namespace {

// Counted without any order between threads: two threads that allocate would otherwise never be
// seen to race, whatever else they do.
void* allocateBlock(std::size_t size) {
    const bool fails = tests::AllocationFault::isDue();
    void* const block = fails ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (block != nullptr) {
        tests::liveBlocks.fetch_add(1, std::memory_order_relaxed);
    }
    return block;
}

void* allocateBlockOrThrow(std::size_t size) {
    void* const block = allocateBlock(size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void freeBlock(void* block) {
    if (block != nullptr) {
        tests::liveBlocks.fetch_sub(1, std::memory_order_relaxed);
    }
    std::free(block);
}

}  // namespace

void* operator new(std::size_t size) { return allocateBlockOrThrow(size); }
void* operator new[](std::size_t size) { return allocateBlockOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return allocateBlock(size);
}
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return allocateBlock(size);
}

void operator delete(void* block) noexcept { freeBlock(block); }
void operator delete[](void* block) noexcept { freeBlock(block); }
void operator delete(void* block, std::size_t /*size*/) noexcept { freeBlock(block); }
void operator delete[](void* block, std::size_t /*size*/) noexcept { freeBlock(block); }
void operator delete(void* block, const std::nothrow_t& /*tag*/) noexcept { freeBlock(block); }
void operator delete[](void* block, const std::nothrow_t& /*tag*/) noexcept { freeBlock(block); }
