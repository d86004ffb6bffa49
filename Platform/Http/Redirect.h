#pragma once

#include "Platform/Foundation/Result.h"
#include "Platform/Http/HTTPURLResponse.h"
#include "Platform/Http/URLRequest.h"

namespace teralune {

/// Whether a reply sends the client somewhere else: status 301, 302, 303, 307 or 308 with a Location.
bool isRedirect(const HTTPURLResponse& response);

/// The request that follows a redirect. A POST becomes a GET after 301 and 302, everything but a HEAD after
/// 303. Towards another origin only those headers go along that say nothing about who asks, and
/// no body, which may hold a password: what would have to take one there is an error. A way from https
/// to http, and one to anything else than these two, is an error.
Result<URLRequest> followingRequest(const URLRequest& request, const HTTPURLResponse& response);

} // namespace teralune
