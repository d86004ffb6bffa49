#pragma once

#include <boost/json/object.hpp>

#include <optional>
#include <string>
#include <string_view>

namespace teralune {

/// What a solution says of itself.
struct StepsMetadataParse {
    std::optional<std::string> subject;
    std::optional<std::string> topic;
    std::optional<std::string> subtopic;
    bool cached = false; ///< "isFromCache"

    static StepsMetadataParse map(const boost::json::object& json);
    /// From a whole steps text; no value when it is no JSON object.
    static std::optional<StepsMetadataParse> parse(std::string_view steps);
};

} // namespace teralune
