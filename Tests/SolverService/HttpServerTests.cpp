#include "Tests/SolverService/ServiceClient.h"

#include <gmock/gmock.h>

namespace teralune::service {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Pair;
using testing::StartsWith;

TEST(HttpServer, answers_a_wrong_path_and_a_wrong_method_as_a_server_does) {
    const auto service = startService();
    const ServiceClient client(*service);
    EXPECT_EQ(client.get("/nothing").status, 404);
    EXPECT_EQ(client.post("/api/hasWebNotes/").status, 404);
    EXPECT_EQ(client.get("/mobileLogin").status, 405);
    EXPECT_EQ(client.get("/mobileLogin").header("Allow"), "POST");
    EXPECT_EQ(client.post("/pub_api/steps").status, 405);
    EXPECT_THAT(rawExchange(*service, "DELETE /mobileLogin HTTP/1.1\r\nHost: a\r\n\r\n"),
                StartsWith("HTTP/1.1 405"));
}

TEST(HttpServer, gives_every_client_a_session_cookie_and_lets_it_keep_it) {
    const auto service = startService();
    const ServiceClient client(*service);
    const std::string cookie = client.get("/nothing").header("Set-Cookie");
    EXPECT_THAT(cookie, testing::MatchesRegex("PLAY_SESSION=[0-9a-f]+; Path=/"));
    const std::string item = cookie.substr(0, cookie.find(';'));
    const std::string head = "GET / HTTP/1.1\r\nConnection: close\r\nCookie: a=b;";
    EXPECT_THAT(rawExchange(*service, head + item + ";c=d\r\n\r\n"), HasSubstr("Set-Cookie: " + item + ";"));
    EXPECT_THAT(rawExchange(*service, head + "PLAY_SESSION=made up\r\n\r\n"),
                testing::Not(HasSubstr("made up")));
}

TEST(HttpServer, keeps_the_bytes_of_each_request) {
    const auto service = startService();
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
    EXPECT_THAT(requests[0].headers, Contains(Pair("X-Empty", "")));
    EXPECT_EQ(requests[0].cookie("y"), "2");
    EXPECT_EQ(requests[0].cookie("tq.token"), "abc");
    EXPECT_EQ(requests[0].parameters.text("a"), "A");
    EXPECT_EQ(requests[0].parameters.text("b"), " ");
    EXPECT_EQ(requests[0].parameters.text("type"), "A");
}

TEST(HttpServer, serves_one_connection_after_another_request_and_never_mistakes_a_body_for_one) {
    const auto service = startService();
    const std::string request = "GET /one HTTP/1.1\r\nHost: a\r\n\r\n";
    rawExchange(*service, request + request +
                              "GET /two HTTP/1.1\r\nContent-Length: 40\r\n\r\nGET /hidden HTTP/1.1\r\n\r\n");
    EXPECT_EQ(service->requestLog().count("/one"), 2U);
    EXPECT_EQ(service->requestLog().count("/two"), 1U);
    EXPECT_EQ(service->requestLog().count("/hidden"), 0U);
}

TEST(HttpServer, bounds_what_it_reads_and_survives_what_is_no_request) {
    SolverService::Options options;
    options.bodyLimit = 1'000;
    const auto service = startService(options);
    const ServiceClient client(*service);
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

TEST(HttpServer, does_not_start_without_its_port_or_its_data) {
    const auto service = startService();
    SolverService::Options taken;
    taken.port = service->port();
    EXPECT_FALSE(SolverService::start(taken));
    SolverService::Options elsewhere;
    elsewhere.dataFile = "/nonexistent/folder/data.sqlite";
    EXPECT_FALSE(SolverService::start(elsewhere));
    EXPECT_EQ(service->host(), "127.0.0.1:" + std::to_string(service->port()));
}

} // namespace
} // namespace teralune::service
