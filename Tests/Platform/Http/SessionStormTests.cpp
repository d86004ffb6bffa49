#include "Platform/Dispatch/MainQueue.h"
#include "Platform/Dispatch/QueuePool.h"
#include "Platform/Http/CurlTransport.h"
#include "Tests/Platform/Http/SessionFixture.h"
#include "Tests/Support/LoopbackServer.h"

#include <atomic>
#include <mutex>
#include <thread>

namespace teralune {
namespace {

using Reply = LoopbackServer::Reply;
using std::chrono::milliseconds;

/// The real threads and the real engine against a server of the test.
class SessionStormTest : public testing::Test {
protected:
    SessionStormTest() {
        platform.mainQueue = main;
        platform.queuePool = std::make_shared<QueuePool>(2, QueuePool::Priority::standard);
        platform.httpDelegateQueue = platform.queuePool->makeSerialQueue("http");
        platform.transport = std::make_shared<CurlTransport>();
        makeManager();
    }

    void makeManager() {
        manager = std::make_unique<SessionManager>(platform, SessionManager::Configuration{});
        manager->setAdapter(&adapter);
        manager->setRetrier(&retrier);
    }

    /// Counts a handler's runs by request and by outcome.
    RequestHandle send(std::size_t index) {
        return manager->request(server.url("/" + std::to_string(index)), HttpMethod::get)
            .validate()
            .responseString([this, index](DataResponse<std::string> response) {
                ++runs[index];
                ++(response.result ? successes : failures);
                cancellations += errorCode(response) == cancelledCode ? 1 : 0;
            });
    }

    void waitForHandlers(std::size_t count) {
        runs.resize(std::max(runs.size(), count));
        main->runUntil([&] { return successes + failures == count; });
        EXPECT_TRUE(std::all_of(runs.begin(), runs.end(), [](int each) { return each == 1; }));
    }

    /// Replies 403 unless the request carries the newest token.
    LoopbackServer server{[this](const LoopbackServer::Request& request) {
        if (request.target() == "/refresh") {
            ++refreshes;
            return Reply().hold("token " + std::to_string(++serverToken)).then("HTTP/1.1 204 No\r\n\r\n");
        }
        return isHolding ? Reply().hold("never")
               : request.header("Cookie") == "token=" + std::to_string(serverToken.load())
                   ? Reply(200, "{}")
                   : Reply(403, "stale");
    }};
    std::shared_ptr<MainQueue> main = std::make_shared<MainQueue>();
    PlatformServices platform;
    AdapterFake adapter;
    RetrierFake retrier;
    std::atomic<int> serverToken = 1;
    std::atomic<int> refreshes = 0;
    std::atomic<bool> isHolding = false;
    std::vector<int> runs;
    std::size_t successes = 0;
    std::size_t failures = 0;
    std::size_t cancellations = 0;
    std::unique_ptr<SessionManager> manager;
};

TEST_F(SessionStormTest, refreshes_once_for_all_that_meet_a_stale_token) {
    for (const std::size_t count : {std::size_t{3}, std::size_t{1000}}) {
        std::atomic<int> token = 0;
        const std::string newToken = "token " + std::to_string(serverToken + 1);
        refreshes = 0;
        successes = 0;
        runs.assign(count, 0);
        std::mutex mutex;
        std::vector<RetryCompletion> held;
        RequestHandle refresh;
        adapter.onAdapt = [&token](URLRequest request) {
            request.headers.set("Cookie", "token=" + std::to_string(token.load()));
            return request;
        };
        retrier.onShould = [&](const SessionTask&, const Error&, RetryCompletion completion) {
            const std::lock_guard lock(mutex);
            held.push_back(std::move(completion));
            main->async([] {}); // the wait below asks its condition after each piece of work
            if (held.size() > 1) {
                return;
            }
            refresh = manager->request(server.url("/refresh"), HttpMethod::post)
                          .inLane(TransferLane::control)
                          .withoutRetrier()
                          .response([&](DataResponse<void>) {
                              const std::lock_guard answering(mutex);
                              token = serverToken.load();
                              for (RetryCompletion& waiting : held) {
                                  waiting(RetryDecision::retry, milliseconds(0));
                              }
                          });
        };
        for (std::size_t index = 0; index < count; ++index) {
            send(index).detach();
        }
        // The reply to the refresh waits for all of them: they hold no place at the server meanwhile.
        main->runUntil([&] {
            const std::lock_guard lock(mutex);
            return held.size() == count;
        });
        server.release(newToken);
        waitForHandlers(count);
        EXPECT_EQ(successes, count);
        EXPECT_EQ(refreshes, 1);
    }
}

TEST_F(SessionStormTest, runs_each_handler_once_when_cancels_meet_replies) {
    constexpr std::size_t count = 400;
    serverToken = 0;
    adapter.onAdapt = [](URLRequest request) {
        request.headers.set("Cookie", "token=0");
        return request;
    };
    runs.assign(count, 0);
    std::vector<RequestHandle> handles;
    for (std::size_t index = 0; index < count; ++index) {
        handles.push_back(send(index));
    }
    std::vector<std::thread> cancelling;
    for (std::size_t thread = 0; thread < 4; ++thread) {
        cancelling.emplace_back([&handles, thread] {
            for (std::size_t index = thread; index < handles.size(); index += 5) {
                handles[index].cancel();
            }
        });
    }
    waitForHandlers(count);
    for (std::thread& thread : cancelling) {
        thread.join();
    }
    EXPECT_EQ(failures, cancellations);
    EXPECT_GE(successes, count / 5);
}

TEST_F(SessionStormTest, tells_all_of_200_handlers_when_everything_is_shut_down) {
    constexpr std::size_t count = 200;
    isHolding = true;
    runs.assign(count, 0);
    for (std::size_t index = 0; index < count; ++index) {
        send(index).detach();
    }
    server.waitForRequests(6);
    manager.reset();
    platform.transport.reset();
    waitForHandlers(count);
    EXPECT_EQ(cancellations, count);
}

} // namespace
} // namespace teralune
