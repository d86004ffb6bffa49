#include "Platform/Foundation/JsonMapping.h"

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>

#include <algorithm>
#include <cmath>
#include <exception>
#include <utility>

namespace teralune {

namespace {

Error jsonError(std::int64_t code, const std::string& reason) {
    return Error{"TeraluneJson", code, "The text is not valid JSON: " + reason, {}};
}

/// The parser turns a number beyond a double's range into infinity, and 0e999 into no number at all.
bool hasFiniteNumbersOnly(const boost::json::value& value) {
    switch (value.kind()) {
    case boost::json::kind::double_:
        return std::isfinite(value.get_double());
    case boost::json::kind::array:
        return std::all_of(value.get_array().begin(), value.get_array().end(), hasFiniteNumbersOnly);
    case boost::json::kind::object:
        return std::all_of(value.get_object().begin(), value.get_object().end(),
                           [](const auto& member) { return hasFiniteNumbersOnly(member.value()); });
    default:
        return true;
    }
}

} // namespace

Result<boost::json::value> parseJson(std::string_view text, boost::json::storage_ptr storage) {
    boost::json::parse_options options;
    options.max_depth = 64;
    try {
        boost::json::error_code failure;
        boost::json::value value =
            boost::json::parse({text.data(), text.size()}, failure, std::move(storage), options);
        if (failure) {
            return jsonError(failure.value(), failure.message());
        }
        if (!hasFiniteNumbersOnly(value)) {
            return jsonError(-1, "a number is out of range");
        }
        return value;
    } catch (const std::exception& exception) {
        return jsonError(-1, exception.what());
    }
}

std::string serializeJson(const boost::json::value& value) {
    return boost::json::serialize(value);
}

} // namespace teralune
