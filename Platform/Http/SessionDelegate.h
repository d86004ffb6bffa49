#pragma once

#include "Platform/Foundation/Error.h"
#include "Platform/Http/SessionTask.h"

#include <functional>
#include <optional>

namespace teralune {

/// Closures a session manager calls on its delegate queue. Set them before the first request.
struct SessionDelegate {
    /// A reply that a cache would store, before it would; returns what is to be stored.
    std::function<CachedURLResponse(const SessionTask&, CachedURLResponse proposed)>
        dataTaskWillCacheResponse;
    /// A request has ended: it is not going to be retried. The error is the transport's or the validation's.
    std::function<void(const SessionTask&, const std::optional<Error>&)> taskDidComplete;
};

} // namespace teralune
