#pragma once

#include "Platform/Http/HTTPURLResponse.h"

#include <optional>
#include <string>

namespace teralune {

/// The type and subtype of a reply's Content-Type in lower case, "application/json"; absent where the header
/// is missing or holds no type.
std::optional<std::string> mimeType(const HTTPURLResponse& response);

/// The charset parameter of a reply's Content-Type in lower case; absent without one.
std::optional<std::string> charset(const HTTPURLResponse& response);

} // namespace teralune
