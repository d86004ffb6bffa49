#include "Classes/Networking/ResponseBodySummary.h"
#include "Classes/Networking/Suggestion.h"
#include "Classes/Networking/UserData.h"
#include "Platform/Foundation/JsonMapping.h"

#include <gtest/gtest.h>

namespace teralune {
namespace {

using std::chrono::sys_days;
using namespace std::chrono_literals;

boost::json::object object(std::string_view text) {
    return parseJson(text).value().get_object();
}

TEST(RecordTests, user_data_reads_each_member_and_keeps_defaults_for_what_does_not_fit) {
    const UserData full = UserData::map(object(
        R"({"firstName":"Ada","lastName":"L","email":"a@b","registrationDate":"Mar 5, 2019 04:07:09 PM",
            "dismissedNotifications":["x","y"],"settings":{"numDecimalDisplay":3,"steps":"stepByStep"},
            "hasPassword":true,"unknown":[{}]})"));
    EXPECT_EQ(full.firstName, "Ada");
    EXPECT_EQ(full.lastName, "L");
    EXPECT_EQ(full.email, "a@b");
    EXPECT_EQ(full.registrationDate, Date(sys_days(2019y / 3 / 5) + 16h + 7min + 9s));
    EXPECT_EQ(full.dismissedNotifications, (std::vector<std::string>{"x", "y"}));
    EXPECT_EQ(full.settings->numDecimalDisplay, 3);
    EXPECT_EQ(full.settings->steps, StepOption::stepByStep);
    EXPECT_TRUE(full.hasPassword);

    const UserData odd = UserData::map(object(
        R"({"firstName":7,"email":null,"registrationDate":"5.3.2019","dismissedNotifications":["x",1],
            "settings":{"numDecimalDisplay":"3","steps":9},"hasPassword":"yes"})"));
    EXPECT_FALSE(odd.firstName || odd.lastName || odd.email || odd.registrationDate || odd.hasPassword);
    EXPECT_TRUE(odd.dismissedNotifications.empty());
    EXPECT_EQ(odd.settings->numDecimalDisplay, 5);
    EXPECT_EQ(odd.settings->steps, StepOption::showSteps);
    EXPECT_FALSE(UserData::map(object(R"({"settings":[]})")).settings);
}

TEST(RecordTests, whole_numbers_are_never_rounded_nor_wrapped) {
    const auto decimals = [](const std::string& number) {
        return UserSettings::map(object("{\"numDecimalDisplay\":" + number + "}")).numDecimalDisplay;
    };
    EXPECT_EQ(decimals("-4"), -4);
    EXPECT_EQ(decimals("4.0"), 4);
    EXPECT_EQ(decimals("4.5"), 5);
    EXPECT_EQ(decimals("18446744073709551615"), 5);
    EXPECT_EQ(decimals("1e300"), 5);
}

TEST(RecordTests, suggestion_reads_each_member) {
    const auto whole = Suggestion::map(
        object(R"({"display":"d","search":"s","priority":2,"pop":3,"nornalPop":4,"bucketName":"b"})"));
    ASSERT_TRUE(whole);
    EXPECT_EQ(whole->display + whole->search + whole->bucketName.value(), "dsb");
    EXPECT_EQ(whole->priority * 10 + whole->pop, 23);
    EXPECT_EQ(whole->nornalPop, 4.0);
}

TEST(RecordTests, body_summary_shows_the_beginning_and_counts_the_rest) {
    const std::string a100(100, 'a');
    std::string accents; // each is one character of three bytes
    for (int index = 0; index < 101; ++index)
        accents += "e\u0301";
    const std::pair<std::string, std::string> texts[] = {
        {"", ""},
        {a100, a100},
        {a100 + std::string(20, 'b'), a100 + " ... (and 20 more)"},
        {accents, accents.substr(0, 300) + " ... (and 1 more)"},
        {"\xff\xfe", "<nil or omitted>"},
    };
    for (const auto& [data, summary] : texts)
        EXPECT_EQ(responseBodySummary(std::string_view(data)), summary);

    const std::pair<const char*, const char*> objects[] = {
        {R"({"a":"x","n":1,"o":{"p":"q"},"b":""})", "object: a: x, n: , o: , b: "},
        {R"({"k":"12345678901234567890"})", "object: k: 12345678901234567890"},
        {R"({"k":"123456789012345678901"})", "object: k: 12345678901234567890…"},
        {R"({})", "object: "},
        {R"([1,{},"x"])", "array of 3"},
        {"7", "<nil or omitted>"},
    };
    for (const auto& [json, summary] : objects) {
        const boost::json::value value = parseJson(json).value();
        EXPECT_EQ(responseBodySummary(&value), summary);
    }
    EXPECT_EQ(responseBodySummary({}), "<nil or omitted>");
}

} // namespace
} // namespace teralune
