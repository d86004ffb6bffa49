#include "SolverService/Solver/Rational.h"

#include <cmath>
#include <limits>
#include <numeric>

namespace teralune::service {

namespace {

constexpr std::int64_t largestExponent = 64;
constexpr std::int64_t largestRoot = 3'037'000'499;

/// The smallest number has no opposite of its kind, so it is out of range everywhere.
bool fits(std::int64_t value) {
    return value != std::numeric_limits<std::int64_t>::min();
}

std::optional<std::int64_t> product(std::int64_t left, std::int64_t right) {
    std::int64_t result = 0;
    if (__builtin_mul_overflow(left, right, &result) || !fits(result)) {
        return std::nullopt;
    }
    return result;
}

} // namespace

Rational::Rational(std::int64_t numerator, std::int64_t denominator) {
    if (denominator == 0 || !fits(numerator) || !fits(denominator)) {
        denominator_ = 0;
        return;
    }
    const std::int64_t divisor = std::gcd(numerator, denominator) * (denominator < 0 ? -1 : 1);
    numerator_ = numerator / divisor;
    denominator_ = denominator / divisor;
}

double Rational::value() const {
    return isDefined() ? static_cast<double>(numerator_) / static_cast<double>(denominator_) : std::nan("");
}

Rational Rational::operator-() const {
    return isDefined() ? Rational(-numerator_, denominator_) : undefined();
}

Rational operator+(const Rational& left, const Rational& right) {
    if (!left.isDefined() || !right.isDefined()) {
        return Rational::undefined();
    }
    const std::int64_t common = std::gcd(left.denominator_, right.denominator_);
    const auto first = product(left.numerator_, right.denominator_ / common);
    const auto second = product(right.numerator_, left.denominator_ / common);
    const auto denominator = product(left.denominator_ / common, right.denominator_);
    std::int64_t sum = 0;
    if (!first || !second || !denominator || __builtin_add_overflow(*first, *second, &sum)) {
        return Rational::undefined();
    }
    return {sum, *denominator};
}

Rational operator-(const Rational& left, const Rational& right) {
    return left + -right;
}

Rational operator*(const Rational& left, const Rational& right) {
    if (!left.isDefined() || !right.isDefined()) {
        return Rational::undefined();
    }
    // Reduced crosswise first, so that only a result that really is too large overflows.
    const Rational first(left.numerator_, right.denominator_);
    const Rational second(right.numerator_, left.denominator_);
    const auto numerator = product(first.numerator_, second.numerator_);
    const auto denominator = product(first.denominator_, second.denominator_);
    return numerator && denominator ? Rational(*numerator, *denominator) : Rational::undefined();
}

Rational operator/(const Rational& left, const Rational& right) {
    return right.isDefined() ? left * Rational(right.denominator_, right.numerator_) : Rational::undefined();
}

Rational Rational::power(std::int64_t exponent) const {
    if (exponent > largestExponent || exponent < -largestExponent) {
        return undefined();
    }
    Rational result(1);
    for (std::int64_t count = 0; count < std::abs(exponent); ++count) {
        result = result * *this;
    }
    return exponent < 0 ? Rational(1) / result : result;
}

Rational Rational::squareRoot() const {
    if (!isDefined() || isNegative()) {
        return undefined();
    }
    const Rational root(wholeSquareRoot(numerator_), wholeSquareRoot(denominator_));
    return root * root == *this ? root : undefined();
}

std::string Rational::latex() const {
    if (isWhole()) {
        return std::to_string(numerator_);
    }
    return std::string(isNegative() ? "-" : "") + "\\frac{" + std::to_string(std::abs(numerator_)) + "}{" +
           std::to_string(denominator_) + "}";
}

std::int64_t wholeSquareRoot(std::int64_t value) {
    auto root = std::min(static_cast<std::int64_t>(std::sqrt(static_cast<double>(value))), largestRoot);
    while (root * root > value) {
        --root;
    }
    while (root < largestRoot && (root + 1) * (root + 1) <= value) {
        ++root;
    }
    return root;
}

} // namespace teralune::service
