#pragma once

#include "Platform/Foundation/Result.h"
#include "Platform/Http/URLRequest.h"

namespace teralune {

/// Completes a request before it is sent. Asked for each attempt with the request as it was made, so that a
/// retried request carries what is in force now. Runs on the session's delegate queue. An error fails the
/// request.
class RequestAdapter {
public:
    virtual ~RequestAdapter() = default;
    virtual Result<URLRequest> adapt(URLRequest request) = 0;
};

} // namespace teralune
