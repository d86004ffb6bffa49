#include "Tests/SolverService/ServiceClient.h"

#include <gmock/gmock.h>

namespace teralune::service {
namespace {

/// A signed-in user Ann whose password is "secret1".
class Accounts : public ServiceTest {
protected:
    Accounts() {
        client.post("/mobileSignup", {{"email", "ann@b.cd"}, {"password", "secret1"}});
        client.logIn("ann@b.cd", "secret1");
        elsewhere.logIn("ann@b.cd", "secret1");
    }

    /// What the user is told of a refusal; nothing of what was carried out.
    static std::string alertOf(const ClientReply& reply) {
        const boost::json::value answer = reply.json();
        const auto* alert = answer.as_object().if_contains("alert");
        return alert ? boost::json::value_to<std::string>(*alert) : "";
    }
    bool succeeds(const std::string& path, const Form& form) const {
        return alertOf(client.post(path, form)).empty();
    }
    bool opens(const std::string& email, const std::string& password) const {
        return ServiceClient(*service).logIn(email, password).json().as_object().contains("jwt");
    }

    ServiceClient elsewhere{*service};
};

TEST_F(Accounts, are_made_by_signing_up_and_open_by_their_password_only) {
    SolverService::Options options;
    // 2019-03-05 16:07:09 UTC.
    options.now = [] { return std::chrono::system_clock::time_point(std::chrono::seconds(1'551'802'029)); };
    service = startService(options);
    client = ServiceClient(*service);
    const boost::json::value made = client
                                        .post("/mobileSignup", {{"lang", "en"},
                                                                {"email", "Ann@Example.org"},
                                                                {"firstName", "Ann"},
                                                                {"lastName", "O'Neil & Söhne"},
                                                                {"password", "p+ss w&rd"}})
                                        .json();
    for (const auto& [name, value] : made.as_object()) {
        EXPECT_TRUE(value.is_string()) << name;
    }
    EXPECT_EQ(client.logIn("ann@example.org", "p+ss w&rd").json().at("connected"), made.at("connected"));
    EXPECT_EQ(client.post("/api/user/info").json(),
              boost::json::parse(R"({"firstName":"Ann","lastName":"O'Neil & Söhne","email":"Ann@Example.org",
                                     "registrationDate":"Mar 5, 2019 04:07:09 PM","dismissedNotifications":[],
                                     "settings":{"numDecimalDisplay":5,"steps":"showSteps"},"hasPassword":true})"));
    const std::string alert = alertOf(client.logIn("ann@example.org", "p ss w&rd"));
    EXPECT_FALSE(alert.empty());
    EXPECT_EQ(alertOf(client.logIn("nobody@example.org", "p+ss w&rd")), alert);
}

TEST_F(Accounts, are_refused_with_a_text_for_the_user) {
    const std::string path = "/mobileSignup";
    for (const char* email : {"", "bob", "@b.cd", "a@b", "a b@c.de", "a@b@c.de", "DEMO@teralune.example"}) {
        EXPECT_FALSE(succeeds(path, {{"email", email}, {"password", "secret1"}})) << email;
    }
    EXPECT_FALSE(succeeds(path, {{"email", "bob@b.cd"}, {"password", "short"}}));
    EXPECT_FALSE(succeeds(
        path, {{"email", "bob@b.cd"}, {"password", "secret1"}, {"firstName", std::string(101, 'x')}}));
}

TEST_F(Accounts, take_new_field_values_that_make_sense) {
    const std::tuple<const char*, const char*, bool> cases[] = {
        {"firstName", "Zoë", true},
        {"lastName", "", true},
        {"settings.numDecimalDisplay", "7", true},
        {"settings.numDecimalDisplay", "11", false},
        {"settings.numDecimalDisplay", "7x", false},
        {"settings.numDecimalDisplay", "", false},
        {"settings.steps", "stepByStep", true},
        {"settings.steps", "sideways", false},
        {"email", "demo@teralune.example", false},
        {"email", "zoe@b.cd", true},
        {"password", "x", false},
        {"id = 1; --", "x", false},
    };
    for (const auto& [field, value, taken] : cases) {
        const ClientReply reply =
            client.post("/api/user/updateUserField", {{"field", field}, {"value", value}});
        EXPECT_EQ(reply.json().at("success"), taken) << field << " " << value;
    }
    boost::json::object record = client.post("/api/user/info").json().as_object();
    record.erase("registrationDate");
    EXPECT_EQ(record, boost::json::parse(R"({"firstName":"Zoë","lastName":"","email":"zoe@b.cd",
        "dismissedNotifications":[],"settings":{"numDecimalDisplay":7,"steps":"stepByStep"},"hasPassword":true})"));
}

TEST_F(Accounts, change_the_password_for_the_old_one_and_end_all_other_sessions) {
    const auto changes = [&](const char* current, const char* first, const char* second) {
        return succeeds(
            "/api/user/changePassword",
            {{"currentPassword", current}, {"password", first}, {"password2", second}, {"force", "false"}});
    };
    EXPECT_FALSE(changes("wrong", "secret2", "secret2"));
    EXPECT_FALSE(changes("secret1", "secret2", "secret3"));
    EXPECT_FALSE(changes("secret1", "tiny", "tiny"));
    EXPECT_EQ(elsewhere.post("/api/user/info").status, 200);
    EXPECT_TRUE(changes("secret1", "secret2", "secret2"));
    EXPECT_EQ(elsewhere.post("/api/user/info").status, 403);
    EXPECT_EQ(client.post("/api/user/info").status, 200);
    EXPECT_FALSE(opens("ann@b.cd", "secret1"));
    EXPECT_TRUE(opens("ann@b.cd", "secret2"));
}

TEST_F(Accounts, change_the_address_for_the_password_to_a_free_one) {
    const std::string path = "/api/user/updateEmail";
    EXPECT_FALSE(succeeds(path, {{"newEmail", "new@b.cd"}, {"password", "wrong"}}));
    EXPECT_FALSE(succeeds(path, {{"newEmail", "new@b.cd"}, {"password", "other1"}, {"password2", "other1"}}));
    EXPECT_FALSE(succeeds(path, {{"newEmail", "nothing"}, {"password", "secret1"}}));
    EXPECT_FALSE(succeeds(path, {{"newEmail", "demo@teralune.example"}, {"password", "secret1"}}));
    EXPECT_TRUE(succeeds(path, {{"newEmail", "new@b.cd"}, {"password", "secret1"}}));
    EXPECT_TRUE(opens("new@b.cd", "secret1"));
    EXPECT_FALSE(opens("ann@b.cd", "secret1"));

    const std::string profile = R"({"id":"1001","email":"mika@teralune.example"})";
    client.adoptToken(client.post("/mobileFacebookAuth", {{"facebookObj", profile}}));
    EXPECT_FALSE(succeeds("/api/user/changePassword",
                          {{"currentPassword", ""}, {"password", "secret1"}, {"password2", "secret1"}}));
    EXPECT_FALSE(succeeds(path, {{"newEmail", "m@b.cd"}, {"password", "secret1"}}));
    EXPECT_TRUE(succeeds(path, {{"newEmail", "m@b.cd"}, {"password", "secret1"}, {"password2", "secret1"}}))
        << "a user of another provider gets an address and a password";
    EXPECT_TRUE(opens("m@b.cd", "secret1"));
    EXPECT_EQ(client.post("/api/user/info").json().at("hasPassword"), true);
}

TEST_F(Accounts, close_for_good_and_free_their_address) {
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
