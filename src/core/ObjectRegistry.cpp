// Invariant between calls: a name is in the table exactly while its reference count is at least 1.
// Each call holds the lock from its first look at the table to its last, also while a factory or a
// destructor runs.
#include "core/ObjectRegistry.h"

#include <memory>
#include <mutex>
#include <string_view>

namespace Quend::Framework::Management::MemoryManager {

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
    // Reads `name` afresh: the factory may have changed the caller's buffer.
    objectTable.emplace_hint(place, name, entry);
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
