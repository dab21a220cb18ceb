// The DLL as a client sees it: through the import library, with the shared runtime.
#include <gtest/gtest.h>

#include <windows.h>
#include <winver.h>

#include <cstring>
#include <memory>
#include <string>
#include <system_error>
#include <type_traits>
#include <vector>

#include <Quend/Framework/Exceptions.h>
#include <Quend/Framework/Framework.h>
#include <Quend/Framework/MemoryManager.h>

#include "support/ProcessFigures.h"
#include "support/Threads.h"

namespace {

using namespace Quend::Framework::Management::MemoryManager;
using namespace Quend::Framework::Exceptions;
using Quend::Framework::Framework::propertyManager;
using Quend::Framework::Framework::randomNumber;
using Quend::Framework::Management::PropertyManager;

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
    deallocate(bytes);
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
    try {
        registerObject("outer", [] { return findObject("inner"); });
        ADD_FAILURE();
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code(), std::errc::resource_deadlock_would_occur);
    }
}

TEST(Client, ExceptionsOwnTheirText) {
    auto source = std::make_unique<InvalidArgument>("why");
    const InvalidArgument copy(*source);
    source.reset();
    EXPECT_EQ(copy.getMessage(), "why");
    EXPECT_EQ(InvalidArgument().getMessage(), "");
    static_assert(sizeof(FrameworkException) == 2 * sizeof(void*));
    static_assert(sizeof(UnexistentProperty) == 2 * sizeof(void*));
    static_assert(!std::is_base_of_v<std::exception, FrameworkException>);
    static_assert(!std::is_copy_assignable_v<FrameworkException>);
    static_assert(!std::is_default_constructible_v<UnexistentProperty>);
}

// What a client that was compiled years ago does: it knows slots, not names.
template <typename Result, typename... Arguments>
Result callSlot(void* object, std::size_t slot, Arguments... arguments) {
    using Operation = Result(void*, Arguments...);
    Operation* operation = nullptr;
    std::memcpy(&operation, *static_cast<char**>(object) + slot * sizeof(void*), sizeof(operation));
    return operation(object, arguments...);
}

#if defined(_MSC_VER)
constexpr std::size_t kDestructorSlots = 1;
#else
constexpr std::size_t kDestructorSlots = 2;  // the complete and the deleting destructor
#endif

TEST(Client, VirtualSlotsAreWhereOldModulesExpectThem) {
    void* const store = propertyManager();
    const std::wstring name = L"slot";
    const std::wstring value = L"value";
    constexpr std::size_t kRead = kDestructorSlots;
    callSlot<void, const std::wstring*, const std::wstring*>(store, kRead + 2, &name, &value);
    EXPECT_TRUE((callSlot<bool, const std::wstring*>(store, kRead + 1, &name)));
    EXPECT_EQ(*(callSlot<const std::wstring*, const std::wstring*>(store, kRead, &name)), value);
    callSlot<void, const std::wstring*>(store, kRead + 3, &name);
    EXPECT_FALSE(propertyManager()->hasProperty(name));

    IRegisteredObject first;  // exported whole: also what no client needs
    IRegisteredObject second(first);
    EXPECT_EQ(&(second = first), &second);

    static bool isDestroyed = false;
    struct Object : IRegisteredObject {
        ~Object() override { isDestroyed = true; }
    };
    void* const object = static_cast<IRegisteredObject*>(new Object);
    callSlot<void>(object, kDestructorSlots - 1);  // the deleting one
    EXPECT_TRUE(isDestroyed);
    static_assert(sizeof(IRegisteredObject) == sizeof(void*));
    static_assert(sizeof(PropertyManager) == sizeof(void*));
}

TEST(Client, ShortLivedThreadsLeaveMemoryFlat) {
    const auto callIn = [](unsigned) {
        registerObject("of threads", [] { return new IRegisteredObject; });
        findObject("of threads");
        unregisterObject("of threads");
        randomNumber();
        propertyManager()->hasProperty(L"of threads");
    };
    const auto runThreads = [&](int count) {
        for (int i = 0; i < count; i += 4) {
            tests::inThreads(4, callIn);
        }
    };
    runThreads(1000);
    const std::size_t before = tests::committedBytes();
    runThreads(20'000);
    EXPECT_LE(tests::committedBytes(), before + 262'144);
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
