#include "Platform/Http/RunningRequest.h"

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Foundation/FatalError.h"
#include "Platform/Http/CachePolicy.h"
#include "Platform/Http/HeaderSafety.h"
#include "Platform/Http/RequestAdapter.h"
#include "Platform/Http/ResponseValidation.h"
#include "Platform/Http/Session.h"
#include "Platform/Http/SessionSteps.h"

#include <utility>

namespace teralune {

namespace {

const std::shared_ptr<const std::string>& emptyBody() {
    static const auto body = std::make_shared<const std::string>();
    return body;
}

std::uint64_t nextNumber() {
    static std::atomic<std::uint64_t> last = 0;
    return ++last;
}

} // namespace

/// A retrier's way to answer. Only posts, so that it may be called and dropped under any lock; one that is
/// dropped unanswered refuses.
class RunningRequest::RetryAnswer {
public:
    RetryAnswer(std::weak_ptr<RunningRequest> request, int attempt)
        : request_(std::move(request))
        , attempt_(attempt) {}
    RetryAnswer(RetryAnswer&&) noexcept = default;
    RetryAnswer& operator=(RetryAnswer&&) = delete;
    ~RetryAnswer() { (*this)(RetryDecision::doNotRetry, {}); }

    void operator()(RetryDecision decision, std::chrono::milliseconds delay) {
        if (const auto request = std::exchange(request_, {}).lock()) {
            request->answeredAttempt_ = attempt_;
            if (decision == RetryDecision::retry && delay.count() > 0) {
                // The others need not wait for the delay.
                request->post({}, [](RunningRequest& waiting) { waiting.endHold(); });
            }
            request->post(decision == RetryDecision::retry ? delay : std::chrono::milliseconds(0),
                          [attempt = attempt_, decision](RunningRequest& waiting) {
                              waiting.takeAnswer(attempt, decision);
                          });
        }
    }

private:
    std::weak_ptr<RunningRequest> request_;
    int attempt_;
};

std::shared_ptr<RunningRequest> RunningRequest::start(const std::shared_ptr<Session>& session, Plan plan,
                                                      ResponseFinisher finisher) {
    auto request = std::make_shared<RunningRequest>(session, std::move(plan), std::move(finisher));
    if (session->add(request)) {
        request->begin();
    } else {
        request->abandon();
    }
    return request;
}

RunningRequest::RunningRequest(std::shared_ptr<Session> session, Plan plan, ResponseFinisher finisher)
    : number(nextNumber())
    , session_(std::move(session))
    , plan_(std::move(plan))
    , finisher_(std::move(finisher))
    , body_(emptyBody()) {}

void RunningRequest::begin() {
    post({}, [](RunningRequest& request) {
        if (!request.canBeHeldBack() || !request.session_->holdsBack(request)) {
            request.beginAttempt();
        }
    });
}

void RunningRequest::cancel() {
    if (!isCancelled_.exchange(true)) {
        post({}, [](RunningRequest&) {});
    }
}

bool RunningRequest::withdraw() {
    if (!transfer_ || !canBeHeldBack() || !transfer_->withdraw()) {
        return false;
    }
    transfer_.reset();
    return true;
}

void RunningRequest::abandon() {
    hasEnded_ = true;
    transfer_.reset();
    body_ = emptyBody();
    session_->mainQueue->async(
        handlerCall(plan_.request, std::nullopt, httpTransportError(HttpTransportError::cancelled)));
}

template<class Step>
void RunningRequest::post(std::chrono::milliseconds delay, Step step) {
    // The session keeps its requests alive, not the queue: work that never runs must not own what owns the
    // queue.
    auto work = [weak = weak_from_this(), step = std::move(step)]() mutable {
        if (const auto request = weak.lock()) {
            request->perform(step);
        }
    };
    if (delay.count() > 0) {
        session_->steps->postAfter(delay, std::move(work));
    } else {
        session_->steps->post(std::move(work));
    }
}

template<class Step>
void RunningRequest::perform(Step& step) noexcept {
    if (hasEnded_) {
        return;
    }
    try {
        if (isCancelled_) {
            finish(httpTransportError(HttpTransportError::cancelled));
        } else {
            step(*this);
        }
    } catch (...) {
        if (hasEnded_) {
            // Whoever waits for the request would wait for ever.
            fatalError("There is no memory left to tell how a request ended.");
        }
        finish(currentExceptionError());
    }
}

void RunningRequest::beginAttempt() {
    ++attempt_;
    failure_.reset();
    body_ = emptyBody();
    task_.response.reset();
    auto prepared = preparedRequest();
    if (!prepared) {
        task_.originalRequest = plan_.request;
        return finish(prepared.error());
    }
    task_.originalRequest = std::move(prepared).value();
    // The reply is brought over without owning the request: the transport's thread must not become the last
    // owner of the session, and through it of the transport.
    transfer_ = session_->transport->send(
        task_.originalRequest, plan_.lane,
        [weak = weak_from_this(), steps = session_->steps](TransferOutcome outcome) {
            steps->post([weak, outcome = std::move(outcome)]() mutable {
                if (const auto request = weak.lock()) {
                    auto step = [&outcome](RunningRequest& answered) {
                        answered.endAttempt(std::move(outcome));
                    };
                    request->perform(step);
                }
            });
        });
}

Result<URLRequest> RunningRequest::preparedRequest() {
    if (plan_.request.url.empty()) {
        return httpTransportError(HttpTransportError::badURL);
    }
    Result<URLRequest> adapted =
        session_->adapter ? session_->adapter->adapt(plan_.request) : Result<URLRequest>(plan_.request);
    if (!adapted) {
        return adapted;
    }
    HttpHeaders& headers = adapted.value().headers;
    for (const auto& [name, value] : session_->additionalHeaders) {
        if (!headers.contains(name)) {
            headers.add(name, value);
        }
    }
    if (auto error = unsafeHeaderError(adapted.value())) {
        return *std::move(error);
    }
    return adapted;
}

void RunningRequest::endAttempt(TransferOutcome outcome) {
    transfer_.reset();
    task_.response = std::move(outcome.response);
    body_ = std::make_shared<const std::string>(std::move(outcome.body));
    std::optional<Error> error = std::move(outcome.error);
    if (!error && plan_.isValidated && task_.response) {
        error = validationError(task_.originalRequest, *task_.response, body_->size());
    }
    if (error && plan_.asksRetrier && session_->retrier) {
        askRetrier(*std::move(error));
    } else {
        finish(std::move(error));
    }
}

void RunningRequest::askRetrier(Error error) {
    failure_ = std::move(error);
    try {
        session_->retrier->should(session_->manager, task_, *failure_,
                                  RetryAnswer(weak_from_this(), attempt_));
    } catch (...) {
        // The request ends with the failure it had: its answer was dropped on the way here, if not given.
    }
    // One that is refused again and again would otherwise stop the others again and again.
    if (answeredAttempt_ != attempt_ && task_.retryCount == 0) {
        isHolding_ = true;
        session_->beginHold();
    }
}

void RunningRequest::takeAnswer(int attempt, RetryDecision decision) {
    if (attempt != attempt_ || !failure_) {
        return;
    }
    if (decision == RetryDecision::doNotRetry) {
        return finish(std::exchange(failure_, std::nullopt));
    }
    ++task_.retryCount;
    beginAttempt();
    endHold();
}

void RunningRequest::endHold() {
    if (std::exchange(isHolding_, false)) {
        session_->endHold();
    }
}

void RunningRequest::finish(std::optional<Error> error) {
    hasEnded_ = true;
    transfer_.reset();
    try {
        if (!error) {
            offerToCache();
        }
    } catch (...) {
        error = currentExceptionError();
    }
    try {
        if (session_->delegate.taskDidComplete) {
            session_->delegate.taskDidComplete(task_, error);
        }
    } catch (...) {
        error = error ? error : currentExceptionError();
    }
    session_->deliver(
        handlerCall(std::move(task_.originalRequest), std::move(task_.response), std::move(error)));
    endHold();
    session_->remove(*this);
}

void RunningRequest::offerToCache() {
    const auto& willCache = session_->delegate.dataTaskWillCacheResponse;
    if (willCache && task_.response &&
        wouldBeStoredInCache(task_.originalRequest, *task_.response, body_->size())) {
        // What the closure returns is what a cache would keep; none is attached.
        willCache(task_, CachedURLResponse{*task_.response, body_});
    }
}

UniqueFunction<void()> RunningRequest::handlerCall(URLRequest request,
                                                   std::optional<HTTPURLResponse> response,
                                                   std::optional<Error> error) {
    DataResponse<void> raw{std::move(request), std::move(response), std::move(body_), {}};
    if (error) {
        raw.result = *std::move(error);
    }
    return std::exchange(finisher_, nullptr)(std::move(raw));
}

} // namespace teralune
