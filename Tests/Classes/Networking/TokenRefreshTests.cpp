#include "Classes/Interfaces/ITeraluneConstants.h"
#include "Tests/Classes/Networking/NetworkingFixture.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace teralune {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

class TokenRefreshTests : public NetworkingFixture {
protected:
    std::vector<std::string> told;

    void SetUp() override { application.fakeUserAccountModel.signIn("c1", "old"); }

    /// Sends a request that can be told by its name, and leaves it unanswered.
    void ask(const std::string& problem) {
        networking->verify(problem, "", SolutionOrigin::input, [this, problem](const VerifyReply& reply) {
            told.push_back(problem + (reply.success ? " answered" : " failed"));
        });
        application.run();
    }
    static std::string path(const std::string& problem) {
        return "https://api.test/api/verifySolution?problem=" + problem +
               "&solution=&language=en&origin=input";
    }
    std::vector<std::string> urlsFrom(std::size_t first) const {
        const auto all = urls();
        return {all.begin() + static_cast<std::ptrdiff_t>(first), all.end()};
    }
};

TEST_F(TokenRefreshTests, requests_refused_together_wait_for_one_refresh_and_are_retried_in_order) {
    for (const char* problem : {"a", "b", "c"})
        ask(problem);
    for (const std::size_t index : {2U, 0U, 1U})
        answer(index, reply(403, ""));
    EXPECT_EQ(urlsFrom(3), std::vector<std::string>{"https://api.test/refresh"});
    EXPECT_EQ(transport.requests()[3].method, HttpMethod::post);
    EXPECT_EQ(transport.lanes()[3], TransferLane::control);
    EXPECT_THAT(cookies(3), HasSubstr("tq.token=old"));
    EXPECT_TRUE(told.empty());

    answer(3, reply(200, R"({"jwt":"new"})"));
    EXPECT_EQ(urlsFrom(4), (std::vector{path("c"), path("a"), path("b")}));
    EXPECT_THAT(cookies(4), HasSubstr(";tq.token=new"));
    EXPECT_THAT(cookies(4), Not(HasSubstr("old")));
    for (const std::size_t index : {4U, 5U, 6U})
        answer(index, reply(200, "{}"));
    EXPECT_EQ(told, (std::vector<std::string>{"c answered", "a answered", "b answered"}));
    const auto lines = application.recordingCrashReporter.lines();
    EXPECT_THAT(lines, Contains("Request to: https://api.test/refresh"));
    EXPECT_THAT(lines, Contains("Successfully received new access token: new"));
    EXPECT_THAT(lines, Contains("Refresh was successful: true"));
    EXPECT_EQ(application.fakeUserAccountModel.prompts, 0);
}

TEST_F(TokenRefreshTests, a_refresh_without_a_token_fails_what_waits_and_the_next_403_asks_again) {
    const std::string failed = "Refresh was successful: false";
    const std::tuple<TransferOutcome, int, std::string> cases[] = {
        {reply(200, R"({"alert":"No.","jwt":"new"})"), 0, "Alert from refresh: No."},
        {reply(200, "{}"), 0, failed},
        {reply(200, R"({"jwt":"new\u0000"})"), 0, failed},
        {reply(200, R"({"jwt":5})"), 0, failed},
        {reply(200, "[]"), 0, failed},
        {reply(500, R"({"jwt":"new"})"), 0, failed},
        {ScriptedTransport::failure(HttpTransportError::timedOut), 0, failed},
        {reply(403, R"({"jwt":"new"})"), 1, failed},
    };
    std::size_t sent = 0;
    for (const auto& [outcome, prompts, line] : cases) {
        ask("a");
        ask("b");
        answer(sent, reply(403, ""));
        answer(sent + 1, reply(403, ""));
        answer(sent + 2, outcome);
        sent += 3;
        EXPECT_EQ(urls().size(), sent);
        EXPECT_EQ(told, (std::vector<std::string>{"a failed", "b failed"}));
        told.clear();
        EXPECT_EQ(application.fakeUserAccountModel.prompts, prompts);
        EXPECT_FALSE(application.settings.accessToken().value_or("").starts_with("new"));
        EXPECT_THAT(application.recordingCrashReporter.takeLines(), Contains(line));
    }
}

