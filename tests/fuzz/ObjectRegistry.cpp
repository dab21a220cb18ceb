// The object registry against a map, one operation after the other from the input.
#include "core/ObjectRegistry.h"

#include <sanitizer/lsan_interface.h>

#include <array>
#include <map>
#include <stdexcept>

#include "Fuzz.h"

namespace {

using namespace Quend::Framework::Management::MemoryManager;

std::size_t liveObjects = 0;

struct Counted : IRegisteredObject {
    Counted() { ++liveObjects; }
    ~Counted() override { --liveObjects; }
};

bool isFactoryCalled = false;

const std::array<Factory, 3> kFactories = {
    []() -> IRegisteredObject* {
        isFactoryCalled = true;
        return new Counted;
    },
    []() -> IRegisteredObject* {
        isFactoryCalled = true;
        return nullptr;
    },
    []() -> IRegisteredObject* {
        isFactoryCalled = true;
        throw std::runtime_error("factory");
    },
};

struct Entry {
    IRegisteredObject* object = nullptr;
    unsigned count = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    ObjectRegistry registry;
    std::map<std::string, Entry> model;
    const auto giveBack = [&](const std::string& name) {
        registry.unregisterObject(name.c_str());
        if (model.contains(name) && --model[name].count == 0) {
            model.erase(name);
        }
    };

    while (!input.isAtEnd()) {
        const std::string name = input.word<char>("aA\x80", 17);
        const unsigned operation = input.below(5);
        const bool isHeld = model.contains(name);
        if (operation >= kFactories.size()) {
            giveBack(name);
        } else {
            // Held with null, the name takes no second entry in: that one is lost, by contract.
            const bool isNull = isHeld && model[name].object == nullptr;
            IRegisteredObject* result = nullptr;
            isFactoryCalled = false;
            bool isThrown = false;
            if (isNull) {
                __lsan_disable();
            }
            try {
                result = registry.registerObject(name.c_str(), kFactories.at(operation));
            } catch (const std::runtime_error&) {
                isThrown = true;
            }
            if (isNull) {
                __lsan_enable();
            }
            FUZZ_CHECK(isFactoryCalled == (!isHeld || isNull));
            FUZZ_CHECK(isThrown == (isFactoryCalled && operation == 2));
            FUZZ_CHECK((result != nullptr) == (isFactoryCalled ? operation == 0 : true));
            if (isHeld || !isThrown) {
                Entry& entry = model[name];
                ++entry.count;
                if (!isHeld) {
                    entry.object = result;
                } else if (isNull) {
                    delete result;
                } else {
                    FUZZ_CHECK(result == entry.object);
                }
            }
        }
        const auto found = model.find(name);
        FUZZ_CHECK(registry.findObject(name.c_str()) ==
                   (found == model.end() ? nullptr : found->second.object));
        std::size_t expected = 0;
        for (const auto& [heldName, entry] : model) {
            expected += entry.object == nullptr ? 0 : 1;
        }
        FUZZ_CHECK(liveObjects == expected);
    }
    while (!model.empty()) {
        giveBack(model.begin()->first);
    }
    FUZZ_CHECK(liveObjects == 0);
    return 0;
}
