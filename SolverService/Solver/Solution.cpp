#include "SolverService/Solver/Solution.h"

#include <boost/json.hpp>

namespace teralune::service {

boost::json::object jsonSolution(const Solution& solution, SolutionDetail detail) {
    boost::json::object json{
        {"subject", solution.subject}, {"topic", solution.topic},     {"subtopic", solution.subtopic},
        {"isFromCache", false},        {"problem", solution.problem}, {"solution", solution.latex},
    };
    if (detail == SolutionDetail::everyStep) {
        boost::json::array steps;
        for (const SolutionStep& step : solution.steps) {
            steps.push_back({{"title", step.title}, {"latex", step.latex}});
        }
        json["steps"] = std::move(steps);
    }
    return json;
}

} // namespace teralune::service
