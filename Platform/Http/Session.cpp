#include "Platform/Http/Session.h"

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Foundation/FatalError.h"
#include "Platform/Http/HttpTransport.h"
#include "Platform/Http/RunningRequest.h"
#include "Platform/Http/SessionSteps.h"
#include "Platform/PlatformServices.h"

#include <utility>

namespace teralune {

std::shared_ptr<Session> Session::make(SessionManager& owner, const PlatformServices& platform,
                                       HttpHeaders headers) {
    auto session = std::make_shared<Session>(owner, platform, std::move(headers));
    session->steps->setSession(session);
    return session;
}

Session::Session(SessionManager& owner, const PlatformServices& platform, HttpHeaders headers)
    : manager(owner)
    , mainQueue(platform.mainQueue)
    , delegateQueue(platform.httpDelegateQueue)
    , steps(std::make_shared<SessionSteps>(platform.httpDelegateQueue))
    , transport(platform.transport)
    , additionalHeaders(std::move(headers)) {}

Session::~Session() = default;

Session::Activity::Activity(Session& session) : session_(session) {
    const std::lock_guard lock(session_.mutex_);
    isAdmitted_ = !session_.isClosed_;
    session_.isActive_ = isAdmitted_;
}

Session::Activity::~Activity() {
    if (isAdmitted_) {
        session_.mainQueue->asyncAll(std::exchange(session_.handlerCalls_, {}));
        const std::lock_guard lock(session_.mutex_);
        session_.isActive_ = false;
        session_.activityEnded_.notify_all();
    }
}

bool Session::add(std::shared_ptr<RunningRequest> request) {
    const std::lock_guard lock(mutex_);
    if (!isClosed_) {
        const std::uint64_t number = request->number;
        requests_.emplace(number, std::move(request));
    }
    return !isClosed_;
}

void Session::remove(const RunningRequest& request) {
    heldBack_.erase(request.number);
    const std::lock_guard lock(mutex_);
    requests_.erase(request.number);
}

void Session::beginHold() {
    if (holds_++ > 0) {
        return;
    }
    std::vector<std::shared_ptr<RunningRequest>> requests;
    {
        const std::lock_guard lock(mutex_);
        for (const auto& [number, request] : requests_) {
            requests.push_back(request);
        }
    }
    for (const auto& request : requests) {
        if (request->withdraw()) {
            heldBack_.emplace(request->number, request);
        }
    }
    steps->postAfter(longestHold, [weak = weak_from_this(), number = ++holdNumber_] {
        const auto session = weak.lock();
        if (session && session->holds_ > 0 && session->holdNumber_ == number) {
            session->isHoldOverdue_ = true;
            session->beginHeldBack();
        }
    });
}

void Session::endHold() {
    if (--holds_ == 0) {
        isHoldOverdue_ = false;
        beginHeldBack();
    }
}

void Session::beginHeldBack() {
    for (const auto& [number, held] : std::exchange(heldBack_, {})) {
        if (const auto request = held.lock()) {
            request->begin();
        }
    }
}

bool Session::holdsBack(RunningRequest& request) {
    const bool isHeld = holds_ > 0 && !isHoldOverdue_;
    if (isHeld) {
        heldBack_.emplace(request.number, request.weak_from_this());
    }
    return isHeld;
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
