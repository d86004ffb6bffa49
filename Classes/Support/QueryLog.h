#pragma once

#include "Classes/Interfaces/LoggerType.h"

#include <boost/json/object.hpp>

#include <optional>
#include <string>

namespace teralune {

/// One record of a solution that was shown from the cache, while it waits to be sent.
struct QueryLog {
    std::string query;
    std::optional<std::string> topic;
    Offline offline;

    /// The stored form, in which every value is a text.
    boost::json::object dictionary() const;
    /// Reads the stored form; what is missing in it, or is no text, has a stand-in.
    explicit QueryLog(const boost::json::object& dictionary);
    QueryLog(std::string shownQuery, std::optional<std::string> shownTopic, Offline wasOffline);
};

} // namespace teralune
