#include "Hosts/CommandLine/OfflineTransport.h"

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Http/HttpError.h"

namespace teralune {
namespace {

class OfflineTransfer final : public Transfer {
public:
    explicit OfflineTransfer(std::shared_ptr<HttpTransport::Completion> completion)
        : completion_(std::move(completion)) {}

private:
    /// The queue holds it weakly, so that dropping the transfer drops its completion.
    std::shared_ptr<HttpTransport::Completion> completion_;
};

} // namespace

std::unique_ptr<Transfer> OfflineTransport::send(URLRequest, TransferLane, Completion completion) {
    auto shared = std::make_shared<Completion>(std::move(completion));
    queue_->async([waiting = std::weak_ptr(shared)] {
        if (const auto whenDone = waiting.lock())
            (*whenDone)({{}, {}, httpTransportError(HttpTransportError::notConnectedToInternet)});
    });
    return std::make_unique<OfflineTransfer>(std::move(shared));
}

} // namespace teralune
