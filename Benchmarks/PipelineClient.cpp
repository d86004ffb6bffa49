#include "Benchmarks/PipelineClient.h"

#include "Platform/Dispatch/QueuePool.h"
#include "Platform/Foundation/FatalError.h"
#include "Platform/Http/CurlTransport.h"

namespace teralune::benchmarks {

namespace {

/// What a host does with the lines is its own affair.
class SilentCrashReporter final : public CrashReporterType {
public:
    void recordError(const Error&) override {}
    void recordError(const Error&, const UserInfo&) override {}
    using CrashReporterType::TRL_CLSNSLogv;
    void TRL_CLSNSLogv(std::string_view, std::span<const FormatArgument>) override {}
};

SilentCrashReporter silent;

} // namespace

PipelineClient::PipelineClient(const std::string& host) {
    PlatformServices& services = application_.fakePlatform.services;
    services.mainQueue = main_;
    services.queuePool = std::make_shared<QueuePool>(2, QueuePool::Priority::standard);
    services.httpDelegateQueue = services.queuePool->makeSerialQueue("http delegate");
    services.transport = std::make_shared<CurlTransport>();
    application_.crashReporterService = &silent;
    application_.constants.isHttps = false;
    application_.constants.api = host;
    application_.fakeUserAccountModel.signIn("account", "abcdefghijklmnopqrstuvwxyz");
    networking_ = std::make_unique<Networking>(application_, application_.constants);
}

Duration PipelineClient::run(std::size_t requests, std::size_t atOnce) {
    return timed([&] {
        requests_ = requests;
        sent_ = completed_ = 0;
        for (std::size_t index = 0; index < std::min(requests, atOnce); ++index) {
            sendNext();
        }
        main_->runUntil([&] { return completed_ == requests; });
    });
}

void PipelineClient::sendNext() {
    const std::string url = networking_->fullHostName() + "/" + std::to_string(sent_++);
    networking_->makeRequest(url, HttpMethod::get, {}, networking_->sessionManagerWithPrivateToken())
        .responseString([this](DataResponse<std::string> response) {
            if (!response.result || response.result.value().size() != 256) {
                fatalError("A request of the pipeline failed.");
            }
            if (++completed_ == requests_) {
                headersSent_ = std::move(response.request.headers);
            } else if (sent_ < requests_) {
                sendNext();
            }
        })
        .detach();
}

} // namespace teralune::benchmarks
