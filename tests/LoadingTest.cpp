// Loads and unloads the DLL, in a process that holds the shared runtime, as hosts do.
#include <gtest/gtest.h>

#include <windows.h>

#include <cstring>

#include "support/ProcessFigures.h"

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
        const FARPROC address = GetProcAddress(module, name);
        Function* function = nullptr;
        std::memcpy(&function, &address, sizeof(function));
        return function;
    }

 private:
    static constexpr const char* kLibrary = "Quend_Framework_" QUEND_VERSION ".dll";
    HMODULE module;
};

TEST(Loading, TwoThousandCyclesLeaveTheProcessAsItWas) {
    long destroyed = 0;
    const auto cycle = [&](int count) {
        for (int i = 0; i < count; ++i) {
            const LoadedModule module;
            ASSERT_TRUE(module.find<bool(long*)>("useLibrary")(&destroyed));
        }
    };
    cycle(50);
    const std::size_t handles = tests::handleCount();
    const DWORD tlsIndex = tests::nextTlsIndex();
    const std::size_t committed = tests::committedBytes();
    cycle(2000);
    EXPECT_EQ(destroyed, 2050);
    EXPECT_EQ(tests::handleCount(), handles);
    EXPECT_EQ(tests::nextTlsIndex(), tlsIndex);
    EXPECT_LE(tests::committedBytes(), committed + 65'536);
}

TEST(Loading, UnloadingLeavesRegisteredObjectsAlone) {
    long destroyed = 0;
    {
        const LoadedModule module;
        ASSERT_TRUE(module.find<bool(long*)>("useLibrary")(&destroyed));
        module.find<void()>("leaveObjectBehind")();
    }
    EXPECT_EQ(destroyed, 1);
}

}  // namespace
