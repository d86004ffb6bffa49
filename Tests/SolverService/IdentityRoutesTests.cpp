#include "Tests/SolverService/ServiceClient.h"

#include <atomic>
#include <cstring>
#include <gmock/gmock.h>

namespace teralune::service {
namespace {

using testing::ContainsRegex;

// The pair of RFC 7636's appendix B.
const std::string verifier = "dBjftJeZ4CVP-mB92K27uhbUJU1p1r_wW1gFWFOEjXk";
const std::string challenge = "E9Melhoa2OwvFrEMTJguCHaoeK1t8URWbuGJSstw-cM";
const std::string redirect = "teralune-auth://auth/";

class IdentityRoutes : public testing::Test {
protected:
    SolverService::Options options() {
        SolverService::Options options;
        options.now = [this] { return std::chrono::system_clock::time_point(std::chrono::seconds(seconds)); };
        return options;
    }

    /// Where the client is sent, byte for byte, or else the status.
    std::string authorize(const std::string& changedName = {}, const std::string& changedValue = {}) const {
        std::string target = "/identity/authorize?";
        for (const auto& [name, value] : Form{{"client_id", "3f6b1c2e-9a47-4d58-8e21-6c0b7a95d4f3"},
                                              {"redirect_uri", redirect},
                                              {"response_type", "code"},
                                              {"scope", "openid profile User.ReadBasic.All"},
                                              {"state", "st&te=1\r\nX:y"},
                                              {"prompt", "consent"},
                                              {"code_challenge", challenge},
                                              {"code_challenge_method", "S256"}}) {
            target += "&" + name + "=" + encoded(name == changedName ? changedValue : value);
        }
        const std::string reply = rawExchange(*service, "GET " + target + " HTTP/1.1\r\nHost: a\r\n\r\n");
        const std::size_t start = reply.find("Location: ") + std::strlen("Location: ");
        return reply.starts_with("HTTP/1.1 302") ? reply.substr(start, reply.find("\r\n", start) - start)
                                                 : reply.substr(std::strlen("HTTP/1.1 "), 3);
    }

    std::string code() const {
        const std::string location = authorize();
        const std::size_t start = location.find("code=") + 5;
        return location.substr(start, location.find('&') - start);
    }

    boost::json::value exchange(const std::string& code, const std::string& usedVerifier = verifier,
                                const std::string& address = redirect) const {
        return client
            .post("/microsoftMobileAuth2?lang=en",
                  {{"code", code}, {"code_verifier", usedVerifier}, {"redirectUrl", address}})
            .json();
    }

    static bool isRefused(const boost::json::value& reply) {
        return reply.as_object().size() == 1 && reply.as_object().contains("alert");
    }

    std::atomic<std::int64_t> seconds = 1'000;
    std::unique_ptr<SolverService> service = startService(options());
    ServiceClient client{*service};
};

TEST_F(IdentityRoutes, sign_in_whom_the_code_was_issued_for) {
    const boost::json::value first = exchange(code());
    client.token = boost::json::value_to<std::string>(first.at("jwt"));
    const boost::json::value record = client.post("/api/user/info").json();
    EXPECT_EQ(record.at("firstName"), "Mika");
    EXPECT_EQ(record.at("email"), "mika@teralune.example");
    EXPECT_EQ(record.at("hasPassword"), false);
    EXPECT_EQ(exchange(code()).at("connected"), first.at("connected"));

    service->identityProvider().setPersonAtBrowser(Person{"7", "Noa", "Nomail", std::nullopt});
    const boost::json::value other = exchange(code());
    EXPECT_NE(other.at("connected"), first.at("connected"));
    client.token = boost::json::value_to<std::string>(other.at("jwt"));
    EXPECT_FALSE(client.post("/api/user/info").json().as_object().contains("email"));
}

TEST_F(IdentityRoutes, honour_a_code_once_for_its_verifier_and_address_and_not_for_long) {
    EXPECT_TRUE(isRefused(exchange("made up")));
    EXPECT_TRUE(isRefused(exchange("")));
    const std::string used = code();
    EXPECT_FALSE(isRefused(exchange(used)));
    EXPECT_TRUE(isRefused(exchange(used)));
    const std::string guessed = code();
    EXPECT_TRUE(isRefused(exchange(guessed, "another verifier")));
    EXPECT_TRUE(isRefused(exchange(guessed)));
    EXPECT_TRUE(isRefused(exchange(code(), verifier, "other-app://auth/")));
    const std::string old = code();
    seconds += 301;
    EXPECT_TRUE(isRefused(exchange(old)));
}

TEST_F(IdentityRoutes, send_errors_to_the_redirect_address_but_only_to_one_that_may_have_them) {
    const std::string state = "&state=st%26te%3D1%0D%0AX%3Ay$";
    const std::string invalid = "^teralune-auth://auth/\\?error=invalid_request" + state;
    const std::string local = "^http://127.0.0.1:4711/auth\\?a=b&code=[0-9a-f]+" + state;
    const std::tuple<const char*, const char*, std::string> cases[] = {
        {"code_challenge_method", "plain", invalid},
        {"code_challenge", "short", invalid},
        {"response_type", "token", invalid},
        {"redirect_uri", "http://127.0.0.1:4711/auth?a=b", local},
        {"redirect_uri", "https://evil.example/", "400"},
        {"redirect_uri", "http://127.0.0.1.evil.example/", "400"},
        {"redirect_uri", "app://auth/\r\nSet-Cookie: a=b", "400"},
        {"redirect_uri", "javascript:alert(1)", "400"},
        {"redirect_uri", "", "400"},
        {"client_id", "somebody", "400"},
    };
    for (const auto& [name, value, location] : cases) {
        EXPECT_THAT(authorize(name, value), ContainsRegex(location)) << value;
    }
    service->identityProvider().setPersonAtBrowser(std::nullopt);
    EXPECT_THAT(authorize(), ContainsRegex("^teralune-auth://auth/\\?error=access_denied" + state));
}

TEST_F(IdentityRoutes, believe_a_profile_of_a_known_person_only) {
    const auto signIn = [&](const std::string& profile) {
        return client.post("/mobileFacebookAuth", {{"facebookObj", profile}, {"lang", "en"}}).json();
    };
    const std::string profile = R"({"id":"1001","first_name":"Mika","email":"mika@teralune.example"})";
    EXPECT_EQ(signIn(profile).at("connected"), signIn(profile).at("connected"));
    for (const char* refused : {R"({"id":"1002","email":"mika@teralune.example"})",
                                R"({"id":"1001","email":"demo@teralune.example"})", R"({"id":"1001"})",
                                R"({"id":1001})", "[]", "{", ""}) {
        EXPECT_TRUE(isRefused(signIn(refused))) << refused;
    }
    // The provider vouches for the address, so this is the account that has it already.
    service->identityProvider().addPerson(Person{"1003", "D", "D", "demo@teralune.example"});
    EXPECT_EQ(signIn(R"({"id":"1003","email":"demo@teralune.example"})").at("connected"),
              client.logIn().json().at("connected"));
}

} // namespace
} // namespace teralune::service
