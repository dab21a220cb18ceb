// A mutex that refuses a second lock by the thread that holds it.
//
// std::mutex leaves that case undefined, and on some platforms the thread then waits for
// itself for good. Used through the standard guards; any number of threads.
#pragma once

#include <atomic>
#include <mutex>
#include <system_error>
#include <thread>

namespace Quend::Framework {

class CheckedMutex {
 public:
    // Throws std::system_error, resource_deadlock_would_occur, when this thread holds the lock.
    void lock() {
        const auto self = std::this_thread::get_id();
        // Only this thread ever stores its own id, so no order with other threads is needed.
        if (owner.load(std::memory_order_relaxed) == self) {
            throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur));
        }
        mutex.lock();
        owner.store(self, std::memory_order_relaxed);
    }

    void unlock() {
        owner.store(std::thread::id(), std::memory_order_relaxed);
        mutex.unlock();
    }

 private:
    std::mutex mutex;
    std::atomic<std::thread::id> owner{std::thread::id()};
};

}  // namespace Quend::Framework
