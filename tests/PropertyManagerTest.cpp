#include <gtest/gtest.h>

#include <new>
#include <string>

#include <Quend/Framework/Exceptions.h>

#include "models/PropertyStore.h"
#include "support/Allocations.h"

namespace {

using Quend::Framework::Management::PropertyManagerImpl;

const std::wstring kName = L"a name beyond any short string";
const std::wstring kValue = L"a value beyond any short string";

TEST(PropertyManager, MatchesModelOverRandomOperations) {
    tests::runOnRandomInputs(&tests::checkPropertyStore);
}

// The old value is gone before the copies are made, whichever of them fails.
TEST(PropertyManager, FailedSetLeavesThePropertyAbsent) {
    for (const bool isReplaced : {false, true}) {
        tests::failEachAllocation([&](long, auto fail) {
            PropertyManagerImpl store;
            store.setProperty(L"other", L"stays");
            if (isReplaced) {
                store.setProperty(kName, L"old");
            }
            const bool failed = fail([&] { store.setProperty(kName, kValue); });
            EXPECT_EQ(store.hasProperty(kName), !failed);
            EXPECT_EQ(store.readProperty(L"other"), L"stays");
            store.setProperty(kName, kValue);
            EXPECT_EQ(store.readProperty(kName), kValue);
            return 0L;
        });
    }
}

TEST(PropertyManager, ComplaintWithoutMemoryIsBadAllocAndLeavesTheStore) {
    void (*const calls[])(PropertyManagerImpl&) = {
        [](PropertyManagerImpl& store) { store.readProperty(kValue); },
        [](PropertyManagerImpl& store) { store.clearProperty(kValue); }};
    for (const auto call : calls) {
        tests::failEachAllocation([&](long, auto fail) {
            PropertyManagerImpl store;
            store.setProperty(kName, kValue);
            bool isComplaint = false;
            const bool failed = fail([&] {
                try {
                    call(store);
                } catch (const Quend::Framework::Exceptions::UnexistentProperty&) {
                    isComplaint = true;
                }
            });
            EXPECT_EQ(isComplaint, !failed);
            EXPECT_EQ(store.readProperty(kName), kValue);
            return 0L;
        });
    }
}

TEST(PropertyManager, ReadingAllocatesNothingAndCopiesNothing) {
    PropertyManagerImpl store;
    store.setProperty(kName, L"value");
    const long before = tests::allocationsSoFar();
    EXPECT_EQ(&store.readProperty(kName), &store.readProperty(kName));
    EXPECT_TRUE(store.hasProperty(kName));
    EXPECT_FALSE(store.hasProperty(L"no"));
    EXPECT_EQ(tests::allocationsSoFar(), before);
}

}  // namespace
