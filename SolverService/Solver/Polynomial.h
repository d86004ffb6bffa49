#pragma once

#include "SolverService/Solver/Expression.h"
#include "SolverService/Solver/Rational.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace teralune::service {

/// A polynomial in one letter with exact coefficients. Like those, it turns undefined rather than wrong.
class Polynomial {
public:
    Polynomial() = default;
    explicit Polynomial(std::vector<Rational> coefficients);

    /// The expression multiplied out; absent when it is no polynomial in the letter, or one of a degree
    /// that no equation here needs on its way.
    static std::optional<Polynomial> of(const Expression& expression, char letter);

    bool isDefined() const;
    /// 0 for a constant.
    std::size_t degree() const { return coefficients_.empty() ? 0 : coefficients_.size() - 1; }
    Rational coefficient(std::size_t power) const;

    friend Polynomial operator+(const Polynomial& left, const Polynomial& right);
    friend Polynomial operator-(const Polynomial& left, const Polynomial& right);
    friend Polynomial operator*(const Polynomial& left, const Polynomial& right);

    Rational at(const Rational& value) const;
    std::string latex(char letter) const;

private:
    /// By power, the last one not zero.
    std::vector<Rational> coefficients_;
};

/// The least common multiple of the denominators of all coefficients; undefined when it does not fit.
Rational commonDenominator(const Polynomial& first, const Polynomial& second);

} // namespace teralune::service
