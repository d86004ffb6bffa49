#pragma once

#include <boost/json/object.hpp>

#include <optional>
#include <string>

namespace teralune {

/// The answer to a token request.
struct RefreshResponse {
    std::optional<std::string> jwt;   ///< the new access token
    std::optional<std::string> alert; ///< what the server says instead of giving a token

    static RefreshResponse map(const boost::json::object& json);
};

} // namespace teralune
