#pragma once

#include "Benchmarks/InterleavedRatio.h"
#include "Classes/Networking/Networking.h"
#include "Platform/Dispatch/MainQueue.h"
#include "Tests/Support/FakeApplication.h"

#include <memory>
#include <string>

namespace teralune::benchmarks {

/// Requests as an app makes them: Networking::makeRequest() on the real queues and the real transport, with
/// the adapter's cookies, validation, a text handler and its completion on the main queue, which is the
/// calling thread. The host around it is a fake, signed in, that keeps no log.
class PipelineClient {
public:
    explicit PipelineClient(const std::string& host);

    void setToken(const std::string& token) { application_.settings.setAccessToken(token); }
    /// Sends the requests, numbered from 0, and waits for them all. Fatal when one fails.
    Duration run(std::size_t requests, std::size_t atOnce);
    /// What the last request was sent with.
    const HttpHeaders& headersSent() const { return headersSent_; }

private:
    void sendNext();

    FakeApplication application_;
    std::shared_ptr<MainQueue> main_ = std::make_shared<MainQueue>();
    std::unique_ptr<Networking> networking_;
    HttpHeaders headersSent_;
    std::size_t requests_ = 0;
    std::size_t sent_ = 0;
    std::size_t completed_ = 0;
};

} // namespace teralune::benchmarks
