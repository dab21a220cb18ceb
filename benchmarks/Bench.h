/// \file
/// What the cases of all files have in common.
///
/// A case is called "group/subject". The cases of a group do the same work: subject "ours" is this
/// library, "bare" the standard library or the platform alone, any other a library that someone
/// might use instead. Programs for Windows time their cases; the native program Instructions,
/// built from the same sources, counts instructions and cache misses under callgrind.
#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#ifdef QUEND_COUNT_INSTRUCTIONS
#include <valgrind/callgrind.h>
#endif

namespace bench {

/// Cases that are measured together, in rounds that take turns. What they share lives as long as
/// they do. Groups are made before main.
struct Group {
    explicit Group(void (*addCases)());
    void (*add)();
    const Group* next;
};

/// Runs a case a given number of times.
using Loop = std::function<void(std::size_t calls)>;
void addLoop(const std::string& name, const Loop& loop);

/// Adds one operation. Its results are kept, so that the compiler does not drop it.
template <typename Body>
void addCase(const std::string& name, const Body& body) {
    const Loop loop = [body = body](std::size_t calls) mutable {
        for (; calls > 0; --calls) {
            if constexpr (std::is_void_v<decltype(body())>) {
                body();
            } else {
                [[maybe_unused]] const volatile auto kept = body();
            }
        }
    };
#ifdef QUEND_COUNT_INSTRUCTIONS
    loop(100'000);  // goes once through the names, so that the caches hold what they can
    CALLGRIND_ZERO_STATS;
    loop(QUEND_COUNT_INSTRUCTIONS);
    CALLGRIND_DUMP_STATS_AT(name.c_str());
#else
    addLoop(name, loop);
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
