#pragma once

#include "Platform/Foundation/Result.h"
#include "Platform/Http/DataResponse.h"

#include <boost/json/value.hpp>

#include <string>

namespace teralune {

/// What response handlers get of a reply's body. The replies are those of requests that succeeded.

/// The text, by the charset of the content type: bytes that it does not know become U+FFFD. Without a
/// charset, and with one that nobody knows, UTF-8, and ISO 8859-1 where the bytes are not UTF-8.
Result<std::string> text(const DataResponse<void>& response);

/// The parsed text, null for an empty body with status 204 or 205. An error for any other empty body and for
/// what is no JSON.
Result<boost::json::value> json(const DataResponse<void>& response);

/// As above; everything but an object is a mapping error.
Result<boost::json::object> jsonObject(const DataResponse<void>& response);

} // namespace teralune
