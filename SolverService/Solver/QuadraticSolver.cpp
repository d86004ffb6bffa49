#include "SolverService/Solver/EquationSolver.h"

#include <array>
#include <numeric>

namespace teralune::service {

namespace {

/// Beyond this a square is no longer looked for inside the discriminant; trying would take too long.
constexpr std::int64_t largestSurd = 1'000'000'000'000;

/// outside times the square root of inside.
struct Surd {
    std::int64_t outside = 1;
    std::int64_t inside = 1;
};

std::optional<Surd> surdOf(std::int64_t value) {
    const std::int64_t root = wholeSquareRoot(value);
    if (root * root == value) {
        return Surd{root, 1};
    }
    if (value > largestSurd) {
        return std::nullopt;
    }
    Surd surd{1, value};
    for (std::int64_t factor = 2; factor * factor <= surd.inside; ++factor) {
        while (surd.inside % (factor * factor) == 0) {
            surd.inside /= factor * factor;
            surd.outside *= factor;
        }
    }
    return surd;
}

/// (front + sign · surd) / divisor in lowest terms, for an irrational surd.
std::string rootLatex(std::int64_t front, const char* sign, const Surd& surd, std::int64_t divisor) {
    const std::int64_t common = std::gcd(std::gcd(front, surd.outside), divisor);
    const std::int64_t outside = surd.outside / common;
    const std::string radical =
        (outside == 1 ? "" : std::to_string(outside)) + "\\sqrt{" + std::to_string(surd.inside) + "}";
    std::string numerator = front == 0 ? "" : std::to_string(front / common);
    numerator += (front == 0 && *sign == '+' ? "" : sign) + radical;
    return divisor == common ? numerator
                             : "\\frac{" + numerator + "}{" + std::to_string(divisor / common) + "}";
}

std::string factorLatex(char letter, const Rational& root) {
    if (root == Rational(0)) {
        return std::string(1, letter);
    }
    return "\\left(" + Polynomial({-root, Rational(1)}).latex(letter) + "\\right)";
}

/// The equation with whole coefficients that have no common factor, the first one positive.
class QuadraticEquation {
public:
    QuadraticEquation(const Polynomial& polynomial, char letter)
        : a_(polynomial.coefficient(2))
        , b_(polynomial.coefficient(1))
        , c_(polynomial.coefficient(0))
        , letter_(letter)
        , unknown_(1, letter)
        , discriminant_(b_ * b_ - Rational(4) * a_ * c_) {}

    bool solve(Solution& solution) const {
        if (!discriminant_.isDefined() || !(Rational(2) * a_).isDefined()) {
            return false;
        }
        sayDiscriminant(solution);
        if (discriminant_.isNegative()) {
            solution.latex = "\\text{No real solutions}";
            solution.steps.push_back({"The discriminant is negative", solution.latex});
            return true;
        }
        const std::optional<Surd> surd = surdOf(discriminant_.numerator());
        if (!surd) {
            return false;
        }
        solution.steps.push_back({"Use the quadratic formula", unknown_ + "=\\frac{" + (-b_).latex() +
                                                                   "\\pm \\sqrt{" + discriminant_.latex() +
                                                                   "}}{" + (Rational(2) * a_).latex() + "}"});
        if (surd->inside == 1 || surd->outside == 0) {
            sayRationalRoots(Rational(surd->outside), solution);
        } else {
            const std::int64_t divisor = (Rational(2) * a_).numerator();
            solution.latex = unknown_ + "=" + rootLatex(-b_.numerator(), "+", *surd, divisor) +
                             ",\\:" + unknown_ + "=" + rootLatex(-b_.numerator(), "-", *surd, divisor);
            solution.steps.push_back({"Simplify the root", solution.latex});
        }
        return true;
    }

private:
    void sayDiscriminant(Solution& solution) const {
        solution.steps.push_back(
            {"Read off the coefficients", "a=" + a_.latex() + ",\\:b=" + b_.latex() + ",\\:c=" + c_.latex()});
        const auto bracketed = [](const Rational& number) {
            return number.isNegative() ? "\\left(" + number.latex() + "\\right)" : number.latex();
        };
        solution.steps.push_back({"Compute the discriminant", "b^{2}-4ac=" + bracketed(b_) + "^{2}-4\\cdot " +
                                                                  bracketed(a_) + "\\cdot " + bracketed(c_) +
                                                                  "=" + discriminant_.latex()});
    }

    void sayRationalRoots(const Rational& radical, Solution& solution) const {
        const Rational larger = (-b_ + radical) / (Rational(2) * a_);
        const Rational smaller = (-b_ - radical) / (Rational(2) * a_);
        solution.latex = unknown_ + "=" + larger.latex();
        if (!(larger == smaller)) {
            solution.latex += ",\\:" + unknown_ + "=" + smaller.latex();
        }
        solution.steps.push_back(
            {larger == smaller ? "Both roots are the same" : "Take both signs", solution.latex});
        const std::string front = a_ == Rational(1) ? "" : a_.latex();
        const std::string factors = larger == smaller
                                        ? factorLatex(letter_, larger) + "^{2}"
                                        : factorLatex(letter_, larger) + factorLatex(letter_, smaller);
        solution.steps.push_back({"Check with the factored form", front + factors + "=0"});
    }

    Rational a_;
    Rational b_;
    Rational c_;
    char letter_;
    std::string unknown_;
    Rational discriminant_;
};

/// What makes the coefficients whole, without a common factor, and the first one positive.
Rational normalizer(const Polynomial& polynomial) {
    const Rational denominator = commonDenominator(polynomial, Polynomial());
    std::int64_t common = 0;
    for (std::size_t power = 0; power <= 2; ++power) {
        const Rational whole = polynomial.coefficient(power) * denominator;
        if (!whole.isDefined()) {
            return whole;
        }
        common = std::gcd(common, whole.numerator());
    }
    return denominator / Rational(polynomial.coefficient(2).isNegative() ? -common : common);
}

} // namespace

bool solveQuadratic(PolynomialEquation equation, Solution& solution) {
    solution.subtopic = "Quadratic";
    if (equation.right.degree() != 0 || !(equation.right.coefficient(0) == Rational(0))) {
        equation.left = equation.left - equation.right;
        equation.right = Polynomial();
        solution.steps.push_back({"Move every term to the left side", equation.latex()});
    }
    const Rational factor = normalizer(equation.left);
    if (!factor.isDefined()) {
        return false;
    }
    if (!(factor == Rational(1))) {
        equation.left = equation.left * Polynomial({factor});
        const bool shrinks = factor.numerator() == 1 && !factor.isWhole();
        solution.steps.push_back({shrinks ? "Divide both sides by " + (Rational(1) / factor).latex()
                                          : "Multiply both sides by " + factor.latex(),
                                  equation.latex()});
    }
    return equation.left.isDefined() && QuadraticEquation(equation.left, equation.letter).solve(solution);
}

} // namespace teralune::service
