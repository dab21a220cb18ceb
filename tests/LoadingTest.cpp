// Loads and unloads the DLL as hosts do. Built twice: as a host that shares GCC's runtime with its
// modules, and as one that holds none of it, like every program of another compiler.
#include <sys/timeb.h>

#include <chrono>

#include "support/PlatformCalls.h"
#include "support/ProcessFigures.h"
#include "support/Tally.h"
#include "support/Test.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved);

namespace {

constexpr const char* kLibrary = "Quend_Framework_" QUEND_VERSION ".dll";

using LoadedModule = std::unique_ptr<HINSTANCE__, decltype(&FreeLibrary)>;

LoadedModule load(const char* name = "ClientModule.dll") {
    return {LoadLibraryA(name), &FreeLibrary};
}

struct Figures {
    std::size_t handles = tests::handleCount();
    std::size_t freeTlsIndices = tests::freeTlsIndices();
    std::size_t blocks = tests::heapBlocks();
};

// scripts/soak runs this test for the minutes that it sets in the environment.
TEST(Loading, ManyCyclesLeaveTheProcessAsItWas) {
    Tally tally;
    const auto runRounds = [&](int rounds) {
        for (; rounds > 0; --rounds) {
            const LoadedModule modules[] = {load(), load("LoggingModule.dll")};
            tests::inThreads(4, [&](unsigned thread) {
                tests::exportOf<Work>(modules[thread % 2].get(), "work")(&tally);
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
            std::printf("%7zu rounds: %zu handles, %zu free TLS indices, %zu blocks\n", rounds,
                        after.handles, after.freeTlsIndices, after.blocks);
        }
    } while (std::chrono::steady_clock::now() - start < length && !HasFailure());
    // A lock of the platform gets a handle when two threads first want it at the same time.
    constexpr std::size_t kLocksOfThePlatform = 5;
    EXPECT_LE(after.handles, before.handles + kLocksOfThePlatform);
    EXPECT_EQ(after.freeTlsIndices, before.freeTlsIndices);
    EXPECT_LT(after.blocks, before.blocks + rounds);
    EXPECT_EQ(tally.messages, 0) << "logged and not written";
    EXPECT_EQ(tally.mistakes, 0);
}

TEST(Loading, UnloadingLeavesRegisteredObjectsAlone) {
    Tally tally;
    {
        const LoadedModule module = load();
        EXPECT_NE(GetModuleHandleA(kLibrary), nullptr);
        tests::exportOf<Work>(module.get(), "work")(&tally);
        tests::exportOf<void()>(module.get(), "leaveObjectBehind")();
    }
    EXPECT_EQ(GetModuleHandleA(kLibrary), nullptr);
    EXPECT_EQ(tally.objects, 1);
}

unsigned millisecondsNow() {
    __timeb64 now{};
    _ftime64_s(&now);
    return now.millitm;
}

std::array<int, 3> drawFrom(unsigned seed) {
    std::srand(seed);
    return {std::rand(), std::rand(), std::rand()};
}

// The program and the library share the runtime's rand(), whose state belongs to the thread.
TEST(Loading, SeedsWithTheMillisecondsOfTheClock) {
    unsigned seed = millisecondsNow();
    const LoadedModule module = load();
    const unsigned last = millisecondsNow();
    auto* const draw = tests::exportOf<unsigned short()>(module.get(), "drawNumber");
    const std::array<int, 3> drawn = {draw(), draw() - 1, draw() - 2};  // less the counter
    while (drawFrom(seed) != drawn && seed != last) {
        seed = (seed + 1) % 1000;
    }
    EXPECT_EQ(drawFrom(seed), drawn) << "no seed up to " << last;
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
