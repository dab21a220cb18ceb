#pragma once

#include <Quend/Framework/MemoryManager.h>

#include <cstdint>
#include <functional>
#include <map>
#include <string>

#include "locking/CheckedMutex.h"

namespace Quend::Framework::Management::MemoryManager {

/// What the registry records of one name.
struct ObjectEntry {
    IRegisteredObject* object;  // null if the factory returned null
    std::uint32_t referenceCount;
};

/// The table behind registerObject, findObject and unregisterObject; their contract is in
/// <Quend/Framework/MemoryManager.h>.
class ObjectRegistry {
 public:
    IRegisteredObject* registerObject(const char* name, Factory factory);
    IRegisteredObject* findObject(const char* name);
    void unregisterObject(const char* name);

 private:
    /// std::less<> finds a `const char*` without making a std::string of it first.
    using ObjectTable = std::map<std::string, ObjectEntry*, std::less<>>;

    /// Their names are all empty, which the table itself would refuse.
    using SpareNodes = std::multimap<std::string, ObjectEntry*, std::less<>>;

    /// Returns a node for the next name.
    ObjectTable::node_type takeNode();

    SpareNodes spareNodes;  // guarded by objectTableMutex
    /// Owns its entries, but at unload they and their objects are left alone.
    ObjectTable objectTable;        // guarded by objectTableMutex
    CheckedMutex objectTableMutex;  // declared last: destroyed first
};

/// The process-wide one, defined in StaticInitialisation.cpp.
extern ObjectRegistry objectRegistry;

}  // namespace Quend::Framework::Management::MemoryManager
