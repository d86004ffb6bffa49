#include "Platform/Defaults/InMemoryUserDefaults.h"
#include "Platform/Foundation/BundleExtension.h"
#include "Platform/Http/MultipartFormData.h"
#include "Tests/Platform/Http/SessionFixture.h"
#include "Tests/Support/ManualQueue.h"
#include "Tests/Support/ScriptedTransport.h"

#include <gmock/gmock.h>

#include <mutex>
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

    std::vector<std::string> sentPaths() const {
        std::vector<std::string> paths;
        for (const URLRequest& request : transport->requests()) {
            paths.push_back(request.url.substr(8));
        }
        return paths;
    }

    static constexpr std::int64_t badStatus =
        static_cast<std::int64_t>(ResponseValidationError::unacceptableStatusCode);

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

TEST_F(SessionManagerTest, sends_held_requests_again_in_the_order_of_their_answers) {
    std::vector<RequestHandle> handles;
    for (const char* path : {"/a", "/b", "/c"}) {
        handles.push_back(send(path));
    }
    settle();
    for (const std::size_t index : {2U, 0U, 1U}) {
        transport->answer(index, ScriptedTransport::reply(403));
    }
    settle();
    ASSERT_EQ(held.size(), 3U);
    transport->setScript([](const URLRequest&) { return ScriptedTransport::reply(200); });
    {
        // The answers are given under the lock that the retrier takes as well.
        std::mutex mutex;
        retrier.onShould = [&mutex](auto&&...) { const std::lock_guard lock(mutex); };
        const std::lock_guard lock(mutex);
        for (RetryCompletion& completion : held) {
            completion(RetryDecision::retry, milliseconds(0));
        }
    }
    settle();
    EXPECT_THAT(sentPaths(), ElementsAre("/a", "/b", "/c", "/c", "/a", "/b"));
    EXPECT_EQ(transport->pendingCount(), 0U);
    EXPECT_EQ(events.size(), 6U);
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
    EXPECT_THAT(events,
                ElementsAre("complete -1001 after 0", "complete " + std::to_string(badStatus) + " after 0",
                            "/lost -1001", "/bad " + std::to_string(badStatus)));
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
    const auto fail = [](auto&&...) -> Result<URLRequest> { throw std::runtime_error("thrown"); };
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
    manager->delegate().dataTaskWillCacheResponse = [&](const SessionTask&,
                                                        CachedURLResponse) -> CachedURLResponse {
        throw std::runtime_error("cache");
    };
    EXPECT_EQ(outcome(), "The request failed. (cache)");
    EXPECT_THAT(events, ElementsAre("complete -1 after 0"));
    manager->delegate() = {};
    manager->delegate().taskDidComplete = [](const SessionTask&, const std::optional<Error>&) { throw 1; };
    EXPECT_EQ(outcome(), "The request failed. (an exception)");
    adapter.onAdapt = fail;
    EXPECT_EQ(outcome(), "The request failed. (thrown)");
    adapter.onAdapt = [](URLRequest request) { return request; };
    manager->delegate() = {};
    retrier.onShould = [](auto&&...) { throw 1; };
    transport->setScript([](const URLRequest&) { return ScriptedTransport::reply(403); });
    EXPECT_EQ(outcome(), "The server's reply has an unacceptable status code. (403)");
}

TEST_F(SessionManagerTest, sends_nothing_that_must_not_be_sent) {
    struct Case {
        const char* url;
        std::function<Result<URLRequest>(URLRequest)> adapt;
        std::int64_t code;
    };
    const Case cases[] = {
        {"no url", [](URLRequest request) { return request; }, -1000},
        {"http://h/",
         [](URLRequest) {
             return Error{"Own", 7, "", {}};
         },
         7},
        {"http://h/",
         [](URLRequest request) {
             request.headers.set("Cookie", "a=b\r\nX: y");
             return request;
         },
         -1},
    };
    for (const Case& test : cases) {
        adapter.onAdapt = test.adapt;
        std::int64_t code = 0;
        auto request = manager->request(test.url, HttpMethod::get);
        EXPECT_EQ(request.absoluteURL(), test.code == -1000 ? "" : test.url);
        auto handle = std::move(request).responseData([&](auto response) { code = errorCode(response); });
        settle();
        EXPECT_EQ(code, test.code);
    }
    { const auto neverSent = manager->request("http://h/", HttpMethod::get); }
    settle();
    EXPECT_TRUE(transport->requests().empty());
    EXPECT_TRUE(held.empty());
}

