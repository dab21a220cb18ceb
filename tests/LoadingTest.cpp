// Loads and unloads the DLL, in a process that holds the shared runtime, as hosts do.
#include <gtest/gtest.h>

#include <windows.h>

#include <sys/timeb.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <vector>

#include "support/PlatformCalls.h"
#include "support/ProcessFigures.h"
#include "support/Tally.h"
#include "support/Threads.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved);

namespace {

constexpr const char* kLibrary = "Quend_Framework_" QUEND_VERSION ".dll";

class LoadedModule {
 public:
    explicit LoadedModule(const char* name = "ClientModule.dll") : module(LoadLibraryA(name)) {
        EXPECT_NE(module, nullptr) << "error " << GetLastError();
    }
    ~LoadedModule() {
        FreeLibrary(module);
        EXPECT_EQ(GetModuleHandleA(kLibrary), nullptr) << "still loaded";
    }
    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;

    template <typename Function>
    Function* find(const char* name) const {
        return tests::exportOf<Function>(module, name);
    }

 private:
    HMODULE module;
};

struct Figures {
    std::size_t handles = tests::handleCount();
    DWORD tlsIndex = tests::nextTlsIndex();
    std::size_t committed = tests::committedBytes();
    std::size_t blocks = tests::heapBlocks();
};

// scripts/soak runs this test for the minutes that it sets in the environment.
TEST(Loading, ManyCyclesLeaveTheProcessAsItWas) {
    Tally tally;
    const auto runRounds = [&](int rounds) {
        for (; rounds > 0; --rounds) {
            const LoadedModule logging("LoggingModule.dll");
            const LoadedModule client;
            tests::inThreads(4, [&](unsigned thread) {
                (thread % 2 == 0 ? client : logging).find<Work>("work")(&tally);
            });
        }
        EXPECT_EQ(tally.objects, 0) << "made and not destroyed";
    };
    runRounds(20);  // what is allocated once, is now
    std::array<char, 16> minutes{};
    GetEnvironmentVariableA("QUEND_SOAK_MINUTES", minutes.data(), minutes.size());
    const std::chrono::duration<double> length(60 * std::strtod(minutes.data(), nullptr));
    const auto start = std::chrono::steady_clock::now();
    const Figures before;
    Figures after;
    std::size_t rounds = 0;
    do {
        runRounds(100);
        rounds += 100;
        after = Figures();
        if (rounds % 1000 == 100) {
            std::printf("%7zu rounds: %zu handles, TLS index %lu, %zu KiB, %zu blocks\n", rounds,
                        after.handles, after.tlsIndex, after.committed / 1024, after.blocks);
        }
    } while (std::chrono::steady_clock::now() - start < length && !HasFailure());
    // Wine opens one handle, once, when two threads first want the heap at the same time.
    EXPECT_LE(after.handles, before.handles + 1);
    EXPECT_EQ(after.tlsIndex, before.tlsIndex);
    EXPECT_LE(after.committed, before.committed + 262'144);  // what the heap takes at once
    EXPECT_LT(after.blocks, before.blocks + rounds);
    EXPECT_EQ(tally.messages, 0) << "logged and not written";
    EXPECT_EQ(tally.mistakes, 0);
}

TEST(Loading, UnloadingLeavesRegisteredObjectsAlone) {
    Tally tally;
    {
        const LoadedModule module;
        EXPECT_NE(GetModuleHandleA(kLibrary), nullptr);
        module.find<Work>("work")(&tally);
        module.find<void()>("leaveObjectBehind")();
    }
    EXPECT_EQ(tally.objects, 1);
}

unsigned millisecondsNow() {
    __timeb64 now{};
    _ftime64_s(&now);
    return now.millitm;
}

// The program and the library share the runtime's rand(), whose state belongs to the thread.
TEST(Loading, EachLoadSeedsWithTheMillisecondsOfTheClock) {
    std::set<unsigned> seeds;
    while (seeds.size() < 5) {
        const unsigned before = millisecondsNow();
        const LoadedModule module;
        const unsigned after = millisecondsNow();
        auto* const draw = module.find<unsigned short()>("drawNumber");
        const int drawn[] = {draw(), draw() - 1, draw() - 2};  // less the counter
        unsigned seed = before;
        const auto isSeed = [&] {
            std::srand(seed);
            return std::rand() == drawn[0] && std::rand() == drawn[1] && std::rand() == drawn[2];
        };
        while (!isSeed() && seed != after) {
            seed = (seed + 1) % 1000;
        }
        ASSERT_TRUE(isSeed()) << "drawn from none of " << before << " to " << after;
        seeds.insert(seed);
    }
}

TEST(Loading, ProcessAttachAloneTurnsThreadNotificationsOff) {
    std::vector<HMODULE> quietModules;
    const tests::Hook hook(
        "DisableThreadLibraryCalls", DisableThreadLibraryCalls, [&](auto, HMODULE module) {
            quietModules.push_back(module);
            return FALSE;  // as Windows answers for a module with a thread storage directory
        });
    const HMODULE self = GetModuleHandleW(nullptr);
    for (const DWORD reason : std::initializer_list<DWORD>{
             DLL_THREAD_ATTACH, DLL_THREAD_DETACH, DLL_PROCESS_DETACH, DLL_PROCESS_ATTACH}) {
        EXPECT_TRUE(quietModules.empty()) << reason;
        EXPECT_TRUE(DllMain(self, reason, nullptr));
    }
    EXPECT_EQ(quietModules, std::vector{self});
}

}  // namespace
