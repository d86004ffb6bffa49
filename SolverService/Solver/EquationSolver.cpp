#include "SolverService/Solver/EquationSolver.h"

#include "SolverService/Solver/ExpressionParser.h"

namespace teralune::service {

std::optional<Solution> solveEquation(std::string_view problem) {
    const std::optional<Equation> equation = parseEquation(problem);
    if (!equation) {
        return std::nullopt;
    }
    std::set<char> letters = lettersOf(*equation->left);
    letters.merge(lettersOf(*equation->right));
    if (letters.size() != 1) {
        return std::nullopt;
    }
    const char letter = *letters.begin();
    const std::optional<Polynomial> left = Polynomial::of(*equation->left, letter);
    const std::optional<Polynomial> right = Polynomial::of(*equation->right, letter);
    if (!left || !right || !left->isDefined() || !right->isDefined()) {
        return std::nullopt;
    }
    const Polynomial difference = *left - *right;
    if (!difference.isDefined() || difference.degree() > 2) {
        return std::nullopt;
    }

    Solution solution;
    solution.problem = latexOf(*equation->left) + "=" + latexOf(*equation->right);
    if (!parseEquation(solution.problem)) {
        // Written out it has become too long to be asked again, so it is shown as it was asked.
        solution.problem = problem;
    }
    const PolynomialEquation expanded{*left, *right, letter};
    if (expanded.latex() != solution.problem) {
        solution.steps.push_back({"Expand and combine like terms", expanded.latex()});
    }
    const bool solved =
        difference.degree() == 2 ? solveQuadratic(expanded, solution) : solveLinear(expanded, solution);
    return solved ? std::optional(std::move(solution)) : std::nullopt;
}

} // namespace teralune::service
