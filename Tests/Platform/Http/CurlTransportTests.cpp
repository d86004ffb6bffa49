#include "Platform/Http/CurlTransport.h"
#include "Platform/Http/HttpError.h"
#include "Platform/Http/MultipartFormData.h"
#include "Platform/Http/RequestSchedule.h"
#include "Tests/Support/LoopbackServer.h"

#include <gmock/gmock.h>

#include <atomic>
#include <fstream>
#include <future>

namespace teralune {
namespace {

using Reply = LoopbackServer::Reply;
using Received = LoopbackServer::Request;
using testing::ElementsAre;
using testing::HasSubstr;

std::int64_t codeOf(const TransferOutcome& outcome) {
    return outcome.error ? outcome.error->code : 0;
}

URLRequest get(std::string url) {
    return {std::move(url), HttpMethod::get, {}, {}};
}

/// Sends and waits.
TransferOutcome exchange(CurlTransport& transport, URLRequest request,
                         TransferLane lane = TransferLane::standard) {
    std::promise<TransferOutcome> arrived;
    const auto transfer = transport.send(std::move(request), lane, [&arrived](TransferOutcome outcome) {
        arrived.set_value(std::move(outcome));
    });
    return arrived.get_future().get();
}

TEST(RequestSchedule, starts_requests_in_order_within_the_limits_and_keeps_a_place_for_control) {
    RequestSchedule schedule(2, 3);
    for (const RequestSchedule::Id id : {1U, 2U, 3U, 4U}) {
        schedule.add(id, "a", TransferLane::standard);
    }
    schedule.add(5, "b", TransferLane::standard);
    schedule.add(6, "b", TransferLane::standard);
    const auto startAll = [&schedule] {
        std::vector<RequestSchedule::Id> started;
        while (const auto id = schedule.startNext()) {
            started.push_back(*id);
        }
        return started;
    };
    EXPECT_THAT(startAll(), ElementsAre(1, 2, 5));
    schedule.add(7, "a", TransferLane::control);
    schedule.add(8, "a", TransferLane::control);
    EXPECT_THAT(startAll(), ElementsAre(7));
    schedule.remove(3);
    schedule.remove(2);
    EXPECT_THAT(startAll(), ElementsAre(4));
    schedule.remove(1);
    EXPECT_THAT(startAll(), ElementsAre(6));
    schedule.remove(7);
    schedule.remove(99);
    EXPECT_THAT(startAll(), ElementsAre(8));
    schedule.remove(4);
    schedule.add(9, "c", TransferLane::standard);
    EXPECT_THAT(startAll(), ElementsAre(9));
}

TEST(CurlTransport, sends_exactly_what_the_request_says) {
    LoopbackServer server([](const Received&) { return Reply(200, "ok"); });
    CurlTransport transport;
    const auto body = std::make_shared<const std::string>("a=1&b=2");
    struct Case {
        HttpMethod method;
        URLRequest::Body body;
        const char* length;
    };
    const Case cases[] = {
        {HttpMethod::get, {}, ""},      {HttpMethod::head, {}, ""},   {HttpMethod::del, {}, ""},
        {HttpMethod::post, {}, "0"},    {HttpMethod::put, {}, "0"},   {HttpMethod::post, body, "7"},
        {HttpMethod::patch, body, "7"}, {HttpMethod::del, body, "7"},
    };
    for (const Case& test : cases) {
        URLRequest request{
            server.url("/a/../b?x=%20#f"),
            test.method,
            {{"Cookie", "a=1"}, {"X-Empty", ""}, {"cookie", "b=\xC3\xA4"}, {"Accept-Encoding", "gzip"}},
            test.body};
        const TransferOutcome outcome = exchange(transport, request);
        ASSERT_TRUE(outcome.response) << outcome.error->localizedDescription;
        EXPECT_EQ(outcome.body, test.method == HttpMethod::head ? "" : "ok");
        const Received received = server.requests().back();
        EXPECT_THAT(received.head,
                    testing::StartsWith(std::string(name(test.method)) + " /a/../b?x=%20 HTTP/1.1\r\n"));
        EXPECT_THAT(received.headers("Cookie"), ElementsAre("a=1;b=\xC3\xA4"));
        EXPECT_THAT(received.headers("X-Empty"), ElementsAre(""));
        EXPECT_EQ(received.header("Content-Length"), test.length);
        EXPECT_EQ(received.header("Content-Type") + received.header("Expect"), "");
        EXPECT_EQ(received.body, test.body.index() == 0 ? "" : "a=1&b=2");
    }
    EXPECT_EQ(server.connectionCount(), 1U);
}

TEST(CurlTransport, refuses_what_it_must_not_send_and_tells_why_it_cannot) {
    LoopbackServer server([](const Received&) { return Reply(200, ""); });
    CurlTransport transport;
    const std::string url = server.url();
    const std::string closed = LoopbackServer([](const Received&) { return Reply(); }).url();
    const auto missing = std::make_shared<MultipartFormData>();
    missing->append({"image", "a.jpg", "image/jpeg", std::filesystem::path("/nowhere/at/all.jpg")});
    const std::pair<URLRequest, std::int64_t> cases[] = {
        {{url, HttpMethod::get, {{"Cookie", "a=b\r\nX-Injected: y"}}, {}}, -1},
        {get(url + "a b"), -1000},
        {get("file:///etc/passwd"), -1002},
        {get(closed), -1004},
        {get("http://name.invalid/"), -1003},
        {{url, HttpMethod::post, {}, std::shared_ptr<const MultipartFormData>(missing)}, -1100},
    };
    for (const auto& [request, code] : cases) {
        EXPECT_EQ(codeOf(exchange(transport, request)), code) << request.url;
    }
    EXPECT_TRUE(server.requests().empty());
    EXPECT_EQ(codeOf(exchange(transport, get(url))), 0);
}

TEST(CurlTransport, sends_forms_from_memory_and_from_files_the_same_way_twice) {
    const auto path = std::filesystem::path(testing::TempDir()) / "teralune-http-form.bin";
    const std::string content(300'000, 'f');
    std::ofstream(path) << content;
    const auto form = std::make_shared<MultipartFormData>();
    form->append({"file", "0007.jpg", "image/jpeg", path});
    form->append({"a\"\r\nX: y", "", "", std::string("in\0memory", 9)});
    LoopbackServer server([](const Received&) { return Reply(200, "ok"); });
    CurlTransport transport;
    for (int attempt = 0; attempt < 2; ++attempt) {
        exchange(transport,
                 {server.url(), HttpMethod::post, {}, std::shared_ptr<const MultipartFormData>(form)});
        const Received received = server.requests().back();
        EXPECT_THAT(received.header("Content-Type"), testing::StartsWith("multipart/form-data; boundary="));
        EXPECT_EQ(received.header("Content-Length"), std::to_string(received.body.size()));
        EXPECT_THAT(
            received.body,
            HasSubstr("name=\"file\"; filename=\"0007.jpg\"\r\nContent-Type: image/jpeg\r\n\r\nffff"));
        EXPECT_THAT(received.body, HasSubstr(content + "\r\n"));
        EXPECT_THAT(received.body,
                    HasSubstr("name=\"a%22%0D%0AX: y\"\r\n\r\n" + std::string("in\0memory\r\n", 11)));
    }
    std::filesystem::remove(path);
}

TEST(CurlTransport, keeps_to_its_places_and_lets_control_pass) {
    LoopbackServer server([](const Received& request) {
        return request.target() == "/control" ? Reply(200, "")
                                              : Reply().hold("all").then("HTTP/1.1 204 x\r\n\r\n");
    });
    constexpr std::size_t count = 40;
    std::atomic<std::size_t> completed = 0;
    std::promise<void> allCompleted;
    // Ends before what its completions use.
    CurlTransport transport;
    std::vector<std::unique_ptr<Transfer>> transfers;
    for (std::size_t index = 0; index < count; ++index) {
        transfers.push_back(transport.send(get(server.url("/" + std::to_string(index))),
                                           TransferLane::standard, [&](const TransferOutcome&) {
                                               if (++completed == count - 2) {
                                                   allCompleted.set_value();
                                               }
                                           }));
    }
    server.waitForRequests(6);
    EXPECT_EQ(codeOf(exchange(transport, get(server.url("/control")), TransferLane::control)), 0);
    EXPECT_EQ(server.requests().size(), 7U);
    EXPECT_FALSE(transfers.front()->withdraw()); // it was sent, unlike the last one
    EXPECT_TRUE(transfers.back()->withdraw());
    transfers.erase(transfers.begin());
    server.release("all");
    allCompleted.get_future().get();
    EXPECT_EQ(server.requests().size(), count);
}

TEST(CurlTransport, may_be_destroyed_by_a_completion) {
    LoopbackServer server([](const Received&) { return Reply(200, ""); });
    auto transport = std::make_unique<CurlTransport>();
    std::promise<void> destroyed;
    const auto transfer =
        transport->send(get(server.url()), TransferLane::standard, [&](const TransferOutcome&) {
            transport.reset();
            destroyed.set_value();
        });
    destroyed.get_future().get();
    EXPECT_EQ(transport, nullptr);
}

} // namespace
} // namespace teralune
