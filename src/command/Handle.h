#pragma once

#include <windows.h>

#include <utility>

namespace Quend::Framework::Command {

/// Owns one kernel handle and closes it. Null and INVALID_HANDLE_VALUE both mean empty.
/// Threading: one thread at a time.
class Handle {
 public:
    Handle() = default;
    /// Takes over `handle`.
    /// Ownership: this object closes it.
    explicit Handle(HANDLE handle) noexcept
        : handle_(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
    Handle(Handle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    /// Closes the handle held so far; a move onto itself changes nothing.
    Handle& operator=(Handle&& other) noexcept {
        Handle taken(std::move(other));
        std::swap(handle_, taken.handle_);
        return *this;
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle() {
        if (handle_ != nullptr) {
            CloseHandle(handle_);
        }
    }

    /// Returns the handle, null when empty.
    /// Ownership: stays with this object.
    HANDLE get() const noexcept { return handle_; }

 private:
    HANDLE handle_ = nullptr;
};

}  // namespace Quend::Framework::Command
