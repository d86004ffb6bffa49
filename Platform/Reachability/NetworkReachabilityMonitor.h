#pragma once

#include "Platform/Reachability/NetworkReachabilityStatus.h"

#include <functional>

namespace teralune {

/// Watches whether the network can be reached. The first status is always reported, then each one that
/// differs from the last, on the queue that the monitor was made for. Dropping the monitor ends it; dropped
/// from that queue's thread, no report comes after.
class NetworkReachabilityMonitor {
public:
    using Listener = std::function<void(NetworkReachabilityStatus)>;

    virtual ~NetworkReachabilityMonitor() = default;
    /// Called once.
    virtual void startListening(Listener listener) = 0;
};

} // namespace teralune
