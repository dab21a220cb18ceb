// The DLL and the header-only helpers as a client uses them: through the import library, with the
// shared runtime.
#include <Quend/Framework/ObjectReference.h>
#include <Quend/Framework/ReadPropertyOr.h>

#include <windows.h>
#include <winver.h>

#include <cstring>

#include "support/Complaint.h"
#include "support/PlatformCalls.h"
#include "support/ProcessFigures.h"
#include "support/Test.h"

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

IRegisteredObject* makeNull() { return nullptr; }
IRegisteredObject* makeCounted() { return new Counted; }
IRegisteredObject* makeOther() { return new Other; }

using Reference = ObjectReference<Counted>;
static_assert(!std::is_copy_constructible_v<Reference>, "one object, one reference");
static_assert(std::is_nothrow_move_constructible_v<Reference>, "for containers");

// What a module that has only the interface sees of an object that another module implements.
struct IGuestList {
    virtual void add(const std::string& name) = 0;
    virtual std::size_t size() const = 0;

 protected:
    ~IGuestList() = default;
};

class GuestList : public Counted, public IGuestList {
 public:
    void add(const std::string& name) override { names.push_back(name); }
    std::size_t size() const override { return names.size(); }

 private:
    std::vector<std::string> names;
};

TEST(ObjectReference, SharesAnObjectUntilTheLastReferenceEnds) {
    std::optional<ObjectReference<GuestList>> reception("guest list");
    (*reception)->add("Ada");

    ObjectReference<GuestList> kitchen("guest list");
    EXPECT_EQ(kitchen->size(), 1) << "not the same list";

    reception.reset();
    kitchen->add("Grace");
    EXPECT_EQ(kitchen->size(), 2);
    EXPECT_EQ(living, 1);

    kitchen = ObjectReference<GuestList>("another list");
    EXPECT_EQ(findObject("guest list"), nullptr) << "a reference was kept";
    EXPECT_EQ(living, 1);
}

TEST(ObjectReference, ExistingFindsAnObjectAndCreatesNone) {
    EXPECT_FALSE(ObjectReference<IGuestList>::existing("guest list"));

    std::optional<ObjectReference<GuestList>> reception("guest list");
    const auto kitchen = ObjectReference<IGuestList>::existing("guest list");
    ASSERT_TRUE(kitchen);
    EXPECT_EQ(kitchen.get(), reception->get());

    reception.reset();
    kitchen->add("Ada");
    EXPECT_EQ(kitchen->size(), 1) << "the reference is one of its own";
}

TEST(ObjectReference, ExistingLeavesTheCountAsItWasIfThereIsNoSuchObject) {
    registerObject("name", makeCounted);
    EXPECT_THROW(ObjectReference<Other>::existing("name"), InvalidArgument);
    unregisterObject("name");
    EXPECT_EQ(living, 0) << "a reference was kept";

    registerObject("name", makeNull);
    EXPECT_FALSE(Reference::existing("name"));
    unregisterObject("name");
    const Reference fresh("name");  // refused if null were still held
}

#ifdef __GNUC__  // the names under which this compiler imports the functions
TEST(ObjectReference, ExistingIsEmptyIfTheLastReferenceEndsWhileItLooks) {
    std::optional<Reference> owner("guest list");
    const tests::Hook hook("_ZN5Quend9Framework10Management13MemoryManager10findObjectEPKc",
                           findObject, [&](auto* real, const char* name) {
                               IRegisteredObject* const found = real(name);
                               owner.reset();
                               return found;
                           });
    const tests::Hook registering(
        "_ZN5Quend9Framework10Management13MemoryManager14registerObjectEPKcPFPNS2_"
        "17IRegisteredObjectEvE",
        registerObject, [](auto* real, const char* name, Factory factory) {
            IRegisteredObject* const object = real(name, factory);
            EXPECT_NE(object, nullptr) << "held with null, if only for a moment";
            return object;
        });
    // Not inlined: the compiler may keep the import that it has read for the hook.
    Reference (*volatile existing)(std::string) = &Reference::existing;
    EXPECT_FALSE(existing("guest list"));
    EXPECT_EQ(living, 0);
    const Reference fresh("guest list");  // refused if null were recorded
}
#endif

TEST(ObjectReference, MovesItsReference) {
    const Reference unnamed("");  // what one that was moved from would give back
    const Reference first("shared");
    {
        Reference moved("shared");
        Reference assigned("other one");
        Reference last(std::move(moved));
        assigned = std::move(last);
        EXPECT_EQ(findObject("other one"), nullptr) << "the old reference was kept";
        EXPECT_EQ(&*assigned, first.get());
    }
    EXPECT_EQ(findObject("shared"), first.get()) << "a reference too many was given back";
    EXPECT_EQ(findObject(""), unnamed.get());
}

TEST(ObjectReference, ConstructorNeverHoldsNullNorAnotherType) {
    const std::string complaint = "The registered object is null or of another type: scanner";
    EXPECT_EQ(tests::complaintOf([] { ObjectReference<Other>("scanner", makeNull); }), complaint);
    EXPECT_EQ(tests::complaintOf([] { ObjectReference<Other>("scanner", makeCounted); }),
              complaint);
    EXPECT_EQ(living, 0) << "a reference was kept";

    registerObject("scanner", makeNull);
    EXPECT_EQ(tests::complaintOf([] { ObjectReference<Other>("scanner", makeOther); }), complaint);
    EXPECT_EQ(living, 0) << "nobody else knows this object, so it is lost";
    unregisterObject("scanner");
    const Reference fresh("scanner");  // refused if null were still held
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
