#pragma once

#include "Platform/Http/HttpTransport.h"

#include <memory>

namespace teralune {

class DispatchQueue;

/// Sends nothing: every request fails as it does on a device without a network.
class OfflineTransport final : public HttpTransport {
public:
    /// The failures are delivered on this queue.
    explicit OfflineTransport(std::shared_ptr<DispatchQueue> queue) : queue_(std::move(queue)) {}

    [[nodiscard]] std::unique_ptr<Transfer> send(URLRequest request, TransferLane lane,
                                                 Completion completion) override;

private:
    std::shared_ptr<DispatchQueue> queue_;
};

} // namespace teralune
