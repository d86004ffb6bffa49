#pragma once

#include "Classes/Interfaces/NetworkReachabilityType.h"

namespace teralune {

/// The reachability of a device that has no network.
class OfflineReachability final : public NetworkReachabilityType {
public:
    bool hasInternetConnection() const override { return false; }
    void setSnapshotMode() override {}
};

} // namespace teralune
