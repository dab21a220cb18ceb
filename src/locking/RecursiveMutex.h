#pragma once

#include "locking/OwnedMutex.h"

namespace Quend::Framework {

/// A mutex that its owner may lock again, on top of std::mutex.
///
/// Some standard libraries never free what a std::recursive_mutex has allocated, so a library that
/// is loaded and unloaded many times would leak a block each time. Used through the standard
/// guards.
///
/// Threading: any number of threads.
class RecursiveMutex {
 public:
    /// Waits for the lock, or counts one more if this thread holds it.
    /// Throws: std::system_error if the lock cannot be taken.
    /// On failure: nothing has changed.
    void lock() {
        if (!mutex.isHeldByThisThread()) {
            mutex.lock();
        }
        ++depth;
    }

    /// Takes the lock if it is free or this thread holds it.
    bool try_lock() {
        if (!mutex.isHeldByThisThread() && !mutex.try_lock()) {
            return false;
        }
        ++depth;
        return true;
    }

    void unlock() {
        if (--depth == 0) {
            mutex.unlock();
        }
    }

 private:
    OwnedMutex mutex;
    unsigned depth = 0;  // guarded by mutex
};

}  // namespace Quend::Framework
