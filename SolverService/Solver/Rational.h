#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace teralune::service {

/// An exact fraction in lowest terms, its denominator positive. A result that does not fit, or a division
/// by zero, is undefined, and whatever is computed from it stays undefined; whoever computes looks at
/// isDefined() once, at the end. An undefined fraction equals nothing.
class Rational {
public:
    Rational() = default;
    Rational(std::int64_t whole) : numerator_(whole) {}
    /// numerator / denominator.
    Rational(std::int64_t numerator, std::int64_t denominator);
    static Rational undefined() { return {0, 0}; }

    bool isDefined() const { return denominator_ != 0; }
    bool isWhole() const { return denominator_ == 1; }
    bool isNegative() const { return numerator_ < 0; }
    std::int64_t numerator() const { return numerator_; }
    std::int64_t denominator() const { return denominator_; }
    double value() const;

    Rational operator-() const;
    friend Rational operator+(const Rational& left, const Rational& right);
    friend Rational operator-(const Rational& left, const Rational& right);
    friend Rational operator*(const Rational& left, const Rational& right);
    friend Rational operator/(const Rational& left, const Rational& right);
    friend bool operator==(const Rational& left, const Rational& right) {
        return left.isDefined() && left.numerator_ == right.numerator_ &&
               left.denominator_ == right.denominator_;
    }

    Rational absolute() const { return isNegative() ? -*this : *this; }
    /// Repeated multiplication; undefined for an exponent beyond ±64.
    Rational power(std::int64_t exponent) const;
    /// The square root when it is a fraction too; otherwise undefined.
    Rational squareRoot() const;

    /// As LaTeX: "-\frac{3}{4}", "7".
    std::string latex() const;

private:
    std::int64_t numerator_ = 0;
    std::int64_t denominator_ = 1;
};

/// The largest whole number whose square is not above value, which is not negative.
std::int64_t wholeSquareRoot(std::int64_t value);

} // namespace teralune::service
