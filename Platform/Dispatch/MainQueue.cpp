#include "Platform/Dispatch/MainQueue.h"

#include "Platform/Dispatch/CurrentQueue.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <limits>
#include <map>
#include <mutex>

namespace teralune {

using Moment = std::chrono::steady_clock::time_point;

struct MainQueue::State {
    struct Piece {
        std::uint64_t number;
        Work work;
    };

    std::string label = "main";
    std::mutex mutex;
    std::condition_variable changed;
    std::uint64_t nextNumber = 0;
    std::deque<Piece> ready;
    /// Equal moments keep the order in which they were added.
    std::multimap<Moment, Work> delayed;
    std::shared_ptr<const std::function<void()>> wakeHandler;

    /// The lock must be held.
    void appendReady(Work work) { ready.push_back(Piece{nextNumber++, std::move(work)}); }

    /// The lock must be held.
    void takeDue() {
        const Moment now = std::chrono::steady_clock::now();
        while (!delayed.empty() && delayed.begin()->first <= now) {
            appendReady(std::move(delayed.begin()->second));
            delayed.erase(delayed.begin());
        }
    }

    void wake() {
        std::shared_ptr<const std::function<void()>> handler;
        {
            const std::lock_guard lock(mutex);
            handler = wakeHandler;
        }
        if (handler && *handler) {
            (*handler)();
        }
    }

    /// Has work appended with the lock held, and wakes whoever runs it.
    template<class Append>
    void add(Append append) {
        bool isFirst = false;
        {
            const std::lock_guard lock(mutex);
            const bool wasEmpty = ready.empty();
            append();
            isFirst = wasEmpty && !ready.empty();
        }
        // Without the lock, which who wakes up wants to have at once.
        changed.notify_all();
        if (isFirst) {
            wake();
        }
    }

    /// Runs the first piece if its number is below the limit.
    bool runNext(const MainQueue& queue, std::uint64_t limit) noexcept {
        Work work;
        {
            const std::lock_guard lock(mutex);
            if (ready.empty() || ready.front().number >= limit) {
                return false;
            }
            work = std::move(ready.front().work);
            ready.pop_front();
        }
        const CurrentQueue current(queue);
        work();
        // What the work holds may have destructors with work of their own, which belongs to the queue too.
        work = nullptr;
        return true;
    }

    /// False when the limit came before a piece of work.
    bool waitForReady(std::optional<Moment> limit) {
        std::unique_lock lock(mutex);
        for (takeDue(); ready.empty(); takeDue()) {
            if (limit && std::chrono::steady_clock::now() >= *limit) {
                return false;
            }
            const bool waitsForDelayed = !delayed.empty() && (!limit || delayed.begin()->first < *limit);
            if (const auto until = waitsForDelayed ? std::optional(delayed.begin()->first) : limit) {
                changed.wait_until(lock, *until);
            } else {
                changed.wait(lock);
            }
        }
        return true;
    }

    bool runUntil(const MainQueue& queue, const std::function<bool()>& condition,
                  std::optional<Moment> limit) {
        while (!condition()) {
            if (limit && std::chrono::steady_clock::now() >= *limit) {
                return false;
            }
            if (!waitForReady(limit)) {
                return condition();
            }
            runNext(queue, std::numeric_limits<std::uint64_t>::max());
        }
        return true;
    }
};

MainQueue::MainQueue() : state_(std::make_unique<State>()) {}

MainQueue::~MainQueue() {
    // Dropped work may add more from its destructors.
    for (bool empty = false; !empty;) {
        std::deque<State::Piece> ready;
        std::multimap<Moment, Work> delayed;
        const std::lock_guard lock(state_->mutex);
        ready.swap(state_->ready);
        delayed.swap(state_->delayed);
        empty = ready.empty() && delayed.empty();
    }
}

const std::string& MainQueue::label() const {
    return state_->label;
}

void MainQueue::async(Work work) {
    state_->add([this, &work] { state_->appendReady(std::move(work)); });
}

void MainQueue::asyncAll(std::vector<Work> work) {
    state_->add([this, &work] {
        for (Work& piece : work) {
            state_->appendReady(std::move(piece));
        }
    });
}

void MainQueue::asyncAfter(std::chrono::milliseconds delay, Work work) {
    bool isEarliest = false;
    {
        const std::lock_guard lock(state_->mutex);
        const auto added = state_->delayed.emplace(std::chrono::steady_clock::now() + delay, std::move(work));
        isEarliest = added == state_->delayed.begin();
        state_->changed.notify_all();
    }
    if (isEarliest) {
        state_->wake();
    }
}

bool MainQueue::isCurrent() const {
    return CurrentQueue::is(*this);
}

bool MainQueue::drain() {
    std::uint64_t limit = 0;
    {
        const std::lock_guard lock(state_->mutex);
        state_->takeDue();
        limit = state_->nextNumber;
    }
    bool ran = false;
    while (state_->runNext(*this, limit)) {
        ran = true;
    }
    // What the work added found a queue that was not empty, and so woke nobody.
    bool isLeft = false;
    {
        const std::lock_guard lock(state_->mutex);
        isLeft = !state_->ready.empty();
    }
    if (isLeft) {
        state_->wake();
    }
    return ran;
}

void MainQueue::runUntil(const std::function<bool()>& condition) {
    state_->runUntil(*this, condition, std::nullopt);
}

bool MainQueue::runUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
    return state_->runUntil(*this, condition, std::chrono::steady_clock::now() + limit);
}

void MainQueue::setWakeHandler(std::function<void()> handler) {
    bool hasWork = false;
    {
        const std::lock_guard lock(state_->mutex);
        state_->wakeHandler = std::make_shared<const std::function<void()>>(std::move(handler));
        hasWork = !state_->ready.empty() || !state_->delayed.empty();
    }
    if (hasWork) {
        state_->wake();
    }
}

std::optional<Moment> MainQueue::nextDue() const {
    const std::lock_guard lock(state_->mutex);
    if (state_->delayed.empty()) {
        return std::nullopt;
    }
    return state_->delayed.begin()->first;
}

} // namespace teralune
