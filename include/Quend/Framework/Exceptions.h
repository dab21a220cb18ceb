/// \file
// The errors that the library's components report themselves: one text, and a class to catch.
///
/// The family deliberately stands apart from std::exception, so that a handler for one never
/// takes the other by accident. It is wholly inline: a client catches by type what the DLL
/// threw, also after the text was copied.
///
/// Threading: as for any value; distinct objects are independent of each other.
/// Every constructor may throw std::bad_alloc, and then nothing is left half-built.
#pragma once

#include <memory>
#include <string>

namespace Quend {
namespace Framework {
namespace Exceptions {

/// Catches the whole family. Each copy owns its own text. Never assigned, never empty-handed:
/// there is no move, so that getMessage() always has a text to return.
class FrameworkException {
 public:
    FrameworkException() : message(new std::string()) {}
    /// Copies the zero-terminated `text`, which must not be null.
    explicit FrameworkException(const char* text) : message(new std::string(text)) {}
    FrameworkException(const FrameworkException& other)
        : message(new std::string(*other.message)) {}
    virtual ~FrameworkException() = default;
    FrameworkException& operator=(const FrameworkException&) = delete;

    /// Narrow text in the process's multibyte encoding; valid as long as this object.
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
