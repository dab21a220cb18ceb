#pragma once

#include <atomic>
#include <mutex>

#include "locking/ThreadId.h"

namespace Quend::Framework {

/// A std::mutex that knows which thread holds it. CheckedMutex and RecursiveMutex build on it and
/// decide what a second lock by the same thread means.
///
/// Threading: any number of threads.
class OwnedMutex {
 public:
    /// Waits for the lock. The thread must not hold it.
    /// Throws: std::system_error if the lock cannot be taken.
    void lock() {
        mutex.lock();
        owner.store(currentThreadId(), std::memory_order_relaxed);
    }

    /// Takes the lock if it is free.
    bool try_lock() {
        if (!mutex.try_lock()) {
            return false;
        }
        owner.store(currentThreadId(), std::memory_order_relaxed);
        return true;
    }

    void unlock() {
        owner.store(ThreadId(), std::memory_order_relaxed);
        mutex.unlock();
    }

    /// Whether the calling thread holds the lock. Only that thread ever stores its own id, so the
    /// answer needs no order with other threads.
    bool isHeldByThisThread() const {
        return owner.load(std::memory_order_relaxed) == currentThreadId();
    }

 private:
    std::mutex mutex;
    std::atomic<ThreadId> owner{ThreadId()};
};

}  // namespace Quend::Framework
