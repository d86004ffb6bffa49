#pragma once

#include "Platform/Dispatch/DispatchQueue.h"

#include <chrono>
#include <deque>
#include <memory>
#include <mutex>

namespace teralune {

class Session;

/// The steps of a session's requests on their way to the delegate queue, where they run in the order in which
/// they came. Steps that wait together run in one piece of the queue's work and one activity of the session,
/// so that neither threads nor locks change hands for each; a piece ends after 16 steps or half a
/// millisecond, since the queue has other users.
///
/// Steps that never run are dropped with this object, which the queue does not own. It owns no session: a
/// thread of the transport that brings a reply must not become the last owner of one.
class SessionSteps : public std::enable_shared_from_this<SessionSteps> {
public:
    explicit SessionSteps(std::shared_ptr<DispatchQueue> queue) : queue_(std::move(queue)) {}
    /// Before the first step.
    void setSession(std::weak_ptr<Session> session) { session_ = std::move(session); }

    /// Any thread. A step must not throw; it is dropped when the session is closed.
    void post(DispatchQueue::Work step);
    void postAfter(std::chrono::milliseconds delay, DispatchQueue::Work step);

private:
    void postPiece();
    void runPiece();
    DispatchQueue::Work takeNext();
    void dropAll();

    const std::shared_ptr<DispatchQueue> queue_;
    std::weak_ptr<Session> session_;
    std::mutex mutex_;
    std::deque<DispatchQueue::Work> waiting_;
    bool isPosted_ = false;
};

} // namespace teralune
