#include "SolverService/Http/Router.h"
#include "SolverService/Routes/Routes.h"
#include "SolverService/Solver/EquationSolver.h"

#include <boost/json.hpp>

namespace teralune::service {

namespace {

/// What clients take as "no answer".
ServiceReply noAnswer() {
    return ServiceReply::text("null");
}

} // namespace

void Routes::enterSolver(Router& router) {
    router.get("/pub_api/steps", Access::anyToken,
               [this](const auto& request, const auto&) { return steps(request); });
}

ServiceReply Routes::steps(const ReceivedRequest& request) {
    const Parameters& query = request.parameters;
    if (!query.value("query")) {
        return ServiceReply::refusal(400, "query is missing");
    }
    const std::optional<Solution> solution = solveEquation(query.text("query"));
    if (!solution) {
        return noAnswer();
    }
    const bool brief = query.text("solutionRequest") == "SolutionOnly";
    return ServiceReply::json(
        jsonSolution(*solution, brief ? SolutionDetail::solutionOnly : SolutionDetail::everyStep));
}

} // namespace teralune::service
