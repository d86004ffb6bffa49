#pragma once

#include "Platform/Http/HTTPURLResponse.h"
#include "Platform/Http/URLRequest.h"

#include <cstddef>

namespace teralune {

/// Whether a private cache that follows RFC 9111 would store the reply: one to a GET over http or https with
/// status 200 to 299 but 206, that neither side forbids to store, that does not vary by everything, whose
/// status is cacheable by itself or made so by an explicit lifetime, and that is no larger than a twentieth
/// of the 20 MiB that such a cache usually has.
bool wouldBeStoredInCache(const URLRequest& request, const HTTPURLResponse& response, std::size_t bodySize);

} // namespace teralune
