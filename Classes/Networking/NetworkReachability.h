#pragma once

#include "Classes/Interfaces/NetworkReachabilityType.h"
#include "Platform/Foundation/Result.h"
#include "Platform/PlatformServices.h"
#include "Platform/Reachability/NetworkReachabilityMonitor.h"

#include <functional>
#include <memory>
#include <string_view>

namespace teralune {

/// Keeps whether the device can reach the network, and announces each change. Made, read and dropped on the
/// main thread, where the monitor reports. Begins as not connected, and stays so for good where the system
/// allows no monitor.
class NetworkReachability final : public NetworkReachabilityType {
public:
    /// Posted on each change; the object is the new value, a Boolean. No user info.
    static constexpr std::string_view InternetConnectionNotification = "InternetConnectionNotification";

    using MonitorFactory =
        std::function<Result<std::unique_ptr<NetworkReachabilityMonitor>>(std::string_view probeHost)>;

    /// Watches the network through the system's own monitor.
    explicit NetworkReachability(const PlatformServices& platform = PlatformServices::standard());
    /// Watches it through a monitor of the factory's, which reports on the main queue.
    NetworkReachability(const PlatformServices& platform, const MonitorFactory& makeMonitor);

    bool hasInternetConnection() const override { return hasInternetConnection_; }
    void setSnapshotMode() override { snapshot_ = true; }

private:
    void statusChanged(NetworkReachabilityStatus status);

    std::shared_ptr<Printer> printer_;
    std::shared_ptr<NotificationCenter> notificationCenter_;
    bool hasInternetConnection_ = false;
    bool snapshot_ = false;
    /// Null when it could not be made. Last, so that it goes first.
    std::unique_ptr<NetworkReachabilityMonitor> reachabilityManager_;
};

} // namespace teralune
