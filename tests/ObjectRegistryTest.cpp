#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <system_error>

#include "core/ObjectRegistry.h"
#include "support/Allocations.h"
#include "support/Threads.h"

namespace {

using namespace Quend::Framework::Management::MemoryManager;

std::atomic<long> created{0};
std::atomic<long> destroyed{0};

struct Tracked : IRegisteredObject {
    Tracked() { ++created; }
    ~Tracked() override { ++destroyed; }
};

IRegisteredObject* makeTracked() { return new Tracked; }
IRegisteredObject* makeNull() { return nullptr; }
IRegisteredObject* makeThrow() { throw std::runtime_error("factory"); }
IRegisteredObject* neverCalled() {
    ADD_FAILURE() << "the object was there already";
    return nullptr;
}

const char* const kLongName = "a name that no short string optimisation holds";

// A name held with null counts references, also that of a call whose factory throws, and never
// takes a later object in.
TEST(ObjectRegistry, MatchesModelOverRandomOperations) {
    struct Entry {
        IRegisteredObject* object;
        unsigned count;
    };
    const std::array<std::string, 9> names = {
        "", " ", "abc", "ABC", "abc ", "ab", "\x80\xff\xfe", kLongName, std::string(100'000, 'x')};
    const unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const auto below = [&](std::size_t n) { return random() % n; };
    ObjectRegistry registry;
    std::map<std::string, Entry> model;
    long unrecorded = 0;
    const long liveBefore = created - destroyed;
    long heldObjects = 0;

    for (int step = 0; step < 100'000 && !testing::Test::HasFailure(); ++step) {
        const std::string& name = names.at(below(names.size()));
        const auto found = model.find(name);
        const bool holdsObject = found != model.end() && found->second.object != nullptr;
        const auto recordIfNew = [&](IRegisteredObject* object) {
            if (found != model.end()) {
                ++found->second.count;
            } else {
                model[name] = {object, 1};
                heldObjects += object != nullptr ? 1 : 0;
            }
        };
        switch (below(8)) {  // more is given back than taken, so objects come and go
            case 0: {
                IRegisteredObject* const object =
                    registry.registerObject(name.c_str(), makeTracked);
                ASSERT_NE(object, nullptr);
                if (holdsObject) {
                    EXPECT_EQ(object, found->second.object);
                }
                const bool isLost = found != model.end() && !holdsObject;
                recordIfNew(object);
                if (isLost) {
                    delete object;  // the caller's own
                    ++unrecorded;
                }
                break;
            }
            case 1: {
                IRegisteredObject* const object = registry.registerObject(name.c_str(), makeNull);
                EXPECT_EQ(object, holdsObject ? found->second.object : nullptr);
                recordIfNew(nullptr);
                break;
            }
            case 2:
                if (holdsObject) {
                    registry.registerObject(name.c_str(), makeThrow);
                } else {
                    EXPECT_THROW(registry.registerObject(name.c_str(), makeThrow),
                                 std::runtime_error);
                }
                if (found != model.end()) {
                    ++found->second.count;
                }
                break;
            default:
                registry.unregisterObject(name.c_str());
                if (found != model.end() && --found->second.count == 0) {
                    heldObjects -= holdsObject ? 1 : 0;
                    model.erase(found);
                }
        }
        const auto now = model.find(name);
        EXPECT_EQ(registry.findObject(name.c_str()),
                  now == model.end() ? nullptr : now->second.object);
        EXPECT_EQ(created - destroyed - liveBefore, heldObjects);
    }
    EXPECT_GT(unrecorded, 0);
    for (const auto& [name, entry] : model) {
        for (unsigned i = 0; i < entry.count; ++i) {
            registry.unregisterObject(name.c_str());
        }
    }
    EXPECT_EQ(created - destroyed, liveBefore);
}

// After the factory has run, its object is out in the world: the entry and the object stay.
TEST(ObjectRegistry, FailedAllocationLeavesNothingRecorded) {
    for (const bool isHeldWithNull : {false, true}) {
        tests::failEachAllocation([&](long n, auto fail) {
            ObjectRegistry registry;
            if (isHeldWithNull) {
                registry.registerObject(kLongName, makeNull);
            }
            IRegisteredObject* object = nullptr;
            const bool failed =
                fail([&] { object = registry.registerObject(kLongName, makeTracked); });
            EXPECT_EQ(registry.findObject(kLongName), isHeldWithNull ? nullptr : object);
            registry.unregisterObject(kLongName);
            if (isHeldWithNull) {  // two references: the failed call's stays counted
                registry.unregisterObject(kLongName);
            }
            const long before = destroyed;
            registry.registerObject(kLongName, makeTracked);
            registry.unregisterObject(kLongName);
            EXPECT_EQ(destroyed, before + 1);
            if (failed) {
                return n > 2 ? 2L : 0L;
            }
            return isHeldWithNull ? 2L : 0L;
        });
    }
}

TEST(ObjectRegistry, LookingUpAndGivingBackAllocateNothing) {
    ObjectRegistry registry;
    registry.registerObject(kLongName, makeTracked);
    const long before = tests::allocationsSoFar();
    registry.findObject(kLongName);
    registry.registerObject(kLongName, neverCalled);
    registry.unregisterObject(kLongName);
    registry.unregisterObject(kLongName);
    registry.unregisterObject(kLongName);
    EXPECT_EQ(tests::allocationsSoFar(), before);
}

void expectRefused(void (*call)()) {
    try {
        call();
        ADD_FAILURE() << "the lock was taken twice";
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code(), std::errc::resource_deadlock_would_occur);
    }
}

void expectEveryCallRefused() {
    expectRefused([] { registerObject("inner", makeTracked); });
    expectRefused([] { findObject("outer"); });
    expectRefused([] { unregisterObject("outer"); });
}

TEST(ObjectRegistry, CallsBackFromFactoryAndDestructorAreRefused) {
    struct CallingBack : Tracked {
        ~CallingBack() override { expectEveryCallRefused(); }
    };
    const auto factory = []() -> IRegisteredObject* {
        expectEveryCallRefused();
        return new CallingBack;
    };
    IRegisteredObject* const object = registerObject("outer", factory);
    EXPECT_EQ(findObject("outer"), object);
    EXPECT_EQ(findObject("inner"), nullptr);
    const long before = destroyed;
    unregisterObject("outer");
    EXPECT_EQ(destroyed, before + 1);
    EXPECT_EQ(findObject("outer"), nullptr);

    // One that lets the refusal out: it ends the outer call as any exception of a factory does.
    EXPECT_THROW(registerObject("outer", [] { return findObject("inner"); }), std::system_error);
    EXPECT_EQ(findObject("outer"), nullptr);
}

TEST(ObjectRegistry, ThreadsSeeEachObjectDestroyedOnce) {
    ObjectRegistry registry;
    const long liveBefore = created - destroyed;
    std::atomic<long> wrong{0};
    tests::inThreads(8, [&](unsigned thread) {
        for (unsigned i = 0; i < 20'000; ++i) {
            const std::string name = "name " + std::to_string((i * 7 + thread) % 13);
            IRegisteredObject* const object = registry.registerObject(name.c_str(), makeTracked);
            wrong += registry.findObject(name.c_str()) != object ? 1 : 0;
            registry.unregisterObject(name.c_str());
        }
    });
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(created - destroyed, liveBefore);
    for (unsigned i = 0; i < 13; ++i) {
        EXPECT_EQ(registry.findObject(("name " + std::to_string(i)).c_str()), nullptr);
    }
}

}  // namespace
