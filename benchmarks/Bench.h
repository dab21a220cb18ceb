/// \file
/// What the cases of all subsystems have in common. The same sources are built three times: for
/// Windows and natively with the clock of Main.cpp, and natively as Instructions, which counts
/// instructions under callgrind.
///
/// A case is called "group/subject", and the cases of one group do the same work. Subject "ours" is
/// this library, "bare" is the same work done with the standard library or the platform alone.
#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <random>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#ifdef QUEND_COUNT_INSTRUCTIONS
#include <valgrind/callgrind.h>
#endif

namespace bench {

/// What scripts/bench asks the programs for: the table of ratios, or the curves.
enum class Mode { table, growth };

/// Cases that are measured together, in rounds that take turns: those that `add` adds, for each of
/// the sizes anew. What they share lives as long as they do. Groups are made before main.
struct Group {
    Group(Mode ofMode, std::vector<std::size_t> ofSizes, void (*addCases)(std::size_t size));
    Mode mode;
    std::vector<std::size_t> sizes;
    void (*add)(std::size_t size);
    const Group* next;
};

/// The sizes of the curves.
inline const std::vector<std::size_t> kNameCounts = {10, 100, 1'000, 10'000, 100'000, 1'000'000};
inline const std::vector<std::size_t> kThreadCounts = {1, 2, 4, 8, 16};

/// Runs a case a given number of times.
using Loop = std::function<void(std::size_t calls)>;
void addLoop(const std::string& name, const Loop& loop, std::size_t threads);
/// The same with 8 threads, each call timed by itself: its 99th and 99.9th percentile.
void addTailLoop(const std::string& name, const Loop& loop);

/// Calls `body` `calls` times, and keeps the compiler from dropping its results.
template <typename Body>
Loop loopOf(const Body& body) {
    return [body = body](std::size_t calls) mutable {
        for (; calls > 0; --calls) {
            if constexpr (std::is_void_v<decltype(body())>) {
                body();
            } else {
                [[maybe_unused]] const volatile auto kept = body();
            }
        }
    };
}

/// Adds one operation. Each thread works on its own copy of `body`.
template <typename Body>
void addCase(const std::string& name, const Body& body, [[maybe_unused]] std::size_t threads = 1) {
#ifdef QUEND_COUNT_INSTRUCTIONS
    const Loop loop = loopOf(body);
    loop(200);  // lazy binding, the first allocations
    CALLGRIND_ZERO_STATS;
    loop(2000);
    CALLGRIND_DUMP_STATS_AT(name.c_str());
#else
    addLoop(name, loopOf(body), threads);
#endif
}

/// Calls `body` by its address, as a function of another module is called, and never inlines it.
template <typename Body>
auto byAddress(const Body& body) {
    return
        [body = body, call = +[](Body& made) { return made(); }]() mutable { return call(body); };
}

/// The names of `count` entries, in random order, short enough for a std::string to hold in place.
template <typename String = std::string>
std::vector<String> shuffledNames(std::size_t count) {
    std::vector<String> names;
    names.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::string name = "name-" + std::to_string(10'000'000 + i);
        names.emplace_back(name.begin(), name.end());
    }
    std::shuffle(names.begin(), names.end(), std::mt19937(1));  // the same order in each run
    return names;
}

/// "name/size"
inline std::string sized(const char* name, std::size_t size) {
    return std::string(name).append("/").append(std::to_string(size));
}

/// Cycles through a list, without a division. The list must outlive it.
template <typename T>
class Round {
 public:
    explicit Round(const std::vector<T>& all) : list(&all) {}
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

}  // namespace bench
