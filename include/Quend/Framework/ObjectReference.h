/// \file
/// Owners for what MemoryManager.h gives out: a reference on an object, and a block of memory.
/// Header-only, on top of the exported functions.
#pragma once

#include <string>
#include <utility>

#include <Quend/Framework/Exceptions.h>
#include <Quend/Framework/MemoryManager.h>

namespace Quend {
namespace Framework {
namespace Management {
namespace MemoryManager {

/// Takes a reference in its constructor and gives it back in its destructor:
///
///     ObjectReference<SharedText> text("demo.text");
///     text->append("hello");
///
/// Moves, but does not copy; for a second reference make a second ObjectReference of the name.
/// One that was moved from holds nothing and can only be assigned to or destroyed.
///
/// Threading: distinct objects may be used from any threads; one object from one thread at a time.
/// Requires: neither a factory nor a registered object's constructor or destructor makes or
/// destroys an ObjectReference, because the registry calls them under its lock.
template <typename Object>
class ObjectReference {
 public:
    /// Takes a reference on `name`; the first caller of the process creates the object.
    /// Throws: InvalidArgument if `factory` returned null, the name is held with a null object, or
    /// its object is no `Object`; and what registerObject throws.
    /// On failure: the reference has been given back, unless registerObject itself threw.
    /// Requires: the module with the code of `Object` stays loaded until the last reference is
    /// given back.
    explicit ObjectReference(std::string name, IRegisteredObject* (*factory)() = &create)
        : name_(std::move(name)) {
        IRegisteredObject* const returned = registerObject(name_.c_str(), factory);
        // Behind a null object in the registry, `returned` is known to nobody else.
        const bool isRegistered = returned == findObject(name_.c_str());
        object_ = isRegistered ? dynamic_cast<Object*>(returned) : nullptr;
        if (object_ == nullptr) {
            unregisterObject(name_.c_str());
            if (!isRegistered) {
                delete returned;
            }
            throw Exceptions::InvalidArgument(
                ("The registered object is null or of another type: " + name_).c_str());
        }
    }

    ObjectReference(ObjectReference&& other) noexcept
        : name_(std::move(other.name_)), object_(other.object_) {
        other.object_ = nullptr;
    }

    ObjectReference& operator=(ObjectReference other) noexcept {
        name_.swap(other.name_);
        std::swap(object_, other.object_);
        return *this;
    }

    /// Gives the reference back; the last one of the process destroys the object.
    /// On failure: ends the process, as a destructor cannot report std::system_error.
    ~ObjectReference() {
        if (object_ != nullptr) {
            unregisterObject(name_.c_str());
        }
    }

    /// Never null, and valid while this reference is held.
    Object* get() const noexcept { return object_; }
    Object* operator->() const noexcept { return object_; }
    Object& operator*() const noexcept { return *object_; }

 private:
    static IRegisteredObject* create() { return new Object; }

    std::string name_;
    Object* object_;  // null when moved from
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
