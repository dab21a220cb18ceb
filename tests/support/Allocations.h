// Makes memory fail on purpose. For programs that link everything statically: only then does
// the replaced operator new see every allocation of the library.
#pragma once

#include <gtest/gtest.h>

#include <new>
#include <string>

namespace tests {

// Over all threads.
long liveBlocks();        // allocated and not yet freed
long allocationsSoFar();  // ever made

// While it lives, the n-th allocation of this thread fails, and with `andAllLater` every later one.
class AllocationFault {
 public:
    AllocationFault(long nth, bool andAllLater);
    ~AllocationFault();
    AllocationFault(const AllocationFault&) = delete;
    AllocationFault& operator=(const AllocationFault&) = delete;
    static bool happened();
};

// Calls `round(n, fail)` for n = 1, 2, ... with fresh state each time. `fail(run)` calls `run`
// while its n-th allocation fails, and answers whether std::bad_alloc came out of it. Ends with
// the first round in which nothing failed; then all over again with every allocation from the
// n-th on failing. `round` returns how many blocks it leaves allocated on purpose.
template <typename Round>
void failEachAllocation(Round round) {
    for (const bool andAllLater : {false, true}) {
        for (long n = 1;; ++n) {
            const std::string trace = "allocation " + std::to_string(n) +
                                      (andAllLater ? " and all later ones fail" : " fails");
            SCOPED_TRACE(trace);
            bool happened = false;
            const long before = liveBlocks();
            const long leftOnPurpose = round(n, [&](auto run) {
                const AllocationFault fault(n, andAllLater);
                try {
                    run();
                } catch (const std::bad_alloc&) {
                    happened = AllocationFault::happened();
                    return true;
                }
                happened = AllocationFault::happened();
                return false;
            });
            EXPECT_EQ(liveBlocks() - before, leftOnPurpose);
            ASSERT_LT(n, 1000) << "no end of allocations";
            if (!happened) {
                EXPECT_GT(n, 1) << "nothing was allocated, so nothing was tested";
                break;
            }
        }
    }
}

}  // namespace tests
