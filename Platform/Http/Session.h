#pragma once

#include "Platform/Http/HttpHeaders.h"
#include "Platform/Http/SessionDelegate.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <unordered_map>

namespace teralune {

struct PlatformServices;
class DispatchQueue;
class HttpTransport;
class RequestAdapter;
class RequestRetrier;
class RunningRequest;
class SessionManager;

/// What a session manager shares with its requests. It keeps each request alive until it has ended and lasts
/// as long as the last of them.
///
/// The state of requests, and the adapter, retrier and closures here, are touched in two ways only: by an
/// Activity on the delegate queue, or by the thread that closes the session once no activity is possible.
class Session {
public:
    Session(SessionManager& manager, const PlatformServices& platform, HttpHeaders additionalHeaders);

    /// A stretch of work for a request on the delegate queue. False once the session is closed; the session
    /// does not close during one.
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

    void setAdapter(RequestAdapter* adapter);
    void setRetrier(RequestRetrier* retrier);
    /// Cancels what is under way. Fatal inside an activity of this session.
    void close();

    SessionManager& manager;
    const std::shared_ptr<DispatchQueue> mainQueue;
    const std::shared_ptr<DispatchQueue> delegateQueue;
    const std::shared_ptr<HttpTransport> transport;
    const HttpHeaders additionalHeaders;
    RequestAdapter* adapter = nullptr;
    RequestRetrier* retrier = nullptr;
    SessionDelegate delegate;

private:
    void waitForActivity(std::unique_lock<std::mutex>& lock);

    std::mutex mutex_;
    std::condition_variable activityEnded_;
    bool isActive_ = false;
    bool isClosed_ = false;
    std::unordered_map<const RunningRequest*, std::shared_ptr<RunningRequest>> requests_;
};

} // namespace teralune
