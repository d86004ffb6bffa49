#include "Tests/SolverService/ServiceClient.h"

#include <gmock/gmock.h>

namespace teralune::service {
namespace {

SolverService::Options atNoon() {
    SolverService::Options options;
    // 2019-03-05 16:07:09 UTC.
    options.now = [] { return std::chrono::system_clock::time_point(std::chrono::seconds(1'551'802'029)); };
    return options;
}

std::string alertOf(const ClientReply& reply) {
    return boost::json::value_to<std::string>(reply.json().at("alert"));
}

TEST(Accounts, are_made_by_signing_up_and_open_by_their_password_only) {
    const auto service = startService(atNoon());
    ServiceClient client(*service);
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

TEST(Accounts, are_refused_with_a_text_for_the_user) {
    const auto service = startService();
    const ServiceClient client(*service);
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

TEST(Accounts, take_new_field_values_that_make_sense) {
    const auto service = startService();
    ServiceClient client(*service);
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

} // namespace
} // namespace teralune::service
