#pragma once

#include "Platform/Dispatch/DispatchQueue.h"

#include <functional>
#include <optional>

namespace teralune {

/// The serial queue on which everything the user sees happens. It has no thread: the host's main thread
/// drains it. A host without an event loop of its own calls runUntil(); a toolkit host installs a wake
/// handler that makes its event loop call drain().
class MainQueue final : public DispatchQueue {
public:
    MainQueue();
    ~MainQueue() override;

    const std::string& label() const override;
    void async(Work work) override;
    void asyncAll(std::vector<Work> work) override;
    void asyncAfter(std::chrono::milliseconds delay, Work work) override;
    bool isCurrent() const override;

    /// Runs what is queued now and due; what that work adds is left for the next call. Returns whether
    /// anything ran.
    bool drain();
    /// Drains until the condition holds; it is asked at the start and after each piece of work. May be called
    /// from inside a piece of work, and then runs what was queued behind it.
    void runUntil(const std::function<bool()>& condition);
    /// As above for at most this long; returns whether the condition held.
    bool runUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit);
    /// Called, from any thread, whenever work was added to an empty queue, when drain() leaves work behind,
    /// and whenever nextDue() became earlier; at once if there is work already. One drain() for each call
    /// keeps up.
    void setWakeHandler(std::function<void()> handler);
    /// When the earliest delayed piece is due, for a host that has to set a timer; absent without any.
    std::optional<std::chrono::steady_clock::time_point> nextDue() const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace teralune
