#include <Quend/Framework/MemoryManager.h>

#include <cstdlib>

#include "core/ObjectRegistry.h"

namespace Quend::Framework::Management::MemoryManager {

// Out of line, so that the library holds the one copy of the class that all modules share.
IRegisteredObject::IRegisteredObject() = default;
IRegisteredObject::IRegisteredObject(const IRegisteredObject&) = default;
IRegisteredObject::~IRegisteredObject() = default;
IRegisteredObject& IRegisteredObject::operator=(const IRegisteredObject&) = default;

void* allocate(unsigned __int64 size) { return std::malloc(size); }

void* reallocate(void* p, unsigned __int64 size) { return std::realloc(p, size); }

void deallocate(void* p) { std::free(p); }

IRegisteredObject* registerObject(const char* name, IRegisteredObject* (*factory)()) {
    return objectRegistry.registerObject(name, factory);
}

IRegisteredObject* findObject(const char* name) { return objectRegistry.findObject(name); }

void unregisterObject(const char* name) { objectRegistry.unregisterObject(name); }

}  // namespace Quend::Framework::Management::MemoryManager
