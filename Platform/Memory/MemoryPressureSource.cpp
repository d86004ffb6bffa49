#include "Platform/Memory/MemoryPressureSource.h"

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Foundation/WakeEvent.h"
#include "Platform/Memory/MemoryPressureTracker.h"

#include <poll.h>

#include <algorithm>
#include <thread>

namespace teralune {
namespace {

/// How long to wait before watching again after the watched thing went away, as a control group does that is
/// replaced.
constexpr std::chrono::seconds reopenDelay(10);

} // namespace

struct MemoryPressureSource::State {
    State(std::shared_ptr<DispatchQueue> target, MemoryPressureSurroundings place,
          std::chrono::milliseconds quietPeriod)
        : queue(std::move(target))
        , surroundings(std::move(place))
        , tracker(quietPeriod) {}

    void run();
    /// False when the watched thing is gone.
    bool takeSignals(const std::vector<pollfd>& descriptors);
    WakeEvent::Deadline nextDeadline() const;

    const std::shared_ptr<DispatchQueue> queue;
    const MemoryPressureSurroundings surroundings;
    std::shared_ptr<const EventHandler> handler;
    MemoryPressureTracker tracker;
    std::vector<MemoryPressureWatch> watches;
    WakeEvent::Deadline reopenAt;
    std::optional<WakeEvent> end;
    std::thread thread;
};

MemoryPressureSource::MemoryPressureSource(std::shared_ptr<DispatchQueue> queue,
                                           MemoryPressureSurroundings surroundings,
                                           std::chrono::milliseconds quietPeriod)
    : state_(std::make_unique<State>(std::move(queue), std::move(surroundings), quietPeriod)) {}

MemoryPressureSource::~MemoryPressureSource() {
    if (!state_->thread.joinable())
        return;
    state_->end->signal();
    state_->thread.join();
}

void MemoryPressureSource::setEventHandler(EventHandler handler) {
    state_->handler = std::make_shared<const EventHandler>(std::move(handler));
}

void MemoryPressureSource::resume() {
    state_->watches = MemoryPressureWatch::openAll(state_->surroundings);
    Result<WakeEvent> wake = WakeEvent::make();
    if (state_->watches.empty() || !wake) {
        // The handler may own this object, which then ends here.
        const std::shared_ptr<const EventHandler> unused = std::move(state_->handler);
        return;
    }
    state_->end = std::move(wake).value();
    state_->thread = std::thread([state = state_.get()] { state->run(); });
}

void MemoryPressureSource::State::run() {
    for (;;) {
        std::vector<pollfd> descriptors;
        for (const MemoryPressureWatch& watch : watches)
            descriptors.push_back({watch.descriptor.get(), watch.events, 0});
        if (end->wait(descriptors, nextDeadline()))
            return;
        const auto now = std::chrono::steady_clock::now();
        if (!takeSignals(descriptors)) {
            watches.clear();
            reopenAt = now + reopenDelay;
        } else if (reopenAt && *reopenAt <= now) {
            watches = MemoryPressureWatch::openAll(surroundings);
            reopenAt = watches.empty() ? WakeEvent::Deadline(now + reopenDelay) : std::nullopt;
        }
        if (const std::optional<MemoryPressureLevel> level = tracker.takeChange(now)) {
            queue->async([weak = std::weak_ptr(handler), changed = *level] {
                if (const auto called = weak.lock())
                    (*called)(changed);
            });
        }
    }
}

bool MemoryPressureSource::State::takeSignals(const std::vector<pollfd>& descriptors) {
    for (std::size_t i = 0; i < descriptors.size(); ++i) {
        const int events = descriptors[i].revents;
        if ((events & (POLLERR | POLLNVAL)) != 0)
            return false;
        if ((events & watches[i].events) != 0) {
            if (watches[i].discardsInput && !watches[i].discardInput())
                return false;
            tracker.signalled(watches[i].level, std::chrono::steady_clock::now());
        } else if ((events & POLLHUP) != 0) {
            return false;
        }
    }
    return true;
}

WakeEvent::Deadline MemoryPressureSource::State::nextDeadline() const {
    const WakeEvent::Deadline change = tracker.nextChange();
    return change && reopenAt ? std::min(*change, *reopenAt) : change ? change : reopenAt;
}

} // namespace teralune
