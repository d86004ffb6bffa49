#include "SolverService/Model/UtcText.h"
#include "Tests/SolverService/ServiceClient.h"

#include <gmock/gmock.h>

namespace teralune::service {
namespace {

using HttpServerTests = ServiceTest;

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::Pair;

TEST_F(HttpServerTests, gives_every_client_a_session_cookie_and_lets_it_keep_it) {
    const std::string cookie = client.get("/nothing").header("Set-Cookie");
    EXPECT_THAT(cookie, testing::MatchesRegex("PLAY_SESSION=[0-9a-f]+; Path=/"));
    const std::string item = cookie.substr(0, cookie.find(';'));
    const std::string head = "GET / HTTP/1.1\r\nConnection: close\r\nCookie: a=b;";
    EXPECT_THAT(rawExchange(*service, head + item + ";c=d\r\n\r\n"), HasSubstr("Set-Cookie: " + item + ";"));
    EXPECT_THAT(rawExchange(*service, head + "PLAY_SESSION=made up\r\n\r\n"), Not(HasSubstr("made up")));
}

TEST_F(HttpServerTests, keeps_the_bytes_of_each_request_and_reads_them_leniently) {
    const std::string target = "/detailedLog?b=1&a=%41%62+c%2B&&empty=&flag&=x&b=2&bad=%4&worse=%zz%&eq=a=b";
    rawExchange(*service,
                "POST " + target +
                    " HTTP/1.1\r\nCookie: xtq.token=no;tq.token.b=no; tq.token=a=1;tq.token=later\r\n"
                    "cookie: y=;\r\nX-Empty:\r\n"
                    "Content-Type: application/x-www-form-urlencoded; charset=utf-8\r\n"
                    "Transfer-Encoding: chunked\r\nConnection: close\r\n\r\n"
                    "5\r\ntype=\r\n3\r\n%41\r\n0\r\n\r\n");
    const std::vector<ReceivedRequest> requests = service->requestLog().requestsTo("/detailedLog");
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests[0].method, "POST");
    EXPECT_EQ(requests[0].target, target);
    EXPECT_EQ(requests[0].body, "type=%41");
    EXPECT_EQ(requests[0].headers.size(), 6U);
    EXPECT_THAT(requests[0].headers[1], Pair("cookie", "y=;"));
    EXPECT_THAT(requests[0].headers, testing::Contains(Pair("X-Empty", "")));
    EXPECT_EQ(requests[0].cookie("tq.token"), "a=1");
    EXPECT_EQ(requests[0].cookie("y"), "");
    EXPECT_EQ(requests[0].cookie("token"), std::nullopt);
    EXPECT_THAT(requests[0].parameters.items(),
                ElementsAre(Pair("b", "1"), Pair("a", "Ab c+"), Pair("empty", ""), Pair("flag", ""),
                            Pair("", "x"), Pair("b", "2"), Pair("bad", "%4"), Pair("worse", "%zz%"),
                            Pair("eq", "a=b"), Pair("type", "A")));
    EXPECT_EQ(requests[0].parameters.text("b"), "1");
    EXPECT_EQ(requests[0].parameters.value("missing"), std::nullopt);
}

TEST_F(HttpServerTests, serves_one_connection_after_another_request_and_never_mistakes_a_body_for_one) {
    const std::string request = "GET /one HTTP/1.1\r\nHost: a\r\n\r\n";
    rawExchange(*service, request + request +
                              "GET /two HTTP/1.1\r\nContent-Length: 40\r\n\r\nGET /hidden HTTP/1.1\r\n\r\n");
    EXPECT_EQ(service->requestLog().count("/one"), 2U);
    EXPECT_EQ(service->requestLog().count("/two"), 1U);
    EXPECT_EQ(service->requestLog().count("/hidden"), 0U);
}

TEST_F(HttpServerTests, bounds_what_it_reads_and_survives_what_is_no_request) {
    SolverService::Options options;
    options.bodyLimit = 1'000;
    service = startService(options);
    client = ServiceClient(*service);
    EXPECT_EQ(client.post("/mobileLogin", {{"email", std::string(2'000, 'x')}}).status, 413);
    EXPECT_EQ(client.get("/" + std::string(20'000, 'x')).status, 414);
    const std::string post = "POST /mobileLogin HTTP/1.1\r\n";
    for (const std::string& bytes :
         {std::string("\r\n\r\n"), std::string("GET\r\n\r\n"), std::string(200'000, 'A'),
          std::string("GET / HTTP/9.9\r\n\r\n"),
          "GET / HTTP/1.1\r\nX: " + std::string(100'000, 'b') + "\r\n\r\n",
          post + "Content-Length: 99999999999999999999\r\n\r\nx", post + "Content-Length: 500\r\n\r\nshort",
          post + "Transfer-Encoding: chunked\r\n\r\nzz\r\n",
          post + "Content-Type: multipart/form-data\r\nContent-Length: 3\r\n\r\nabc"}) {
        EXPECT_THAT(rawExchange(*service, bytes), Not(testing::StartsWith("HTTP/1.1 200")));
    }
    EXPECT_EQ(client.get("/pub_api/steps?query=x%3D1").status, 200);
}

TEST(Parameters, tell_text_from_bytes) {
    using namespace std::string_literals;
    for (const std::string& text : {"a\0b"s, "é½√"s, "\U0001F600"s, "\xEF\xBF\xBF"s, "\xF4\x8F\xBF\xBF"s}) {
        EXPECT_TRUE(isText(text)) << testing::PrintToString(text);
    }
    for (const std::string& bytes :
         {"\x80"s, "\xC3"s, "\xC3("s, "\xC1\xBF"s, "\xE0\x9F\xBF"s, "\xED\xA0\x80"s, "\xE2\x82"s,
          "\xF0\x8F\xBF\xBF"s, "\xF4\x90\x80\x80"s, "\xF5\x80\x80\x80"s, "ok\xFF"s}) {
        EXPECT_FALSE(isText(bytes)) << testing::PrintToString(bytes);
    }
}

TEST(UtcText, writes_twelve_hour_times_in_english) {
    EXPECT_EQ(noteTime(0), "Jan 01, 1970 12:00:00 AM");
    EXPECT_EQ(noteTime(43'200), "Jan 01, 1970 12:00:00 PM");
    EXPECT_EQ(noteTime(1'582'934'399), "Feb 28, 2020 11:59:59 PM");
    EXPECT_EQ(registrationTime(4'102'448'461), "Jan 1, 2100 01:01:01 AM");
}

} // namespace
} // namespace teralune::service
