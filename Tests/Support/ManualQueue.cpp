#include "Tests/Support/ManualQueue.h"

#include "Platform/Dispatch/CurrentQueue.h"

#include <algorithm>

namespace teralune {

ManualQueue::~ManualQueue() {
    for (bool empty = false; !empty;) {
        std::map<Order, Work> dropped;
        const std::lock_guard lock(mutex_);
        dropped.swap(waiting_);
        empty = dropped.empty();
    }
}

void ManualQueue::asyncAfter(std::chrono::milliseconds delay, Work work) {
    const std::lock_guard lock(mutex_);
    const auto moment = now_ + std::max(delay, std::chrono::milliseconds(0));
    waiting_.emplace(Order(moment, added_++), std::move(work));
}

bool ManualQueue::isCurrent() const {
    return CurrentQueue::is(*this);
}

bool ManualQueue::runNext() {
    return runFirstDueBy(now_);
}

std::size_t ManualQueue::runAll() {
    std::size_t count = 0;
    while (runNext()) {
        ++count;
    }
    return count;
}

void ManualQueue::advance(std::chrono::milliseconds step) {
    const auto end = now_ + step;
    while (runFirstDueBy(end)) {
    }
    const std::lock_guard lock(mutex_);
    now_ = end;
}

bool ManualQueue::runFirstDueBy(std::chrono::milliseconds moment) {
    Work work;
    {
        const std::lock_guard lock(mutex_);
        if (waiting_.empty() || waiting_.begin()->first.first > moment) {
            return false;
        }
        now_ = std::max(now_, waiting_.begin()->first.first);
        work = std::move(waiting_.begin()->second);
        waiting_.erase(waiting_.begin());
    }
    const CurrentQueue current(*this);
    work();
    work = nullptr;
    return true;
}

} // namespace teralune
