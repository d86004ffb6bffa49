#pragma once

namespace teralune {

/// Whether the device can reach the network. Used from the main thread.
class NetworkReachabilityType {
public:
    virtual ~NetworkReachabilityType() = default;
    virtual bool hasInternetConnection() const = 0;
    /// From the next status report on there is no connection, whatever the network does.
    virtual void setSnapshotMode() = 0;
};

} // namespace teralune
