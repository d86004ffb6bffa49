#include "Tests/SolverService/ServiceClient.h"

#include <future>
#include <gmock/gmock.h>

namespace teralune::service {
namespace {

using ScriptedFaults = ServiceTest;

using std::chrono_literals::operator""h;
using std::chrono_literals::operator""s;

const std::string stepsPath = "/pub_api/steps";
const std::string steps = "/pub_api/steps?query=x%3D1";

TEST_F(ScriptedFaults, meet_as_many_requests_to_their_path_as_scripted) {
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

TEST_F(ScriptedFaults, redirect_and_break_connections) {
    service->faults().script(stepsPath, Fault::redirect("http://127.0.0.1:1/there", 307));
    service->faults().script(stepsPath, Fault::hangUp());
    service->faults().script(stepsPath, Fault::cutBody());
    const ClientReply redirected = client.get(steps);
    EXPECT_EQ(redirected.status, 307);
    EXPECT_EQ(redirected.header("Location"), "http://127.0.0.1:1/there");
    const std::string request = "GET " + steps + " HTTP/1.1\r\nHost: a\r\n\r\n";
    EXPECT_EQ(rawExchange(*service, request), "");
    const std::string cut = rawExchange(*service, request);
    EXPECT_THAT(cut, testing::StartsWith("HTTP/1.1 200"));
    EXPECT_THAT(cut, testing::HasSubstr("\r\n\r\n{"));
    EXPECT_LT(cut.size(), rawExchange(*service, request).size());
}

TEST_F(ScriptedFaults, end_with_the_service_however_long_they_would_last) {
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

} // namespace
} // namespace teralune::service
