#include "Hosts/CommandLine/TransferCounter.h"

namespace teralune {

TransferCounter::TransferCounter(std::shared_ptr<HttpTransport> transport)
    : transport_(std::move(transport))
    , underWay_(std::make_shared<std::atomic<int>>(0)) {}

std::unique_ptr<Transfer> TransferCounter::send(URLRequest request, TransferLane lane,
                                                Completion completion) {
    ++*underWay_;
    // Only the completion holds it, so it ends when that was called or dropped.
    std::shared_ptr<const void> count(nullptr, [underWay = underWay_](const void*) { --*underWay; });
    return transport_->send(
        std::move(request), lane,
        [completion = std::move(completion), count = std::move(count)](TransferOutcome outcome) mutable {
            completion(std::move(outcome));
            count.reset();
        });
}

} // namespace teralune
