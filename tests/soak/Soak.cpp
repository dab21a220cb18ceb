// Loads and unloads modules while threads work in them, and watches the figures of the process.
//   Soak MINUTES
// Ends with 1 when a figure has grown or a count does not add up.
#include "Soak.h"

#include <windows.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <vector>

#include "support/ProcessFigures.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kThreads = 4;
constexpr std::size_t kHeapSlack = 262'144;  // what the heap takes or returns at once

// One load, work and unload of both modules.
void runRound(Tally& tally) {
    std::vector<HMODULE> modules;
    std::vector<std::thread> threads;
    for (const wchar_t* const name : {L"SoakClient.dll", L"SoakLogger.dll"}) {
        modules.push_back(LoadLibraryW(name));
        const FARPROC address = GetProcAddress(modules.back(), "work");
        Work* work = nullptr;
        std::memcpy(&work, &address, sizeof(work));
        for (int i = 0; i < kThreads / 2; ++i) {
            threads.emplace_back(work, &tally);
        }
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (HMODULE module : modules) {
        FreeLibrary(module);
    }
    tally.mistakes += GetModuleHandleW(L"SoakClient.dll") != nullptr ? 1 : 0;
    tally.mistakes += GetModuleHandleW(L"SoakLogger.dll") != nullptr ? 1 : 0;
}

struct Figures {
    std::size_t handles = tests::handleCount();
    DWORD tlsIndex = tests::nextTlsIndex();
    std::size_t committed = tests::committedBytes();
};

}  // namespace

int main(int argc, char** argv) {
    const double minutes = argc > 1 ? std::atof(argv[1]) : 1;
    if (minutes <= 0) {
        std::fputs("usage: Soak MINUTES\n", stderr);
        return 2;
    }
    Tally tally;
    for (int i = 0; i < 20; ++i) {  // what is allocated once, is now
        runRound(tally);
    }
    const Figures before;
    const auto lineEvery = std::chrono::duration<double>(minutes < 5 ? minutes * 12 : 60.0);
    const auto start = Clock::now();
    const auto end = start + std::chrono::duration<double>(minutes * 60);
    bool hasGrown = false;
    std::puts("seconds     rounds  operations  exceptions/min  handles  TLS index  committed KiB");
    for (int rounds = 0; Clock::now() < end;) {
        const long long exceptionsBefore = tally.exceptions;
        const auto lineStart = Clock::now();
        while (Clock::now() < lineStart + lineEvery) {
            runRound(tally);
            ++rounds;
        }
        const std::chrono::duration<double> taken = Clock::now() - lineStart;
        const std::chrono::duration<double> total = Clock::now() - start;
        const Figures now;
        std::printf("%7.0f %10d %11lld %15.0f %8zu %10lu %14zu\n", total.count(), rounds,
                    tally.operations.load(),
                    static_cast<double>(tally.exceptions - exceptionsBefore) * 60 / taken.count(),
                    now.handles, now.tlsIndex, now.committed / 1024);
        std::fflush(stdout);
        hasGrown = hasGrown || now.handles > before.handles || now.tlsIndex > before.tlsIndex ||
                   now.committed > before.committed + kHeapSlack;
    }
    std::printf(
        "objects: %lld made, %lld destroyed; messages: %lld logged, %lld written; "
        "mistakes: %lld; at the start: %zu handles, TLS index %lu, %zu KiB\n",
        tally.objectsMade.load(), tally.objectsDestroyed.load(), tally.messagesLogged.load(),
        tally.messagesWritten.load(), tally.mistakes.load(), before.handles, before.tlsIndex,
        before.committed / 1024);
    const bool addsUp = tally.mistakes == 0 && tally.objectsMade == tally.objectsDestroyed &&
                        tally.messagesLogged == tally.messagesWritten;
    std::puts(hasGrown ? "A figure has grown."
              : addsUp ? "Nothing has grown, and everything adds up."
                       : "The counts do not add up.");
    return hasGrown || !addsUp ? 1 : 0;
}
