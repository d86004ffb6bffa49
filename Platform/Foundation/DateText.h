#pragma once

#include <chrono>
#include <optional>
#include <string_view>

namespace teralune {

/// Reads a date written exactly like "Mar 05, 2017 01:04:09 PM": English month, two digits for all but the
/// year, which is of 1970 to 2099. No value for anything else, also where a more patient reader would find a
/// date. Exists because a notebook brings such dates by the ten thousand.
std::optional<std::chrono::local_time<std::chrono::milliseconds>> parseDateText(std::string_view text);

} // namespace teralune
