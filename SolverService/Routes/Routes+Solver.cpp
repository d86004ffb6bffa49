#include "SolverService/Http/Router.h"
#include "SolverService/Model/Suggestions.h"
#include "SolverService/Routes/Routes.h"
#include "SolverService/Solver/EquationSolver.h"
#include "SolverService/Solver/Plotter.h"
#include "SolverService/Solver/SolutionVerifier.h"

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
    router.get("/api/verifySolution", Access::anyToken, [](const auto& request, const auto&) {
        const std::string problem = request.parameters.text("problem");
        const std::string solution = request.parameters.text("solution");
        const std::optional<bool> verified = verifySolution(problem, solution);
        return verified ? ServiceReply::json(
                              {{"verified", *verified}, {"problem", problem}, {"solution", solution}})
                        : noAnswer();
    });
    router.post("/pub_api/graph/plottingInfo", Access::anyToken, [](const auto& request, const auto&) {
        const std::optional<boost::json::object> info = plottingInfo(request.parameters.text("userGraph"));
        return info ? ServiceReply::json(*info) : noAnswer();
    });
    router.get("/suggest", Access::anyToken,
               [this](const auto& request, const auto&) { return suggest(request); });
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
    if (query.text("userId") != "nolog") {
        model_.suggestions.count(query.text("query"), solution->subtopic + " " + solution->topic);
    }
    const bool brief = query.text("solutionRequest") == "SolutionOnly";
    return ServiceReply::json(
        jsonSolution(*solution, brief ? SolutionDetail::solutionOnly : SolutionDetail::everyStep));
}

ServiceReply Routes::suggest(const ReceivedRequest& request) {
    boost::json::array suggestions;
    for (const SuggestedProblem& problem : model_.suggestions.suggest(request.parameters.text("query"))) {
        suggestions.push_back({{"display", problem.problem},
                               {"search", problem.problem},
                               {"priority", problem.isPrefix ? 2 : 1},
                               {"pop", problem.popularity},
                               {"nornalPop", problem.normalizedPopularity},
                               {"bucketName", problem.bucket}});
    }
    return ServiceReply::json(std::move(suggestions));
}

} // namespace teralune::service
