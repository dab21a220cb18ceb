/// \file
// The one owner of a kernel handle, which it closes. Belongs to one thread at a time.
///
/// Windows says "no handle" in two ways, null and INVALID_HANDLE_VALUE: both are empty here.
#pragma once

#include <windows.h>

#include <utility>

namespace Quend::Framework::Command {

class Handle {
 public:
    Handle() = default;
    /// Takes `handle` over: nobody else closes it from here on.
    explicit Handle(HANDLE handle) noexcept
        : handle_(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
    Handle(Handle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    /// What this one held is closed, unless it is moved onto itself.
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

    /// Null when empty. Remains this object's.
    HANDLE get() const noexcept { return handle_; }

 private:
    HANDLE handle_ = nullptr;
};

}  // namespace Quend::Framework::Command
