#include "support/Test.h"

#include "core/ObjectRegistry.h"
#include "models/ObjectRegistry.h"
#include "support/Allocations.h"
#include "support/LostOnPurpose.h"

namespace {

using namespace Quend::Framework::Management::MemoryManager;

long destroyed = 0;

struct Tracked : IRegisteredObject {
    ~Tracked() override { ++destroyed; }
};

IRegisteredObject* makeTracked() { return new Tracked; }
IRegisteredObject* makeNull() { return nullptr; }

const char* const kLongName = "a name that no short string optimisation holds";

TEST(ObjectRegistry, MatchesModelOverRandomOperations) {
    tests::runOnRandomInputs(&tests::checkObjectRegistry);
}

// After the factory has run, its object may be in use: the entry and the object stay.
TEST(ObjectRegistry, FailedAllocationLeavesNothingRecorded) {
    for (const bool isHeldWithNull : {false, true}) {
        tests::failEachAllocation([&](long n, auto fail) {
            ObjectRegistry registry;
            isHeldWithNull ? registry.registerObject(kLongName, makeNull) : nullptr;
            IRegisteredObject* object = nullptr;
            const bool failed = fail([&] {
                [[maybe_unused]] const tests::LostOnPurpose entryAndObject;
                object = registry.registerObject(kLongName, makeTracked);
            });
            EXPECT_EQ(registry.findObject(kLongName), isHeldWithNull ? nullptr : object);
            registry.unregisterObject(kLongName);
            isHeldWithNull ? registry.unregisterObject(kLongName) : void();  // the failed call's
            const long before = destroyed;
            registry.registerObject(kLongName, makeTracked);
            registry.unregisterObject(kLongName);
            EXPECT_EQ(destroyed, before + 1);
            const bool isLost = failed ? n > 2 : isHeldWithNull;  // the entry and the object
            tests::leftOnPurpose = isLost ? 2 : 0;
        });
    }
}

TEST(ObjectRegistry, FurtherReferencesAllocateNothingAndAreCountedBeyond16Bits) {
    ObjectRegistry registry;
    registry.registerObject(kLongName, makeTracked);
    const long before = destroyed;
    tests::expectNoAllocation([&] {
        for (int references = 1; references < 70'000; ++references) {
            registry.registerObject(kLongName, makeTracked);
        }
        for (int references = 70'000; references > 0; --references) {
            EXPECT_NE(registry.findObject(kLongName), nullptr);
            registry.unregisterObject(kLongName);
        }
    });
    EXPECT_EQ(destroyed, before + 1);
}

// The name is copied when the factory has run, as it reads then.
TEST(ObjectRegistry, FactoryMayChangeTheCallersBuffer) {
    static char name[] = "cache.temporary";
    ObjectRegistry registry;
    IRegisteredObject* const object = registry.registerObject(name, [] {
        name[5] = '\0';
        return makeTracked();
    });
    EXPECT_EQ(registry.findObject("cache"), object);
    const long before = destroyed;
    registry.unregisterObject("cache");
    EXPECT_EQ(destroyed, before + 1) << "no name releases the object";
}

void expectEveryCallRefused() {
    EXPECT_THROW(registerObject("inner", makeTracked), std::system_error);
    EXPECT_THROW(findObject("outer"), std::system_error);
    EXPECT_THROW(unregisterObject("outer"), std::system_error);
}

TEST(ObjectRegistry, CallsBackFromFactoryAndDestructorAreRefused) {
    struct CallingBack : Tracked {
        CallingBack() { expectEveryCallRefused(); }
        ~CallingBack() override { expectEveryCallRefused(); }
    };
    const auto make = []() -> IRegisteredObject* { return new CallingBack; };
    IRegisteredObject* const object = registerObject("outer", make);
    EXPECT_EQ(findObject("outer"), object);
    EXPECT_EQ(findObject("inner"), nullptr);
    const long before = destroyed;
    unregisterObject("outer");
    EXPECT_EQ(destroyed, before + 1);

    // The refusal ends the outer call as any exception of a factory does.
    EXPECT_THROW(registerObject("outer", [] { return findObject("inner"); }), std::system_error);
    EXPECT_EQ(findObject("outer"), nullptr);
}

}  // namespace
