#pragma once

#include <thread>
#include <vector>

namespace tests {

// Calls `work(0)` to `work(count - 1)`, each in a thread of its own, and waits for all of them.
template <typename Work>
void inThreads(unsigned count, Work work) {
    std::vector<std::jthread> threads;
    for (unsigned i = 0; i < count; ++i) {
        threads.emplace_back([&work, i] { work(i); });
    }
}

}  // namespace tests
