// The harness: PROGRAM table|growth [ROUNDS]. Prints one line for each round of each case,
// "group/subject<TAB>nanoseconds". The cases of a group take turns in random order, so that a busy
// moment of the machine affects all of them.
#include <atomic>
#include <chrono>
#include <cstdio>
#include <string_view>
#include <thread>

#include "Bench.h"

namespace bench {
namespace {

using Clock = std::chrono::steady_clock;

struct Case {
    std::string name;
    std::vector<Loop> loops;  // one for each thread
    bool isTail;
    std::size_t calls = 1;  // in one round
};

const Group* groups = nullptr;
std::vector<Case> cases;
constexpr auto kRound = std::chrono::milliseconds(2);

double nanoseconds(Clock::duration duration) {
    return std::chrono::duration<double, std::nano>(duration).count();
}

// Runs `work` in `count` threads, which start together. Returns the time from the first start to
// the last end.
template <typename Work>
Clock::duration runInThreads(std::size_t count, const Work& work) {
    std::atomic<std::size_t> ready = 0;
    std::vector<Clock::time_point> starts(count);
    std::vector<Clock::time_point> ends(count);
    const auto run = [&](std::size_t index) {
        for (++ready; ready < count;) {
            std::this_thread::yield();
        }
        starts[index] = Clock::now();
        work(index);
        ends[index] = Clock::now();
    };
    std::vector<std::thread> threads;
    for (std::size_t i = 1; i < count; ++i) {
        threads.emplace_back(run, i);
    }
    run(0);
    for (auto& thread : threads) {
        thread.join();
    }
    return *std::max_element(ends.begin(), ends.end()) -
           *std::min_element(starts.begin(), starts.end());
}

Clock::duration timeOf(const Case& each) {
    return runInThreads(each.loops.size(),
                        [&](std::size_t index) { each.loops[index](each.calls); });
}

void measureTail(const Case& each) {
    constexpr std::size_t kSamples = 10'000;
    std::vector<std::vector<double>> ofThreads(each.loops.size());
    runInThreads(each.loops.size(), [&](std::size_t index) {
        const Loop& loop = each.loops[index];
        auto& samples = ofThreads[index];
        samples.reserve(kSamples);
        auto last = Clock::now();
        while (samples.size() < kSamples) {
            loop(1);
            const auto now = Clock::now();
            samples.push_back(nanoseconds(now - last));
            last = now;
        }
    });
    std::vector<double> all;
    for (const auto& samples : ofThreads) {
        all.insert(all.end(), samples.begin(), samples.end());
    }
    std::sort(all.begin(), all.end());
    for (const auto& [name, share] : {std::pair("99 %", 0.99), std::pair("99.9 %", 0.999)}) {
        const auto index = static_cast<std::size_t>(share * static_cast<double>(all.size()));
        std::printf("%s/%s\t%.1f\n", each.name.c_str(), name, all[index]);
    }
}

void measure(int rounds) {
    for (Case& each : cases) {
        // The shortest of three: an interruption would make the rounds too short.
        while (!each.isTail && std::min({timeOf(each), timeOf(each), timeOf(each)}) <
                                   kRound * static_cast<int>(each.loops.size())) {
            each.calls *= 2;
        }
    }
    std::mt19937 random(1);  // seeded alike in each run
    for (; rounds > 0; --rounds) {
        std::shuffle(cases.begin(), cases.end(), random);
        for (const Case& each : cases) {
            if (each.isTail) {
                measureTail(each);
            } else {
                std::printf("%s\t%.2f\n", each.name.c_str(),
                            nanoseconds(timeOf(each)) /
                                static_cast<double>(each.calls * each.loops.size()));
            }
        }
    }
    std::fflush(stdout);
    cases.clear();  // ends what the group has set up
}

}  // namespace

Group::Group(Mode ofMode, std::vector<std::size_t> ofSizes, void (*addCases)(std::size_t size))
    : mode(ofMode), sizes(std::move(ofSizes)), add(addCases), next(groups) {
    groups = this;
}

void addLoop(const std::string& name, const Loop& loop, std::size_t threads) {
    cases.push_back({name, std::vector<Loop>(threads, loop), false});
}

void addTailLoop(const std::string& name, const Loop& loop) {
    cases.push_back({name, std::vector<Loop>(8, loop), true});
}

}  // namespace bench

int main(int argc, char** argv) {
    using namespace bench;
    const Mode mode =
        argc > 1 && argv[1] == std::string_view("growth") ? Mode::growth : Mode::table;
    const int rounds = argc > 2 ? std::stoi(argv[2]) : 25;
    for (const Group* group = groups; group != nullptr; group = group->next) {
        for (std::size_t i = 0; group->mode == mode && i < group->sizes.size(); ++i) {
            group->add(group->sizes[i]);
            measure(rounds);
        }
    }
}
