// The object registry against a map of names to objects and counts.
#pragma once

#include "core/ObjectRegistry.h"
#include "models/Input.h"
#include "support/LostOnPurpose.h"

namespace tests {

inline void checkObjectRegistry(Input input) {
    using namespace Quend::Framework::Management::MemoryManager;
    enum Operation { kObject, kNull, kThrow, kGiveBack };  // the first three register
    static Operation operation;
    static bool isCalled;
    static long live;
    live = 0;
    struct Counted : IRegisteredObject {
        Counted() { ++live; }
        ~Counted() override { --live; }
    };
    const auto factory = []() -> IRegisteredObject* {
        isCalled = true;
        if (operation == kThrow) {
            throw std::runtime_error("factory");
        }
        return operation == kObject ? new Counted : nullptr;
    };
    const std::string longName(1000, 'x');
    struct Entry {
        IRegisteredObject* object = nullptr;
        unsigned count = 0;
    };
    std::map<std::string, Entry> model;
    ObjectRegistry registry;
    const auto giveBack = [&](const std::string& name) {
        registry.unregisterObject(name.c_str());
        if (model.contains(name) && --model[name].count == 0) {
            model.erase(name);
        }
    };

    while (!input.isAtEnd()) {
        const auto name = input.oneOf<std::string>(
            {"", " ", "abc", "ABC", "abc ", "ab", "\x80\xff\xfe", longName});
        operation = input.oneOf({kObject, kNull, kThrow, kGiveBack, kGiveBack});
        if (operation == kGiveBack) {
            giveBack(name);
        } else {
            const bool isHeld = model.contains(name);
            const bool isHeldWithNull = isHeld && model[name].object == nullptr;
            IRegisteredObject* result = nullptr;
            bool isThrown = isCalled = false;
            try {
                // A name that is held with null takes no second entry, so that one is lost.
                std::optional<LostOnPurpose> entry;
                if (isHeldWithNull) {
                    entry.emplace();
                }
                result = registry.registerObject(name.c_str(), factory);
            } catch (const std::runtime_error&) {
                isThrown = true;
            }
            MODEL_CHECK(isCalled == (!isHeld || isHeldWithNull));
            MODEL_CHECK(isThrown == (isCalled && operation == kThrow));
            MODEL_CHECK((result != nullptr) == (!isCalled || operation == kObject));
            if (!isHeld && !isThrown) {
                model[name] = {result, 1};
            } else if (isHeld) {
                ++model[name].count;
                MODEL_CHECK(isHeldWithNull || result == model[name].object);
            }
            if (isHeldWithNull) {
                delete result;  // not recorded, so the caller's own
            }
        }
        MODEL_CHECK(model.contains(name) || registry.findObject(name.c_str()) == nullptr);
        long held = 0;
        for (const auto& [each, entry] : model) {
            MODEL_CHECK(registry.findObject(each.c_str()) == entry.object);
            held += entry.object != nullptr ? 1 : 0;
        }
        MODEL_CHECK(live == held);
    }
    while (!model.empty()) {
        giveBack(model.begin()->first);
    }
    MODEL_CHECK(live == 0);
}

}  // namespace tests
