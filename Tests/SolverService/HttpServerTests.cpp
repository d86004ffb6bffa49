#include "Tests/SolverService/ServiceClient.h"

#include <gmock/gmock.h>

namespace teralune::service {
namespace {

using HttpServerTests = ServiceTest;

using testing::HasSubstr;
using testing::StartsWith;

TEST_F(HttpServerTests, gives_every_client_a_session_cookie_and_lets_it_keep_it) {
    const std::string cookie = client.get("/nothing").header("Set-Cookie");
    EXPECT_THAT(cookie, testing::MatchesRegex("PLAY_SESSION=[0-9a-f]+; Path=/"));
    const std::string item = cookie.substr(0, cookie.find(';'));
    const std::string head = "GET / HTTP/1.1\r\nConnection: close\r\nCookie: a=b;";
    EXPECT_THAT(rawExchange(*service, head + item + ";c=d\r\n\r\n"), HasSubstr("Set-Cookie: " + item + ";"));
    EXPECT_THAT(rawExchange(*service, head + "PLAY_SESSION=made up\r\n\r\n"),
                testing::Not(HasSubstr("made up")));
}

TEST_F(HttpServerTests, keeps_the_bytes_of_each_request) {
    rawExchange(*service,
                "POST /detailedLog?a=%41&b=+ HTTP/1.1\r\nCookie: x=1;tq.token=abc\r\ncookie: y=2\r\n"
                "X-Empty:\r\nContent-Type: application/x-www-form-urlencoded; charset=utf-8\r\n"
                "Transfer-Encoding: chunked\r\nConnection: close\r\n\r\n5\r\ntype=\r\n3\r\n%41\r\n0\r\n\r\n");
    const std::vector<ReceivedRequest> requests = service->requestLog().requestsTo("/detailedLog");
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests[0].method, "POST");
    EXPECT_EQ(requests[0].target, "/detailedLog?a=%41&b=+");
    EXPECT_EQ(requests[0].body, "type=%41");
    EXPECT_EQ(requests[0].headers.size(), 6U);
    EXPECT_EQ(requests[0].headers[0], std::pair(std::string("Cookie"), std::string("x=1;tq.token=abc")));
    EXPECT_THAT(requests[0].headers, testing::Contains(testing::Pair("X-Empty", "")));
    EXPECT_EQ(requests[0].cookie("y"), "2");
    EXPECT_EQ(requests[0].cookie("tq.token"), "abc");
    EXPECT_EQ(requests[0].parameters.text("a"), "A");
    EXPECT_EQ(requests[0].parameters.text("b"), " ");
    EXPECT_EQ(requests[0].parameters.text("type"), "A");
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
    for (const std::string& bytes :
         {std::string("\r\n\r\n"), std::string("GET\r\n\r\n"), std::string(200'000, 'A'),
          std::string("GET / HTTP/9.9\r\n\r\n"),
          "GET / HTTP/1.1\r\nX: " + std::string(100'000, 'b') + "\r\n\r\n",
          std::string("POST /mobileLogin HTTP/1.1\r\nContent-Length: 99999999999999999999\r\n\r\nx"),
          std::string("POST /mobileLogin HTTP/1.1\r\nContent-Length: 500\r\n\r\nshort"),
          std::string("POST /mobileLogin HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\n"),
          std::string("POST /mobileLogin HTTP/1.1\r\nContent-Type: multipart/form-data\r\nContent-Length: "
                      "3\r\n\r\nabc")}) {
        EXPECT_THAT(rawExchange(*service, bytes), testing::Not(StartsWith("HTTP/1.1 200")));
    }
    EXPECT_EQ(client.get("/pub_api/steps?query=x%3D1").status, 200);
}

} // namespace
} // namespace teralune::service
