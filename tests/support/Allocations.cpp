#include "support/Allocations.h"

#include <windows.h>

#include <atomic>
#include <cstdlib>

namespace {

// Counted without any order between threads: two threads that allocate would otherwise never be
// seen to race, whatever else they do.
constexpr auto kUnordered = std::memory_order_relaxed;
std::atomic<long> live{0};
std::atomic<long> made{0};

// By thread id: this toolchain allocates a thread_local variable on first use.
std::atomic<DWORD> faultyThread{0};
long remaining = 0;  // these three belong to the faulty thread
bool allLaterFail = false;
bool faultHappened = false;

void* countedAllocation(std::size_t size) {
    if (faultyThread.load(kUnordered) == GetCurrentThreadId()) {
        --remaining;
        if (remaining == 0 || (remaining < 0 && allLaterFail)) {
            faultHappened = true;
            throw std::bad_alloc();
        }
    }
    void* const block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    made.fetch_add(1, kUnordered);
    live.fetch_add(1, kUnordered);
    return block;
}

void countedRelease(void* block) {
    if (block != nullptr) {
        live.fetch_sub(1, kUnordered);
        std::free(block);
    }
}

}  // namespace

void* operator new(std::size_t size) { return countedAllocation(size); }
void* operator new[](std::size_t size) { return countedAllocation(size); }
void operator delete(void* block) noexcept { countedRelease(block); }
void operator delete[](void* block) noexcept { countedRelease(block); }
void operator delete(void* block, std::size_t) noexcept { countedRelease(block); }
void operator delete[](void* block, std::size_t) noexcept { countedRelease(block); }

namespace tests {

long liveBlocks() { return live; }

long allocationsSoFar() { return made; }

AllocationFault::AllocationFault(long nth, bool andAllLater) {
    remaining = nth;
    allLaterFail = andAllLater;
    faultHappened = false;
    faultyThread = GetCurrentThreadId();
}

AllocationFault::~AllocationFault() { faultyThread = 0; }

bool AllocationFault::happened() { return faultHappened; }

}  // namespace tests
