#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace teralune::service {

/// The LaTeX that an image carries beside its pixels: the text named "LaTeX" of a PNG's tEXt or iTXt chunks,
/// or a JPEG's first comment. This service does not look at pixels. Absent for every other image and for
/// bytes that are none.
std::optional<std::string> latexInImage(std::string_view image);

} // namespace teralune::service
