/// \file
/// The exceptions that the library's own components throw: a class and a text.
///
/// They are wholly inline, so that a client catches by type what the DLL threw.
#pragma once

#include <memory>
#include <string>

namespace Quend {
namespace Framework {
namespace Exceptions {

/// The base of the family. It does not derive from std::exception, so that a handler for one family
/// never takes the other by accident: catch both.
///
/// Each copy owns its text. There is no move and no assignment, so that getMessage() always has a
/// text to return.
///
/// Throws: every constructor may throw std::bad_alloc.
/// Threading: distinct objects are independent.
class FrameworkException {
 public:
    FrameworkException() : message(new std::string()) {}
    /// Copies the zero-terminated `text`.
    /// Requires: `text` is not null.
    explicit FrameworkException(const char* text) : message(new std::string(text)) {}
    FrameworkException(const FrameworkException& other)
        : message(new std::string(*other.message)) {}
    virtual ~FrameworkException() = default;
    FrameworkException& operator=(const FrameworkException&) = delete;

    /// The text, in the process's multibyte encoding; valid as long as this object.
    const std::string& getMessage() const noexcept { return *message; }

 private:
    std::unique_ptr<std::string> message;  // never null
};

/// A property that does not exist was read or cleared.
class UnexistentProperty : public FrameworkException {
 public:
    explicit UnexistentProperty(const char* text) : FrameworkException(text) {}
};

/// An argument was rejected.
class InvalidArgument : public FrameworkException {
 public:
    InvalidArgument() = default;
    explicit InvalidArgument(const char* text) : FrameworkException(text) {}
};

}  // namespace Exceptions
}  // namespace Framework
}  // namespace Quend
