#include "SolverService/Solver/EquationSolver.h"
#include "SolverService/Solver/ExpressionParser.h"

#include <cmath>
#include <gmock/gmock.h>
#include <sstream>

namespace teralune::service {
namespace {

using testing::ElementsAre;
using testing::EndsWith;

TEST(EquationSolver, solves_exactly) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"5=y", "Linear", "y=5"},
        {"0.1x+.2=0.5", "Linear", "x=3"},
        {"1/2x=1/3", "Linear", "x=\\frac{2}{3}"},
        {"-x=-(-3)", "Linear", "x=-3"},
        {"\\frac{2x-1}{3}=\\frac{x+4}{2}", "Linear", "x=14"},
        {"\\frac12z\\cdot 4=\\left(1+3\\right)", "Linear", "z=2"},
        {"\\dfrac{m}{2^{3}} \\div 2 = 1", "Linear", "m=16"},
        {"2\u00D7x \u2212 1 = 3\u00B2", "Linear", "x=5"},
        {"x^2+x=x^2+4", "Linear", "x=4"},
        {"(x+1)^3-x^3=3x^2+7", "Linear", "x=2"},
        {"sqrt(16)x=|-8|", "Linear", "x=2"},
        {"\\left|2\\left|-3\\right|-1\\right|x=10", "Linear", "x=2"},
        {"2^-1x=2^3", "Linear", "x=16"},
        {"2(x+1)=2x+2", "Linear", "\\text{True for all }x"},
        {"x=x+1", "Linear", "\\text{No solution}"},
        {"e=3", "Linear", "e=3"},
        {"9000000000000000000x=9000000000000000000", "Linear", "x=1"},
        {"-x^2+1=0", "Quadratic", "x=1,\\:x=-1"},
        {"x^2=0", "Quadratic", "x=0"},
        {"(t-3)^2=16", "Quadratic", "t=7,\\:t=-1"},
        {"6x^{2}+x-12=0", "Quadratic", "x=\\frac{4}{3},\\:x=-\\frac{3}{2}"},
        {"x^2=8", "Quadratic", "x=2\\sqrt{2},\\:x=-2\\sqrt{2}"},
        {"4x^2-8x=1", "Quadratic", "x=\\frac{2+\\sqrt{5}}{2},\\:x=\\frac{2-\\sqrt{5}}{2}"},
        {"x^2/4-x/3=1/12", "Quadratic", "x=\\frac{2+\\sqrt{7}}{3},\\:x=\\frac{2-\\sqrt{7}}{3}"},
        {"x^2+x+1=0", "Quadratic", "\\text{No real solutions}"},
    };
    for (const auto& [problem, subtopic, latex] : cases) {
        const std::optional<Solution> solution = solveEquation(problem);
        ASSERT_TRUE(solution) << problem;
        EXPECT_EQ(solution->latex, latex) << problem;
        EXPECT_EQ(solution->subtopic, subtopic) << problem;
        EXPECT_FALSE(solution->steps.empty()) << problem;
    }
}

TEST(EquationSolver, has_no_solution_of_what_it_does_not_understand_and_comes_to_no_harm) {
    // One on each line.
    std::istringstream problems(
        "\n \n=\nx\n2x+3\nx=\n=x\nx=1=2\n1=1\nx+y=1\nx^3=8\nx^2=x^3\n2/x=4\nsin(x)=0\nx^x=2\n"
        "x^0.5=2\nx/0=1\nx=1/(2-2)\nx=0^0\n\\int_{0}^{1}x\\,dx\nx=\\foo\n\\frac{x=1\n((x=1\n"
        "x)=1\n(x]=1\nx=1..2\nx=1 2\n.=x\n|x=1\nx=3!\n\xFF\xFE=x\nx=99999999999999999999\n"
        "x^2=3037000501.3\n4000000000x^2+1=4000000000x\nx^2-1000000007000x-1000000007=0\n"
        "x=2^64\nx=((((2^60)^60)^60)^60)\n");
    for (std::string problem; std::getline(problems, problem);) {
        EXPECT_FALSE(solveEquation(problem)) << problem;
    }
    for (const std::string& problem :
         {std::string("x=\0 1", 5), std::string(100'000, '('), "x=" + std::string(900, '-') + "1",
          "x=" + std::string(400, '(') + "1" + std::string(400, ')'), "x=" + std::string(1'000, '1')}) {
        EXPECT_FALSE(solveEquation(problem)) << problem.substr(0, 80);
    }
}

TEST(EquationSolver, names_each_step_and_shows_what_it_gives) {
    const auto steps = [](const char* problem) {
        std::vector<std::string> texts;
        const Solution solution = solveEquation(problem).value();
        for (const SolutionStep& step : solution.steps) {
            texts.push_back(step.title + ": " + step.latex);
        }
        return texts;
    };
    EXPECT_EQ(solveEquation("2(x+3)=\\frac{x}{2}")->problem, "2\\left(x+3\\right)=\\frac{x}{2}");
    EXPECT_THAT(steps("2(x+3)=\\frac{x}{2}"),
                ElementsAre("Expand and combine like terms: 2x+6=\\frac{1}{2}x",
                            "Multiply both sides by 2: 4x+12=x", "Subtract x from both sides: 3x+12=0",
                            "Subtract 12 from both sides: 3x=-12", "Divide both sides by 3: x=-4",
                            "Check: both sides have the same value for x=-4: -2=-2"));
    EXPECT_THAT(
        steps("2x^2=6-x"),
        ElementsAre(EndsWith(": 2x^{2}=-x+6"), EndsWith(": 2x^{2}+x-6=0"), EndsWith(": a=2,\\:b=1,\\:c=-6"),
                    EndsWith(": b^{2}-4ac=1^{2}-4\\cdot 2\\cdot \\left(-6\\right)=49"),
                    EndsWith(": x=\\frac{-1\\pm \\sqrt{49}}{4}"), EndsWith(": x=\\frac{3}{2},\\:x=-2"),
                    EndsWith(": 2\\left(x-\\frac{3}{2}\\right)\\left(x+2\\right)=0")));
}

TEST(Expressions, are_evaluated_and_are_not_a_number_where_they_have_no_value) {
    const std::tuple<const char*, double, double> cases[] = {
        {"2x^2-1", 3, 17},
        {"-x^2", 3, -9},
        {"2^3^2", 0, 512},
        {"\\sin^{2}(x)+cos(x)^2", 0.7, 1},
        {"sin 2x", 0.5, std::sin(1)},
        {"ln(e)+log 100+tan(0)+exp(0)+pi/pi", 0, 5},
        {"|x-5|+2|x|+abs(-x)", 2, 9},
        {"\\sqrt{x+2}", 7, 3},
        {"x(x+1)(x-1)", 3, 24},
        {"1/x", 0, NAN},
        {"ln(x)", -1, NAN},
        {"sqrt(x)", -1, NAN},
        {"y+1", 1, NAN},
        {"x^{0.5}", -1, NAN},
    };
    for (const auto& [text, at, value] : cases) {
        const Expression::Pointer expression = parseExpression(text);
        ASSERT_TRUE(expression) << text;
        EXPECT_THAT(evaluate(*expression, 'x', at), testing::NanSensitiveDoubleNear(value, 1e-12)) << text;
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
