// What modules count while they work, for the test that loads and unloads them.
#pragma once

#include <atomic>

// Counted by all threads at once. Everything is 0 in the end.
struct Tally {
    std::atomic<long> objects{0};   // made and not destroyed
    std::atomic<long> messages{0};  // logged to a channel with a sink, and not written
    std::atomic<long> mistakes{0};  // anything that went otherwise than it must

    void require(bool condition) { mistakes += condition ? 0 : 1; }

    template <typename Exception, typename Call>
    void requireThrow(Call call) {
        try {
            call();
            ++mistakes;
        } catch (const Exception&) {  // on purpose
        }
    }
};

// Exported by each module as `work`: some thousand operations, from any number of threads.
using Work = void(Tally* tally);
