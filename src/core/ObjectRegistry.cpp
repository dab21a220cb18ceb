// Invariant between calls: a name is in the table exactly while its reference count is at least 1.
// Each call holds the lock from its first look at the table to its last, also while a factory or a
// destructor runs.
#include "core/ObjectRegistry.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <string_view>
#include <utility>

namespace Quend::Framework::Management::MemoryManager {

// Nodes are made as many at a time as the table has, up to some pages full. They lie close together
// then, with no entries and objects between them, and a search through many names touches far fewer
// pages.
ObjectRegistry::ObjectTable::node_type ObjectRegistry::takeNode() {
    constexpr std::size_t kMostAtOnce = 1024;
    if (spareNodes.empty()) {
        for (auto i = std::clamp<std::size_t>(objectTable.size(), 1, kMostAtOnce); i > 0; --i) {
            spareNodes.emplace();
        }
    }
    return spareNodes.extract(spareNodes.begin());
}

IRegisteredObject* ObjectRegistry::registerObject(const char* name, Factory factory) {
    const std::lock_guard lock(objectTableMutex);

    const std::string_view key = name;
    const auto place = objectTable.lower_bound(key);
    if (place != objectTable.end() && place->first == key) {
        // Counted before the object is looked at: a name held with null counts it as well.
        ++place->second->referenceCount;
        if (place->second->object != nullptr) {
            return place->second->object;
        }
    }

    auto created = std::make_unique<ObjectEntry>();
    created->object = factory();
    created->referenceCount = 1;

    // The entry leaks on purpose if it cannot be recorded, or if the name is held with null: its
    // object may be in use already.
    ObjectEntry* const entry = created.release();
    auto node = takeNode();
    node.key() = name;  // read afresh: the factory may have changed the caller's buffer
    node.mapped() = entry;
    objectTable.insert(place, std::move(node));
    return entry->object;
}

IRegisteredObject* ObjectRegistry::findObject(const char* name) {
    const std::lock_guard lock(objectTableMutex);
    const auto found = objectTable.find(std::string_view(name));
    return found == objectTable.end() ? nullptr : found->second->object;
}

void ObjectRegistry::unregisterObject(const char* name) {
    const std::lock_guard lock(objectTableMutex);
    const auto found = objectTable.find(std::string_view(name));
    if (found == objectTable.end()) {
        return;
    }
    ObjectEntry* const entry = found->second;
    if (--entry->referenceCount == 0) {
        delete entry->object;
        delete entry;
        objectTable.erase(found);  // the name goes last
    }
}

}  // namespace Quend::Framework::Management::MemoryManager
