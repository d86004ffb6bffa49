#include "SolverService/Solver/EquationSolver.h"

namespace teralune::service {

namespace {

/// Takes a term off both sides and says so.
void takeOff(PolynomialEquation& equation, const Polynomial& term, const Rational& sign, Solution& solution) {
    const std::string named = (sign.isNegative() ? Polynomial() - term : term).latex(equation.letter);
    equation.left = equation.left - term;
    equation.right = equation.right - term;
    solution.steps.push_back(
        {sign.isNegative() ? "Add " + named + " to both sides" : "Subtract " + named + " from both sides",
         equation.latex()});
}

void sayWithoutUnknown(const PolynomialEquation& equation, Solution& solution) {
    const bool holds = equation.left.coefficient(0) == equation.right.coefficient(0);
    solution.latex = holds ? std::string("\\text{True for all }") + equation.letter : "\\text{No solution}";
    solution.steps.push_back(
        {holds ? "Both sides are equal whatever the unknown is" : "The sides differ whatever the unknown is",
         solution.latex});
}

} // namespace

bool solveLinear(PolynomialEquation equation, Solution& solution) {
    solution.subtopic = "Linear";
    const PolynomialEquation original = equation;
    const Rational denominator = commonDenominator(equation.left, equation.right);
    if (!(denominator == Rational(1))) {
        const Polynomial factor({denominator});
        equation.left = equation.left * factor;
        equation.right = equation.right * factor;
        solution.steps.push_back({"Multiply both sides by " + denominator.latex(), equation.latex()});
    }
    // Powers that cancel go first, together with the unknown's terms on the right.
    for (std::size_t power = std::max(equation.left.degree(), equation.right.degree()); power > 0; --power) {
        const bool onlyOnRight = power == 1 && equation.left.coefficient(1) == Rational(0);
        const Rational moved = equation.right.coefficient(power);
        if (moved == Rational(0)) {
            continue;
        }
        if (onlyOnRight) {
            std::swap(equation.left, equation.right);
            solution.steps.push_back({"Swap the sides", equation.latex()});
            continue;
        }
        std::vector<Rational> term(power + 1);
        term[power] = moved;
        takeOff(equation, Polynomial(std::move(term)), moved, solution);
    }
    if (equation.left.degree() == 0) {
        sayWithoutUnknown(equation, solution);
        return equation.left.isDefined() && equation.right.isDefined();
    }
    if (const Rational moved = equation.left.coefficient(0); !(moved == Rational(0))) {
        takeOff(equation, Polynomial({moved}), moved, solution);
    }
    const Rational factor = equation.left.coefficient(1);
    const Rational root = equation.right.coefficient(0) / factor;
    const std::string unknown(1, equation.letter);
    solution.latex = unknown + "=" + root.latex();
    if (!(factor == Rational(1))) {
        solution.steps.push_back({"Divide both sides by " + factor.latex(), solution.latex});
    }
    const Rational left = original.left.at(root);
    const Rational right = original.right.at(root);
    solution.steps.push_back(
        {"Check: both sides have the same value for " + solution.latex, left.latex() + "=" + right.latex()});
    return left == right;
}

} // namespace teralune::service
