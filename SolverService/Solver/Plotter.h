#pragma once

#include <boost/json/fwd.hpp>

#include <optional>
#include <string_view>

namespace teralune::service {

/// The plotting information of a graph: {"window": {…}, "functions": [{"expression", "latex", "points"}]},
/// a point being [x, y], with null for y where the function has no value. The graph is one expression,
/// "y=" before it or not, or a JSON object with "functions" and perhaps a "window" with "xMin" and "xMax".
/// Absent when it can't be plotted. Takes any bytes.
std::optional<boost::json::object> plottingInfo(std::string_view graph);

} // namespace teralune::service
