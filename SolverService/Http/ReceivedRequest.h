#pragma once

#include "SolverService/Http/Parameters.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace teralune::service {

/// One request as it came over the wire. What the routes read, and what the request log keeps.
struct ReceivedRequest {
    std::string method;
    /// Path and query as sent, nothing decoded.
    std::string target;
    /// Names and values as sent, in their order; repeated headers stay apart.
    std::vector<std::pair<std::string, std::string>> headers;
    /// The bytes of the body, the framing of a chunked one taken off.
    std::string body;
    /// The decoded items of the query and, behind them, of a form-encoded body.
    Parameters parameters;

    /// The target without its query.
    std::string_view path() const;
    /// The first header of that name, in any letter case.
    std::optional<std::string> header(std::string_view name) const;
    /// The value of an item of the "Cookie" headers.
    std::optional<std::string> cookie(std::string_view name) const;

    /// Reads the parameters out of target and body. Called once, before anyone sees the request.
    void readParameters();
};

} // namespace teralune::service
