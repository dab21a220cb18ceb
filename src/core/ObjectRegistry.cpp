// Invariant, outside of calls: a name is in the table exactly while its reference count is at
// least 1. The lock is held from the first look at the table to the last, also while factories
// and destructors run.
#include "core/ObjectRegistry.h"

#include <memory>
#include <mutex>
#include <string_view>

namespace Quend::Framework::Management::MemoryManager {

IRegisteredObject* ObjectRegistry::registerObject(const char* name, Factory factory) {
    const std::lock_guard lock(objectTableMutex);

    const auto found = objectTable.find(std::string_view(name));
    if (found != objectTable.end()) {
        // Counted before the object is looked at, so a name held with null counts it too.
        ++found->second->referenceCount;
        if (found->second->object != nullptr) {
            return found->second->object;
        }
    }

    auto created = std::make_unique<ObjectEntry>();
    created->object = factory();
    created->referenceCount = 1;

    // From here on the entry is given away: an object that its factory has handed out is never
    // taken back, neither when recording it fails nor when the name is held already, with null.
    ObjectEntry* const entry = created.release();
    objectTable.emplace(name, entry);
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
