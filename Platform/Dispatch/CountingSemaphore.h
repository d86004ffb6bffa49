#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>

namespace teralune {

/// A counting semaphore: wait() takes one count, blocking until there is one; signal() adds one.
class CountingSemaphore {
public:
    explicit CountingSemaphore(std::ptrdiff_t count) : count_(count) {}

    void signal();
    void wait();
    /// False when no count came within the limit; then none is taken.
    bool wait(std::chrono::milliseconds limit);

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::ptrdiff_t count_;
};

} // namespace teralune
