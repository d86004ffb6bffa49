#include "Tests/SolverService/ServiceClient.h"

#include <gmock/gmock.h>

namespace teralune::service {
namespace {

TEST(StepsRoute, answers_with_steps_or_with_the_solution_or_with_null) {
    const auto service = startService();
    const ServiceClient client(*service);
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

TEST(LogRoutes, keep_what_clients_report) {
    const auto service = startService();
    const ServiceClient client(*service);
    EXPECT_EQ(client.post("/detailedLog", {{"type", "Solve"}, {"info1", "a&b"}, {"query", ""}}).status, 200);
    EXPECT_EQ(client.post("/detailedLog", {{"info1", "x"}}).status, 400);
    EXPECT_EQ(client.post("/logCachedStepsMobile", {{"query", "x=1"}, {"offline", "true"}}).status, 200);
    EXPECT_EQ(client.post("/solutionResponseTiming", {{"query", "x=1"}, {"responseTimeMs", "12"}}).status,
              200);

    const std::vector<Parameters> records = service->usageRecords("/detailedLog");
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].text("info1"), "a&b");
    EXPECT_EQ(records[0].value("query"), "");
    EXPECT_EQ(records[0].value("info2"), std::nullopt);
    EXPECT_EQ(service->usageRecords("/logCachedStepsMobile").at(0).text("offline"), "true");
    EXPECT_EQ(service->usageRecords("/solutionResponseTiming").at(0).text("responseTimeMs"), "12");
}

} // namespace
} // namespace teralune::service
