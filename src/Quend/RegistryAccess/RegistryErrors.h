#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "Quend/RegistryAccess/Registry.h"

namespace Quend::RegistryAccess {

/// The base of what Registry throws: a family of its own, neither std::exception nor
/// FrameworkException. Catch this class or one of those below.
///
/// Throws: every constructor, std::bad_alloc.
/// Threading: one thread at a time, since the first what() writes into the object.
/// Ownership: each copy owns its texts.
class Registry::GenericRegistryError {
 public:
    /// Copies the message, the place and the text of what(), if that was composed.
    GenericRegistryError(const GenericRegistryError& other);
    GenericRegistryError& operator=(const GenericRegistryError&) = delete;
    virtual ~GenericRegistryError();

    /// Returns "Exception '<class>' (<file>:<line>): <message>", composed by the first call.
    /// Ownership: the text lives as long as this object.
    /// On failure: an empty text if memory runs out; the next call tries again.
    virtual const char* what() const noexcept;

 protected:
    /// `line` is that of the check that failed. `file` is the component's path without a suffix,
    /// always the same: texts do not depend on how the code is spread over files. The folders
    /// repeat the namespace so that this path is true.
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

/// The requested key or value does not exist.
class Registry::NotFound : public GenericRegistryError {
 public:
    NotFound(const std::string& message, std::int32_t line) : GenericRegistryError(message, line) {}
};

/// A key or value cannot be opened, or is of the wrong type.
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

/// A key cannot be created. Thrown in one place only, so it has its own text and line.
class Registry::CreationError : public GenericRegistryError {
 public:
    CreationError();
};

/// The rights of the key or of the user do not suffice.
class Registry::AccessDenied : public GenericRegistryError {
 public:
    AccessDenied(const std::string& message, std::int32_t line)
        : GenericRegistryError(message, line) {}
};

}  // namespace Quend::RegistryAccess
