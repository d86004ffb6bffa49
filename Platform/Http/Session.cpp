#include "Platform/Http/Session.h"

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Foundation/FatalError.h"
#include "Platform/Http/HttpTransport.h"
#include "Platform/Http/RunningRequest.h"
#include "Platform/PlatformServices.h"

namespace teralune {

Session::Session(SessionManager& owner, const PlatformServices& platform, HttpHeaders headers)
    : manager(owner)
    , mainQueue(platform.mainQueue)
    , delegateQueue(platform.httpDelegateQueue)
    , transport(platform.transport)
    , additionalHeaders(std::move(headers)) {}

Session::Activity::Activity(Session& session) : session_(session) {
    const std::lock_guard lock(session_.mutex_);
    isAdmitted_ = !session_.isClosed_;
    session_.isActive_ = isAdmitted_;
}

Session::Activity::~Activity() {
    if (isAdmitted_) {
        const std::lock_guard lock(session_.mutex_);
        session_.isActive_ = false;
        session_.activityEnded_.notify_all();
    }
}

bool Session::add(std::shared_ptr<RunningRequest> request) {
    const std::lock_guard lock(mutex_);
    if (!isClosed_) {
        const RunningRequest* const key = request.get();
        requests_.emplace(key, std::move(request));
    }
    return !isClosed_;
}

void Session::remove(const RunningRequest& request) {
    const std::lock_guard lock(mutex_);
    requests_.erase(&request);
}

void Session::setAdapter(RequestAdapter* newAdapter) {
    std::unique_lock lock(mutex_);
    waitForActivity(lock);
    adapter = newAdapter;
}

void Session::setRetrier(RequestRetrier* newRetrier) {
    std::unique_lock lock(mutex_);
    waitForActivity(lock);
    retrier = newRetrier;
}

void Session::close() {
    decltype(requests_) left;
    {
        std::unique_lock lock(mutex_);
        waitForActivity(lock);
        isClosed_ = true;
        left.swap(requests_);
    }
    for (const auto& [key, request] : left) {
        request->abandon();
    }
}

void Session::waitForActivity(std::unique_lock<std::mutex>& lock) {
    if (isActive_ && delegateQueue->isCurrent()) {
        fatalError("A session manager was changed or destroyed by its own adapter, retrier or closure.");
    }
    activityEnded_.wait(lock, [this] { return !isActive_; });
}

} // namespace teralune
