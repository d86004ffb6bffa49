#include "SolverService/Solver/Polynomial.h"

#include <algorithm>
#include <numeric>

namespace teralune::service {

namespace {

constexpr std::size_t highestDegree = 8;

std::optional<Polynomial> powerOf(const Polynomial& base, const Polynomial& exponent) {
    const Rational power = exponent.coefficient(0);
    if (exponent.degree() != 0 || !power.isWhole()) {
        return std::nullopt;
    }
    const std::size_t degree = base.degree();
    if (degree == 0) {
        // 0^0 is left alone rather than decided.
        const bool decided = !(base.coefficient(0) == Rational(0)) || power.numerator() > 0;
        return decided ? std::optional(Polynomial({base.coefficient(0).power(power.numerator())}))
                       : std::nullopt;
    }
    const auto largest = static_cast<std::int64_t>(highestDegree / degree);
    if (power.isNegative() || power.numerator() > largest) {
        return std::nullopt;
    }
    Polynomial result({Rational(1)});
    for (std::int64_t count = 0; count < power.numerator(); ++count) {
        result = result * base;
    }
    return result;
}

std::optional<Polynomial> quotientOf(const Polynomial& dividend, const Polynomial& divisor) {
    if (divisor.degree() != 0 || divisor.coefficient(0) == Rational(0)) {
        return std::nullopt;
    }
    return dividend * Polynomial({Rational(1) / divisor.coefficient(0)});
}

std::optional<Polynomial> applied(Function function, const Polynomial& argument) {
    if (argument.degree() != 0) {
        return std::nullopt;
    }
    const Rational value = argument.coefficient(0);
    const Rational result = function == Function::squareRoot ? value.squareRoot()
                            : function == Function::absolute ? value.absolute()
                                                             : Rational::undefined();
    return result.isDefined() ? std::optional(Polynomial({result})) : std::nullopt;
}

} // namespace

Polynomial::Polynomial(std::vector<Rational> coefficients) : coefficients_(std::move(coefficients)) {
    while (!coefficients_.empty() && coefficients_.back() == Rational(0)) {
        coefficients_.pop_back();
    }
}

std::optional<Polynomial> Polynomial::of(const Expression& expression, char letter) {
    std::optional<Polynomial> left;
    std::optional<Polynomial> right;
    if (expression.left) {
        left = of(*expression.left, letter);
        if (!left) {
            return std::nullopt;
        }
    }
    if (expression.right) {
        right = of(*expression.right, letter);
        if (!right) {
            return std::nullopt;
        }
    }
    switch (expression.kind) {
    case Expression::Kind::number:
        return Polynomial({expression.number});
    case Expression::Kind::letter:
        return expression.letter == letter ? std::optional(Polynomial({Rational(0), Rational(1)}))
                                           : std::nullopt;
    case Expression::Kind::pi:
        return std::nullopt;
    case Expression::Kind::negative:
        return Polynomial() - *left;
    case Expression::Kind::sum:
        return *left + *right;
    case Expression::Kind::difference:
        return *left - *right;
    case Expression::Kind::product:
        return left->degree() + right->degree() <= highestDegree ? std::optional(*left * *right)
                                                                 : std::nullopt;
    case Expression::Kind::quotient:
        return quotientOf(*left, *right);
    case Expression::Kind::power:
        return powerOf(*left, *right);
    case Expression::Kind::function:
        return applied(expression.function, *left);
    }
    return std::nullopt;
}

bool Polynomial::isDefined() const {
    return std::all_of(coefficients_.begin(), coefficients_.end(),
                       [](const Rational& coefficient) { return coefficient.isDefined(); });
}

Rational Polynomial::coefficient(std::size_t power) const {
    return power < coefficients_.size() ? coefficients_[power] : Rational(0);
}

Polynomial operator+(const Polynomial& left, const Polynomial& right) {
    std::vector<Rational> sum(std::max(left.coefficients_.size(), right.coefficients_.size()));
    for (std::size_t power = 0; power < sum.size(); ++power) {
        sum[power] = left.coefficient(power) + right.coefficient(power);
    }
    return Polynomial(std::move(sum));
}

Polynomial operator-(const Polynomial& left, const Polynomial& right) {
    return left + Polynomial({Rational(-1)}) * right;
}

Polynomial operator*(const Polynomial& left, const Polynomial& right) {
    if (!left.isDefined() || !right.isDefined()) {
        // Nothing, too, times what has no value.
        return Polynomial({Rational::undefined()});
    }
    std::vector<Rational> product(left.coefficients_.size() + right.coefficients_.size());
    for (std::size_t first = 0; first < left.coefficients_.size(); ++first) {
        for (std::size_t second = 0; second < right.coefficients_.size(); ++second) {
            product[first + second] =
                product[first + second] + left.coefficients_[first] * right.coefficients_[second];
        }
    }
    return Polynomial(std::move(product));
}

Rational Polynomial::at(const Rational& value) const {
    Rational result;
    for (std::size_t power = coefficients_.size(); power > 0; --power) {
        result = result * value + coefficients_[power - 1];
    }
    return result;
}

std::string Polynomial::latex(char letter) const {
    std::string text;
    for (std::size_t power = coefficients_.size(); power > 0; --power) {
        const Rational& factor = coefficients_[power - 1];
        if (factor == Rational(0)) {
            continue;
        }
        text += factor.isNegative() ? "-" : text.empty() ? "" : "+";
        const bool isOne = factor.absolute() == Rational(1);
        if (power == 1 || !isOne) {
            text += factor.absolute().latex();
        }
        if (power > 1) {
            text += letter;
        }
        if (power > 2) {
            text += "^{" + std::to_string(power - 1) + "}";
        }
    }
    return text.empty() ? "0" : text;
}

Rational commonDenominator(const Polynomial& first, const Polynomial& second) {
    Rational common(1);
    for (const Polynomial* polynomial : {&first, &second}) {
        for (std::size_t power = 0; power <= polynomial->degree() && common.isDefined(); ++power) {
            const std::int64_t denominator = polynomial->coefficient(power).denominator();
            if (denominator == 0) {
                return Rational::undefined();
            }
            common = common * Rational(denominator / std::gcd(common.numerator(), denominator));
        }
    }
    return common;
}

} // namespace teralune::service
