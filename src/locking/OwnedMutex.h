/// \file
/// A std::mutex that knows which thread holds it.
///
/// Threading: any number of threads. CheckedMutex and RecursiveMutex build on it and decide what a
/// second lock by the same thread means.
#pragma once

#include <atomic>
#include <mutex>
#include <thread>

namespace Quend::Framework {

class OwnedMutex {
 public:
    /// Waits for the lock. The thread must not hold it.
    /// Throws: std::system_error if the lock cannot be taken.
    void lock() {
        mutex.lock();
        owner.store(std::this_thread::get_id(), std::memory_order_relaxed);
    }

    /// Takes the lock if it is free.
    bool try_lock() {
        if (!mutex.try_lock()) {
            return false;
        }
        owner.store(std::this_thread::get_id(), std::memory_order_relaxed);
        return true;
    }

    void unlock() {
        owner.store(std::thread::id(), std::memory_order_relaxed);
        mutex.unlock();
    }

    /// Whether the calling thread holds the lock. Only that thread ever stores its own id, so the
    /// answer needs no order with other threads.
    bool isHeldByThisThread() const {
        return owner.load(std::memory_order_relaxed) == std::this_thread::get_id();
    }

 private:
    std::mutex mutex;
    std::atomic<std::thread::id> owner{std::thread::id()};
};

}  // namespace Quend::Framework
