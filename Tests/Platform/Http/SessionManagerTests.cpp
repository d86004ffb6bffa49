#include "Tests/Platform/Http/SessionFixture.h"
#include "Tests/Support/ManualQueue.h"
#include "Tests/Support/ScriptedTransport.h"

#include <gmock/gmock.h>

#include <stdexcept>

namespace teralune {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;

class SessionManagerTest : public testing::Test {
protected:
    SessionManagerTest() {
        platform.mainQueue = main;
        platform.httpDelegateQueue = queue;
        platform.transport = transport;
        manager = std::make_unique<SessionManager>(
            platform, SessionManager::Configuration{{{"User-Agent", "test"}, {"Accept", "*/*"}}});
        manager->setAdapter(&adapter);
        manager->setRetrier(&retrier);
        manager->delegate().taskDidComplete = [this](const SessionTask& task,
                                                     const std::optional<Error>& error) {
            events.push_back("complete " + std::to_string(error ? error->code : 0) + " after " +
                             std::to_string(task.retryCount));
        };
        retrier.onShould = [this](const SessionTask&, const Error&, RetryCompletion completion) {
            held.push_back(std::move(completion));
        };
    }

    void settle() {
        while (queue->runAll() + main->runAll() > 0) {
        }
    }

    RequestHandle send(const std::string& path = "/") {
        return manager->request("http://h" + path, HttpMethod::get)
            .validate()
            .response([this, path](DataResponse<void> response) {
                events.push_back(path + " " + std::to_string(errorCode(response)));
            });
    }

