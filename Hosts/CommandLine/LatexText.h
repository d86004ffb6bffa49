#pragma once

#include <string>
#include <string_view>

namespace teralune {

/// LaTeX as a line that can be read in a terminal: "\frac{x+1}{2}" becomes "(x+1)/2". Takes any text; what
/// it does not know stays readable, and brackets nested beyond reason stay as they are.
std::string latexText(std::string_view latex);

} // namespace teralune
