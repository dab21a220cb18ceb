// Bare: the same map behind a plain std::mutex, with the object itself in the node. It is kept out
// of line, as is everything that several modules call.
#include "core/ObjectRegistry.h"

#include <map>
#include <mutex>
#include <string_view>

#include "Bench.h"

namespace bench {
namespace {

using Quend::Framework::Management::MemoryManager::IRegisteredObject;
using Quend::Framework::Management::MemoryManager::ObjectRegistry;

struct BareEntry {
    IRegisteredObject* object = nullptr;
    unsigned referenceCount = 1;
};

struct Bare {
    std::map<std::string, BareEntry, std::less<>> table;
    std::mutex mutex;
};

IRegisteredObject* makeObject() { return new IRegisteredObject; }

void addFind(std::size_t count) {
    const auto& names = *new auto(shuffledNames(count));
    auto& registry = *new ObjectRegistry;
    auto& bare = *new Bare;
    for (const std::string& name : names) {
        registry.registerObject(name.c_str(), &makeObject);
    }
    for (const std::string& name : names) {
        bare.table.emplace(name, BareEntry{makeObject()});
    }
    const std::string group = "findObject " + std::to_string(count) + "/";
    addCase(group + "ours", [&registry, name = Round(names)]() mutable {
        return registry.findObject(name.next().c_str());
    });
    addCase(group + "bare", [&bare, name = Round(names)]() mutable BENCH_OUT_OF_LINE {
        const std::lock_guard lock(bare.mutex);
        const auto found = bare.table.find(std::string_view(name.next().c_str()));
        return found == bare.table.end() ? nullptr : found->second.object;
    });
}

void addRegister() {
    const auto& names = *new auto(shuffledNames(100));
    auto& registry = *new ObjectRegistry;
    auto& bare = *new Bare;
    for (const std::string& name : names) {
        registry.registerObject(name.c_str(), &makeObject);
        bare.table.emplace(name, BareEntry{makeObject()});
    }
    addCase("register/ours", [&registry, round = Round(names)]() mutable {
        const char* const name = round.next().c_str();
        auto* const object = registry.registerObject(name, &makeObject);
        registry.unregisterObject(name);
        return object;
    });
    const auto addReference = [&bare](const char* name) BENCH_OUT_OF_LINE {
        const std::lock_guard lock(bare.mutex);
        BareEntry& entry = bare.table.find(std::string_view(name))->second;
        ++entry.referenceCount;
        return entry.object;
    };
    const auto removeReference = [&bare](const char* name) BENCH_OUT_OF_LINE {
        const std::lock_guard lock(bare.mutex);
        const auto found = bare.table.find(std::string_view(name));
        if (--found->second.referenceCount == 0) {
            bare.table.erase(found);
        }
    };
    addCase("register/bare", [=, round = Round(names)]() mutable {
        const char* const name = round.next().c_str();
        auto* const object = addReference(name);
        removeReference(name);
        return object;
    });
}

}  // namespace

void addObjectRegistry() {
    addFind(10);
    addFind(100'000);
    addRegister();
}

}  // namespace bench
