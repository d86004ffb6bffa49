#include "Platform/Foundation/NotificationCenter.h"

#include <algorithm>
#include <atomic>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

namespace teralune {

struct Observation::Observer {
    std::string name;
    NotificationCenter::Handler handler;
    std::atomic<bool> active = true;
    /// Takes this observer out of its centre, if that still exists.
    std::function<void(const Observer&)> remove;
};

struct NotificationCenter::State {
    std::mutex mutex;
    std::map<std::string, std::vector<std::shared_ptr<Observation::Observer>>> observers;
};

Observation::Observation(std::shared_ptr<Observer> observer) : observer_(std::move(observer)) {}

Observation& Observation::operator=(Observation&& other) noexcept {
    Observation dropped(std::move(*this));
    observer_ = std::move(other.observer_);
    return *this;
}

Observation::~Observation() {
    if (observer_) {
        observer_->active = false;
        observer_->remove(*observer_);
    }
}

NotificationCenter::NotificationCenter() : state_(std::make_shared<State>()) {}

NotificationCenter::~NotificationCenter() = default;

Observation NotificationCenter::observe(std::string name, Handler handler) {
    auto observer = std::make_shared<Observation::Observer>();
    observer->name = std::move(name);
    observer->handler = std::move(handler);
    observer->remove = [weakState = std::weak_ptr(state_)](const Observation::Observer& removed) {
        // The observer's own destructor, and with it what its handler holds, must not run under the lock;
        // the observation that calls this keeps it alive until the lock is gone.
        const auto state = weakState.lock();
        if (!state) {
            return;
        }
        const std::lock_guard lock(state->mutex);
        const auto found = state->observers.find(removed.name);
        std::erase_if(found->second, [&removed](const auto& each) { return each.get() == &removed; });
        if (found->second.empty()) {
            state->observers.erase(found);
        }
    };
    const std::lock_guard lock(state_->mutex);
    state_->observers[observer->name].push_back(observer);
    return Observation(std::move(observer));
}

void NotificationCenter::post(const Notification& notification) {
    std::vector<std::shared_ptr<Observation::Observer>> observers;
    {
        const std::lock_guard lock(state_->mutex);
        if (const auto found = state_->observers.find(notification.name); found != state_->observers.end()) {
            observers = found->second;
        }
    }
    for (const auto& observer : observers) {
        if (observer->active) {
            observer->handler(notification);
        }
    }
}

} // namespace teralune