    std::shared_ptr<ManualQueue> main = std::make_shared<ManualQueue>("main");
    std::shared_ptr<ManualQueue> queue = std::make_shared<ManualQueue>("delegate");
    std::shared_ptr<ScriptedTransport> transport = std::make_shared<ScriptedTransport>(queue);
    PlatformServices platform;
    AdapterFake adapter;
    RetrierFake retrier;
    std::vector<RetryCompletion> held;
    std::vector<std::string> events;
    std::unique_ptr<SessionManager> manager;
};

TEST_F(SessionManagerTest, adapts_each_attempt_anew_and_ends_once) {
    int token = 0;
    adapter.onAdapt = [&token](URLRequest request) {
        request.headers.add("Cookie", "token=" + std::to_string(++token));
        return request;
    };
    manager->delegate().dataTaskWillCacheResponse = [this](const SessionTask&, CachedURLResponse proposed) {
        events.push_back("cache " + *proposed.data);
        return proposed;
    };
    auto handle = send("/a");
    EXPECT_EQ(transport->requests().size(), 0U);
    settle();
    transport->answer(0, ScriptedTransport::reply(403));
    settle();
    ASSERT_EQ(held.size(), 1U);
    held[0](RetryDecision::retry, milliseconds(20));
    held[0](RetryDecision::retry, milliseconds(0));
    settle();
    EXPECT_EQ(transport->requests().size(), 1U);
    queue->advance(milliseconds(20));
    settle();
    transport->answer(1, ScriptedTransport::reply(200, "body"));
    queue->runAll();
    EXPECT_THAT(events, ElementsAre("cache body", "complete 0 after 1"));
    settle();
    EXPECT_THAT(events, ElementsAre("cache body", "complete 0 after 1", "/a 0"));
    const HttpHeaders headers = transport->requests().at(1).headers;
    EXPECT_EQ(headers.value("Cookie"), "token=2");
    EXPECT_EQ(headers.value("User-Agent"), "test");
}

TEST_F(SessionManagerTest, sends_nothing_else_while_the_retrier_owes_an_answer) {
    auto refused = send("/refused");
    settle();
    transport->answer(0, ScriptedTransport::reply(403));
    settle();
    std::string token = "old";
    adapter.onAdapt = [&token](URLRequest request) {
        request.url.append("?" + token);
        return request;
    };
    auto first = send("/1");
    auto second = send("/2");
    auto dropped = send("/3");
    auto asked =
        manager->request("http://h/refresh", HttpMethod::post).withoutRetrier().response([](auto) {});
    settle();
    token = "new";
    dropped.cancel();
    held[0](RetryDecision::retry, milliseconds(20));
    settle();
    queue->advance(milliseconds(20));
    settle();
    std::vector<std::string> urls;
    for (const URLRequest& request : transport->requests()) {
        urls.push_back(request.url);
    }
    EXPECT_THAT(urls, ElementsAre("http://h/refused", "http://h/refresh?old", "http://h/1?new",
                                  "http://h/2?new", "http://h/refused?new"));
}

TEST_F(SessionManagerTest, ends_with_the_first_failure_when_the_retrier_declines_or_forgets) {
    transport->setScript([](const URLRequest& request) {
        return request.url.ends_with("/lost") ? ScriptedTransport::failure(HttpTransportError::timedOut)
                                              : ScriptedTransport::reply(500);
    });
    auto declined = send("/lost");
    auto forgotten = send("/bad");
    settle();
    ASSERT_EQ(held.size(), 2U);
    held[0](RetryDecision::doNotRetry, milliseconds(1000));
    held.pop_back();
    settle();
    EXPECT_THAT(events, ElementsAre("complete -1001 after 0", "complete 1 after 0", "/lost -1001", "/bad 1"));
}

TEST_F(SessionManagerTest, cancels_at_once_in_every_phase_and_never_asks_the_retrier_for_it) {
    enum class Phase { queued, sent, answered, waiting, delayed };
    for (const Phase phase : {Phase::queued, Phase::sent, Phase::answered, Phase::waiting, Phase::delayed}) {
        SCOPED_TRACE(static_cast<int>(phase));
        events.clear();
        held.clear();
        const std::size_t index = transport->requests().size();
        auto handle = send();
        if (phase > Phase::queued) {
            settle();
        }
        if (phase > Phase::sent) {
            transport->answer(index, ScriptedTransport::reply(403));
        }
        if (phase > Phase::answered) {
            settle();
            ASSERT_EQ(held.size(), 1U);
        }
        if (phase == Phase::delayed) {
            held[0](RetryDecision::retry, milliseconds(50));
            settle();
        }
        handle.cancel();
        EXPECT_TRUE(events.empty());
        settle();
        EXPECT_THAT(events, ElementsAre("complete -999 after 0", "/ -999"));
        EXPECT_EQ(transport->pendingCount(), 0U);
        EXPECT_EQ(held.size(), phase > Phase::answered ? 1U : 0U);
        for (RetryCompletion& completion : held) {
            completion(RetryDecision::retry, milliseconds(0));
        }
        queue->advance(milliseconds(100));
        settle();
        EXPECT_EQ(events.size(), 2U);
        EXPECT_EQ(transport->requests().size(), index + (phase > Phase::queued ? 1U : 0U));
    }
}

TEST_F(SessionManagerTest, cancels_with_the_handle_unless_it_was_detached_or_the_request_has_ended) {
    transport->setScript([](const URLRequest&) { return ScriptedTransport::reply(200); });
    send("/detached").detach();
    { auto dropped = send("/dropped"); }
    auto ended = send("/ended");
    settle();
    ended.cancel();
    ended = RequestHandle();
    settle();
    std::erase_if(events, [](const std::string& event) { return event.starts_with("complete"); });
    EXPECT_THAT(events, testing::UnorderedElementsAre("/detached 0", "/dropped -999", "/ended 0"));
}

TEST_F(SessionManagerTest, fails_the_request_when_user_code_throws) {
    const auto outcome = [this] {
        events.clear();
        std::string description;
        auto handle =
            manager->request("http://h/", HttpMethod::get)
                .validate()
                .responseObject<int>([](const boost::json::object&) -> std::optional<int> { throw 1; },
                                     [&](DataResponse<int> response) {
                                         description = response.result.error().localizedDescription;
                                     });
        settle();
        return description;
    };
    transport->setScript([](const URLRequest&) { return ScriptedTransport::reply(200, "{}"); });
    EXPECT_EQ(outcome(), "The request failed. (an exception)");
    manager->delegate().dataTaskWillCacheResponse = [](auto&&...) -> CachedURLResponse {
        throw std::runtime_error("cache");
    };
    EXPECT_EQ(outcome(), "The request failed. (cache)");
    EXPECT_THAT(events, ElementsAre("complete -1 after 0"));
    manager->delegate() = {};
    manager->delegate().taskDidComplete = [](auto&&...) { throw 1; };
    EXPECT_EQ(outcome(), "The request failed. (an exception)");
    adapter.onAdapt = [](auto&&) -> Result<URLRequest> { throw std::runtime_error("thrown"); };
    EXPECT_EQ(outcome(), "The request failed. (thrown)");
    adapter.onAdapt = [](URLRequest request) { return request; };
    manager->delegate() = {};
    retrier.onShould = [](auto&&...) { throw 1; };
    transport->setScript([](const URLRequest&) { return ScriptedTransport::reply(403); });
    EXPECT_EQ(outcome(), "The server's reply has an unacceptable status code. (403)");
}

TEST_F(SessionManagerTest, sends_nothing_that_must_not_be_sent) {
    const auto outcome = [this](const char* url, Result<URLRequest> adapted) {
        adapter.onAdapt = [&adapted](URLRequest) { return adapted; };
        std::int64_t code = 0;
        auto request = manager->request(url, HttpMethod::get);
        EXPECT_EQ(request.absoluteURL().empty(), !adapted && adapted.error().code == 0);
        auto handle = std::move(request).responseData([&](auto response) { code = errorCode(response); });
        settle();
        return code;
    };
    EXPECT_EQ(outcome("no url", Error{}), -1000);
    EXPECT_EQ(outcome("http://h/", Error{"Own", 7, "", {}}), 7);
    EXPECT_EQ(outcome("http://h/", URLRequest{"http://h/", HttpMethod::get, {{"Cookie", "a\r\nX: y"}}, {}}),
              -1);
    { const auto neverSent = manager->request("http://h/", HttpMethod::get); }
    settle();
    EXPECT_TRUE(transport->requests().empty());
    EXPECT_TRUE(held.empty());
}

TEST_F(SessionManagerTest, tells_every_handler_when_it_is_destroyed) {
    std::vector<RequestHandle> handles;
    handles.push_back(send("/held"));
    handles.push_back(send("/sent"));
    settle();
    transport->answer(0, ScriptedTransport::reply(403));
    settle();
    handles.push_back(send("/heldBack"));
    settle();
    handles.push_back(send("/queued"));
    auto leftOver = manager->request("http://h/left", HttpMethod::get);
    manager.reset();
    EXPECT_EQ(transport->pendingCount(), 0U);
    handles.push_back(std::move(leftOver).response(
        [this](auto response) { events.push_back("/left " + std::to_string(errorCode(response))); }));
    EXPECT_TRUE(events.empty());
    held.at(0)(RetryDecision::retry, milliseconds(0));
    handles.clear();
    settle();
    EXPECT_THAT(events, testing::UnorderedElementsAre("/held -999", "/sent -999", "/heldBack -999",
                                                      "/queued -999", "/left -999"));
    EXPECT_EQ(transport->requests().size(), 2U);
}

TEST_F(SessionManagerTest, may_be_destroyed_by_a_handler_but_not_by_its_own_closure) {
    transport->setScript([](const URLRequest&) { return ScriptedTransport::reply(200); });
    auto last = send("/last");
    auto first = manager->request("http://h/", HttpMethod::get).response([this](auto) { manager.reset(); });
    settle();
    EXPECT_EQ(manager, nullptr);
    EXPECT_THAT(events, testing::Contains("/last 0"));

    manager = std::make_unique<SessionManager>(platform, SessionManager::Configuration{});
    manager->delegate().taskDidComplete = [this](auto&&...) { manager.reset(); };
    auto doomed = send("/doomed");
    EXPECT_DEATH(settle(), "destroyed by its own");
    manager->delegate().taskDidComplete = nullptr;
}

} // namespace
} // namespace teralune
