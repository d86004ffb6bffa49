#include "Tests/Faults/FaultCounts.h"
#include "Tests/Faults/Wires.h"

namespace teralune {
namespace {

using namespace std::string_literals;
using Reply = LoopbackServer::Reply;
using Received = LoopbackServer::Request;

constexpr std::size_t bodyLimit = 50'000;
const std::string ok = "HTTP/1.1 200 OK\r\n";
const std::string gzip = ok + "Content-Encoding: gzip\r\n";
const std::string chunked = ok + "Transfer-Encoding: chunked\r\n\r\n";

/// The gzip form of 100,000 zero bytes.
const std::string compressedZeros =
    "\x1f\x8b\x08\0\0\0\0\0\x02\x03\xed\xc1\x31\x01\0\0\0\xc2\xa0\xf5\x4f\x6d\x0d\x0f\xa0"s +
    std::string(96, '\0') + "\x80\x57\x03\x7d\x95\x11\xd4\xa0\x86\x01\0"s;

std::string repeated(std::string_view text, std::size_t count) {
    std::string all;
    for (std::size_t index = 0; index < count; ++index) {
        all += text;
    }
    return all;
}

TransferOutcome get(CurlTransport& client, const LoopbackServer& server, const std::string& path = "/") {
    return exchange(client, {server.url(path), HttpMethod::get, {}, {}});
}
TransferOutcome refresh(CurlTransport& client, const LoopbackServer& server, const std::string& path) {
    return exchange(client, {server.url(path), HttpMethod::post, {}, {}}, TransferLane::control);
}

TEST(HostileWireTests, replies_are_read_or_it_is_named_what_is_wrong_with_them) {
    struct Case {
        std::string reply;
        std::int64_t code;
        std::string body = {};
        int status = 200;
    };
    const std::string body = "Content-Length: 2\r\n\r\nok";
    const Case cases[] = {
        {ok + body, 0, "ok"},
        {chunked + "2\r\nok\r\n0\r\nX-A: trailer\r\n\r\n", 0, "ok"},
        {ok + "\r\nuntil the end", 0, "until the end"},
        {"HTTP/1.1 100 Continue\r\nX-A: no\r\n\r\nHTTP/1.1 404 No\r\nX-A: b\r\n  c\r\n" + body, 0, "ok", 404},
        {repeated("HTTP/1.1 103 Early\r\nX: y\r\n\r\n", 100) + ok + body, 0, "ok"},
        {ok + "Content-Length: 2\r\n" + body, 0, "ok"},
        {ok + "Content-Length: 3\r\nTransfer-Encoding: chunked\r\n\r\n2\r\nok\r\n0\r\n\r\n", 0, "ok"},
        // Lengths that are wrong, and no reply of which anyone knew where it ends.
        {ok + "Content-Length: 1\r\n\r\nok", 0, "o"},
        {ok + "Content-Length: 9\r\n\r\nok", -1005},
        {ok + "Content-Length: 3\r\n" + body, -1017},
        {ok + "Content-Length: 2, 3\r\n\r\nok", -1017},
        {ok + "Content-Length: -2\r\n\r\nok", -1017},
        {ok + "Content-Length: minus\r\n\r\n", -1017},
        {chunked + "5\r\nok", -1005},
        {chunked + "nonsense\r\n", -1005},
        {chunked + "-2\r\nok\r\n0\r\n\r\n", -1005},
        {chunked + "FFFFFFFFFFFFFFFFF\r\nok", -1005},
        {chunked + "7FFFFFFFFFFFFFFF\r\nok", -1005},
        // No HTTP.
        {"", -1005},
        {"nonsense\r\n\r\n", -1017},
        {std::string(100'000, '\0'), -1017},
        {"HTTP/1.1 99999 No\r\n" + body, -1017},
        {"HTTP/1.1 -20 No\r\n" + body, -1017},
        {"HTTP/9.9 200 OK\r\n" + body, -1017},
        {ok + "no colon\r\n" + body, -1017},
        {ok + "A\0B: c\r\n"s + body, -1017},
        {"HTTP/1.1 100 Continue\r\n\r\n", -1005},
        // Too much.
        {ok + "X-Long: " + std::string(70'000, 'x') + "\r\n\r\n", -1103},
        {ok + "X-Long: " + std::string(1'000'000, 'x') + "\r\n\r\n", -1},
        {ok + repeated("X-A: 1\r\n", 125'000) + "\r\n", -1103},
        {repeated("HTTP/1.1 100 Continue\r\n\r\n", 40'000), -1103},
        {chunked + "2\r\nok\r\n0\r\n" + repeated("X-A: 1\r\n", 125'000), -1103},
        {ok + "\r\n" + std::string(bodyLimit + 1, 'x'), -1103},
        {gzip + "\r\n" + compressedZeros, -1103},
        {gzip + "\r\nnonsense", -1016},
        {ok + "Content-Encoding: gzip" + repeated(", gzip", 100) + "\r\n\r\n", -1016},
    };
    LoopbackServer server([&cases](const Received& request) {
        return Reply::bytes(cases[std::stoul(request.target().substr(1))].reply).hangUp();
    });
    CurlTransport::Limits limits;
    limits.bodyBytes = bodyLimit;
    CurlTransport client(limits);
    for (std::size_t index = 0; index < std::size(cases); ++index) {
        const TransferOutcome outcome = get(client, server, "/" + std::to_string(index));
        EXPECT_EQ(codeOf(outcome), cases[index].code) << cases[index].reply.substr(0, 200);
        EXPECT_EQ(outcome.body, cases[index].body);
        EXPECT_EQ(outcome.response.has_value(), cases[index].code == 0);
        EXPECT_EQ(outcome.response ? outcome.response->statusCode : 200, cases[index].status);
        EXPECT_TRUE(cases[index].status != 404 || outcome.response->headers.value("x-a") == "b c");
    }
    printFaults("raw replies", std::size(cases), "each has its error or its body");
}

TEST(HostileWireTests, a_reply_that_breaks_off_at_any_byte_is_an_error_and_one_that_trickles_in_is_whole) {
    const std::string replies[] = {
        ok + "Content-Type: application/json\r\nContent-Length: 12\r\n\r\n{\"jwt\":\"t2\"}",
        "HTTP/1.1 100 Continue\r\n\r\n" + chunked + "5\r\n{\"a\":\r\n2\r\n1}\r\n0\r\nX-A: b\r\n\r\n",
        gzip + "Content-Length: " + std::to_string(compressedZeros.size()) + "\r\n\r\n" + compressedZeros};
    const std::string bodies[] = {"{\"jwt\":\"t2\"}", "{\"a\":1}", std::string(100'000, '\0')};
    LoopbackServer server([&replies](const Received& request) {
        const std::string target = request.target(); // which reply, and how much of it
        const std::string& reply = replies[std::stoul(target.substr(1))];
        if (target.size() > 2) {
            return Reply::bytes(reply.substr(0, std::stoul(target.substr(3)))).hangUp();
        }
        Reply trickling;
        for (const char byte : reply) {
            std::move(trickling).then(std::string(1, byte));
        }
        return trickling;
    });
    CurlTransport client;
    const std::size_t rounds = faultCount(7, 700);
    std::size_t points = 0;
    for (std::size_t which = 0; which < std::size(replies); ++which) {
        const std::string path = "/" + std::to_string(which);
        const std::size_t size = replies[which].size();
        for (std::size_t length = 0; length <= size; ++length) {
            const TransferOutcome outcome = get(client, server, path + "-" + std::to_string(length));
            // The very last byte, behind all that was announced, may be missing.
            EXPECT_TRUE(outcome.body == bodies[which] ? length + 1 >= size
                                                      : length < size && codeOf(outcome) == -1005)
                << replies[which].substr(0, length);
        }
        points += size;
        for (std::size_t round = 0; round < rounds; ++round) {
            EXPECT_EQ(get(client, server, path).body, bodies[which]);
        }
    }
    printFaults("replies that break off", points, "no part taken for the whole");
    printFaults("replies that trickle in", rounds * points, "each read whole");
}

TEST(HostileWireTests, a_body_may_be_as_long_as_the_limit_of_every_client_and_no_byte_longer) {
    CurlTransport::Limits limits;
    limits.bodyBytes = faultCount(1 << 20, limits.bodyBytes);
    const std::string body(limits.bodyBytes, 'x');
    LoopbackServer server([&](const Received& request) {
        return Reply::bytes(ok + "\r\n").then(body).then(request.target().substr(1)).hangUp();
    });
    CurlTransport client(limits);
    EXPECT_EQ(get(client, server).body.size(), body.size());
    EXPECT_EQ(codeOf(get(client, server, "/x")), -1103);
    printFaults("a body of " + std::to_string(body.size() + 1) + " bytes", 2, "refused at the last one");
}

TEST(HostileWireTests, a_server_that_falls_silent_anywhere_is_given_up) {
    const std::string replies[] = {"",
                                   "HTTP/1.1 2",
                                   ok + "X-A: ",
                                   ok + "Content-Length: 9\r\n\r\n",
                                   ok + "Content-Length: 9\r\n\r\nok",
                                   chunked + "5\r\n{",
                                   "HTTP/1.1 100 Continue\r\n\r\n"};
    LoopbackServer server([&replies](const Received& request) {
        return request.target() == "/refresh" ? Reply().hangUp()
               : request.target() == "/warm"
                   ? Reply(200, "")
                   : Reply::bytes(replies[std::stoul(request.target().substr(1))]).hold("never");
    });
    CurlTransport::Limits limits;
    limits.idleTimeout = std::chrono::seconds(1);
    limits.transfersPerHost = std::size(replies);
    CurlTransport client(limits);
    EXPECT_EQ(codeOf(get(client, server, "/warm")), 0);
    // A token must not be refreshed twice, so a refresh is not repeated on a connection that was just closed.
    EXPECT_EQ(codeOf(refresh(client, server, "/refresh")), -1005);
    std::vector<std::future<TransferOutcome>> outcomes;
    for (std::size_t which = 0; which < std::size(replies); ++which) {
        outcomes.push_back(std::async(
            std::launch::async, [&, which] { return get(client, server, "/" + std::to_string(which)); }));
    }
    for (auto& outcome : outcomes) {
        EXPECT_EQ(codeOf(outcome.get()), -1001);
    }
    EXPECT_EQ(server.requests().size(), 2 + std::size(replies));

    // The control lane has a limit for the whole exchange.
    limits.idleTimeout = std::chrono::hours(1);
    limits.controlTimeout = std::chrono::milliseconds(100);
    CurlTransport patient(limits);
    EXPECT_EQ(codeOf(refresh(patient, server, "/0")), -1001);
    printFaults("silent servers", outcomes.size() + 1, "each given up");
}

TEST(HostileWireTests, what_follows_a_reply_is_never_the_next_request_s_reply) {
    const std::string forged = ok + "Content-Length: 6\r\n\r\nforged";
    LoopbackServer server([&forged](const Received& request) {
        const std::string reply = ok + "Content-Length: 5\r\n\r\n" + request.target().substr(0, 5);
        return Reply::bytes(reply + (request.target() == "/next" ? "" : forged));
    });
    CurlTransport client;
    const std::size_t count = faultCount(50, 5'000);
    for (std::size_t index = 0; index < count; ++index) {
        EXPECT_EQ(get(client, server, "/some").body, "/some");
        EXPECT_EQ(get(client, server, "/next").body, "/next");
    }
    printFaults("forged second replies", count, "none taken for a reply");
}

} // namespace
} // namespace teralune
