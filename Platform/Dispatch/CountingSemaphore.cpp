#include "Platform/Dispatch/CountingSemaphore.h"

namespace teralune {

void CountingSemaphore::signal() {
    const std::lock_guard lock(mutex_);
    ++count_;
    // Under the lock, since the one that waits may destroy the semaphore as soon as it gets it.
    changed_.notify_one();
}

void CountingSemaphore::wait() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return count_ > 0; });
    --count_;
}

bool CountingSemaphore::wait(std::chrono::milliseconds limit) {
    std::unique_lock lock(mutex_);
    if (!changed_.wait_for(lock, limit, [this] { return count_ > 0; })) {
        return false;
    }
    --count_;
    return true;
}

} // namespace teralune
