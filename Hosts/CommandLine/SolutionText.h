#pragma once

#include <boost/json/value.hpp>

#include <string>
#include <string_view>

namespace teralune {

enum class SolutionDetail { everyStep, solutionOnly };

/// The server's steps text as JSON; the text itself as a JSON string when it is none.
boost::json::value solutionRecord(std::string_view steps);
/// The same for people: the problem, each step with its title, the solution.
std::string solutionText(const boost::json::value& record, SolutionDetail detail);

/// What the server says of a solution that was to be verified, and of a graph that was to be plotted. An
/// answer of another form is shown as it came.
std::string verdictText(const boost::json::value& record);
std::string plotText(const boost::json::value& record);

} // namespace teralune
