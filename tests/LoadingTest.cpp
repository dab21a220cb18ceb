// Loads and unloads the DLL, in a process that holds the shared runtime, as hosts do.
#include <gtest/gtest.h>

#include <windows.h>

#include <sys/timeb.h>

#include <cstdlib>
#include <set>
#include <vector>

#include "soak/Soak.h"
#include "support/HeapBlocks.h"
#include "support/ModuleExport.h"
#include "support/PlatformCalls.h"
#include "support/ProcessFigures.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved);

namespace {

class LoadedModule {
 public:
    LoadedModule() : module(LoadLibraryW(L"ClientModule.dll")) {
        if (module == nullptr || GetModuleHandleA(kLibrary) == nullptr) {
            ADD_FAILURE() << "not loaded, error " << GetLastError();
        }
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
    static constexpr const char* kLibrary = "Quend_Framework_" QUEND_VERSION ".dll";
    HMODULE module;
};

TEST(Loading, ManyCyclesLeaveTheProcessAsItWas) {
    Tally tally;
    const auto cycle = [&](int count) {
        for (int i = 0; i < count; ++i) {
            const LoadedModule module;
            module.find<Work>("work")(&tally);
        }
        EXPECT_EQ(tally.mistakes + tally.objects, 0);
    };
    constexpr int kCycles = 100;
    cycle(20);
    const std::size_t handles = tests::handleCount();
    const DWORD tlsIndex = tests::nextTlsIndex();
    const std::size_t committed = tests::committedBytes();
    const std::size_t blocks = tests::heapBlocks();
    cycle(kCycles);
    EXPECT_LT(tests::heapBlocks(), blocks + kCycles);
    EXPECT_EQ(tests::handleCount(), handles);
    EXPECT_EQ(tests::nextTlsIndex(), tlsIndex);
    EXPECT_LE(tests::committedBytes(), committed + 65'536);
}

TEST(Loading, UnloadingLeavesRegisteredObjectsAlone) {
    Tally tally;
    {
        const LoadedModule module;
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
    const auto hook = tests::hook<"DisableThreadLibraryCalls", decltype(DisableThreadLibraryCalls)>(
        [&](auto, HMODULE module) {
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
