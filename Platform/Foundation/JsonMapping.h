#pragma once

#include "Platform/Foundation/Result.h"

#include <boost/json/value.hpp>

#include <string_view>

namespace teralune {

/// Parses one JSON text: at most 64 levels deep, valid UTF-8 only, nothing but white space after it, any
/// kind of value at the top. Numbers beyond the range of a double are an error, not infinity.
/// The storage may be a monotonic resource for a large reply that is read and dropped on one thread: copies
/// of its parts would share that resource, which grows only and knows no lock.
Result<boost::json::value> parseJson(std::string_view text, boost::json::storage_ptr storage = {});

/// Compact JSON text.
std::string serializeJson(const boost::json::value& value);

} // namespace teralune
