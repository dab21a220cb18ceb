// The header-only owners and helpers, through the DLL.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>

#include <Quend/Framework/ObjectReference.h>
#include <Quend/Framework/ReadPropertyOr.h>

#include "support/ProcessFigures.h"

namespace {

using namespace Quend::Framework::Management::MemoryManager;
using Quend::Framework::Exceptions::InvalidArgument;
using Quend::Framework::Framework::propertyManager;
using Quend::Framework::Framework::readPropertyOr;

int living = 0;

struct Counted : IRegisteredObject {
    Counted() { ++living; }
    Counted(const Counted&) = delete;
    Counted& operator=(const Counted&) = delete;
    ~Counted() override { --living; }
};
struct Other : Counted {};

IRegisteredObject* makeNull() { return nullptr; }
IRegisteredObject* makeOther() { return new Other; }
IRegisteredObject* refuse() { throw std::runtime_error("refused"); }

using Reference = ObjectReference<Counted>;
static_assert(!std::is_copy_constructible_v<Reference>, "one object, one reference");
static_assert(std::is_nothrow_move_constructible_v<Reference>, "for containers");

TEST(ObjectReference, HoldsItsReferenceUntilItsEnd) {
    {
        const Reference unnamed("");  // what one that was moved from would give back
        const Reference first("shared");
        Counted* const object = first.get();
        EXPECT_EQ(findObject("shared"), object);
        {
            Reference moved("shared", refuse);  // not called: the object is there
            Reference last(std::move(moved));
            Reference assigned("other one");
            assigned = std::move(last);  // gives "other one" back
            EXPECT_EQ(findObject("other one"), nullptr);
            EXPECT_EQ(&*assigned, object);
            EXPECT_EQ(assigned.operator->(), object);
        }
        EXPECT_EQ(findObject("shared"), object) << "a reference too many was given back";
        EXPECT_EQ(findObject(""), unnamed.get());
        EXPECT_EQ(ObjectReference<IRegisteredObject>("shared").get(), object);
    }
    EXPECT_EQ(findObject("shared"), nullptr) << "a reference was kept";
    EXPECT_EQ(living, 0);
}

// Whatever the name holds before and the factory returns, the name has as many references
// afterwards.
TEST(ObjectReference, NeverHoldsNullNorAnotherType) {
    using Factory = IRegisteredObject* (*)();
    struct Row {
        const char* what;
        Factory before;  // null: the name is free
        Factory factory;
    };
    const Row rows[] = {
        {"the factory returns null", nullptr, makeNull},
        {"the name is held with a null object", makeNull, makeOther},
        {"both", makeNull, makeNull},
        {"the object is of a base class", []() -> IRegisteredObject* { return new Counted; },
         makeOther},
        {"the factory makes a base class", nullptr,
         []() -> IRegisteredObject* { return new Counted; }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        if (row.before != nullptr) {
            registerObject("name", row.before);
        }
        const int before = living;
        try {
            const ObjectReference<Other> reference("name", row.factory);
            ADD_FAILURE() << "nothing was thrown";
        } catch (const InvalidArgument& error) {
            EXPECT_EQ(error.getMessage(), "The registered object is null or of another type: name");
        }
        EXPECT_EQ(living, before);
        if (row.before != nullptr) {
            unregisterObject("name");
        }
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
    std::unique_ptr<char[], BlockDeleter> block(static_cast<char*>(allocate(4)));
    std::memcpy(block.get(), "abc", 4);
    block.reset(static_cast<char*>(reallocate(block.release(), 1 << 20)));
    EXPECT_STREQ(block.get(), "abc");
    const std::size_t before = tests::committedBytes();
    for (int i = 0; i < 100; ++i) {
        block.reset(static_cast<char*>(allocate(1 << 20)));
    }
    EXPECT_LE(tests::committedBytes(), before + (10 << 20)) << "blocks were not given back";

    EXPECT_EQ(readPropertyOr(L"helper", L"fallback"), L"fallback");
    propertyManager()->setProperty(L"helper", L"");
    EXPECT_EQ(readPropertyOr(L"helper", L"fallback"), L"");
    propertyManager()->clearProperty(L"helper");
}

}  // namespace
