#include "SolverService/Model/PasswordDigest.h"
#include "Tests/SolverService/ServiceClient.h"
#include "Tests/Support/TemporaryFolder.h"

#include <atomic>
#include <gmock/gmock.h>

namespace teralune::service {
namespace {

const std::string usersPath = "/api/hasWebNotes";

class Tokens : public ServiceTest {
protected:
    Tokens() { client.logIn(); }
};

TEST_F(Tokens, open_a_users_endpoints_only_when_valid_and_a_users) {
    ServiceClient stranger(*service);
    ServiceClient forger(*service);
    forger.token = "0123456789abcdef";
    ServiceClient visitor(*service);
    visitor.adoptToken(visitor.post("/api/mobile/token"));

    const std::tuple<const ServiceClient&, int, int, int> cases[] = {{client, 200, 200, 200},
                                                                     {stranger, 403, 200, 403},
                                                                     {forger, 403, 403, 403},
                                                                     {visitor, 403, 200, 403}};
    for (const auto& [each, usersStatus, anyTokenStatus, refreshStatus] : cases) {
        EXPECT_EQ(each.get(usersPath).status, usersStatus) << each.token;
        EXPECT_EQ(each.get("/pub_api/steps?query=x%3D1").status, anyTokenStatus) << each.token;
        EXPECT_EQ(each.post("/refresh").status, refreshStatus) << each.token;
    }
}

TEST_F(Tokens, grow_old) {
    std::atomic<std::int64_t> seconds = 1'000;
    SolverService::Options options;
    options.tokenTime = std::chrono::seconds(60);
    options.now = [&] { return std::chrono::system_clock::time_point(std::chrono::seconds(seconds)); };
    service = startService(options);
    client = ServiceClient(*service);
    client.logIn();
    seconds += 59;
    EXPECT_EQ(client.get(usersPath).status, 200);
    seconds += 1;
    EXPECT_EQ(client.get(usersPath).status, 403);
}

TEST_F(Tokens, of_an_ended_session_can_not_be_refreshed) {
    ServiceClient staying(*service);
    staying.logIn();
    service->expireTokens();
    EXPECT_EQ(client.get("/logout?isMobile=true").status, 200);
    EXPECT_EQ(client.post("/refresh").status, 403);
    EXPECT_EQ(client.get("/logout?isMobile=true").status, 403);

    staying.adoptToken(staying.post("/refresh"));
    service->rejectRefresh();
    EXPECT_EQ(staying.get(usersPath).status, 403);
    EXPECT_EQ(staying.post("/refresh").status, 403);
    staying.logIn();
    EXPECT_EQ(staying.get(usersPath).status, 200);
}

TEST_F(Tokens, and_accounts_outlive_the_service_but_no_secret_is_in_its_data_file) {
    const TemporaryFolder folder;
    SolverService::Options options;
    options.dataFile = folder.path() / "data.sqlite";
    service = startService(options);
    client = ServiceClient(*service);
    client.post("/mobileSignup", {{"email", "ann@example.org"}, {"password", "correct horse"}});
    client.logIn("ann@example.org", "correct horse");
    client.post("/api/notebook/addNote", {{"problem", "x=5"}, {"topic", "t"}, {"savedFrom", "Solutions"}});
    service.reset();

    std::ifstream input(options.dataFile, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(input)), std::istreambuf_iterator<char>());
    EXPECT_THAT(bytes, testing::HasSubstr("ann@example.org"));
    EXPECT_EQ(bytes.find(client.token), std::string::npos);
    EXPECT_EQ(bytes.find("correct horse"), std::string::npos);
    EXPECT_NE(digestPassword("correct horse"), digestPassword("correct horse"));

    service = startService(options);
    ServiceClient second(*service);
    second.token = client.token;
    EXPECT_THAT(second.notebook(), testing::ElementsAre(testing::Key("x=5")));
}

} // namespace
} // namespace teralune::service
