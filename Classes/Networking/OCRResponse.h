#pragma once

#include <boost/json/object.hpp>

#include <cstdint>
#include <optional>
#include <string>

namespace teralune {

/// The recognition service's answer.
struct OCRResponse {
    std::optional<std::string> location;
    bool success = false;
    std::optional<std::string> ocrError;    ///< "error"
    std::optional<std::string> latex;       ///< the recognised problem
    std::optional<std::string> userMessage; ///< "user_message": a message to show
    std::int64_t userMessageCount = 0;      ///< "user_message_count"

    static OCRResponse map(const boost::json::object& json);
};

} // namespace teralune
