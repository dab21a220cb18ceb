// The harness: PROGRAM [ROUNDS]. Prints one line for each round of each case,
// "group/subject<TAB>nanoseconds a call". The cases of a group take turns in random order, so that
// a busy moment of the machine affects all of them.
#include <chrono>
#include <cstdio>

#include "Bench.h"

namespace bench {
namespace {

struct Case {
    std::string name;
    Loop loop;
    std::size_t calls = 1;  // in one round
};

const Group* groups = nullptr;
std::vector<Case> cases;
constexpr auto kRound = std::chrono::milliseconds(10);

std::chrono::duration<double, std::nano> timeOf(const Case& each) {
    const auto start = std::chrono::steady_clock::now();
    each.loop(each.calls);
    return std::chrono::steady_clock::now() - start;
}

void measure(int rounds) {
    for (Case& each : cases) {
        // The shortest of three: an interruption would make the rounds too short.
        while (std::min({timeOf(each), timeOf(each), timeOf(each)}) < kRound) {
            each.calls *= 2;
        }
    }
    std::mt19937 random(1);  // seeded alike in each run
    for (; rounds > 0; --rounds) {
        std::shuffle(cases.begin(), cases.end(), random);
        for (const Case& each : cases) {
            std::printf("%s\t%.2f\n", each.name.c_str(),
                        timeOf(each).count() / static_cast<double>(each.calls));
        }
    }
    std::fflush(stdout);
    cases.clear();  // ends what the group has set up
}

}  // namespace

Group::Group(void (*addCases)()) : add(addCases), next(groups) { groups = this; }

void addLoop(const std::string& name, const Loop& loop) { cases.push_back({name, loop}); }

}  // namespace bench

int main(int argc, char** argv) {
    const int rounds = argc > 1 ? std::stoi(argv[1]) : 25;
    for (const auto* group = bench::groups; group != nullptr; group = group->next) {
        group->add();
        bench::measure(rounds);
    }
}