TEST_F(TokenRefreshTests, a_refused_attempt_s_session_travels_with_the_refresh_and_the_retry) {
    ask("a");
    answer(0, ScriptedTransport::reply(403, "", {{"Set-Cookie", "PLAY_SESSION=s; Path=/"}}));
    answer(1, reply(200, R"({"jwt":"new"})"));
    for (const std::size_t index : {1U, 2U})
        EXPECT_THAT(cookies(index), HasSubstr(";PLAY_SESSION=s;"));
}

TEST_F(TokenRefreshTests, a_refresh_that_the_host_makes_impossible_fails_its_request_and_no_later_one) {
    struct Constants final : ITeraluneConstants {
        bool areBroken = false;
        bool httpsProtocol() const override { return true; }
        std::string apiHost() const override {
            return areBroken ? throw std::runtime_error("broken") : "api.test";
        }
        std::string ocrHost() const override { return "ocr.test"; }
        bool debugMode() const override { return false; }
    } constants;
    networking.emplace(application, constants);
    ask("a");
    constants.areBroken = true;
    answer(0, reply(403, ""));
    EXPECT_EQ(told, std::vector<std::string>{"a failed"});

    constants.areBroken = false;
    ask("b");
    answer(1, reply(403, ""));
    EXPECT_EQ(urlsFrom(2), std::vector<std::string>{"https://api.test/refresh"});
    networking.reset(); // before its constants
}

TEST_F(TokenRefreshTests, only_a_403_is_retried) {
    const TransferOutcome outcomes[] = {
        reply(401, ""), reply(500, ""),
        ScriptedTransport::failure(HttpTransportError::networkConnectionLost)};
    for (const TransferOutcome& outcome : outcomes) {
        ask("a");
        answer(urls().size() - 1, outcome);
        const auto lines = application.recordingCrashReporter.takeLines();
        EXPECT_THAT(lines, Contains("Something went wrong with the request (not a 403)"));
        EXPECT_THAT(lines, Contains("Failed request: GET " + path("a")));
    }
    EXPECT_EQ(urls(), (std::vector{path("a"), path("a"), path("a")}));
}

TEST_F(TokenRefreshTests, nobody_signed_in_gets_a_token_of_its_own) {
    application.settings.logout();
    ask("a");
    answer(0, reply(403, ""));
    answer(1, reply(200, R"({"jwt":"anyone"})"));
    EXPECT_EQ(urlsFrom(1), (std::vector<std::string>{"https://api.test/api/mobile/token", path("a")}));
    EXPECT_THAT(cookies(2), HasSubstr(";tq.token=anyone"));
}

TEST_F(TokenRefreshTests, a_sign_out_keeps_its_token_and_the_refresh_s_answer_is_none_to_who_comes_next) {
    std::size_t sent = 0;
    for (const int status : {200, 403}) {
        application.fakeUserAccountModel.signIn("c1", "old");
        ask("a");
        answer(sent, reply(403, ""));
        application.fakeUserAccountModel.logOut();
        networking->logOut();
        application.settings.logout();
        application.run();
        application.fakeUserAccountModel.signIn("c2", "theirs");
        answer(sent + 1, reply(status, R"({"jwt":"new"})"));
        EXPECT_EQ(application.settings.accessToken(), "theirs");
        EXPECT_EQ(application.fakeUserAccountModel.prompts, 0);
        EXPECT_EQ(urlsFrom(sent + 2), std::vector<std::string>{"https://api.test/logout?isMobile=true"});
        EXPECT_THAT(cookies(sent + 2), HasSubstr(";tq.token=old"));
        answer(sent + 2, reply(403, ""));
        sent += 3;
        EXPECT_EQ(urls().size(), sent) << "the next user's token is not refreshed for it";
    }
    EXPECT_EQ(told, (std::vector<std::string>{"a failed", "a failed"}));
}

TEST_F(TokenRefreshTests, a_client_that_ends_during_a_refresh_answers_everyone_once) {
    ask("a");
    ask("b");
    answer(0, reply(403, ""));
    answer(1, reply(403, ""));
    networking.reset();
    application.run();
    answer(2, reply(200, R"({"jwt":"new"})"));
    EXPECT_THAT(told, testing::UnorderedElementsAre("a failed", "b failed"));
    EXPECT_EQ(application.settings.accessToken(), "old");
}

} // namespace
} // namespace teralune
