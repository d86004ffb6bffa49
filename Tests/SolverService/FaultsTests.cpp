#include "Tests/SolverService/ServiceClient.h"

#include <future>
#include <gmock/gmock.h>

namespace teralune::service {
namespace {

using std::chrono_literals::operator""h;
using std::chrono_literals::operator""ms;
using std::chrono_literals::operator""s;

const std::string stepsPath = "/pub_api/steps";
const std::string steps = "/pub_api/steps?query=x%3D1";

TEST(Faults, meet_as_many_requests_to_their_path_as_scripted) {
    const auto service = startService();
    const ServiceClient client(*service);
    service->faults().script(stepsPath, Fault::answer(500, "{broken", "application/json"), 2);
    service->faults().script(Faults::everyPath, Fault::answer(503), Faults::everyTime);
    EXPECT_EQ(client.get("/elsewhere").status, 503);
    EXPECT_EQ(client.get(steps).status, 500);
    const ClientReply broken = client.get(steps);
    EXPECT_EQ(broken.status, 500);
    EXPECT_EQ(broken.body, "{broken");
    EXPECT_EQ(broken.header("Content-Type"), "application/json");
    EXPECT_EQ(client.get(steps).status, 503);
    service->faults().clear();
    EXPECT_EQ(client.get(steps).status, 200);
    EXPECT_EQ(service->requestLog().count(stepsPath), 4U);
}

TEST(Faults, redirect_and_break_connections) {
    const auto service = startService();
    const ServiceClient client(*service);
    service->faults().script(stepsPath, Fault::redirect("http://127.0.0.1:1/there", 307));
    service->faults().script(stepsPath, Fault::hangUp());
    service->faults().script(stepsPath, Fault::cutBody());
    const ClientReply redirected = client.get(steps);
    EXPECT_EQ(redirected.status, 307);
    EXPECT_EQ(redirected.header("Location"), "http://127.0.0.1:1/there");
    const std::string request = "GET " + steps + " HTTP/1.1\r\nHost: a\r\n\r\n";
    EXPECT_EQ(rawExchange(*service, request), "");
    const std::string cut = rawExchange(*service, request);
    const std::string whole = rawExchange(*service, request);
    EXPECT_THAT(cut, testing::StartsWith("HTTP/1.1 200"));
    EXPECT_NE(cut.find("\r\n\r\n{"), std::string::npos);
    EXPECT_LT(cut.size(), whole.size());
}

TEST(Faults, hold_requests_so_that_all_meet_a_stale_token_at_once) {
    const auto service = startService();
    ServiceClient client(*service);
    client.logIn();
    service->faults().script("/api/hasWebNotes", Fault::hold(), 3);
    std::vector<std::future<int>> statuses;
    for (int number = 0; number < 3; ++number) {
        statuses.push_back(
            std::async(std::launch::async, [&] { return client.get("/api/hasWebNotes").status; }));
    }
    ASSERT_TRUE(service->faults().waitForHeld(3, 10s));
    EXPECT_TRUE(service->requestLog().waitForCount("/api/hasWebNotes", 3, 10s));
    EXPECT_FALSE(service->requestLog().waitForCount("/api/hasWebNotes", 4, 0ms));
    service->expireTokens();
    service->faults().release();
    for (std::future<int>& status : statuses) {
        EXPECT_EQ(status.get(), 403);
    }
}

TEST(Faults, end_with_the_service_however_long_they_would_last) {
    auto service = startService();
    const ServiceClient client(*service);
    service->faults().script(stepsPath, Fault::hold());
    service->faults().script("/slow", Fault::delayed(1h).also(Fault::answer(204)));
    auto held = std::async(std::launch::async, [&] { return client.get(steps).status; });
    auto slow = std::async(std::launch::async, [&] { return client.get("/slow").status; });
    ASSERT_TRUE(service->faults().waitForHeld(1, 10s));
    ASSERT_TRUE(service->requestLog().waitForCount("/slow", 1, 10s));
    service.reset();
    EXPECT_EQ(held.get(), 0);
    EXPECT_EQ(slow.get(), 0);
}

TEST(RequestLog, keeps_the_latest_requests_and_counts_all) {
    SolverService::Options options;
    options.keptRequests = 2;
    const auto service = startService(options);
    const ServiceClient client(*service);
    for (const char* target : {"/a", "/a?1", "/b"}) {
        client.get(target);
    }
    EXPECT_EQ(service->requestLog().requests().size(), 2U);
    EXPECT_EQ(service->requestLog().requests().front().target, "/a?1");
    EXPECT_EQ(service->requestLog().count("/a"), 2U);
    service->requestLog().clear();
    EXPECT_EQ(service->requestLog().count("/a"), 0U);
}

} // namespace
} // namespace teralune::service
