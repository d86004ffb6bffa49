#pragma once

#include "SolverService/Solver/Rational.h"

#include <memory>
#include <optional>
#include <set>
#include <string>

namespace teralune::service {

enum class Function {
    sine,
    cosine,
    tangent,
    exponential,
    naturalLogarithm,
    decimalLogarithm,
    squareRoot,
    absolute
};

/// A parsed expression: a tree that owns its parts. Never changes once it is made, and is never deeper
/// than the parser allows, so walking it by recursion is safe.
struct Expression {
    enum class Kind { number, letter, pi, negative, sum, difference, product, quotient, power, function };
    using Pointer = std::unique_ptr<const Expression>;

    Kind kind = Kind::number;
    Rational number;
    char letter = 0;
    Function function = Function::sine;
    /// The only part of a negative and of a function; the base of a power.
    Pointer left;
    Pointer right;

    static Pointer ofNumber(const Rational& number);
    static Pointer ofLetter(char letter);
    static Pointer ofPi();
    static Pointer ofParts(Kind kind, Pointer left, Pointer right = nullptr);
    static Pointer ofFunction(Function function, Pointer argument);
};

/// The letters that occur, once each.
std::set<char> lettersOf(const Expression& expression);

/// The value with that value for the letter; "e" is Euler's number unless it is the letter itself. Not a
/// number where the expression has no real value or holds a further letter.
double evaluate(const Expression& expression, char letter, double value);

/// The expression as LaTeX, with the brackets that it needs and no others.
std::string latexOf(const Expression& expression);

} // namespace teralune::service
