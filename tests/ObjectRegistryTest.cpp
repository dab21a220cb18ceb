#include "core/ObjectRegistry.h"
#include "models/ObjectRegistry.h"
#include "support/Allocations.h"
#include "support/LostOnPurpose.h"
#include "support/Test.h"

namespace {

using namespace Quend::Framework::Management::MemoryManager;

long destroyed = 0;

struct Tracked : IRegisteredObject {
    ~Tracked() override { ++destroyed; }
};

IRegisteredObject* makeTracked() { return new Tracked; }
IRegisteredObject* makeNull() { return nullptr; }
IRegisteredObject* refuse() { throw std::runtime_error("refused"); }

const char* const kLongName = "a name that no short string optimisation holds";

TEST(ObjectRegistry, CreatesWithTheFirstReferenceAndDestroysWithTheLast) {
    ObjectRegistry registry;
    EXPECT_EQ(registry.findObject("printer queue"), nullptr);
    registry.unregisterObject("printer queue");  // unknown, so ignored

    IRegisteredObject* const queue = registry.registerObject("printer queue", makeTracked);
    EXPECT_NE(queue, nullptr);
    EXPECT_EQ(registry.findObject("printer queue"), queue);
    EXPECT_EQ(registry.findObject("Printer Queue"), nullptr) << "case counts";

    EXPECT_EQ(registry.registerObject("printer queue", refuse), queue) << "not the same object";

    const long before = destroyed;
    registry.unregisterObject("printer queue");
    EXPECT_EQ(destroyed, before) << "one reference is left";
    registry.unregisterObject("printer queue");
    EXPECT_EQ(destroyed, before + 1);
    EXPECT_EQ(registry.findObject("printer queue"), nullptr);

    EXPECT_THROW(registry.registerObject("printer queue", refuse), std::runtime_error);
    EXPECT_EQ(registry.findObject("printer queue"), nullptr);
}

TEST(ObjectRegistry, MatchesModelOverRandomOperations) {
    tests::runOnRandomInputs(&tests::checkObjectRegistry);
}

// A name held with null records nothing else either, but counts every reference.
TEST(ObjectRegistry, FailedAllocationLeavesNothingRecorded) {
    for (const bool isHeldWithNull : {false, true}) {
        tests::failEachAllocation([&](long n, auto fail) {
            ObjectRegistry registry;
            if (isHeldWithNull) {
                registry.registerObject(kLongName, makeNull);
            }
            const bool failed = fail([&] {
                [[maybe_unused]] const tests::LostOnPurpose entryAndObject;
                registry.registerObject(kLongName, makeTracked);
            });
            EXPECT_EQ(registry.findObject(kLongName) == nullptr, failed || isHeldWithNull);
            registry.unregisterObject(kLongName);
            if (isHeldWithNull) {
                registry.unregisterObject(kLongName);
            }
            // Were a reference left, the next object would stay.
            const long before = destroyed;
            registry.registerObject(kLongName, makeTracked);
            registry.unregisterObject(kLongName);
            EXPECT_EQ(destroyed, before + 1);
            if ((failed && n > 2) || (!failed && isHeldWithNull)) {
                tests::leftOnPurpose = 2;  // the entry and the object, which may be in use
            }
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
    registry.unregisterObject("cache");
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
}

}  // namespace
