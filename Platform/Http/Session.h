#pragma once

#include "Platform/Foundation/UniqueFunction.h"
#include "Platform/Http/HttpHeaders.h"
#include "Platform/Http/SessionDelegate.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace teralune {

struct PlatformServices;
class DispatchQueue;
class HttpTransport;
class RequestAdapter;
class RequestRetrier;
class RunningRequest;
class SessionManager;
class SessionSteps;

/// What a session manager shares with its requests. It keeps each request alive until it has ended and lasts
/// as long as the last of them.
///
/// The state of requests, and the adapter, retrier and closures here, are touched in two ways only: by an
/// Activity on the delegate queue, or by the thread that closes the session once no activity is possible.
class Session : public std::enable_shared_from_this<Session> {
public:
    static std::shared_ptr<Session> make(SessionManager& manager, const PlatformServices& platform,
                                         HttpHeaders additionalHeaders);
    Session(SessionManager& manager, const PlatformServices& platform, HttpHeaders additionalHeaders);
    ~Session();

    /// A stretch of work for requests on the delegate queue. False once the session is closed; the session
    /// does not close during one. At its end the handlers' calls that came up go to the main queue.
    class Activity {
    public:
        explicit Activity(Session& session);
        ~Activity();
        Activity(const Activity&) = delete;
        Activity& operator=(const Activity&) = delete;
        explicit operator bool() const { return isAdmitted_; }

    private:
        Session& session_;
        bool isAdmitted_;
    };

    /// Returns whether the session is open; a request that comes later ends as cancelled.
    bool add(std::shared_ptr<RunningRequest> request);
    void remove(const RunningRequest& request);

    // In activities alone:

    /// Keeps a handler's call for the main queue.
    void deliver(UniqueFunction<void()> handlerCall) { handlerCalls_.push_back(std::move(handlerCall)); }
    /// While the retrier owes an answer, a request that has not been sent is not sent either, since it would
    /// most likely meet the same refusal. For each beginHold() one endHold(); the first takes back what waits
    /// in the transport, the last sends everyone on in the order in which they came. An answer that takes
    /// longer than longestHold is not waited for.
    void beginHold();
    void endHold();
    /// Whether the request must wait; it then begins anew after the hold.
    bool holdsBack(RunningRequest& request);

    static constexpr std::chrono::seconds longestHold{1};

    void setAdapter(RequestAdapter* adapter);
    void setRetrier(RequestRetrier* retrier);
    /// Cancels what is under way. Fatal inside an activity of this session.
    void close();

    SessionManager& manager;
    const std::shared_ptr<DispatchQueue> mainQueue;
    const std::shared_ptr<DispatchQueue> delegateQueue;
    const std::shared_ptr<SessionSteps> steps;
    const std::shared_ptr<HttpTransport> transport;
    const HttpHeaders additionalHeaders;
    RequestAdapter* adapter = nullptr;
    RequestRetrier* retrier = nullptr;
    SessionDelegate delegate;

private:
    void waitForActivity(std::unique_lock<std::mutex>& lock);
    void beginHeldBack();

    std::mutex mutex_;
    std::condition_variable activityEnded_;
    bool isActive_ = false;
    bool isClosed_ = false;
    /// By number, and so in the order in which they came.
    std::map<std::uint64_t, std::shared_ptr<RunningRequest>> requests_;

    // Of activities.
    std::vector<UniqueFunction<void()>> handlerCalls_;
    std::size_t holds_ = 0;
    std::uint64_t holdNumber_ = 0;
    bool isHoldOverdue_ = false;
    std::map<std::uint64_t, std::weak_ptr<RunningRequest>> heldBack_;
};

} // namespace teralune
