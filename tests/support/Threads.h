#pragma once

#include <thread>
#include <vector>

namespace tests {

// Calls `work(0)` to `work(count - 1)`, each in a thread of its own, and waits for all of them.
template <typename Work>
void inThreads(unsigned count, Work work) {
    std::vector<std::thread> threads;
    threads.reserve(count);
    for (unsigned i = 0; i < count; ++i) {
        threads.emplace_back([&work, i] { work(i); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

}  // namespace tests
