#pragma once

#include "Platform/Foundation/Result.h"
#include "Platform/Http/HTTPURLResponse.h"
#include "Platform/Http/URLRequest.h"

#include <memory>
#include <optional>
#include <string>

namespace teralune {

/// How a request ended, for its response handler.
template<class T>
struct DataResponse {
    URLRequest request;                      ///< as it was last sent
    std::optional<HTTPURLResponse> response; ///< absent when none arrived
    std::shared_ptr<const std::string> data; ///< the body as received, decoded; never null
    Result<T> result;

    int statusCode() const { return response ? response->statusCode : 0; }
};

} // namespace teralune
