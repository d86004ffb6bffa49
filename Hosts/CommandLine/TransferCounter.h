#pragma once

#include "Platform/Http/HttpTransport.h"

#include <atomic>
#include <memory>

namespace teralune {

/// A transport that knows how many transfers are under way, so that a process that is about to end can wait
/// for the requests whose end nobody is told: usage logs, and the server's sign-out.
class TransferCounter final : public HttpTransport {
public:
    explicit TransferCounter(std::shared_ptr<HttpTransport> transport);

    [[nodiscard]] std::unique_ptr<Transfer> send(URLRequest request, TransferLane lane,
                                                 Completion completion) override;
    /// A transfer counts until its completion has returned or it was dropped. Any thread.
    int transfersUnderWay() const { return *underWay_; }

private:
    std::shared_ptr<HttpTransport> transport_;
    std::shared_ptr<std::atomic<int>> underWay_;
};

} // namespace teralune
