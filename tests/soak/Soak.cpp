// Loads and unloads modules while threads work in them, and watches the figures of the process.
//   Soak MINUTES
// Ends with 1 when a figure has grown or a count does not add up.
#include "soak/Soak.h"

#include <windows.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include "support/ModuleExport.h"
#include "support/ProcessFigures.h"

namespace {

constexpr std::size_t kHeapSlack = 262'144;  // what the heap takes or returns at once

// One load, work and unload of both modules, with two threads in each.
void runRound(Tally& tally) {
    const wchar_t* const names[] = {L"ClientModule.dll", L"SoakLogger.dll"};
    std::vector<std::thread> threads;
    for (const wchar_t* const name : names) {
        auto* const work = tests::exportOf<Work>(LoadLibraryW(name), "work");
        threads.emplace_back(work, &tally);
        threads.emplace_back(work, &tally);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (const wchar_t* const name : names) {
        FreeLibrary(GetModuleHandleW(name));
        tally.require(GetModuleHandleW(name) == nullptr);
    }
}

struct Figures {
    std::size_t handles = tests::handleCount();
    DWORD tlsIndex = tests::nextTlsIndex();
    std::size_t committed = tests::committedBytes();
};

void print(int rounds, const Figures& figures) {
    std::printf("%7d %8zu %10lu %14zu\n", rounds, figures.handles, figures.tlsIndex,
                figures.committed / 1024);
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
    const std::chrono::duration<double> length(argc == 2 ? std::strtod(argv[1], nullptr) * 60 : 0);
    if (length.count() <= 0) {
        std::fputs("usage: Soak MINUTES\n", stderr);
        return 2;
    }
    Tally tally;
    for (int i = 0; i < 20; ++i) {  // what is allocated once, is now
        runRound(tally);
    }
    std::puts(" rounds  handles  TLS index  committed KiB");
    const Figures before;
    Figures after;
    print(0, before);
    const auto start = std::chrono::steady_clock::now();
    for (int tenth = 1, rounds = 0; tenth <= 10; ++tenth) {
        while (std::chrono::steady_clock::now() < start + length * tenth / 10) {
            runRound(tally);
            ++rounds;
        }
        print(rounds, after = Figures());
    }
    const bool hasGrown = after.handles > before.handles || after.tlsIndex > before.tlsIndex ||
                          after.committed > before.committed + kHeapSlack;
    const bool addsUp = tally.objects == 0 && tally.messages == 0 && tally.mistakes == 0;
    if (!addsUp) {
        std::printf("objects left: %ld, messages lost: %ld, mistakes: %ld\n", tally.objects.load(),
                    tally.messages.load(), tally.mistakes.load());
    }
    std::puts(hasGrown ? "A figure has grown."
              : addsUp ? "Nothing has grown, and everything adds up."
                       : "The counts do not add up.");
    return hasGrown || !addsUp ? 1 : 0;
}
