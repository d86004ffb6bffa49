#pragma once

#include <boost/json/object.hpp>

#include <optional>
#include <string>

namespace teralune {

/// The answer to a request that changes one profile field.
struct RequestResponse {
    bool success = false;
    std::optional<std::string> message;

    static RequestResponse map(const boost::json::object& json);
};

} // namespace teralune
