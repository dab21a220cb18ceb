// The DLL and the header-only helpers as a client uses them: through the import library, with the
// shared runtime.
#include "support/Test.h"

#include <winver.h>

#include <cstring>

#include <Quend/Framework/ObjectReference.h>
#include <Quend/Framework/ReadPropertyOr.h>

#include "support/ProcessFigures.h"

namespace {

using namespace Quend::Framework::Management::MemoryManager;
using namespace Quend::Framework::Exceptions;
using Quend::Framework::Framework::propertyManager;
using Quend::Framework::Framework::readPropertyOr;

TEST(Client, MemoryComesFromTheRuntimesHeap) {
    // NOLINTNEXTLINE(clang-analyzer-optin.portability.UnixAPI): what it gives is compared with
    void* const none = std::malloc(0);
    void* const ours = allocate(0);
    EXPECT_EQ(ours == nullptr, none == nullptr);
    deallocate(none);  // one heap: what either side allocates, either side frees
    std::free(ours);
    EXPECT_EQ(allocate(SIZE_MAX / 2), nullptr);
    void* const block = std::memcpy(reallocate(nullptr, 4), "abc", 4);
    EXPECT_EQ(reallocate(block, SIZE_MAX / 2), nullptr);
    void* const grown = reallocate(block, 1 << 20);
    EXPECT_STREQ(static_cast<char*>(grown), "abc");
    EXPECT_EQ(reallocate(grown, 0), nullptr) << "the runtime's realloc frees it";
}

static_assert(!std::is_base_of_v<std::exception, FrameworkException>);

TEST(Client, ExceptionsOwnTheirText) {
    auto source = std::make_unique<InvalidArgument>("why");
    const InvalidArgument copy(*source);
    source.reset();
    EXPECT_EQ(copy.getMessage(), "why");
    EXPECT_EQ(InvalidArgument().getMessage(), "");
    static_assert(!std::is_copy_assignable_v<FrameworkException>);
    static_assert(!std::is_default_constructible_v<UnexistentProperty>);
}

int living = 0;

struct Counted : IRegisteredObject {
    Counted() { ++living; }
    Counted(Counted&&) = delete;
    ~Counted() override { --living; }
};
struct Other : Counted {};

using Factory = IRegisteredObject* (*)();
IRegisteredObject* makeNull() { return nullptr; }
IRegisteredObject* makeCounted() { return new Counted; }
IRegisteredObject* makeOther() { return new Other; }
IRegisteredObject* refuse() { throw std::runtime_error("refused"); }

using Reference = ObjectReference<Counted>;
static_assert(!std::is_copy_constructible_v<Reference>, "one object, one reference");
static_assert(std::is_nothrow_move_constructible_v<Reference>, "for containers");

TEST(ObjectReference, HoldsItsReferenceUntilItsEnd) {
    {
        const Reference unnamed("");  // what one that was moved from would give back
        const Reference first("shared");
        {
            Reference moved("shared", refuse);  // not called: the object is there
            Reference assigned("other one");
            Reference last(std::move(moved));
            assigned = std::move(last);  // gives "other one" back
            EXPECT_EQ(findObject("other one"), nullptr);
            EXPECT_EQ(&*assigned, first.get());
            EXPECT_EQ(assigned.operator->(), first.get());
        }
        EXPECT_EQ(findObject("shared"), first.get()) << "a reference too many was given back";
        EXPECT_EQ(findObject(""), unnamed.get());
        EXPECT_EQ(ObjectReference<IRegisteredObject>("shared").get(), first.get());
    }
    EXPECT_EQ(findObject("shared"), nullptr) << "a reference was kept";
    EXPECT_EQ(living, 0);
}

// Whatever the name holds before and the factory returns, the name has as many references
// afterwards.
TEST(ObjectReference, NeverHoldsNullNorAnotherType) {
    using Row = std::pair<Factory, Factory>;  // the first is null if the name is free
    for (const auto& [before, factory] :
         {Row{nullptr, makeNull}, Row{makeNull, makeOther}, Row{makeNull, makeNull},
          Row{makeCounted, makeOther}, Row{nullptr, makeCounted}}) {
        before != nullptr ? registerObject("name", before) : nullptr;
        const int livingBefore = living;
        try {
            const ObjectReference<Other> reference("name", factory);
            ADD_FAILURE() << "nothing was thrown";
        } catch (const InvalidArgument& error) {
            EXPECT_EQ(error.getMessage(), "The registered object is null or of another type: name");
        }
        EXPECT_EQ(living, livingBefore);
        before != nullptr ? unregisterObject("name") : void();
        // Free now: were a reference left, this would count one more and keep the object.
        registerObject("name", makeOther);
        unregisterObject("name");
        EXPECT_EQ(findObject("name"), nullptr) << "a reference was kept";
        EXPECT_EQ(living, 0);
    }
    EXPECT_THROW(Reference("name", refuse), std::runtime_error);
    EXPECT_EQ(findObject("name"), nullptr);
}

TEST(ObjectReference, MemoryAndPropertiesHaveTheirHelpers) {
    const std::size_t before = tests::heapBlocks();
    std::unique_ptr<void, BlockDeleter>(allocate(4)).reset(allocate(5));
    EXPECT_EQ(tests::heapBlocks(), before) << "blocks were not given back";
    EXPECT_EQ(readPropertyOr(L"helper", L"fallback"), L"fallback");
    propertyManager()->setProperty(L"helper", L"");
    EXPECT_EQ(readPropertyOr(L"helper", L"fallback"), L"");
    propertyManager()->clearProperty(L"helper");
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
