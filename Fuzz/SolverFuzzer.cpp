// What the stand-in service is asked to solve and to plot: it gives a solution that can be verified, or none,
// and points that JSON can hold.

#include "Fuzz/Fuzzer.h"
#include "Platform/Foundation/JsonMapping.h"
#include "SolverService/Solver/EquationSolver.h"
#include "SolverService/Solver/Plotter.h"
#include "SolverService/Solver/SolutionVerifier.h"

#include <boost/json/serialize.hpp>

using namespace teralune;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string problem(fuzz::textOf(data, size));
    const auto solution = service::solveEquation(problem);
    if (solution && solution->latex.find("text") == std::string::npos) {
        fuzz::require(service::verifySolution(problem, solution->latex).value_or(false),
                      "a solution solves the problem");
        fuzz::require(service::verifySolution(solution->problem, solution->latex).value_or(false),
                      "a solution solves the problem as it is shown");
    }
    if (const auto info = service::plottingInfo(problem)) {
        fuzz::require(parseJson(boost::json::serialize(*info)).succeeded(), "points are JSON");
    }
    return 0;
}
