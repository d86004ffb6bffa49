#pragma once

#include "Platform/Foundation/Error.h"
#include "Platform/Foundation/UniqueFunction.h"
#include "Platform/Http/SessionTask.h"

#include <chrono>

namespace teralune {

class SessionManager;

enum class RetryDecision { doNotRetry, retry };

/// Ends the wait of a failed request. Never runs the request inside the call, so that it may be called under
/// a lock; calls after the first, or after the request was cancelled, do nothing.
using RetryCompletion = UniqueFunction<void(RetryDecision, std::chrono::milliseconds delay)>;

/// Asked once for each attempt that failed, by transport or by validation, on the session's delegate queue.
/// It answers whenever it likes, from any thread; until then the request waits and holds no connection, and
/// the session sends no other request that would ask the retrier: what it needs to find its answer it sends
/// with withoutRetrier(). A completion that is dropped unanswered means: do not retry.
class RequestRetrier {
public:
    virtual ~RequestRetrier() = default;
    virtual void should(SessionManager& manager, const SessionTask& request, const Error& error,
                        RetryCompletion completion) = 0;
};

} // namespace teralune
