#include "SolverService/Solver/SolutionVerifier.h"

#include "SolverService/Solver/ExpressionParser.h"
#include "SolverService/Solver/Polynomial.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace teralune::service {

namespace {

constexpr double tolerance = 1e-9;

/// The claims of a list; a comma behind a backslash is a LaTeX space.
std::vector<std::string_view> claimsOf(std::string_view solution) {
    std::vector<std::string_view> claims;
    std::size_t start = 0;
    for (std::size_t end = 0; end <= solution.size(); ++end) {
        const bool separates = end == solution.size() || solution[end] == ';' ||
                               (solution[end] == ',' && (end == 0 || solution[end - 1] != '\\'));
        if (separates) {
            claims.push_back(solution.substr(start, end - start));
            start = end + 1;
        }
    }
    return claims;
}

/// The value of "x=3" or "3"; empty when it is neither.
Expression::Pointer claimedValue(std::string_view claim, char letter) {
    Expression::Pointer value;
    if (std::optional<Equation> equation = parseEquation(claim)) {
        if (equation->left->kind == Expression::Kind::letter && equation->left->letter == letter) {
            value = std::move(equation->right);
        }
    } else {
        value = parseExpression(claim);
    }
    return value && !lettersOf(*value).contains(letter) ? std::move(value) : nullptr;
}

/// What one side has over the other, multiplied out; absent when that is no polynomial with a value.
std::optional<Polynomial> differenceOf(const Equation& equation, char letter) {
    const std::optional<Polynomial> left = Polynomial::of(*equation.left, letter);
    const std::optional<Polynomial> right = Polynomial::of(*equation.right, letter);
    if (!left || !right) {
        return std::nullopt;
    }
    Polynomial difference = *left - *right;
    return difference.isDefined() ? std::optional(std::move(difference)) : std::nullopt;
}

std::optional<bool> isExactRoot(const Polynomial& polynomial, char letter, const Expression& value) {
    const std::optional<Polynomial> number = Polynomial::of(value, letter);
    const Rational left = number ? polynomial.at(number->coefficient(0)) : Rational::undefined();
    return left.isDefined() ? std::optional(left == Rational(0)) : std::nullopt;
}

/// Multiplied out exactly, so that no large terms are left that would cancel each other in all but their
/// rounding. The terms of a small root's own formula may be large all the same.
bool isNearlyRoot(const Polynomial& polynomial, double number) {
    double sum = 0;
    double terms = 1;
    for (std::size_t power = 0; power <= polynomial.degree(); ++power) {
        const double term =
            polynomial.coefficient(power).value() * std::pow(number, static_cast<double>(power));
        sum += term;
        terms += std::fabs(term);
    }
    double roundingOfRoot = 0;
    if (polynomial.degree() == 2) {
        const double linear = polynomial.coefficient(1).value();
        roundingOfRoot = 1e-14 * std::fabs(linear * linear / polynomial.coefficient(2).value());
    }
    return std::fabs(sum) <= tolerance * terms + roundingOfRoot;
}

bool holdsNearly(const Equation& equation, char letter, double number) {
    const double left = evaluate(*equation.left, letter, number);
    const double right = evaluate(*equation.right, letter, number);
    return std::fabs(left - right) <= tolerance * std::max({1.0, std::fabs(left), std::fabs(right)});
}

} // namespace

std::optional<bool> verifySolution(std::string_view problem, std::string_view solution) {
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
    const std::optional<Polynomial> difference = differenceOf(*equation, letter);
    bool verified = true;
    for (const std::string_view claim : claimsOf(solution)) {
        const Expression::Pointer value = claimedValue(claim, letter);
        if (!value) {
            return std::nullopt;
        }
        const double number = evaluate(*value, letter, 0);
        if (difference) {
            verified = verified &&
                       isExactRoot(*difference, letter, *value).value_or(isNearlyRoot(*difference, number));
        } else {
            verified = verified && holdsNearly(*equation, letter, number);
        }
    }
    return verified;
}

} // namespace teralune::service
