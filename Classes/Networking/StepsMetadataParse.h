#pragma once

#include <boost/json/object.hpp>

#include <optional>
#include <string>

namespace teralune {

/// What a solution says of itself.
struct StepsMetadataParse {
    std::optional<std::string> subject;
    std::optional<std::string> topic;
    std::optional<std::string> subtopic;
    bool cached = false; ///< "isFromCache"

    static StepsMetadataParse map(const boost::json::object& json);
};

} // namespace teralune
