#pragma once

#include "Platform/Foundation/Result.h"

#include <boost/json/value.hpp>

#include <string_view>

namespace teralune {

/// Parses one JSON text: at most 64 levels deep, valid UTF-8 only, nothing but white space after it, any
/// kind of value at the top. Numbers beyond the range of a double are an error, not infinity.
Result<boost::json::value> parseJson(std::string_view text);

/// Compact JSON text.
std::string serializeJson(const boost::json::value& value);

} // namespace teralune
