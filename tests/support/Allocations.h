// Makes memory fail on purpose. For programs that link everything statically: only then does
// the replaced operator new see every allocation of the library.
#pragma once

#include <atomic>

#include "support/Test.h"

namespace tests {

// The blocks that all threads together have allocated and not yet freed.
inline std::atomic<long> liveBlocks{0};

// While it lives, the n-th allocation of this thread fails, and with `andAllLater` every later one.
class AllocationFault {
 public:
    AllocationFault(long nth, bool andAllLater) : remaining(nth), allLaterFail(andAllLater) {
        hasHappened = false;
        current = this;
    }
    ~AllocationFault() { current = nullptr; }
    AllocationFault(AllocationFault&&) = delete;

    static bool happened() { return hasHappened; }

    // For operator new.
    static bool isDue() {
        AllocationFault* const fault = current.load(std::memory_order_relaxed);
        if (fault == nullptr || fault->thread != GetCurrentThreadId()) {
            return false;
        }
        const long after = --fault->remaining;
        const bool isNow = after == 0 || (after < 0 && fault->allLaterFail);
        hasHappened |= isNow;
        return isNow;
    }

 private:
    static inline std::atomic<AllocationFault*> current{nullptr};
    static inline bool hasHappened = false;
    // Not a thread_local variable, which this toolchain allocates on first use.
    DWORD thread = GetCurrentThreadId();
    long remaining;
    bool allLaterFail;
};

// Fails if `call` allocates anything.
template <typename Call>
void expectNoAllocation(Call call) {
    const AllocationFault fault(1, true);
    call();
    EXPECT_FALSE(AllocationFault::happened());
}

// Calls `round(n, fail)` for n = 1, 2, ... with fresh state each time. `fail(run)` calls `run`
// while its n-th allocation fails, and answers whether std::bad_alloc came out of it. Ends with
// the first round in which nothing failed; then all over again with every allocation from the
// n-th on failing. A round that leaves blocks allocated on purpose says so in `leftOnPurpose`.
inline long leftOnPurpose;
template <typename Round>
void failEachAllocation(Round round) {
    for (const bool andAllLater : {false, true}) {
        bool happened = true;
        for (long n = 1; happened; ++n) {
            SCOPED_TRACE(testing::Message() << "allocation " << n << " fails"
                                            << (andAllLater ? ", and all later ones" : ""));
            const long before = liveBlocks;
            leftOnPurpose = 0;
            round(n, [&](auto run) {
                const AllocationFault fault(n, andAllLater);
                bool isThrown = false;
                try {
                    run();
                } catch (const std::bad_alloc&) {
                    isThrown = true;
                }
                happened = AllocationFault::happened();
                return isThrown;
            });
            EXPECT_EQ(liveBlocks - before, leftOnPurpose);
            ASSERT_LT(n, 1000) << "no end of allocations";
            EXPECT_TRUE(happened || n > 1) << "nothing was allocated, so nothing was tested";
        }
    }
}

}  // namespace tests
