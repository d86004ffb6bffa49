#include "SolverService/Solver/EquationSolver.h"
#include "SolverService/Solver/ExpressionParser.h"

#include <cmath>
#include <gmock/gmock.h>

namespace teralune::service {
namespace {

using testing::ElementsAre;

struct SolvedEquation {
    const char* problem;
    const char* subtopic;
    const char* solution;
};

class SolvedEquations : public testing::TestWithParam<SolvedEquation> {};

TEST_P(SolvedEquations, are_solved_exactly) {
    const std::optional<Solution> solution = solveEquation(GetParam().problem);
    ASSERT_TRUE(solution);
    EXPECT_EQ(solution->latex, GetParam().solution);
    EXPECT_EQ(solution->subtopic, GetParam().subtopic);
    EXPECT_FALSE(solution->steps.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Linear, SolvedEquations,
    testing::Values(
        SolvedEquation{"3x-7=11", "Linear", "x=6"}, SolvedEquation{"5=y", "Linear", "y=5"},
        SolvedEquation{"2(x+3) = 4x-8", "Linear", "x=7"}, SolvedEquation{"0.1x+.2=0.5", "Linear", "x=3"},
        SolvedEquation{"1/2x=1/3", "Linear", "x=\\frac{2}{3}"}, SolvedEquation{"-x=-(-3)", "Linear", "x=-3"},
        SolvedEquation{"\\frac{2x-1}{3}=\\frac{x+4}{2}", "Linear", "x=14"},
        SolvedEquation{"\\frac12z\\cdot 4=\\left(1+3\\right)", "Linear", "z=2"},
        SolvedEquation{"\\dfrac{m}{2^{3}} \\div 2 = 1", "Linear", "m=16"},
        SolvedEquation{"2\u00D7x \u2212 1 = 3\u00B2", "Linear", "x=5"},
        SolvedEquation{"x^2+x=x^2+4", "Linear", "x=4"}, SolvedEquation{"(x+1)^3-x^3=3x^2+7", "Linear", "x=2"},
        SolvedEquation{"sqrt(16)x=|-8|", "Linear", "x=2"}, SolvedEquation{"2^-1x=2^3", "Linear", "x=16"},
        SolvedEquation{"0x=0", "Linear", "\\text{True for all }x"},
        SolvedEquation{"2(x+1)=2x+2", "Linear", "\\text{True for all }x"},
        SolvedEquation{"x=x+1", "Linear", "\\text{No solution}"}, SolvedEquation{"e=3", "Linear", "e=3"},
        SolvedEquation{"9000000000000000000x=9000000000000000000", "Linear", "x=1"}));

INSTANTIATE_TEST_SUITE_P(
    Quadratic, SolvedEquations,
    testing::Values(
        SolvedEquation{"x^2-5x+6=0", "Quadratic", "x=3,\\:x=2"},
        SolvedEquation{"-x^2+1=0", "Quadratic", "x=1,\\:x=-1"}, SolvedEquation{"x^2=0", "Quadratic", "x=0"},
        SolvedEquation{"(t-3)^2=16", "Quadratic", "t=7,\\:t=-1"},
        SolvedEquation{"6x^{2}+x-12=0", "Quadratic", "x=\\frac{4}{3},\\:x=-\\frac{3}{2}"},
        SolvedEquation{"x^2=8", "Quadratic", "x=2\\sqrt{2},\\:x=-2\\sqrt{2}"},
        SolvedEquation{"4x^2-8x=1", "Quadratic", "x=\\frac{2+\\sqrt{5}}{2},\\:x=\\frac{2-\\sqrt{5}}{2}"},
        SolvedEquation{"x^2/4-x/3=1/12", "Quadratic", "x=\\frac{2+\\sqrt{7}}{3},\\:x=\\frac{2-\\sqrt{7}}{3}"},
        SolvedEquation{"x^2+x+1=0", "Quadratic", "\\text{No real solutions}"}));

class UnansweredProblems : public testing::TestWithParam<std::string> {};

TEST_P(UnansweredProblems, have_no_solution_and_do_no_harm) {
    EXPECT_FALSE(solveEquation(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(Every, UnansweredProblems,
                         testing::Values("", " ", "=", "x", "2x+3", "x=", "=x", "x=1=2", "1=1", "x+y=1",
                                         "x^3=8", "x^2=x^3", "2/x=4", "sin(x)=0", "x^x=2", "x^0.5=2", "x/0=1",
                                         "x=1/(2-2)", "x=0^0", "\\int_{0}^{1}x\\,dx", "x=\\foo", "\\frac{x=1",
                                         "((x=1", "x)=1", "(x]=1", "x=1..2", "x=1 2", ".=x", "|x=1", "x=3!",
                                         "\xFF\xFE=x", std::string("x=\0 1", 5), "x=99999999999999999999",
                                         "x^2=3037000501.3", "4000000000x^2+1=4000000000x",
                                         "x^2-1000000007000x-1000000007=0", "x=2^64",
                                         "x=((((2^60)^60)^60)^60)", std::string(100'000, '('),
                                         "x=" + std::string(900, '-') + "1",
                                         "x=" + std::string(400, '(') + "1" + std::string(400, ')'),
                                         "x=" + std::string(1'000, '1')));

TEST(EquationSolver, names_each_step_and_shows_what_it_gives) {
    const std::optional<Solution> solution = solveEquation("2(x+3)=\\frac{x}{2}");
    ASSERT_TRUE(solution);
    std::vector<std::string> steps;
    for (const SolutionStep& step : solution->steps) {
        steps.push_back(step.title + ": " + step.latex);
    }
    EXPECT_EQ(solution->problem, "2\\left(x+3\\right)=\\frac{x}{2}");
    EXPECT_THAT(steps, ElementsAre("Expand and combine like terms: 2x+6=\\frac{1}{2}x",
                                   "Multiply both sides by 2: 4x+12=x", "Subtract x from both sides: 3x+12=0",
                                   "Subtract 12 from both sides: 3x=-12", "Divide both sides by 3: x=-4",
                                   "Check: both sides have the same value for x=-4: -2=-2"));
}

TEST(EquationSolver, shows_the_discriminant_and_the_formula_of_a_quadratic_equation) {
    const std::optional<Solution> solution = solveEquation("2x^2=6-x");
    ASSERT_TRUE(solution);
    std::vector<std::string> steps;
    for (const SolutionStep& step : solution->steps) {
        steps.push_back(step.latex);
    }
    EXPECT_THAT(steps, ElementsAre("2x^{2}=-x+6", "2x^{2}+x-6=0", "a=2,\\:b=1,\\:c=-6",
                                   "b^{2}-4ac=1^{2}-4\\cdot 2\\cdot \\left(-6\\right)=49",
                                   "x=\\frac{-1\\pm \\sqrt{49}}{4}", "x=\\frac{3}{2},\\:x=-2",
                                   "2\\left(x-\\frac{3}{2}\\right)\\left(x+2\\right)=0"));
}

TEST(Expressions, are_evaluated_and_are_not_a_number_where_they_have_no_value) {
    const struct {
        const char* text;
        double at;
        double value;
    } cases[] = {
        {"2x^2-1", 3, 17},
        {"-x^2", 3, -9},
        {"2^3^2", 0, 512},
        {"\\sin^{2}(x)+cos(x)^2", 0.7, 1},
        {"sin 2x", 0.5, std::sin(1)},
        {"ln(e)", 0, 1},
        {"log 100", 0, 2},
        {"exp(0)+pi/pi", 0, 2},
        {"|x-5|", 2, 3},
        {"2|x|", -2, 4},
        {"\\sqrt{x+2}", 7, 3},
        {"abs(-x)", 2, 2},
        {"1/x", 0, NAN},
        {"ln(x)", -1, NAN},
        {"sqrt(x)", -1, NAN},
        {"tan(0)", 0, 0},
        {"y+1", 1, NAN},
        {"x^{0.5}", -1, NAN},
        {"1/2x", 4, 2},
        {"x(x+1)(x-1)", 3, 24},
    };
    for (const auto& each : cases) {
        const Expression::Pointer expression = parseExpression(each.text);
        ASSERT_TRUE(expression) << each.text;
        const double value = evaluate(*expression, 'x', each.at);
        if (std::isnan(each.value)) {
            EXPECT_TRUE(std::isnan(value)) << each.text;
        } else {
            EXPECT_NEAR(value, each.value, 1e-12) << each.text;
        }
    }
}

TEST(Expressions, keep_their_meaning_when_written_as_latex) {
    for (const char* text : {"2*3", "2(x+1)/3-x*5^x", "-(x-1)^2-(-x)", "(x^2)^3", "x-(1-x)", "pi x", "2/3/x",
                             "-2*-3", "sqrt(x)|x|ln(x)", "exp(x)log(x)", "0.25x"}) {
        const Expression::Pointer expression = parseExpression(text);
        ASSERT_TRUE(expression) << text;
        const Expression::Pointer again = parseExpression(latexOf(*expression));
        ASSERT_TRUE(again) << latexOf(*expression);
        EXPECT_NEAR(evaluate(*again, 'x', 1.7), evaluate(*expression, 'x', 1.7), 1e-9)
            << latexOf(*expression);
    }
}

TEST(Rational, becomes_undefined_rather_than_wrong) {
    const Rational largest(INT64_MAX);
    EXPECT_FALSE((largest + Rational(1)).isDefined());
    EXPECT_FALSE((largest * Rational(2)).isDefined());
    EXPECT_FALSE((Rational(1) / Rational(0)).isDefined());
    EXPECT_FALSE(Rational(INT64_MIN, 3).isDefined());
    EXPECT_FALSE((Rational::undefined() * Rational(0)).isDefined());
    EXPECT_FALSE(Rational(2).squareRoot().isDefined());
    EXPECT_EQ(largest * Rational(1, 7) * Rational(7), largest);
    EXPECT_EQ(Rational(6, -4), Rational(-3, 2));
    EXPECT_EQ(wholeSquareRoot(INT64_MAX), 3'037'000'499);
}

} // namespace
} // namespace teralune::service
