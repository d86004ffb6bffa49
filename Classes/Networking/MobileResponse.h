#pragma once

#include <boost/json/object.hpp>

#include <optional>
#include <string>

namespace teralune {

/// The answer to an account request that the server may refuse with a text.
struct MobileResponse {
    std::optional<std::string> alert; ///< why it was refused, to be shown as it is

    static MobileResponse map(const boost::json::object& json);
};

} // namespace teralune
