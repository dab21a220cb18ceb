/// \file
/// Owners for what MemoryManager.h gives out: a reference on an object, and a block of memory.
/// Header-only, on top of the exported functions.
#pragma once

#include <Quend/Framework/Exceptions.h>
#include <Quend/Framework/MemoryManager.h>

#include <string>
#include <utility>

namespace Quend {
namespace Framework {
namespace Management {
namespace MemoryManager {

/// Takes a reference on a registered object and gives it back in its destructor:
///
///     ObjectReference<SharedText> text("demo.text");  // creates the object if there is none
///     text->append("hello");
///
///     if (auto log = ObjectReference<IEventLog>::existing("demo.log")) {  // creates nothing
///         log->write("hello");
///     }
///
/// Moves, but does not copy; for a second reference make a second ObjectReference of the name.
/// One that was moved from is empty.
///
/// Threading: distinct objects may be used from any threads; one object from one thread at a time.
/// Requires: neither a factory nor a registered object's constructor or destructor makes or
/// destroys an ObjectReference, because the registry calls them under its lock. A global variable
/// is empty again before the process exits: by then other threads have been stopped, and its
/// destructor would hang if one of them held that lock.
template <typename Object>
class ObjectReference {
 public:
    /// Takes a reference on `name`; the first caller of the process creates the object. Never
    /// empty.
    /// Throws: InvalidArgument if `factory` returned null, the name is held with a null object, or
    /// its object is no `Object`; and what registerObject throws.
    /// On failure: the reference has been given back, unless the registry's lock cannot be taken.
    /// Requires: the module with the code of `Object` stays loaded until the last reference is
    /// given back.
    explicit ObjectReference(std::string name, Factory factory = &create)
        : heldName(std::move(name)) {
        IRegisteredObject* const returned = registerObject(heldName.c_str(), factory);
        if (returned != findObject(heldName.c_str())) {
            // The name is held with a null object, so nobody else knows what `factory` created.
            unregisterObject(heldName.c_str());
            delete returned;
            throwMismatch();
        }
        holdOrGiveBack(returned);
    }

    /// Takes a reference on the object of `name` if there is one, and returns an empty
    /// ObjectReference if not; atomically, and without creating anything. `Object` may be an
    /// interface. A name held with a null object has none.
    /// Throws: InvalidArgument if the object is no `Object`; std::bad_alloc; std::system_error if
    /// the lock cannot be taken.
    /// On failure: the reference has been given back, unless the registry's lock cannot be taken.
    static ObjectReference existing(std::string name) {
        ObjectReference reference;
        reference.heldName = std::move(name);
        // A name held with null would count a reference below, and nobody could tell to give it
        // back. It still would if between the two calls its object made way for null.
        if (findObject(reference.heldName.c_str()) != nullptr) {
            try {
                reference.holdOrGiveBack(registerObject(reference.heldName.c_str(), &refuse));
            } catch (const NoObject&) {
                // The last reference was given back in the meantime; nothing is recorded.
            }
        }
        return reference;
    }

    ObjectReference(ObjectReference&& other) noexcept
        : heldName(std::move(other.heldName)), object(other.object) {
        other.object = nullptr;
    }

    ObjectReference& operator=(ObjectReference other) noexcept {
        heldName.swap(other.heldName);
        std::swap(object, other.object);
        return *this;
    }

    /// Gives the reference back; the last one of the process destroys the object.
    /// On failure: ends the process, as a destructor cannot report std::system_error.
    ~ObjectReference() {
        if (object != nullptr) {
            unregisterObject(heldName.c_str());
        }
    }

    /// Whether a reference is held.
    explicit operator bool() const noexcept { return object != nullptr; }

    /// Valid while this reference is held; null if it is empty.
    Object* get() const noexcept { return object; }
    Object* operator->() const noexcept { return object; }
    Object& operator*() const noexcept { return *object; }

 private:
    struct NoObject {};

    ObjectReference() = default;

    static IRegisteredObject* create() { return new Object; }
    static IRegisteredObject* refuse() { throw NoObject(); }

    void holdOrGiveBack(IRegisteredObject* registered) {
        object = dynamic_cast<Object*>(registered);
        if (object == nullptr) {
            unregisterObject(heldName.c_str());
            throwMismatch();
        }
    }

    [[noreturn]] void throwMismatch() const {
        throw Exceptions::InvalidArgument(
            ("The registered object is null or of another type: " + heldName).c_str());
    }

    std::string heldName;
    Object* object = nullptr;  // null if empty
};

/// Gives a block from allocate or reallocate back: std::unique_ptr<char[], BlockDeleter>.
/// Runs no destructors, so the block must hold nothing that needs one.
struct BlockDeleter {
    void operator()(void* block) const noexcept { deallocate(block); }
};

}  // namespace MemoryManager
}  // namespace Management
}  // namespace Framework
}  // namespace Quend
