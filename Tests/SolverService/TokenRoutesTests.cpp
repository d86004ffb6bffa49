#include "Tests/SolverService/ServiceClient.h"

#include <atomic>
#include <fstream>
#include <gmock/gmock.h>

namespace teralune::service {
namespace {

using std::chrono_literals::operator""s;

std::string jwtOf(const ClientReply& reply) {
    return boost::json::value_to<std::string>(reply.json().at("jwt"));
}

TEST(Tokens, open_a_users_endpoints_only_when_valid_and_a_users) {
    const auto service = startService();
    ServiceClient user(*service);
    user.logIn();
    ServiceClient stranger(*service);
    ServiceClient forger(*service);
    forger.token = "0123456789abcdef";
    ServiceClient visitor(*service);
    visitor.token = jwtOf(visitor.post("/api/mobile/token"));

    const std::string steps = "/pub_api/steps?query=x%3D1";
    const struct {
        const ServiceClient& client;
        int userEndpoint;
        int anyTokenEndpoint;
        int refresh;
    } cases[] = {
        {user, 200, 200, 200}, {stranger, 403, 200, 403}, {forger, 403, 403, 403}, {visitor, 403, 200, 403}};
    for (const auto& each : cases) {
        EXPECT_EQ(each.client.get("/api/hasWebNotes").status, each.userEndpoint);
        EXPECT_EQ(each.client.get(steps).status, each.anyTokenEndpoint);
        EXPECT_EQ(each.client.post("/refresh").status, each.refresh);
    }
}

TEST(Tokens, grow_old) {
    std::atomic<std::int64_t> seconds = 1'000;
    SolverService::Options options;
    options.tokenTime = 60s;
    options.now = [&] { return std::chrono::system_clock::time_point(std::chrono::seconds(seconds)); };
    const auto service = startService(options);
    ServiceClient user(*service);
    user.logIn();
    seconds += 59;
    EXPECT_EQ(user.get("/api/hasWebNotes").status, 200);
    seconds += 1;
    EXPECT_EQ(user.get("/api/hasWebNotes").status, 403);
}

TEST(Tokens, of_an_ended_session_can_not_be_refreshed) {
    const auto service = startService();
    ServiceClient leaving(*service);
    leaving.logIn();
    ServiceClient staying(*service);
    staying.logIn();
    service->expireTokens();
    EXPECT_EQ(leaving.get("/logout?isMobile=true").status, 200);
    EXPECT_EQ(leaving.post("/refresh").status, 403);
    EXPECT_EQ(leaving.get("/logout?isMobile=true").status, 403);

    staying.token = jwtOf(staying.post("/refresh"));
    service->rejectRefresh();
    EXPECT_EQ(staying.get("/api/hasWebNotes").status, 403);
    EXPECT_EQ(staying.post("/refresh").status, 403);
    staying.logIn();
    EXPECT_EQ(staying.get("/api/hasWebNotes").status, 200);
}

TEST(Tokens, and_accounts_outlive_the_service_but_no_secret_is_in_its_data_file) {
    SolverService::Options options;
    options.dataFile = temporaryFile("solver-service-tokens.sqlite");
    auto service = startService(options);
    ServiceClient first(*service);
    first.post("/mobileSignup", {{"email", "ann@example.org"}, {"password", "correct horse"}});
    first.logIn("ann@example.org", "correct horse");
    first.post("/api/notebook/addNote", {{"problem", "x=5"}, {"topic", "t"}, {"savedFrom", "Solutions"}});
    service.reset();

    std::ifstream input(options.dataFile, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(input)), std::istreambuf_iterator<char>());
    EXPECT_NE(bytes.find("ann@example.org"), std::string::npos);
    EXPECT_EQ(bytes.find(first.token), std::string::npos);
    EXPECT_EQ(bytes.find("correct horse"), std::string::npos);

    service = startService(options);
    ServiceClient second(*service);
    second.token = first.token;
    EXPECT_TRUE(second.notebook().contains("x=5"));
    EXPECT_EQ(second.notebook().size(), 1U);
}

} // namespace
} // namespace teralune::service
