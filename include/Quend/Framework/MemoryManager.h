#pragma once

#include <Quend/Framework/Export.h>

#include <cstdint>  // GCC and clang learn of __int64 from the C headers

namespace Quend {
namespace Framework {
namespace Management {

/// Memory on one common heap, and objects that the modules of a process share by name.
///
/// The table of names starts empty at load. At unload the names are freed, but objects that are
/// still registered are neither deleted nor destroyed: their code may be unloaded already.
///
/// Threading: any thread may call any function at any time. registerObject, findObject and
/// unregisterObject are atomic under one lock; the memory functions take none.
/// Requires: names are zero-terminated and not null, which is not checked. They are copied, and
/// compared byte by byte.
namespace MemoryManager {

/// Allocates `size` bytes: malloc of the library's C runtime and nothing else.
///
/// Memory that one module hands to another is allocated and freed with these three functions, so
/// that both use one heap. No bookkeeping, no exceptions; a size of zero is passed on unchanged.
/// On failure: returns null.
QUEND_FRAMEWORK_API void* allocate(unsigned __int64 size);

/// Changes the size of the block `p`, which may be null: realloc of the same heap.
/// On failure: returns null, and `p` is still allocated.
QUEND_FRAMEWORK_API void* reallocate(void* p, unsigned __int64 size);

/// Frees `p`, which may be null: free of the same heap.
QUEND_FRAMEWORK_API void deallocate(void* p);

/// The base of all registered objects. The registry destroys an object with an ordinary delete, so
/// a factory creates it with plain new.
///
/// The destructor runs under the registry's lock and must not throw. A call from it back into the
/// registry throws std::system_error, which it must catch.
/// Requires: of the destructor, the same as of a Factory.
class QUEND_FRAMEWORK_API IRegisteredObject {
 public:
    IRegisteredObject();
    IRegisteredObject(const IRegisteredObject& other);
    virtual ~IRegisteredObject();
    IRegisteredObject& operator=(const IRegisteredObject& other);
};

/// Creates an object for the registry.
///
/// It runs under the registry's lock. A call from it back into the registry throws
/// std::system_error (std::errc::resource_deadlock_would_occur) there and changes nothing.
/// Requires: it neither loads or unloads a module nor waits for a thread that uses the registry.
/// Either can deadlock: the first with a module that calls the registry from DllMain or from the
/// constructor of a global. An exception of another compiler's code must not leave it, or the lock
/// is held for ever.
using Factory = IRegisteredObject* (*)();

/// Takes one reference on `name` and returns its object, which `factory` creates if there is none.
///
/// If `factory` returns null, the name is held without an object. Each further call for such a name
/// counts a reference, calls its own factory and returns what that creates, but does not record it:
/// the caller keeps that object.
///
/// Throws: what `factory` throws; std::bad_alloc; std::system_error if the lock cannot be taken.
/// Ownership: the registry owns the object until the last unregisterObject(name).
/// On failure: nothing is recorded and the lock is free; but on a name held without an object the
/// reference counts all the same. If memory runs out after `factory` has run, its object stays
/// allocated, since it may be in use.
QUEND_FRAMEWORK_API IRegisteredObject* registerObject(const char* name, Factory factory);

/// Returns the object registered under `name`, or null. Takes no reference.
/// Throws: std::system_error if the lock cannot be taken.
/// Requires: while the pointer is used, somebody holds a reference.
QUEND_FRAMEWORK_API IRegisteredObject* findObject(const char* name);

/// Gives back one reference on `name`. The last one deletes the object, under the lock, then the
/// name. An unknown name is ignored.
/// Throws: std::system_error if the lock cannot be taken; nothing has changed then.
QUEND_FRAMEWORK_API void unregisterObject(const char* name);

}  // namespace MemoryManager
}  // namespace Management
}  // namespace Framework
}  // namespace Quend
