#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace teralune::service {

/// A grey PNG of that size whose shades follow the text, and which carries the text as its LaTeX, so that
/// the recognition of this service reads it back. Width and height are at least 1.
std::string pngOf(std::string_view text, std::uint32_t width, std::uint32_t height);

} // namespace teralune::service