TEST_F(SessionManagerTest, hands_on_what_the_request_was_prepared_with) {
    transport->setScript([](const URLRequest&) { return ScriptedTransport::reply(404, "{\"a\": 1}"); });
    std::string seen;
    auto text =
        manager->request("http://h/s", HttpMethod::post, {{"k", "v"}})
            .inLane(TransferLane::control)
            .responseString([&](DataResponse<std::string> response) { seen = response.result.value(); });
    auto refused = manager->request("http://h/r", HttpMethod::get)
                       .validate()
                       .withoutRetrier()
                       .responseJSON([&](auto response) { seen += std::to_string(response.statusCode()); });
    std::int64_t mapping = 0;
    auto object = manager->request("http://h/o", HttpMethod::get)
                      .responseObject<int>([](const boost::json::object&) { return std::optional<int>(); },
                                           [&](auto response) { mapping = errorCode(response); });
    auto upload = manager->upload(std::make_shared<MultipartFormData>(), "http://h/u").response([](auto) {});
    settle();
    EXPECT_EQ(seen, "{\"a\": 1}404");
    EXPECT_EQ(mapping, static_cast<std::int64_t>(ResponseValidationError::objectMappingFailed));
    EXPECT_TRUE(held.empty());
    EXPECT_EQ(transport->lanes().at(0), TransferLane::control);
    EXPECT_EQ(*std::get<1>(transport->requests().at(0).body), "k=v");
    EXPECT_EQ(transport->requests().at(3).method, HttpMethod::post);
    EXPECT_EQ(transport->requests().at(3).body.index(), 2U);
}

TEST_F(SessionManagerTest, tells_every_handler_when_it_is_destroyed) {
    std::vector<RequestHandle> handles;
    for (const char* path : {"/held", "/sent", "/queued"}) {
        handles.push_back(send(path));
        if (handles.size() < 3) {
            settle();
        }
        if (handles.size() == 1) {
            transport->answer(0, ScriptedTransport::reply(403));
            settle();
        }
    }
    auto leftOver = manager->request("http://h/left", HttpMethod::get);
    manager.reset();
    EXPECT_EQ(transport->pendingCount(), 0U);
    handles.push_back(std::move(leftOver).response(
        [this](auto response) { events.push_back("/left " + std::to_string(errorCode(response))); }));
    EXPECT_TRUE(events.empty());
    held.at(0)(RetryDecision::retry, milliseconds(0));
    handles.clear();
    settle();
    EXPECT_THAT(events,
                testing::UnorderedElementsAre("/held -999", "/sent -999", "/queued -999", "/left -999"));
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

TEST_F(SessionManagerTest, names_languages_and_itself_in_the_default_headers) {
    const auto folder = std::filesystem::path(testing::TempDir()) / "teralune-http-bundle";
    const auto preferences = std::make_shared<InMemoryUserDefaults>();
    preferences->set("AppleLanguages", boost::json::array{"pt-PT", "es"});
    std::filesystem::create_directories(folder / "pt-PT.lproj");
    std::filesystem::create_directories(folder / "es.lproj");
    platform.mainBundle = std::make_shared<BundleExtension>(folder, preferences);
    const HttpHeaders headers = SessionManager::defaultHTTPHeaders(platform);
    std::filesystem::remove_all(folder);
    EXPECT_EQ(headers.value("Accept-Encoding"), "gzip, deflate");
    EXPECT_EQ(headers.value("Accept-Language"), "pt-PT;q=1.0, es;q=0.9");
    EXPECT_THAT(*headers.value("User-Agent"), testing::StartsWith("TeraluneSharedLibrary/"));
}

} // namespace
} // namespace teralune
