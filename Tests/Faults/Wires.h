#pragma once

#include "Classes/Networking/Networking.h"
#include "Platform/Dispatch/MainQueue.h"
#include "Platform/Dispatch/QueuePool.h"
#include "Platform/Http/CurlTransport.h"
#include "Platform/Http/HttpError.h"
#include "Tests/Support/FakeApplication.h"
#include "Tests/Support/LoopbackServer.h"

#include <gmock/gmock.h>

#include <atomic>
#include <future>

namespace teralune {

/// Sends and waits.
inline TransferOutcome exchange(CurlTransport& transport, URLRequest request,
                                TransferLane lane = TransferLane::standard) {
    std::promise<TransferOutcome> arrived;
    const auto transfer = transport.send(std::move(request), lane, [&arrived](TransferOutcome outcome) {
        arrived.set_value(std::move(outcome));
    });
    return arrived.get_future().get();
}
inline std::int64_t codeOf(const TransferOutcome& outcome) {
    return outcome.error ? outcome.error->code : 0;
}

/// The real threads, the real engine and the real client, signed in with a stale token, against a server of
/// the test. A path that begins with /held is answered after the release of its name.
class Wires {
public:
    explicit Wires(const CurlTransport::Limits& limits = {}) {
        PlatformServices& services = application.fakePlatform.services;
        services.mainQueue = main;
        services.queuePool = std::make_shared<QueuePool>(2, QueuePool::Priority::standard);
        services.httpDelegateQueue = services.queuePool->makeSerialQueue("http");
        services.transport = std::make_shared<CurlTransport>(limits);
        application.constants.api = server.host();
        application.constants.isHttps = false;
        application.fakeUserAccountModel.signIn("c1", "old");
        open();
    }

    void renewManager() {
        manager = std::make_unique<SessionManager>(application.platform(), SessionManager::Configuration{});
    }
    void open() {
        renewManager();
        networking.emplace(application, application.constants);
    }
    /// Makes room for requests that will be counted by their number.
    void expect(std::size_t count) {
        runs.assign(count, 0);
        successes = cancellations = told = 0;
    }
    RequestHandle send(std::size_t index, const std::string& url) {
        return manager->request(url, HttpMethod::get)
            .validate()
            .response([this, index](const auto& response) {
                const Error cancelled = httpTransportError(HttpTransportError::cancelled);
                cancellations += !response.result && response.result.error() == cancelled ? 1 : 0;
                tell(index, response.result.succeeded());
            });
    }
    /// What a stale token is refused for.
    void ask(std::size_t index) {
        networking->hasWebNotes([this, index](bool isTrue) { tell(index, isTrue); });
    }
    void tell(std::size_t index, bool isSuccess) {
        ++runs.at(index);
        ++told;
        successes += isSuccess ? 1 : 0;
        if (onTold)
            onTold();
    }
    void expectEachToldOnce() {
        EXPECT_TRUE(main->runUntil([this] { return told >= runs.size(); }, std::chrono::minutes(1)));
        main->drain();
        EXPECT_THAT(runs, testing::Each(1));
    }

    std::atomic<bool> refusesForEver = false;
    std::atomic<bool> isRefreshHeld = false;
    std::atomic<std::size_t> refreshes = 0;
    LoopbackServer server{[this](const LoopbackServer::Request& request) {
        const std::string target = request.target();
        if (target.starts_with("/held"))
            return LoopbackServer::Reply().hold(target).then("HTTP/1.1 204 x\r\n\r\n");
        if (target == "/refresh") {
            ++refreshes;
            return isRefreshHeld ? LoopbackServer::Reply().hold(target).hangUp()
                                 : LoopbackServer::Reply(200, R"({"jwt":"new"})");
        }
        const bool isStale = request.header("Cookie").find("tq.token=old") != std::string::npos;
        const bool isRefused = target == "/api/hasWebNotes" && (isStale || refusesForEver);
        return LoopbackServer::Reply(isRefused ? 403 : 200, "true");
    }};
    std::shared_ptr<MainQueue> main = std::make_shared<MainQueue>();
    FakeApplication application;
    std::vector<int> runs;
    std::size_t told = 0;
    std::size_t successes = 0;
    std::size_t cancellations = 0;
    std::function<void()> onTold;
    std::unique_ptr<SessionManager> manager;
    std::optional<Networking> networking;
};

} // namespace teralune
