#pragma once

#include "Platform/Http/URLRequest.h"

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace teralune {

/// Request parameters; encoded in the order of their keys.
using HttpParameters = std::map<std::string, std::string>;

/// "key=value" joined with "&", both percent-encoded: all but letters, digits, "-._~/?" are escaped. Text
/// that is not UTF-8 is sent with U+FFFD in place of what can't be read.
std::string formEncoded(const HttpParameters& parameters);

/// Puts the parameters where the method wants them: appended to the query of GET, HEAD and DELETE, in a form
/// body ("application/x-www-form-urlencoded; charset=utf-8") otherwise. Without parameters the request is
/// unchanged.
URLRequest encode(URLRequest request, const HttpParameters& parameters);

} // namespace teralune
