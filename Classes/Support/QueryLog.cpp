#include "Classes/Support/QueryLog.h"

#include <boost/json/string.hpp>
#include <boost/json/value.hpp>

#include <string_view>
#include <utility>

namespace teralune {
namespace {

std::optional<std::string> textAt(const boost::json::object& dictionary, std::string_view key) {
    const boost::json::value* value = dictionary.if_contains(key);
    if (!value || !value->is_string())
        return std::nullopt;
    return std::string(value->get_string());
}

} // namespace

QueryLog::QueryLog(std::string shownQuery, std::optional<std::string> shownTopic, Offline wasOffline)
    : query(std::move(shownQuery))
    , topic(std::move(shownTopic))
    , offline(wasOffline) {}

QueryLog::QueryLog(const boost::json::object& dictionary)
    : query(textAt(dictionary, "query").value_or("NO QUERY"))
    , topic(textAt(dictionary, "topic"))
    , offline{textAt(dictionary, "offline") == "true"} {}

boost::json::object QueryLog::dictionary() const {
    boost::json::object dictionary;
    dictionary["query"] = query;
    if (topic)
        dictionary["topic"] = *topic;
    dictionary["offline"] = offline.value ? "true" : "false";
    return dictionary;
}

} // namespace teralune
