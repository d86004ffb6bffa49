#include "SolverService/Http/Multipart.h"
#include "SolverService/Images/ImageText.h"
#include "SolverService/Images/PngImage.h"
#include "SolverService/Solver/EquationSolver.h"
#include "SolverService/Solver/Plotter.h"
#include "SolverService/Solver/SolutionVerifier.h"

#include <boost/json.hpp>

#include <gtest/gtest.h>
#include <random>

namespace teralune::service {
namespace {

constexpr int rounds = 3'000;

/// The sample with a few bytes changed, dropped or doubled.
std::string mutated(std::string sample, std::mt19937& random, std::string_view alphabet) {
    for (auto changes = random() % 4; changes > 0 && !sample.empty(); --changes) {
        const std::size_t at = random() % sample.size();
        switch (random() % 3) {
        case 0:
            sample[at] = alphabet[random() % alphabet.size()];
            break;
        case 1:
            sample.erase(at, random() % 4);
            break;
        default:
            sample.insert(at, sample.substr(random() % sample.size(), random() % 8));
        }
    }
    return sample;
}

TEST(HostileInput, gets_a_solution_that_can_be_verified_or_none) {
    std::mt19937 random(1);
    const char* samples[] = {"2(x+3)=\\frac{4x-8}{3}", "x^{2}-5.5x+6=0", "|x|+\\sqrt{16}=-x/7",
                             "3\u00D7x\u00B2=12x"};
    int solved = 0;
    for (int round = 0; round < rounds; ++round) {
        const std::string problem = mutated(samples[round % 4], random, "x2.=()^{}\\|/-+ \xC3\xFF");
        const std::optional<Solution> solution = solveEquation(problem);
        if (solution && solution->latex.find("text") == std::string::npos) {
            ++solved;
            EXPECT_TRUE(verifySolution(problem, solution->latex).value_or(false))
                << problem << " " << solution->latex;
            EXPECT_TRUE(verifySolution(solution->problem, solution->latex).value_or(false))
                << solution->problem;
        }
    }
    EXPECT_GT(solved, rounds / 5);
}

TEST(HostileInput, gets_points_that_json_can_hold_or_none) {
    std::mt19937 random(2);
    const char* samples[] = {"y=\\tan(x)/ln(x)^x",
                             R"({"functions":["1/x^9","2e"],"window":{"xMin":-3,"xMax":3e9}})"};
    int plotted = 0;
    for (int round = 0; round < rounds / 10; ++round) {
        const auto info = plottingInfo(mutated(samples[round % 2], random, "x19e^(){}[]\",:-"));
        if (info) {
            ++plotted;
            EXPECT_NO_THROW(boost::json::parse(boost::json::serialize(*info)));
        }
    }
    EXPECT_GT(plotted, 0);
}

TEST(HostileInput, is_never_read_beyond_its_end) {
    std::mt19937 random(3);
    ReceivedRequest request;
    request.headers = {{"Content-Type", "multipart/form-data; boundary=b"}};
    const std::string form =
        "--b\r\nContent-Disposition: form-data; name=\"a\"; filename=\"f\"\r\n\r\nx\r\n--b--\r\n";
    const std::string png = pngOf("x=1", 2, 2);
    const std::string jpeg("\xFF\xD8\xFF\xE0\0\4ab\xFF\xFE\0\5x=3\xFF\xD9", 17);
    std::string all("\0\r\n-\xFF\xFE\xD9 \"=;", 12);
    int found = 0;
    for (int round = 0; round < rounds; ++round) {
        request.body = mutated(form, random, all);
        found += formParts(request) ? 1 : 0;
        found += latexInImage(mutated(png, random, all)) ? 1 : 0;
        found += latexInImage(mutated(jpeg, random, all)) ? 1 : 0;
    }
    EXPECT_GT(found, rounds / 5);
}

} // namespace
} // namespace teralune::service
