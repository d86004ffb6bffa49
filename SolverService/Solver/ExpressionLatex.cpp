#include "SolverService/Solver/Expression.h"

namespace teralune::service {

namespace {

/// How tightly an expression holds together: what is looser than its surroundings needs brackets.
enum class Binding { sum, product, sign, power, atom };

Binding bindingOf(const Expression& expression) {
    switch (expression.kind) {
    case Expression::Kind::sum:
    case Expression::Kind::difference:
        return Binding::sum;
    case Expression::Kind::product:
        return Binding::product;
    case Expression::Kind::negative:
        return Binding::sign;
    case Expression::Kind::power:
        return Binding::power;
    case Expression::Kind::number:
    case Expression::Kind::letter:
    case Expression::Kind::pi:
    case Expression::Kind::quotient:
    case Expression::Kind::function:
        return Binding::atom;
    }
    return Binding::atom;
}

std::string bracketed(const Expression& expression, Binding least) {
    const std::string latex = latexOf(expression);
    return bindingOf(expression) < least ? "\\left(" + latex + "\\right)" : latex;
}

std::string functionLatex(Function function, const std::string& argument) {
    switch (function) {
    case Function::sine:
        return "\\sin\\left(" + argument + "\\right)";
    case Function::cosine:
        return "\\cos\\left(" + argument + "\\right)";
    case Function::tangent:
        return "\\tan\\left(" + argument + "\\right)";
    case Function::exponential:
        return "e^{" + argument + "}";
    case Function::naturalLogarithm:
        return "\\ln\\left(" + argument + "\\right)";
    case Function::decimalLogarithm:
        return "\\log\\left(" + argument + "\\right)";
    case Function::squareRoot:
        return "\\sqrt{" + argument + "}";
    case Function::absolute:
        return "\\left|" + argument + "\\right|";
    }
    return argument;
}

std::string productLatex(const Expression& expression) {
    const std::string left = bracketed(*expression.left, Binding::product);
    const std::string right = bracketed(*expression.right, Binding::power);
    // Two things may stand side by side unless that would read as another number.
    const bool digitFollows = right.front() >= '0' && right.front() <= '9';
    const bool fractionFollows = right.starts_with("\\frac") && left.back() != ')';
    const bool wordEnds = expression.left->kind == Expression::Kind::pi;
    return left + (digitFollows || fractionFollows || wordEnds ? "\\cdot " : "") + right;
}

} // namespace

std::string latexOf(const Expression& expression) {
    switch (expression.kind) {
    case Expression::Kind::number:
        return expression.number.latex();
    case Expression::Kind::letter:
        return std::string(1, expression.letter);
    case Expression::Kind::pi:
        return "\\pi ";
    case Expression::Kind::negative:
        return "-" + bracketed(*expression.left, Binding::product);
    case Expression::Kind::sum:
        return latexOf(*expression.left) + "+" + bracketed(*expression.right, Binding::product);
    case Expression::Kind::difference:
        return latexOf(*expression.left) + "-" + bracketed(*expression.right, Binding::product);
    case Expression::Kind::product:
        return productLatex(expression);
    case Expression::Kind::quotient:
        return "\\frac{" + latexOf(*expression.left) + "}{" + latexOf(*expression.right) + "}";
    case Expression::Kind::power:
        return bracketed(*expression.left, Binding::atom) + "^{" + latexOf(*expression.right) + "}";
    case Expression::Kind::function:
        return functionLatex(expression.function, latexOf(*expression.left));
    }
    return {};
}

} // namespace teralune::service
