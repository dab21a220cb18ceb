#include "support/Allocations.h"

#include "support/Test.h"

#include <atomic>
#include <cstdlib>

namespace {

// Counted without any order between threads: two threads that allocate would otherwise never be
// seen to race, whatever else they do.
constexpr auto kUnordered = std::memory_order_relaxed;
std::atomic<long> live{0};

// By thread id: this toolchain allocates a thread_local variable on first use.
std::atomic<DWORD> faultyThread{0};
long remaining = 0;  // these three belong to the faulty thread
bool allLaterFail = false;
bool faultHappened = false;

}  // namespace

void* operator new(std::size_t size) {
    const bool isFaulty = faultyThread.load(kUnordered) == GetCurrentThreadId() &&
                          (--remaining == 0 || (remaining < 0 && allLaterFail));
    void* const block = isFaulty ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) {
        faultHappened |= isFaulty;
        throw std::bad_alloc();
    }
    live.fetch_add(1, kUnordered);
    return block;
}

void operator delete(void* block) noexcept {
    live.fetch_sub(block != nullptr ? 1 : 0, kUnordered);
    std::free(block);
}
void operator delete(void* block, std::size_t /*size*/) noexcept { operator delete(block); }

namespace tests {

long liveBlocks() { return live; }

AllocationFault::AllocationFault(long nth, bool andAllLater) {
    remaining = nth;
    allLaterFail = andAllLater;
    faultHappened = false;
    faultyThread = GetCurrentThreadId();
}

AllocationFault::~AllocationFault() { faultyThread = 0; }

bool AllocationFault::happened() { return faultHappened; }

}  // namespace tests
