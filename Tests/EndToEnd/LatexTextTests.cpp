#include "Hosts/CommandLine/LatexText.h"
#include "Hosts/CommandLine/SolutionText.h"

#include <gtest/gtest.h>

namespace teralune {
namespace {

TEST(LatexTextTests, latex_is_written_as_a_line_that_people_read) {
    const struct {
        const char* latex;
        const char* text;
    } cases[] = {
        {"x^{2}-5x+6=0", "x²-5x+6=0"},
        {"x^{n+1}", "x^(n+1)"},
        {"\\frac{x}{2}+\\frac{x+1}{3}=5", "x/2+(x+1)/3=5"},
        {"\\frac12", "1/2"},
        {"\\frac{\\pi}{\\sqrt{2}}", "π/(√2)"},
        {"b^2-4\\cdot 1\\cdot \\left(-49\\right)", "b²-4·1·(-49)"},
        {"x=\\frac{-1\\pm \\sqrt{5}}{2},\\:y=1", "x=(-1±√5)/2, y=1"},
        {"\\text{No real solutions}", "No real solutions"},
        {"\\unknown{a}", "unknowna"},
        {"\\frac", "/"},
        {"{{x}", "x"},
        {"x}y\\", "xy"},
        {"", ""},
    };
    for (const auto& [latex, text] : cases)
        EXPECT_EQ(latexText(latex), text) << latex;
}

TEST(LatexTextTests, nesting_without_end_is_read_without_harm) {
    constexpr std::size_t depth = 50'000;
    for (const std::string piece : {"{", "\\frac", "^", "\\sqrt", "\\frac{"}) {
        std::string latex;
        while (latex.size() < depth)
            latex += piece;
        EXPECT_LT(latexText(latex).size(), 8 * depth) << piece;
    }
}

TEST(LatexTextTests, a_solution_is_shown_with_titles_and_what_is_none_as_it_came) {
    const auto shown = [](const char* steps) {
        return solutionText(solutionRecord(steps), SolutionDetail::everyStep);
    };
    EXPECT_EQ(shown(R"({"problem":"2x=4","solution":"x=2","steps":[{"title":"Divide","latex":"x=2",
                        "steps":[{"title":"Inner","latex":"1"}]},7,{"title":"Check"}]})"),
              "Problem:  2x=4\n1. Divide\n     x=2\n   1. Inner\n        1\n2. Check\nSolution: x=2\n");
    EXPECT_EQ(shown("[1,2]"), "[1,2]");
    EXPECT_EQ(shown("not JSON"), "not JSON");
    EXPECT_EQ(shown(R"({"steps":{"title":3}})"), "");
}

} // namespace
} // namespace teralune
