#pragma once

#include <system_error>

#include "locking/OwnedMutex.h"

namespace Quend::Framework {

/// A mutex that refuses a second lock by the thread that holds it.
///
/// std::mutex leaves that case undefined, and on some platforms the thread deadlocks on itself.
/// Used through the standard guards.
///
/// Threading: any number of threads.
class CheckedMutex {
 public:
    /// Waits for the lock.
    /// Throws: std::system_error; resource_deadlock_would_occur if this thread holds the lock.
    void lock() {
        if (mutex.isHeldByThisThread()) {
            throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
        }
        mutex.lock();
    }

    void unlock() { mutex.unlock(); }

 private:
    OwnedMutex mutex;
};

}  // namespace Quend::Framework
