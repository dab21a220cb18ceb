// A mutex that its owner may lock again, on top of std::mutex.
//
// Some standard libraries never give back what a std::recursive_mutex has allocated, and a library
// that is loaded and unloaded many times would lose a block each time. Used through the standard
// guards; any number of threads.
#pragma once

#include <atomic>
#include <mutex>
#include <thread>

namespace Quend::Framework::Logging {

class RecursiveMutex {
 public:
    // Throws std::system_error when the lock cannot be had, and then holds nothing more.
    void lock() {
        if (!isHeldByThisThread()) {
            mutex.lock();
            owner.store(std::this_thread::get_id(), std::memory_order_relaxed);
        }
        ++depth;
    }

    bool try_lock() {
        if (!isHeldByThisThread()) {
            if (!mutex.try_lock()) {
                return false;
            }
            owner.store(std::this_thread::get_id(), std::memory_order_relaxed);
        }
        ++depth;
        return true;
    }

    void unlock() {
        if (--depth == 0) {
            owner.store(std::thread::id(), std::memory_order_relaxed);
            mutex.unlock();
        }
    }

 private:
    // Only this thread ever stores its own id, so no order with other threads is needed.
    bool isHeldByThisThread() const {
        return owner.load(std::memory_order_relaxed) == std::this_thread::get_id();
    }

    std::mutex mutex;
    std::atomic<std::thread::id> owner{std::thread::id()};
    unsigned depth = 0;  // guarded by mutex
};

}  // namespace Quend::Framework::Logging
