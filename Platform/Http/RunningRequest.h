#pragma once

#include "Platform/Foundation/UniqueFunction.h"
#include "Platform/Http/HttpTransport.h"
#include "Platform/Http/RequestRetrier.h"
#include "Platform/Http/ResponseFinisher.h"
#include "Platform/Http/SessionTask.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace teralune {

class Session;

/// One request from its sending to its end, over all its attempts. An attempt is adapted, sent, validated;
/// after a failure the request waits for the retrier's answer without holding a connection, and meanwhile its
/// session sends no other. The end is reached once: closures, mapping, and the handler's call posted to the
/// main queue.
///
/// cancel() may be called from any thread. Everything else happens in activities of the session.
class RunningRequest : public std::enable_shared_from_this<RunningRequest> {
public:
    struct Plan {
        URLRequest request;
        TransferLane lane = TransferLane::standard;
        bool isValidated = false;
        bool asksRetrier = true;
    };

    static std::shared_ptr<RunningRequest> start(const std::shared_ptr<Session>& session, Plan plan,
                                                 ResponseFinisher finisher);
    RunningRequest(std::shared_ptr<Session> session, Plan plan, ResponseFinisher finisher);

    /// Grows in the order in which requests come.
    const std::uint64_t number;

    /// Has an attempt begun.
    void begin();
    void cancel();
    /// Takes back an attempt of which nothing was sent yet; false when there is none. For the session, in an
    /// activity.
    bool withdraw();
    /// Ends the request as cancelled and runs no code of the session's user. For the session alone, when no
    /// activity is possible any more.
    void abandon();

private:
    class RetryAnswer;

    /// Has a step performed on the delegate queue.
    template<class Step>
    void post(std::chrono::milliseconds delay, Step step);
    /// Runs a step unless the request has ended; a cancelled one ends instead. An exception is its end too.
    template<class Step>
    void perform(Step& step) noexcept;

    bool canBeHeldBack() const { return plan_.asksRetrier && plan_.lane == TransferLane::standard; }
    void beginAttempt();
    Result<URLRequest> preparedRequest();
    void endAttempt(TransferOutcome outcome);
    void askRetrier(Error error);
    void takeAnswer(int attempt, RetryDecision decision);
    void finish(std::optional<Error> error);
    void offerToCache();
    void endHold();
    UniqueFunction<void()> handlerCall(URLRequest request, std::optional<HTTPURLResponse> response,
                                       std::optional<Error> error);

    const std::shared_ptr<Session> session_;
    const Plan plan_;
    std::atomic<bool> isCancelled_ = false;
    std::atomic<int> answeredAttempt_ = 0; ///< the latest for which the retrier has answered

    ResponseFinisher finisher_;
    bool hasEnded_ = false;
    int attempt_ = 0;
    SessionTask task_;
    std::unique_ptr<Transfer> transfer_;
    std::shared_ptr<const std::string> body_;
    /// Set while the retrier is asked.
    std::optional<Error> failure_;
    bool isHolding_ = false; ///< the session's other requests wait for the retrier's answer to this one
};

} // namespace teralune
