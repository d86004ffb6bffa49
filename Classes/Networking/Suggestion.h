#pragma once

#include <boost/json/object.hpp>

#include <cstdint>
#include <optional>
#include <string>

namespace teralune {

/// One suggestion for what the user is typing.
struct Suggestion {
    std::string display; ///< the text shown in the list
    std::string search;  ///< the query to run when it is chosen
    std::int64_t priority = 0;
    std::int64_t pop = 0;
    double nornalPop = 0; ///< spelled as on the wire
    std::optional<std::string> bucketName;

    /// No value without the texts "display" and "search".
    static std::optional<Suggestion> map(const boost::json::object& json);
};

} // namespace teralune
