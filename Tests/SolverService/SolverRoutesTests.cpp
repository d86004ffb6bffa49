#include "Tests/SolverService/ServiceClient.h"

#include <gmock/gmock.h>

namespace teralune::service {
namespace {

using StepsRoute = ServiceTest;
using VerifyRoute = ServiceTest;
using PlottingRoute = ServiceTest;
using SuggestRoute = ServiceTest;

TEST_F(StepsRoute, answers_with_steps_or_with_the_solution_or_with_null) {
    const std::string path = "/pub_api/steps?language=en&userId=fe&origin=input&query=";
    const boost::json::value steps = client.get(path + encoded("2x+1=5 & 0")).json();
    EXPECT_TRUE(steps.is_null());

    const boost::json::value full = client.get(path + "2x%2B1=5").json();
    EXPECT_EQ(full.at("subject"), "Algebra");
    EXPECT_EQ(full.at("topic"), "Equations");
    EXPECT_EQ(full.at("subtopic"), "Linear");
    EXPECT_EQ(full.at("isFromCache"), false);
    EXPECT_EQ(full.at("problem"), "2x+1=5");
    EXPECT_EQ(full.at("solution"), "x=2");
    EXPECT_EQ(full.at("steps").at(0).at("title"), "Subtract 1 from both sides");

    const boost::json::value brief = client.get(path + "2x%2B1%3D5&solutionRequest=SolutionOnly").json();
    EXPECT_EQ(brief.at("solution"), "x=2");
    EXPECT_FALSE(brief.as_object().contains("steps"));

    EXPECT_EQ(client.get(path + encoded("\\int x dx")).body, "null");
    EXPECT_EQ(client.get(path + std::string(5'000, '(')).body, "null");
    EXPECT_EQ(client.get("/pub_api/steps").status, 400);
}

TEST_F(VerifyRoute, substitutes_what_the_user_claims) {
    const struct {
        const char* problem;
        const char* solution;
        const char* verified;
    } cases[] = {
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
        {"x=1", "y=1", nullptr},
        {"x=1", "x=x", nullptr},
        {"x=1", "", nullptr},
        {"x=1", "\\text{No solution}", nullptr},
        {"x+y=1", "x=1", nullptr},
        {"2x+1", "x=1", nullptr},
    };
    for (const auto& each : cases) {
        const ClientReply reply =
            client.get("/api/verifySolution?language=en&origin=input&problem=" + encoded(each.problem) +
                       "&solution=" + encoded(each.solution));
        EXPECT_EQ(reply.status, 200);
        const boost::json::value answer = reply.json();
        const std::string verified =
            answer.is_null() ? "null" : boost::json::serialize(answer.at("verified"));
        EXPECT_EQ(verified, each.verified == nullptr ? "null" : each.verified)
            << each.problem << " " << each.solution;
    }
}

TEST_F(PlottingRoute, samples_functions_and_leaves_gaps_where_they_have_no_value) {
    const auto plot = [&](const std::string& graph) {
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

TEST_F(SuggestRoute, suggests_what_is_asked_most_beginnings_first) {
    const auto suggest = [&](const std::string& typed) {
        return client.get("/suggest?userId=mobile&language=en&query=" + encoded(typed)).json();
    };
    const boost::json::value first = suggest("x^2").at(0);
    EXPECT_EQ(first.at("search"), "x^2-5x+6=0");
    EXPECT_EQ(first.at("display"), "x^2-5x+6=0");
    EXPECT_EQ(first.at("bucketName"), "Quadratic Equations");
    EXPECT_EQ(first.at("priority"), 2);
    EXPECT_EQ(first.at("pop"), 39);
    EXPECT_DOUBLE_EQ(first.at("nornalPop").as_double(), 39.0 / 40.0);
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
