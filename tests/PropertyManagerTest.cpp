#include "support/Test.h"

#include "models/PropertyStore.h"
#include "support/Allocations.h"

namespace {

using Quend::Framework::Management::PropertyManagerImpl;

const std::wstring kName = L"a name beyond any short string";
const std::wstring kValue = L"a value beyond any short string";

TEST(PropertyManager, MatchesModelOverRandomOperations) {
    tests::runOnRandomInputs(&tests::checkPropertyStore);
}

// Of a set, the old value is gone before the copies are made, whichever of them fails.
TEST(PropertyManager, FailedAllocationLeavesTheStatedProperties) {
    using Row = std::tuple<bool, void (*)(PropertyManagerImpl&), bool>;
    for (const auto& [isHeldBefore, call, isComplaint] :
         {Row{false, [](auto& store) { store.setProperty(kName, kValue); }, false},
          Row{true, [](auto& store) { store.setProperty(kName, kValue); }, false},
          Row{true, [](auto& store) { store.readProperty(kValue); }, true},
          Row{true, [](auto& store) { store.clearProperty(kValue); }, true}}) {
        tests::failEachAllocation([&](long, auto fail) {
            PropertyManagerImpl store;
            store.setProperty(L"other", L"stays");
            isHeldBefore ? store.setProperty(kName, L"old") : void();
            std::string complaint;
            const bool failed = fail([&] { complaint = tests::complaintOf([&] { call(store); }); });
            EXPECT_EQ(complaint.starts_with("Trying"), isComplaint && !failed);
            EXPECT_EQ(store.hasProperty(kName), isComplaint || !failed);
            EXPECT_EQ(store.readProperty(L"other"), L"stays");
        });
    }
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
