// Bare: the same map behind a plain std::mutex, with the object itself in the node.
#include <Quend/Framework/MemoryManager.h>

#include <map>
#include <memory>
#include <mutex>
#include <string_view>

#include "Bench.h"

#ifdef QUEND_PEERS
#include <boost/interprocess/managed_windows_shared_memory.hpp>
#endif

namespace bench {
namespace {

using namespace Quend::Framework::Management::MemoryManager;

struct BareEntry {
    IRegisteredObject* object = nullptr;
    unsigned referenceCount = 1;
};

IRegisteredObject* makeObject() { return new IRegisteredObject; }

// The names are registered as long as this object.
struct Objects {
    explicit Objects(std::size_t count) : names(shuffledNames(count)) {
        for (const std::string& name : names) {
            registerObject(name.c_str(), &makeObject);
        }
        for (const std::string& name : names) {
            bare.emplace(name, BareEntry{findObject(name.c_str())});
        }
    }
    ~Objects() {
        for (const std::string& name : names) {
            unregisterObject(name.c_str());
        }
    }
    Objects(const Objects&) = delete;
    Objects& operator=(const Objects&) = delete;

    std::vector<std::string> names;
    std::map<std::string, BareEntry, std::less<>> bare;
    std::mutex mutex;
};
using SharedObjects = std::shared_ptr<Objects>;

auto findOurs(const SharedObjects& all) {
    return [all, name = Round(all->names)]() mutable { return findObject(name.next().c_str()); };
}

// The library is given a C string too, and has to measure it.
std::string_view measured(const char* name) { return name; }

auto findBare(const SharedObjects& all) {
    return byAddress([all, name = Round(all->names)]() mutable {
        const std::lock_guard lock(all->mutex);
        const auto found = all->bare.find(measured(name.next().c_str()));
        return found == all->bare.end() ? nullptr : found->second.object;
    });
}

auto registerBare(const SharedObjects& all) {
    auto addReference = byAddress([all, name = Round(all->names)]() mutable {
        const std::lock_guard lock(all->mutex);
        BareEntry& entry = all->bare.find(measured(name.next().c_str()))->second;
        ++entry.referenceCount;
        return entry.object;
    });
    auto removeReference = byAddress([all, name = Round(all->names)]() mutable {
        const std::lock_guard lock(all->mutex);
        const auto found = all->bare.find(measured(name.next().c_str()));
        if (--found->second.referenceCount == 0) {
            all->bare.erase(found);
        }
    });
    return [addReference, removeReference]() mutable {
        auto* const object = addReference();
        removeReference();
        return object;
    };
}

const Group find(Mode::table, {10, 100'000}, [](std::size_t count) {
    const auto all = std::make_shared<Objects>(count);
    addCase(sized("findObject", count) + "/ours", findOurs(all));
    addCase(sized("findObject", count) + "/bare", findBare(all));
});

const Group registering(Mode::table, {100}, [](std::size_t count) {
    const auto all = std::make_shared<Objects>(count);
    addCase("register/ours", [all, round = Round(all->names)]() mutable {
        const char* const name = round.next().c_str();
        auto* const object = registerObject(name, &makeObject);
        unregisterObject(name);
        return object;
    });
    addCase("register/bare", registerBare(all));
#ifdef QUEND_PEERS
    // One search, under the segment's lock: it has nothing that counts references.
    namespace ipc = boost::interprocess;
    const auto segment =
        std::make_shared<ipc::managed_windows_shared_memory>(ipc::create_only, "quend", 1U << 20U);
    for (const std::string& name : all->names) {
        segment->construct<int>(name.c_str())(1);
    }
    addCase("register/Boost", [all, segment, name = Round(all->names)]() mutable {
        return segment->find<int>(name.next().c_str()).first;
    });
#endif
});

#ifndef QUEND_COUNT_INSTRUCTIONS
const Group names(Mode::growth, kNameCounts, [](std::size_t count) {
    const auto all = std::make_shared<Objects>(count);
    addCase(sized("findObject", count), findOurs(all));
    addCase(sized("bare map", count), findBare(all));
});

const Group threads(Mode::growth, kThreadCounts, [](std::size_t count) {
    const auto all = std::make_shared<Objects>(100);
    addCase(sized("findObject threads", count), findOurs(all), count);
    addCase(sized("bare find threads", count), findBare(all), count);
});

const Group tail(Mode::growth, {100}, [](std::size_t count) {
    const auto all = std::make_shared<Objects>(count);
    addTailLoop("findObject tail", loopOf(findOurs(all)));
    addTailLoop("bare find tail", loopOf(findBare(all)));
});
#endif

}  // namespace
}  // namespace bench
