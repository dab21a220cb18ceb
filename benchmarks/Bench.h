// What the cases of one subsystem have in common: how one is registered, and how its cost is
// taken. The same sources are built twice: with Google Benchmark, which measures time, and as
// Instructions, which counts instructions under callgrind and needs neither it nor any peer.
//
// A case is called "group/subject". Cases of one group do the same work; the table is made of
// their ratios. Subject "ours" is this library, "bare" the same without it.
#pragma once

#include <algorithm>
#include <cstddef>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#ifdef QUEND_COUNT_INSTRUCTIONS
#include <valgrind/callgrind.h>
#else
#include <benchmark/benchmark.h>
#endif

// Stands behind a lambda's parameters: its body is called, not copied to where it is used.
#define BENCH_OUT_OF_LINE __attribute__((noinline))

namespace bench {

// Calls `body` once, and has the compiler believe that somebody looks at what it returns.
template <typename Body>
void run(Body& body) {
    if constexpr (std::is_void_v<decltype(body())>) {
        body();
    } else {
        auto result = body();
        asm volatile("" : : "r,m"(result) : "memory");
    }
}

// Registers one operation. Each thread works on its own copy of `body`; what that refers to must
// outlive the program's cases, so it is made with plain new and left alone.
template <typename Body>
void addCase(const std::string& name, Body body, [[maybe_unused]] int threads = 1) {
#ifdef QUEND_COUNT_INSTRUCTIONS
    for (int i = 0; i < 200; ++i) {  // lazy binding, the first allocations
        run(body);
    }
    CALLGRIND_ZERO_STATS;
    for (int i = 0; i < 2000; ++i) {
        run(body);
    }
    CALLGRIND_DUMP_STATS_AT(name.c_str());
#else
    auto* const registered =
        benchmark::RegisterBenchmark(name.c_str(), [body](benchmark::State& state) {
            auto own = body;
            for (auto _ : state) {
                run(own);
            }
            state.SetItemsProcessed(state.iterations());
        });
    if (threads > 1) {
        registered->Threads(threads)->UseRealTime();
    }
#endif
}

// The names of `count` entries, in an order that has nothing to do with that of the names. They
// are short enough for a std::string to hold them in place.
inline std::vector<std::string> shuffledNames(std::size_t count) {
    std::vector<std::string> names;
    names.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::string digits = std::to_string(i);
        names.push_back("name-" + std::string(7 - digits.size(), '0') + digits);
    }
    std::shuffle(names.begin(), names.end(),
                 std::mt19937(1));  // NOLINT(cert-msc51-cpp): repeatable
    return names;
}

// Goes round a list for ever, without a division.
template <typename T>
class Round {
 public:
    explicit Round(const std::vector<T>& list) : list(&list) {}
    const T& next() {
        if (++index >= list->size()) {
            index = 0;
        }
        return (*list)[index];
    }

 private:
    const std::vector<T>* list;
    std::size_t index = 0;
};

// The cases of each file. The peers are other libraries that serve the same end.
void addObjectRegistry();
void addPropertyStore();
void addRandomSource();
void addLogging();
void addPeers();
void addGrowth();

}  // namespace bench
