#pragma once

#include "Platform/Http/HttpHeaders.h"

#include <string>

namespace teralune {

/// The head of a reply; the body travels beside it.
struct HTTPURLResponse {
    std::string url; ///< of the request that was answered, after redirects
    int statusCode = 0;
    HttpHeaders headers;
};

} // namespace teralune
