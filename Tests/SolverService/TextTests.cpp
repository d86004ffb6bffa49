#include "SolverService/Http/ReceivedRequest.h"
#include "SolverService/Model/PasswordDigest.h"
#include "SolverService/Model/UtcText.h"

#include <gmock/gmock.h>

namespace teralune::service {
namespace {

using testing::ElementsAre;
using testing::Pair;

TEST(Parameters, are_read_leniently_and_in_order) {
    Parameters parameters;
    parameters.read("b=1&a=%41%62+c%2B&&empty=&flag&=x&b=2&bad=%4&worse=%zz%&eq=a=b");
    EXPECT_THAT(parameters.items(), ElementsAre(Pair("b", "1"), Pair("a", "Ab c+"), Pair("empty", ""),
                                                Pair("flag", ""), Pair("", "x"), Pair("b", "2"),
                                                Pair("bad", "%4"), Pair("worse", "%zz%"), Pair("eq", "a=b")));
    EXPECT_EQ(parameters.text("b"), "1");
    EXPECT_EQ(parameters.value("missing"), std::nullopt);
}

TEST(Parameters, tell_text_from_bytes) {
    using namespace std::string_literals;
    for (const std::string& text :
         {""s, "a\0b"s, "é"s, "½√"s, "\U0001F600"s, "\xEF\xBF\xBF"s, "\xF4\x8F\xBF\xBF"s}) {
        EXPECT_TRUE(isText(text)) << testing::PrintToString(text);
    }
    for (const std::string& bytes :
         {"\x80"s, "\xC3"s, "\xC3("s, "\xC1\xBF"s, "\xE0\x9F\xBF"s, "\xED\xA0\x80"s, "\xE2\x82"s,
          "\xF0\x8F\xBF\xBF"s, "\xF4\x90\x80\x80"s, "\xF5\x80\x80\x80"s, "ok\xFF"s}) {
        EXPECT_FALSE(isText(bytes)) << testing::PrintToString(bytes);
    }
}

TEST(ReceivedRequest, finds_cookies_by_their_whole_name) {
    ReceivedRequest request;
    request.headers = {{"COOKIE", "xtq.token=no;tq.token.b=no; tq.token=yes=1;tq.token=later"},
                       {"Cookie", "z=;"}};
    EXPECT_EQ(request.cookie("tq.token"), "yes=1");
    EXPECT_EQ(request.cookie("z"), "");
    EXPECT_EQ(request.cookie("token"), std::nullopt);
}

TEST(UtcText, writes_twelve_hour_times_in_english) {
    const struct {
        std::int64_t seconds;
        const char* note;
        const char* registration;
    } cases[] = {
        {0, "Jan 01, 1970 12:00:00 AM", "Jan 1, 1970 12:00:00 AM"},
        {43'200, "Jan 01, 1970 12:00:00 PM", "Jan 1, 1970 12:00:00 PM"},
        {1'582'934'399, "Feb 28, 2020 11:59:59 PM", "Feb 28, 2020 11:59:59 PM"},
        {1'583'020'800, "Mar 01, 2020 12:00:00 AM", "Mar 1, 2020 12:00:00 AM"},
        {4'102'448'461, "Jan 01, 2100 01:01:01 AM", "Jan 1, 2100 01:01:01 AM"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(noteTime(each.seconds), each.note);
        EXPECT_EQ(registrationTime(each.seconds), each.registration);
    }
}

TEST(PasswordDigest, opens_for_its_password_only_and_differs_each_time) {
    const std::string digest = digestPassword("secret");
    EXPECT_NE(digest, digestPassword("secret"));
    EXPECT_TRUE(passwordMatches("secret", digest));
    EXPECT_FALSE(passwordMatches("Secret", digest) || passwordMatches("secret", digest.substr(1)));
}

} // namespace
} // namespace teralune::service
