#include "Tests/SolverService/ServiceClient.h"

#include <gmock/gmock.h>

namespace teralune::service {
namespace {

using Accounts = ServiceTest;

std::string alertOf(const ClientReply& reply) {
    return boost::json::value_to<std::string>(reply.json().at("alert"));
}

TEST_F(Accounts, are_made_by_signing_up_and_open_by_their_password_only) {
    SolverService::Options options;
    // 2019-03-05 16:07:09 UTC.
    options.now = [] { return std::chrono::system_clock::time_point(std::chrono::seconds(1'551'802'029)); };
    service = startService(options);
    client = ServiceClient(*service);
    const ClientReply made = client.post("/mobileSignup", {{"lang", "en"},
                                                           {"email", "Ann@Example.org"},
                                                           {"firstName", "Ann"},
                                                           {"lastName", "O'Neil & Söhne"},
                                                           {"password", "p+ss w&rd"}});
    EXPECT_EQ(made.status, 200);
    const boost::json::value answer = made.json();
    for (const auto& [name, value] : answer.as_object()) {
        EXPECT_TRUE(value.is_string()) << name;
    }
    EXPECT_EQ(client.logIn("ann@example.org", "p+ss w&rd").json().at("connected"),
              made.json().at("connected"));
    EXPECT_EQ(client.post("/api/user/info").json(),
              boost::json::parse(R"({"firstName":"Ann","lastName":"O'Neil & Söhne","email":"Ann@Example.org",
                                     "registrationDate":"Mar 5, 2019 04:07:09 PM","dismissedNotifications":[],
                                     "settings":{"numDecimalDisplay":5,"steps":"showSteps"},"hasPassword":true})"));
    EXPECT_EQ(alertOf(client.logIn("ann@example.org", "p ss w&rd")),
              alertOf(client.logIn("nobody@example.org", "p+ss w&rd")));
}

TEST_F(Accounts, are_refused_with_a_text_for_the_user) {
    const struct {
        const char* email;
        const char* password;
        std::string firstName;
    } cases[] = {{"", "secret1", "A"},
                 {"ann", "secret1", "A"},
                 {"@b.cd", "secret1", "A"},
                 {"a@b", "secret1", "A"},
                 {"a b@c.de", "secret1", "A"},
                 {"a@b@c.de", "secret1", "A"},
                 {"ann@b.cd", "short", "A"},
                 {"ann@b.cd", "", "A"},
                 {"DEMO@teralune.example", "secret1", "A"},
                 {"ann@b.cd", "secret1", std::string(101, 'x')}};
    for (const auto& each : cases) {
        const ClientReply reply =
            client.post("/mobileSignup",
                        {{"email", each.email}, {"password", each.password}, {"firstName", each.firstName}});
        EXPECT_EQ(reply.status, 200);
        EXPECT_FALSE(alertOf(reply).empty()) << each.email;
    }
}

TEST_F(Accounts, take_new_field_values_that_make_sense) {
    client.post("/mobileSignup", {{"email", "ann@b.cd"}, {"password", "secret1"}});
    client.logIn();
    const struct {
        const char* field;
        std::string value;
        bool taken;
    } cases[] = {{"firstName", "Zoë", true},
                 {"lastName", "", true},
                 {"settings.numDecimalDisplay", "7", true},
                 {"settings.numDecimalDisplay", "11", false},
                 {"settings.numDecimalDisplay", "7x", false},
                 {"settings.numDecimalDisplay", "", false},
                 {"settings.steps", "stepByStep", true},
                 {"settings.steps", "sideways", false},
                 {"email", "ann@b.cd", false},
                 {"email", "dora@teralune.example", true},
                 {"password", "x", false},
                 {"id = 1; --", "x", false}};
    for (const auto& each : cases) {
        const ClientReply reply =
            client.post("/api/user/updateUserField", {{"field", each.field}, {"value", each.value}});
        EXPECT_EQ(reply.json().at("success"), each.taken) << each.field << " " << each.value;
    }
    const boost::json::value record = client.post("/api/user/info").json();
    EXPECT_EQ(record.at("firstName"), "Zoë");
    EXPECT_EQ(record.at("lastName"), "");
    EXPECT_EQ(record.at("email"), "dora@teralune.example");
    EXPECT_EQ(record.at("settings"),
              (boost::json::object{{"numDecimalDisplay", 7}, {"steps", "stepByStep"}}));
}

/// A signed-in user Ann whose password is "secret1".
class AccountChanges : public ServiceTest {
protected:
    AccountChanges() {
        client.post("/mobileSignup", {{"email", "ann@b.cd"}, {"password", "secret1"}});
        client.logIn("ann@b.cd", "secret1");
        elsewhere.logIn("ann@b.cd", "secret1");
    }

    /// Whether the request was carried out; a refusal must come with a text.
    bool succeeds(const std::string& path, const Form& form) const {
        const boost::json::value reply = client.post(path, form).json();
        return reply.as_object().empty() || reply.at("alert").as_string().empty();
    }
    bool opens(const std::string& email, const std::string& password) const {
        return ServiceClient(*service).logIn(email, password).json().as_object().contains("jwt");
    }

    ServiceClient elsewhere{*service};
};

TEST_F(AccountChanges, of_the_password_need_the_old_one_and_end_all_other_sessions) {
    const std::string path = "/api/user/changePassword";
    EXPECT_FALSE(
        succeeds(path, {{"currentPassword", "wrong"}, {"password", "secret2"}, {"password2", "secret2"}}));
    EXPECT_FALSE(
        succeeds(path, {{"currentPassword", "secret1"}, {"password", "secret2"}, {"password2", "secret3"}}));
    EXPECT_FALSE(
        succeeds(path, {{"currentPassword", "secret1"}, {"password", "tiny"}, {"password2", "tiny"}}));
    EXPECT_EQ(elsewhere.post("/api/user/info").status, 200);
    EXPECT_TRUE(succeeds(path, {{"currentPassword", "secret1"},
                                {"password", "secret2"},
                                {"password2", "secret2"},
                                {"force", "false"}}));
    EXPECT_EQ(elsewhere.post("/api/user/info").status, 403);
    EXPECT_EQ(client.post("/api/user/info").status, 200);
    EXPECT_FALSE(opens("ann@b.cd", "secret1"));
    EXPECT_TRUE(opens("ann@b.cd", "secret2"));
}

TEST_F(AccountChanges, of_the_address_need_the_password_and_a_free_address) {
    const std::string path = "/api/user/updateEmail";
    EXPECT_FALSE(succeeds(path, {{"newEmail", "new@b.cd"}, {"password", "wrong"}}));
    EXPECT_FALSE(succeeds(path, {{"newEmail", "new@b.cd"}, {"password", "other1"}, {"password2", "other1"}}));
    EXPECT_FALSE(succeeds(path, {{"newEmail", "nothing"}, {"password", "secret1"}}));
    EXPECT_FALSE(succeeds(path, {{"newEmail", "demo@teralune.example"}, {"password", "secret1"}}));
    EXPECT_TRUE(succeeds(path, {{"newEmail", "new@b.cd"}, {"password", "secret1"}}));
    EXPECT_TRUE(opens("new@b.cd", "secret1"));
    EXPECT_FALSE(opens("ann@b.cd", "secret1"));
}

TEST_F(AccountChanges, give_a_user_of_another_provider_an_address_and_a_password) {
    const std::string profile = R"({"id":"1001","email":"mika@teralune.example"})";
    const ClientReply signedIn = client.post("/mobileFacebookAuth", {{"facebookObj", profile}});
    client.token = boost::json::value_to<std::string>(signedIn.json().at("jwt"));
    const std::string path = "/api/user/updateEmail";
    EXPECT_FALSE(succeeds("/api/user/changePassword",
                          {{"currentPassword", ""}, {"password", "secret1"}, {"password2", "secret1"}}));
    EXPECT_FALSE(succeeds(path, {{"newEmail", "m@b.cd"}, {"password", "secret1"}}));
    EXPECT_TRUE(succeeds(path, {{"newEmail", "m@b.cd"}, {"password", "secret1"}, {"password2", "secret1"}}));
    EXPECT_TRUE(opens("m@b.cd", "secret1"));
    EXPECT_EQ(client.post("/api/user/info").json().at("hasPassword"), true);
}

TEST_F(AccountChanges, close_an_account_for_good_and_free_its_address) {
    client.post("/api/notebook/addNote", {{"problem", "x=1"}});
    EXPECT_EQ(client.post("/api/user/disableAccount").status, 200);
    EXPECT_EQ(client.post("/api/user/info").status, 403);
    EXPECT_EQ(elsewhere.get("/pub_api/steps?query=x%3D1").status, 403);
    EXPECT_EQ(client.get("/logout?isMobile=true").status, 200);
    EXPECT_FALSE(opens("ann@b.cd", "secret1"));
    client.post("/mobileSignup", {{"email", "ann@b.cd"}, {"password", "secret9"}});
    client.logIn("ann@b.cd", "secret9");
    EXPECT_TRUE(client.notebook().empty());
}

} // namespace
} // namespace teralune::service
