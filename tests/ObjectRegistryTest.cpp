#include <map>

#include "core/ObjectRegistry.h"
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

TEST(ObjectRegistry, NamesDifferInAnyByte) {
    const std::vector<std::string> names = {"",     " ",   "ab",     "abc",
                                            "abc ", "ABC", "ab\xff", kLongName};
    ObjectRegistry registry;
    std::map<std::string, IRegisteredObject*> objects;
    for (const std::string& name : names) {
        EXPECT_EQ(registry.findObject(name.c_str()), nullptr) << name;
        objects[name] = registry.registerObject(name.c_str(), makeTracked);
    }
    for (const auto& [name, object] : objects) {
        EXPECT_EQ(registry.findObject(name.c_str()), object) << name;
        registry.unregisterObject(name.c_str());
        EXPECT_EQ(registry.findObject(name.c_str()), nullptr) << name;
    }
}

TEST(ObjectRegistry, NameIsHeldAlsoIfTheFactoryReturnsNull) {
    ObjectRegistry registry;
    EXPECT_EQ(registry.registerObject("scanner", makeNull), nullptr);
    {
        // Each further call counts, even if its factory fails. An object is not recorded, so it is
        // the caller's, and the entry that was made for it is lost.
        [[maybe_unused]] const tests::LostOnPurpose entry;
        EXPECT_THROW(registry.registerObject("scanner", refuse), std::runtime_error);
        const std::unique_ptr<IRegisteredObject> own(
            registry.registerObject("scanner", makeTracked));
        EXPECT_NE(own, nullptr);
        EXPECT_EQ(registry.findObject("scanner"), nullptr);

        // Of the three references, one is left.
        registry.unregisterObject("scanner");
        registry.unregisterObject("scanner");
        delete registry.registerObject("scanner", makeTracked);
        EXPECT_EQ(registry.findObject("scanner"), nullptr) << "the name was free";
    }
    registry.unregisterObject("scanner");
    registry.unregisterObject("scanner");
    registry.registerObject("scanner", makeTracked);
    EXPECT_NE(registry.findObject("scanner"), nullptr) << "a reference too many was counted";
    registry.unregisterObject("scanner");
}

TEST(ObjectRegistry, FailedAllocationLeavesNothingRecorded) {
    tests::failEachAllocation([&](long n, auto fail) {
        ObjectRegistry registry;
        const bool failed = fail([&] {
            [[maybe_unused]] const tests::LostOnPurpose entryAndObject;
            registry.registerObject(kLongName, makeTracked);
        });
        EXPECT_EQ(registry.findObject(kLongName) == nullptr, failed);
        if (failed && n > 2) {
            tests::leftOnPurpose = 2;  // the entry and the object, which may be in use
        }
        registry.unregisterObject(kLongName);
        registry.registerObject(kLongName, makeTracked);
        EXPECT_NE(registry.findObject(kLongName), nullptr) << "the name was held with null";
        registry.unregisterObject(kLongName);
    });
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
