/// \file
// Memory on one common heap, and objects shared by name between the modules of a process.
///
/// Threading: every function may be called from any thread at any time. One lock makes each
/// call of registerObject, findObject and unregisterObject a single step; the memory functions
/// take no lock, as the C runtime's heap needs none.
///
/// Lifetime: the table starts empty when the library is loaded. At unload the names are freed,
/// but objects that are still registered are left alone: they are not deleted and no destructor
/// of theirs runs, since the module that holds its code may be gone already.
#pragma once

#include <cstdint>  // GCC and clang learn of __int64 from the C headers

#include <Quend/Framework/Export.h>

namespace Quend {
namespace Framework {
namespace Management {
namespace MemoryManager {

/// The C runtime's malloc, realloc and free on the library's heap, and nothing else: no books
/// are kept, a size of zero is passed on as it stands, and a failed allocation gives null and
/// throws nothing. `size` is in bytes. A block that changes hands between modules is obtained
/// and given back here, whichever module does either.
QUEND_FRAMEWORK_API void* allocate(unsigned __int64 size);
QUEND_FRAMEWORK_API void* reallocate(void* p, unsigned __int64 size);
QUEND_FRAMEWORK_API void deallocate(void* p);

/// The base of everything the registry holds. The registry destroys an object with an ordinary
/// delete through this destructor, so a factory makes it with plain new. The destructor runs
/// under the registry's lock; the rule for callbacks at registerObject holds for it too, and
/// since destructors do not throw, one that calls back must catch the std::system_error itself.
class QUEND_FRAMEWORK_API IRegisteredObject {
 public:
    IRegisteredObject();
    IRegisteredObject(const IRegisteredObject& other);
    virtual ~IRegisteredObject();
    IRegisteredObject& operator=(const IRegisteredObject& other);
};

/// Takes one reference on `name` and returns its object. The first caller's `factory` makes the
/// object; while that object is registered, later factories are not called.
///
/// Each call is matched by one unregisterObject(name); the object belongs to the registry and
/// stays valid until the last of those. Names are compared byte by byte, exactly, and copied;
/// `name` is zero-terminated and must not be null, which is not checked.
///
/// `factory` runs under the registry's lock. A call from it back into the registry on the same
/// thread raises std::system_error (std::errc::resource_deadlock_would_occur) in that inner
/// call and changes nothing.
///
/// A factory may return null. The name is then held with a null object, which findObject cannot
/// tell from an unknown name. A further registerObject of it counts one more reference, calls
/// its own factory and returns what that makes, but the name keeps its null object: the new one
/// is never recorded, and the caller remains responsible for it.
///
/// Errors: what `factory` throws passes through and nothing is recorded. std::bad_alloc, when
/// memory runs out before the factory has run, records nothing either; after it has run, the
/// object stays allocated but unrecorded, for the registry cannot know who else uses it. In all
/// three cases a reference on a name that is held with a null object has been counted already
/// and stays counted. The lock is free after every failure; std::system_error reports that it
/// could not be taken, before anything was changed.
QUEND_FRAMEWORK_API IRegisteredObject* registerObject(const char* name,
                                                      IRegisteredObject* (*factory)());

/// The object registered under `name`, or null. Takes no reference: the pointer is good for as
/// long as the caller knows that somebody else holds one. Throws std::system_error alone.
QUEND_FRAMEWORK_API IRegisteredObject* findObject(const char* name);

/// Gives back one reference on `name`. The last one deletes the object, under the lock, and
/// then forgets the name. A name that is not registered is ignored. Throws std::system_error
/// alone, before anything was changed.
QUEND_FRAMEWORK_API void unregisterObject(const char* name);

}  // namespace MemoryManager
}  // namespace Management
}  // namespace Framework
}  // namespace Quend
