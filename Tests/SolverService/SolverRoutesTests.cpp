#include "Tests/SolverService/ServiceClient.h"

#include <gmock/gmock.h>

namespace teralune::service {
namespace {

using SolverRoutes = ServiceTest;

TEST_F(SolverRoutes, answer_with_steps_or_with_the_solution_or_with_null) {
    const std::string path = "/pub_api/steps?language=en&userId=fe&origin=input&query=";
    boost::json::object full = client.get(path + "2x%2B1=5").json().as_object();
    EXPECT_EQ(full.at("steps").at(0).at("title"), "Subtract 1 from both sides");
    boost::json::value brief = client.get(path + "2x%2B1%3D5&solutionRequest=SolutionOnly").json();
    EXPECT_EQ(brief.at("solution"), "x=2");
    EXPECT_FALSE(brief.as_object().contains("steps"));
    full.erase("steps");
    EXPECT_EQ(full, boost::json::parse(R"({"subject":"Algebra","topic":"Equations","subtopic":"Linear",
        "isFromCache":false,"problem":"2x+1=5","solution":"x=2"})"));

    for (const std::string& unsolved :
         {encoded("2x+1=5 & 0"), encoded("\\int x dx"), std::string(5'000, '(')}) {
        EXPECT_EQ(client.get(path + unsolved).body, "null") << unsolved;
    }
    EXPECT_EQ(client.get("/pub_api/steps").status, 400);
}

TEST_F(SolverRoutes, substitute_what_the_user_claims) {
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"2x+1=5", "x=2", "true"},
        {"2x+1=5", "2", "true"},
        {"2x+1=5", "x=3", "false"},
        {"3x=1", "x=\\frac{1}{3}", "true"},
        {"3x=1", "x=0.3333333333333", "false"},
        {"x^2-5x+6=0", "x=3,\\:x=2", "true"},
        {"x^2-5x+6=0", "x=3, x=4", "false"},
        {"x^2=8", "x=2\\sqrt{2},\\:x=-2\\sqrt{2}", "true"},
        {"x^2=8", "x=2.8", "false"},
        {"\\sin(x)=1", "x=\\frac{\\pi}{2}", "true"},
        {"1/x=0", "0", "false"},
        {"x=1", "y=1", "null"},
        {"x=1", "x=x", "null"},
        {"x=1", "", "null"},
        {"x=1", "\\text{No solution}", "null"},
        {"x+y=1", "x=1", "null"},
        {"2x+1", "x=1", "null"},
    };
    for (const auto& [problem, solution, verified] : cases) {
        const boost::json::value answer =
            client
                .get("/api/verifySolution?language=en&origin=input&problem=" + encoded(problem) +
                     "&solution=" + encoded(solution))
                .json();
        EXPECT_EQ(boost::json::serialize(answer.is_null() ? answer : answer.at("verified")), verified)
            << problem << " " << solution;
    }
}

TEST_F(SolverRoutes, plot_functions_and_leave_gaps_where_they_have_no_value) {
    const auto plot = [&](const char* graph) {
        return client.post("/pub_api/graph/plottingInfo?origin=mobile&userId=fe", {{"userGraph", graph}})
            .json();
    };
    const boost::json::value square = plot("y=x^2").at("functions").at(0);
    EXPECT_EQ(square.at("latex"), "x^{2}");
    ASSERT_EQ(square.at("points").as_array().size(), 201U);
    EXPECT_EQ(square.at("points").at(0), (boost::json::array{-10.0, 100.0}));
    EXPECT_EQ(square.at("points").at(150), (boost::json::array{5.0, 25.0}));

    const boost::json::value two =
        plot(R"json({"functions":["ln(t)","e"],"window":{"xMin":-1,"xMax":1}})json");
    EXPECT_EQ(two.at("window"), (boost::json::object{{"xMin", -1.0}, {"xMax", 1.0}}));
    EXPECT_EQ(two.at("functions").at(0).at("points").at(100), (boost::json::array{0.0, nullptr}));
    EXPECT_EQ(two.at("functions").at(0).at("points").at(200), (boost::json::array{1.0, 0.0}));
    EXPECT_NEAR(two.at("functions").at(1).at("points").at(0).at(1).as_double(), 2.718281828, 1e-9);

    for (const char* graph : {"", "y=", "x=2", "x+z", "{", "[]", "{}", R"({"functions":[]})",
                              R"({"functions":[1]})", R"({"functions":["x"],"window":{"xMin":2,"xMax":1}})",
                              R"({"functions":["x"],"window":{"xMin":-1e308,"xMax":1e308}})"}) {
        EXPECT_TRUE(plot(graph).is_null()) << graph;
    }
}

TEST_F(SolverRoutes, suggest_what_is_asked_most_beginnings_first) {
    const auto suggest = [&](const std::string& typed) {
        return client.get("/suggest?userId=mobile&language=en&query=" + encoded(typed)).json();
    };
    EXPECT_EQ(suggest("x^2").at(0), (boost::json::object{{"search", "x^2-5x+6=0"},
                                                         {"display", "x^2-5x+6=0"},
                                                         {"bucketName", "Quadratic Equations"},
                                                         {"priority", 2},
                                                         {"pop", 39},
                                                         {"nornalPop", 39.0 / 40.0}}));
    EXPECT_LE(suggest("x").as_array().size(), 10U);
    EXPECT_EQ(suggest("'; DROP TABLE askedProblems; --"), boost::json::array());
    EXPECT_EQ(suggest(" "), boost::json::array());

    const std::string asked = "/pub_api/steps?query=777x%3D7&userId=";
    client.get(asked + "nolog");
    EXPECT_EQ(suggest("7 7 7"), boost::json::array());
    client.get(asked + "fe");
    client.get(asked + "fe");
    EXPECT_EQ(suggest("7 7 7").at(0).at("pop"), 2);
    EXPECT_EQ(suggest("77x=7").at(0).at("priority"), 1);
}

} // namespace
} // namespace teralune::service
