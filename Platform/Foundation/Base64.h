#pragma once

#include <string>
#include <string_view>

namespace teralune {

/// The bytes in Base64 (RFC 4648, section 4), padded, on one line.
std::string base64Encoded(std::string_view bytes);

} // namespace teralune
