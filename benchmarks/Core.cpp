// Memory, the object registry and the random source.
#include <Quend/Framework/Framework.h>
#include <Quend/Framework/MemoryManager.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string_view>
#include <unordered_map>

#include "Bench.h"

#ifdef QUEND_PEERS
#include <boost/interprocess/managed_windows_shared_memory.hpp>
#endif

namespace bench {
namespace {

using namespace Quend::Framework::Management::MemoryManager;

const Group memory([] {
    addCase("allocate/ours", [] {
        void* const block = allocate(32);
        deallocate(block);
        return block;
    });
    addCase("allocate/bare", byAddress([take = &std::malloc, giveBack = &std::free] {
                void* const block = take(32);
                giveBack(block);
                return block;
            }));
});

const Group random([] {
    addCase("randomNumber/ours", [] { return Quend::Framework::Framework::randomNumber(); });
    const auto mutex = std::make_shared<std::mutex>();
    addCase("randomNumber/bare", byAddress([mutex] {
                const std::lock_guard lock(*mutex);
                return std::rand();
            }));
});

struct BareEntry {
    std::unique_ptr<IRegisteredObject> object;
    unsigned referenceCount = 1;
};

// Finds a text without making a std::string of it.
struct TextHash : std::hash<std::string_view> {
    using is_transparent = void;
};

// The same names in each table, entered in the same order.
struct Objects {
    explicit Objects(std::size_t count) : names(shuffledNames(count)) {
        for (const std::string& name : names) {
            registerObject(name.c_str(), [] { return new IRegisteredObject; });
        }
        // What a table of owned entries needs at least: each entry before its object and its node.
        for (const std::string& name : names) {
            auto entry = std::make_unique<BareEntry>();
            entry->object = std::make_unique<IRegisteredObject>();
            entries.emplace(name, std::move(entry));
        }
        for (const std::string& name : names) {
            pointers.emplace(name, findObject(name.c_str()));
        }
        for (const std::string& name : names) {
            hashed.emplace(name, findObject(name.c_str()));
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
    std::map<std::string, std::unique_ptr<BareEntry>, std::less<>> entries;
    std::map<std::string, IRegisteredObject*, std::less<>> pointers;
    std::unordered_map<std::string, IRegisteredObject*, TextHash, std::equal_to<>> hashed;
    std::mutex mutex;
    std::shared_mutex sharedMutex;
};

// The library is given a C string too, and has to measure it.
std::string_view measured(const char* name) { return name; }

void addFind(std::size_t count) {
    const auto all = std::make_shared<Objects>(count);
    const std::string group = "findObject " + std::to_string(count);
    addCase(group + "/ours",
            [all, name = Round(all->names)]() mutable { return findObject(name.next().c_str()); });
    addCase(group + "/bare", byAddress([all, name = Round(all->names)]() mutable {
                const std::lock_guard lock(all->mutex);
                const auto found = all->entries.find(measured(name.next().c_str()));
                return found == all->entries.end() ? nullptr : found->second->object.get();
            }));
    addCase(group + "/pointers", byAddress([all, name = Round(all->names)]() mutable {
                const std::lock_guard lock(all->mutex);
                const auto found = all->pointers.find(measured(name.next().c_str()));
                return found == all->pointers.end() ? nullptr : found->second;
            }));
    addCase(group + "/hashed", byAddress([all, name = Round(all->names)]() mutable {
                const std::shared_lock lock(all->sharedMutex);
                const auto found = all->hashed.find(measured(name.next().c_str()));
                return found == all->hashed.end() ? nullptr : found->second;
            }));
}

const Group findFew([] { addFind(10); });
const Group findMany([] { addFind(1'000); });
const Group findVeryMany([] { addFind(100'000); });

// One more reference on a held name, and back.
const Group registering([] {
    const auto all = std::make_shared<Objects>(100);
    addCase("register/ours", [all, round = Round(all->names)]() mutable {
        const char* const name = round.next().c_str();
        auto* const object = registerObject(name, [] { return new IRegisteredObject; });
        unregisterObject(name);
        return object;
    });
    const auto changeCount = [&all](unsigned by) {
        return byAddress([all, round = Round(all->names), by]() mutable {
            const std::lock_guard lock(all->mutex);
            BareEntry& entry = *all->entries.find(measured(round.next().c_str()))->second;
            entry.referenceCount += by;
            return entry.object.get();
        });
    };
    addCase("register/bare", [take = changeCount(1), giveBack = changeCount(-1U)]() mutable {
        return take() == giveBack();
    });
#ifdef QUEND_PEERS
    // The count is changed under the segment's lock, which is recursive.
    using Segment = boost::interprocess::managed_windows_shared_memory;
    const auto segment =
        std::make_shared<Segment>(boost::interprocess::create_only, "quend", 1U << 20U);
    for (const std::string& name : all->names) {
        segment->construct<unsigned>(name.c_str())(1U);
    }
    addCase("register/Boost", [all, segment, round = Round(all->names)]() mutable {
        const char* const name = round.next().c_str();
        const auto take = [&] { ++*segment->find<unsigned>(name).first; };
        const auto giveBack = [&] { --*segment->find<unsigned>(name).first; };
        segment->atomic_func(take);
        segment->atomic_func(giveBack);
    });
#endif
});

}  // namespace
}  // namespace bench
