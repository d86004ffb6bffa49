#include "Platform/Http/SessionSteps.h"

#include "Platform/Http/Session.h"

#include <chrono>
#include <utility>

namespace teralune {

void SessionSteps::post(DispatchQueue::Work step) {
    {
        const std::lock_guard lock(mutex_);
        waiting_.push_back(std::move(step));
        if (std::exchange(isPosted_, true)) {
            return;
        }
    }
    postPiece();
}

void SessionSteps::postAfter(std::chrono::milliseconds delay, DispatchQueue::Work step) {
    queue_->asyncAfter(delay, [weak = weak_from_this(), step = std::move(step)]() mutable {
        if (const auto steps = weak.lock()) {
            steps->post(std::move(step));
        }
    });
}

void SessionSteps::postPiece() {
    queue_->async([weak = weak_from_this()] {
        if (const auto steps = weak.lock()) {
            steps->runPiece();
        }
    });
}

void SessionSteps::runPiece() {
    constexpr int mostSteps = 16;
    constexpr std::chrono::microseconds longest(500);
    const auto end = std::chrono::steady_clock::now() + longest;
    const auto session = session_.lock();
    if (!session) {
        return dropAll();
    }
    {
        const Session::Activity activity(*session);
        for (int count = 0; count < mostSteps; ++count) {
            auto step = takeNext();
            if (!step) {
                return;
            }
            if (activity) {
                step();
            }
            if (std::chrono::steady_clock::now() >= end) {
                break;
            }
        }
    }
    // There may be no more, but then the next piece finds out.
    postPiece();
}

/// Says that no piece is posted any more when there is no step left for it.
DispatchQueue::Work SessionSteps::takeNext() {
    const std::lock_guard lock(mutex_);
    isPosted_ = !waiting_.empty();
    if (!isPosted_) {
        return nullptr;
    }
    auto step = std::move(waiting_.front());
    waiting_.pop_front();
    return step;
}

/// Outside the lock, since what a step holds may post from its destructor.
void SessionSteps::dropAll() {
    std::deque<DispatchQueue::Work> dropped;
    const std::lock_guard lock(mutex_);
    isPosted_ = false;
    dropped.swap(waiting_);
}

} // namespace teralune
