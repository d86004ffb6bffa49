#include "Platform/Dispatch/MainQueue.h"
#include "Platform/Dispatch/QueuePool.h"
#include "Platform/Http/CurlTransport.h"
#include "Tests/Platform/Http/SessionFixture.h"
#include "Tests/Support/LoopbackServer.h"

#include <atomic>
#include <thread>

namespace teralune {
namespace {

using Reply = LoopbackServer::Reply;

/// The real threads and the real engine against a server of the test.
class SessionStormTest : public testing::Test {
protected:
    SessionStormTest() {
        platform.mainQueue = main;
        platform.queuePool = std::make_shared<QueuePool>(2, QueuePool::Priority::standard);
        platform.httpDelegateQueue = platform.queuePool->makeSerialQueue("http");
        platform.transport = std::make_shared<CurlTransport>();
        manager = std::make_unique<SessionManager>(platform, SessionManager::Configuration{});
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

    LoopbackServer server{[this](const LoopbackServer::Request&) {
        return isHolding ? Reply().hold("never") : Reply(200, "{}");
    }};
    std::shared_ptr<MainQueue> main = std::make_shared<MainQueue>();
    PlatformServices platform;
    std::atomic<bool> isHolding = false;
    std::vector<int> runs;
    std::size_t successes = 0;
    std::size_t failures = 0;
    std::size_t cancellations = 0;
    std::unique_ptr<SessionManager> manager;
};

TEST_F(SessionStormTest, runs_each_handler_once_when_cancels_meet_replies) {
    constexpr std::size_t count = 400;
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
