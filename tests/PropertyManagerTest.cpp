#include "properties/PropertyManagerImpl.h"
#include "support/Allocations.h"
#include "support/Complaint.h"
#include "support/Test.h"
#ifdef _WIN32
#include "support/PlatformCalls.h"
#endif

namespace {

using Quend::Framework::Management::PropertyManagerImpl;
using namespace std::string_literals;

const std::wstring kName = L"a name beyond any short string";
const std::wstring kValue = L"a value beyond any short string";

TEST(PropertyManager, KeepsAPropertyUntilItIsCleared) {
    PropertyManagerImpl store;
    EXPECT_FALSE(store.hasProperty(L"report.title"));

    store.setProperty(L"report.title", L"Orders in May");
    EXPECT_TRUE(store.hasProperty(L"report.title"));
    EXPECT_EQ(store.readProperty(L"report.title"), L"Orders in May");
    EXPECT_FALSE(store.hasProperty(L"Report.Title")) << "case counts";

    store.setProperty(L"report.title", L"Orders in June");
    EXPECT_EQ(store.readProperty(L"report.title"), L"Orders in June");

    store.clearProperty(L"report.title");
    EXPECT_FALSE(store.hasProperty(L"report.title"));
    EXPECT_EQ(tests::complaintOf([&] { store.readProperty(L"report.title"); }),
              "Trying to read unexistent property: report.title");
    EXPECT_EQ(tests::complaintOf([&] { store.clearProperty(L"report.title"); }),
              "Trying to clear an unexistent property: report.title");
}

TEST(PropertyManager, TakesAnyTextAsAName) {
    PropertyManagerImpl store;
    for (const std::wstring& name : std::initializer_list<std::wstring>{
             L"", L"a", L"ab", L"a\0"s, L"a\0\x416"s, L"\x416", kName}) {
        EXPECT_FALSE(store.hasProperty(name));
        store.setProperty(name, name);
        EXPECT_EQ(store.readProperty(name), name);
    }
    // A complaint shows the name up to a NUL. One that cannot be converted empties it.
    EXPECT_EQ(tests::complaintOf([&] { store.readProperty(L"b\0\x416"s); }),
              "Trying to read unexistent property: b");
    EXPECT_EQ(tests::complaintOf([&] { store.clearProperty(L"b\x416"); }), "");
}

TEST(PropertyManager, ValueStaysInItsPlaceUntilThePropertyChanges) {
    PropertyManagerImpl store;
    store.setProperty(kName, kValue);
    const std::wstring& value = store.readProperty(kName);
    for (int i = 0; i < 1000; ++i) {
        store.setProperty(std::to_wstring(i), value);
    }
    store.clearProperty(L"500");
    EXPECT_EQ(&store.readProperty(kName), &value);
    EXPECT_EQ(store.readProperty(L"999"), kValue);
    store.setProperty(kName, value);  // its own
    EXPECT_EQ(store.readProperty(kName), kValue);
}

#ifdef _WIN32
TEST(PropertyManager, ComplaintIsEmptyIfAnyPartOfItCannotBeConverted) {
    // The runtime's conversion, in an encoding without a colon.
    using Conversion = errno_t(std::size_t*, char*, std::size_t, const wchar_t*, std::size_t);
    const tests::Hook hook("wcstombs_s", static_cast<Conversion*>(wcstombs_s),
                           [](auto* real, std::size_t* converted, char* buffer, std::size_t size,
                              const wchar_t* text, std::size_t count) {
                               if (std::wcschr(text, L':') == nullptr) {
                                   return real(converted, buffer, size, text, count);
                               }
                               *converted = 0;
                               return EILSEQ;
                           });
    PropertyManagerImpl store;
    EXPECT_EQ(tests::complaintOf([&] { store.readProperty(L"report.title"); }), "");
}
#endif

// The old value is gone before the copies are made, whichever of them fails.
TEST(PropertyManager, FailedSetLeavesThePropertyAbsent) {
    tests::failEachAllocation([&](long, auto fail) {
        PropertyManagerImpl store;
        store.setProperty(kName, L"old");
        const bool failed = fail([&] { store.setProperty(kName, kValue); });
        EXPECT_EQ(store.hasProperty(kName), !failed);
    });
}

TEST(PropertyManager, ComplaintWithoutMemoryIsNoComplaint) {
    tests::failEachAllocation([&](long, auto fail) {
        const PropertyManagerImpl store;
        std::string complaint;
        const bool failed =
            fail([&] { complaint = tests::complaintOf([&] { store.readProperty(kName); }); });
        EXPECT_EQ(complaint.empty(), failed);
    });
}

TEST(PropertyManager, ReadingAllocatesNothingAndCopiesNothing) {
    PropertyManagerImpl store;
    store.setProperty(kName, L"value");
    tests::expectNoAllocation([&] {
        EXPECT_EQ(&store.readProperty(kName), &store.readProperty(kName));
        EXPECT_TRUE(store.hasProperty(kName));
    });
}

}  // namespace
