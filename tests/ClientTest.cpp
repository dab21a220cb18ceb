// The DLL as a client sees it: through the import library, with the shared runtime.
#include <gtest/gtest.h>

#include <windows.h>
#include <winver.h>

#include <cstring>
#include <memory>
#include <type_traits>
#include <vector>

#include <Quend/Framework/Exceptions.h>
#include <Quend/Framework/Framework.h>
#include <Quend/Framework/MemoryManager.h>

#include "support/HeapBlocks.h"
#include "support/Threads.h"

namespace {

using namespace Quend::Framework::Management::MemoryManager;
using namespace Quend::Framework::Exceptions;
using Quend::Framework::Framework::propertyManager;
using Quend::Framework::Framework::randomNumber;

TEST(Client, MemoryComesFromTheRuntimesHeap) {
    void* const none =
        std::malloc(0);  // NOLINT(clang-analyzer-optin.portability.UnixAPI): compared with
    void* const ours = allocate(0);
    EXPECT_EQ(ours == nullptr, none == nullptr);
    deallocate(none);  // one heap: what either side allocates, either side frees
    std::free(ours);
    EXPECT_EQ(allocate(SIZE_MAX / 2), nullptr);

    auto* bytes = static_cast<char*>(reallocate(nullptr, 4));
    std::memcpy(bytes, "abc", 4);
    EXPECT_EQ(reallocate(bytes, SIZE_MAX / 2), nullptr);
    bytes = static_cast<char*>(reallocate(bytes, 1 << 20));
    EXPECT_STREQ(bytes, "abc");
    EXPECT_EQ(reallocate(bytes, 0), nullptr) << "the runtime's realloc frees it";
    deallocate(nullptr);
}

template <typename Handler>
bool isCaughtAs() {
    try {
        propertyManager()->readProperty(L"never set");
    } catch (const Handler&) {
        return true;
    } catch (...) {
    }
    return false;
}

TEST(Client, ExceptionsOfTheLibraryAreCaughtByTheirTypes) {
    EXPECT_TRUE(isCaughtAs<UnexistentProperty>());
    EXPECT_TRUE(isCaughtAs<FrameworkException>());
    EXPECT_FALSE(isCaughtAs<std::exception>());
    EXPECT_FALSE(isCaughtAs<InvalidArgument>());
}

TEST(Client, ExceptionsOwnTheirText) {
    auto source = std::make_unique<InvalidArgument>("why");
    const InvalidArgument copy(*source);
    source.reset();
    EXPECT_EQ(copy.getMessage(), "why");
    EXPECT_EQ(InvalidArgument().getMessage(), "");
    static_assert(!std::is_copy_assignable_v<FrameworkException>);
    static_assert(!std::is_default_constructible_v<UnexistentProperty>);
}

// The heap is walked before and after, so that one lost block a thread shows in few threads.
TEST(Client, ShortLivedThreadsLoseNoBlock) {
    constexpr int kThreads = 100;
    const auto runThreads = [] {
        for (int i = 0; i < kThreads; i += 4) {
            tests::inThreads(4, [](unsigned) {
                registerObject("of threads", [] { return new IRegisteredObject; });
                findObject("of threads");
                unregisterObject("of threads");
                randomNumber();
                propertyManager()->hasProperty(L"of threads");
            });
        }
    };
    runThreads();
    const std::size_t before = tests::heapBlocks();
    runThreads();
    EXPECT_LT(tests::heapBlocks(), before + kThreads / 4);
}

TEST(Client, VersionResourceNamesTheRelease) {
    const char* const file = "Quend_Framework_" QUEND_VERSION ".dll";
    std::vector<char> block(GetFileVersionInfoSizeA(file, nullptr));
    ASSERT_TRUE(GetFileVersionInfoA(file, 0, static_cast<DWORD>(block.size()), block.data()));
    void* text = nullptr;
    UINT size = 0;
    ASSERT_TRUE(
        VerQueryValueA(block.data(), "\\StringFileInfo\\040904b0\\ProductVersion", &text, &size));
    EXPECT_STREQ(static_cast<char*>(text), QUEND_VERSION);
}

}  // namespace
