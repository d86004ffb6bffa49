#include "SolverService/Solver/Expression.h"

#include <cmath>
#include <limits>
#include <numbers>

namespace teralune::service {

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

double apply(Function function, double argument) {
    switch (function) {
    case Function::sine:
        return std::sin(argument);
    case Function::cosine:
        return std::cos(argument);
    case Function::tangent:
        return std::tan(argument);
    case Function::exponential:
        return std::exp(argument);
    case Function::naturalLogarithm:
        return argument > 0 ? std::log(argument) : notANumber;
    case Function::decimalLogarithm:
        return argument > 0 ? std::log10(argument) : notANumber;
    case Function::squareRoot:
        return argument < 0 ? notANumber : std::sqrt(argument);
    case Function::absolute:
        return std::fabs(argument);
    }
    return notANumber;
}

void collectLetters(const Expression& expression, std::set<char>& letters) {
    if (expression.kind == Expression::Kind::letter) {
        letters.insert(expression.letter);
    }
    if (expression.left) {
        collectLetters(*expression.left, letters);
    }
    if (expression.right) {
        collectLetters(*expression.right, letters);
    }
}

} // namespace

Expression::Pointer Expression::ofNumber(const Rational& number) {
    auto expression = std::make_unique<Expression>();
    expression->number = number;
    return expression;
}

Expression::Pointer Expression::ofLetter(char letter) {
    auto expression = std::make_unique<Expression>();
    expression->kind = Kind::letter;
    expression->letter = letter;
    return expression;
}

Expression::Pointer Expression::ofPi() {
    auto expression = std::make_unique<Expression>();
    expression->kind = Kind::pi;
    return expression;
}

Expression::Pointer Expression::ofParts(Kind kind, Pointer left, Pointer right) {
    auto expression = std::make_unique<Expression>();
    expression->kind = kind;
    expression->left = std::move(left);
    expression->right = std::move(right);
    return expression;
}

Expression::Pointer Expression::ofFunction(Function function, Pointer argument) {
    auto expression = std::make_unique<Expression>();
    expression->kind = Kind::function;
    expression->function = function;
    expression->left = std::move(argument);
    return expression;
}

std::set<char> lettersOf(const Expression& expression) {
    std::set<char> letters;
    collectLetters(expression, letters);
    return letters;
}

double evaluate(const Expression& expression, char letter, double value) {
    const auto left = [&] { return evaluate(*expression.left, letter, value); };
    const auto right = [&] { return evaluate(*expression.right, letter, value); };
    switch (expression.kind) {
    case Expression::Kind::number:
        return expression.number.value();
    case Expression::Kind::letter:
        if (expression.letter == letter) {
            return value;
        }
        return expression.letter == 'e' ? std::numbers::e : notANumber;
    case Expression::Kind::pi:
        return std::numbers::pi;
    case Expression::Kind::negative:
        return -left();
    case Expression::Kind::sum:
        return left() + right();
    case Expression::Kind::difference:
        return left() - right();
    case Expression::Kind::product:
        return left() * right();
    case Expression::Kind::quotient: {
        const double divisor = right();
        return divisor == 0 ? notANumber : left() / divisor;
    }
    case Expression::Kind::power:
        return std::pow(left(), right());
    case Expression::Kind::function:
        return apply(expression.function, left());
    }
    return notANumber;
}

} // namespace teralune::service
