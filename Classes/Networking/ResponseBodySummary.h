#pragma once

#include <boost/json/value.hpp>

#include <string>
#include <string_view>
#include <variant>

namespace teralune {

/// What a reply carried: nothing, its bytes, or the JSON that was read from them.
using ResponseObject = std::variant<std::monostate, std::string_view, const boost::json::value*>;

/// A reply's body in a few words, for a line of the log:
///  - bytes that are UTF-8: the text, of which no more than 100 characters are shown and the others counted;
///  - a JSON object: "object: " and its entries, of which only texts are shown, 20 characters of each;
///  - a JSON array: "array of " and the number of its elements;
///  - anything else: "<nil or omitted>".
std::string responseBodySummary(const ResponseObject& object);

} // namespace teralune
