#pragma once

#include <boost/json/fwd.hpp>

#include <string>
#include <vector>

namespace teralune::service {

/// One step of a solution: what is done, in words, and what it gives, as LaTeX.
struct SolutionStep {
    std::string title;
    std::string latex;
};

/// A solved problem.
struct Solution {
    std::string subject = "Algebra";
    std::string topic = "Equations";
    std::string subtopic;
    /// The problem as it was understood, as LaTeX.
    std::string problem;
    std::string latex;
    std::vector<SolutionStep> steps;
};

enum class SolutionDetail { everyStep, solutionOnly };

/// The solution as the steps endpoint sends it.
boost::json::object jsonSolution(const Solution& solution, SolutionDetail detail);

} // namespace teralune::service
