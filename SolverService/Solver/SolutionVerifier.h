#pragma once

#include <optional>
#include <string_view>

namespace teralune::service {

/// Whether every value that the solution claims, such as "x=3, x=-2" or "3", makes both sides of the
/// equation equal. Exact where everything is a fraction, within rounding elsewhere. Absent when the problem
/// is no equation in one unknown or the solution claims no value. Takes any bytes.
std::optional<bool> verifySolution(std::string_view problem, std::string_view solution);

} // namespace teralune::service
