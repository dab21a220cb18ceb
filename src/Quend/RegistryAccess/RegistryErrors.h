/// \file
// What Registry throws. A family of its own: neither a std::exception nor a FrameworkException,
/// so a handler of those lets it pass; catch GenericRegistryError, or one of its classes.
///
/// Threading: as for any value, except that the first what() writes into the object.
/// Lifetime: each copy owns its own texts. Every constructor may throw std::bad_alloc.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Quend/RegistryAccess/Registry.h"

namespace Quend::RegistryAccess {

class Registry::GenericRegistryError {
 public:
    /// Also copies what the first what() composed.
    GenericRegistryError(const GenericRegistryError& other);
    GenericRegistryError& operator=(const GenericRegistryError&) = delete;
    virtual ~GenericRegistryError();

    /// "Exception '<class>' (<file>:<line>): <message>", composed on the first call. Valid as
    /// long as this object. An empty text if memory runs out; the next call tries again.
    virtual const char* what() const noexcept;

 protected:
    /// The place is that of the check that failed. `file` is the component's path, always the
    /// same and without suffix: the texts do not depend on how its code is spread over files.
    GenericRegistryError(std::string message, std::int32_t line,
                         const char* file = "Quend/RegistryAccess/Registry");

 private:
    struct Record {
        std::string message;
        std::string file;
        std::int32_t line;
        std::string whatText;  // empty until composed
    };
    std::unique_ptr<Record> record;  // never null
};

/// What was asked for is not there.
class Registry::NotFound : public GenericRegistryError {
 public:
    NotFound(const std::string& message, std::int32_t line) : GenericRegistryError(message, line) {}
};

/// A key or value could not be opened, or is not of the kind that was asked for.
class Registry::OpenError : public GenericRegistryError {
 public:
    OpenError(const std::string& message, std::int32_t line)
        : GenericRegistryError(message, line) {}
};

/// The Registry is unbound.
class Registry::NotInitialized : public GenericRegistryError {
 public:
    NotInitialized(const std::string& message, std::int32_t line)
        : GenericRegistryError(message, line) {}
};

/// A key could not be created. There is one way to fail, so text and line are its own.
class Registry::CreationError : public GenericRegistryError {
 public:
    CreationError();
};

class Registry::AccessDenied : public GenericRegistryError {
 public:
    AccessDenied(const std::string& message, std::int32_t line)
        : GenericRegistryError(message, line) {}
};

}  // namespace Quend::RegistryAccess
