#pragma once

#include "Platform/Http/HTTPURLResponse.h"
#include "Platform/Http/URLRequest.h"

#include <memory>
#include <optional>
#include <string>

namespace teralune {

/// What the session's closures and the retrier are told of a request.
struct SessionTask {
    URLRequest originalRequest;              ///< as the adapter left it for the latest attempt
    std::optional<HTTPURLResponse> response; ///< of the latest attempt
    int retryCount = 0;
};

/// A reply that could be kept in a cache.
struct CachedURLResponse {
    HTTPURLResponse response;
    std::shared_ptr<const std::string> data;
};

} // namespace teralune
