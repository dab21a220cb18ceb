// GoogleTest, and what several tests use of Windows and of the standard library, or share.
#pragma once

#include <windows.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <future>
#include <locale>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace tests {

// Groups the digits of numbers, as "1,234".
struct Grouping : std::numpunct<char> {
    std::string do_grouping() const override { return "\3"; }
};

// Calls `work(0)` to `work(count - 1)`, each in a thread of its own, and waits for all of them.
template <typename Work>
void inThreads(unsigned count, Work work) {
    std::vector<std::jthread> threads;
    threads.reserve(count);
    for (unsigned i = 0; i < count; ++i) {
        threads.emplace_back([&work, i] { work(i); });
    }
}

}  // namespace tests
