#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <map>
#include <random>
#include <string>

#include <Quend/Framework/Exceptions.h>
#include <Quend/Framework/Framework.h>

#include "properties/PropertyManagerImpl.h"
#include "support/Allocations.h"
#include "support/Threads.h"

namespace {

using namespace std::string_literals;
using Quend::Framework::Exceptions::UnexistentProperty;
using Quend::Framework::Framework::propertyManager;
using Quend::Framework::Management::PropertyManagerImpl;

std::string complaintOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const UnexistentProperty& error) {
        return error.getMessage();
    }
    return "no exception";
}

TEST(PropertyManager, MatchesModelOverRandomOperations) {
    const std::array<std::wstring, 8> names = {
        L"", L"a", L"ab", L"A", L"a\0"s, L"a\0b"s, L"\xffff", L"a name beyond any short string"};
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    PropertyManagerImpl store;
    std::map<std::wstring, std::wstring> model;
    for (int step = 0; step < 100'000 && !HasFailure(); ++step) {
        const std::wstring& name = names.at(random() % names.size());
        const std::wstring& other = names.at(random() % names.size());
        switch (random() % 4) {
            case 0:
                store.setProperty(name, std::to_wstring(step));
                model[name] = std::to_wstring(step);
                break;
            case 1:
                if (model.contains(other)) {  // what the store holds may be set again
                    store.setProperty(name, store.readProperty(other));
                    model[name] = model.at(other);
                }
                break;
            case 2:
                EXPECT_EQ(complaintOf([&] { store.clearProperty(name); }) == "no exception",
                          model.erase(name) == 1);
                break;
            default:
                EXPECT_EQ(complaintOf([&] { store.readProperty(name); }) == "no exception",
                          model.contains(name));
        }
        for (const std::wstring& each : names) {
            ASSERT_EQ(store.hasProperty(each), model.contains(each));
            if (model.contains(each)) {
                ASSERT_EQ(store.readProperty(each), model[each]);
            }
        }
    }
}

TEST(PropertyManager, MissingPropertyIsNamed) {
    struct Row {
        std::wstring name;
        const char* suffix;  // null: nothing of the message can be converted
    };
    const Row rows[] = {{L"speed", "speed"}, {L"", ""}, {L"a\0b"s, "a"}, {L"\x0416", nullptr}};
    PropertyManagerImpl store;
    for (const Row& row : rows) {
        const auto expected = [&](const std::string& prefix) {
            return row.suffix == nullptr ? "" : prefix + row.suffix;
        };
        EXPECT_EQ(complaintOf([&] { store.readProperty(row.name); }),
                  expected("Trying to read unexistent property: "));
        EXPECT_EQ(complaintOf([&] { store.clearProperty(row.name); }),
                  expected("Trying to clear an unexistent property: "));
    }
}

// The old value is gone before the copies are made, whichever of them fails.
TEST(PropertyManager, FailedSetLeavesThePropertyAbsent) {
    const std::wstring name = L"a name beyond any short string";
    const std::wstring value = L"a value beyond any short string";
    for (const bool isReplaced : {false, true}) {
        tests::failEachAllocation([&](long, auto fail) {
            PropertyManagerImpl store;
            store.setProperty(L"other", L"stays");
            if (isReplaced) {
                store.setProperty(name, L"old");
            }
            const bool failed = fail([&] { store.setProperty(name, value); });
            EXPECT_EQ(store.hasProperty(name), !failed);
            EXPECT_EQ(store.readProperty(L"other"), L"stays");
            store.setProperty(name, value);
            EXPECT_EQ(store.readProperty(name), value);
            return 0L;
        });
    }
}

TEST(PropertyManager, ReadingAllocatesNothingAndCopiesNothing) {
    PropertyManagerImpl store;
    const std::wstring name = L"a name beyond any short string";
    store.setProperty(name, L"value");
    const long before = tests::allocationsSoFar();
    EXPECT_EQ(&store.readProperty(name), &store.readProperty(name));
    EXPECT_TRUE(store.hasProperty(name));
    EXPECT_FALSE(store.hasProperty(L"no"));
    EXPECT_EQ(tests::allocationsSoFar(), before);
}

TEST(PropertyManager, ThreadsAtStartGetOneStoreAlsoWithoutMemory) {
    {
        const tests::AllocationFault fault(1, true);
        try {
            propertyManager();
        } catch (const std::bad_alloc&) {  // allowed: the next call tries again
        }
    }
    std::array<void*, 16> stores{};
    tests::inThreads(16, [&](unsigned thread) { stores.at(thread) = propertyManager(); });
    for (const void* store : stores) {
        EXPECT_EQ(store, propertyManager());
    }
    EXPECT_FALSE(propertyManager()->hasProperty(L""));
}

}  // namespace
