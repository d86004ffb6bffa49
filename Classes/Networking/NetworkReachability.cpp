#include "Classes/Networking/NetworkReachability.h"

#include "Platform/Foundation/NotificationCenter.h"
#include "Platform/Foundation/Printer.h"
#include "Platform/Reachability/RtnetlinkReachabilityMonitor.h"

#include <string>

namespace teralune {
namespace {

/// Reserved for examples and served by the name authority itself, so it will stay a public host.
constexpr std::string_view probeHost = "www.example.com";

} // namespace

NetworkReachability::NetworkReachability(const PlatformServices& platform)
    : NetworkReachability(platform, [&platform](std::string_view host) {
        return RtnetlinkReachabilityMonitor::open(host, platform.mainQueue);
    }) {}

NetworkReachability::NetworkReachability(const PlatformServices& platform, const MonitorFactory& makeMonitor)
    : printer_(platform.printer)
    , notificationCenter_(platform.notificationCenter) {
    Result<std::unique_ptr<NetworkReachabilityMonitor>> monitor = makeMonitor(probeHost);
    if (!monitor)
        return;
    reachabilityManager_ = std::move(monitor).value();
    reachabilityManager_->startListening([this](NetworkReachabilityStatus status) { statusChanged(status); });
}

void NetworkReachability::statusChanged(NetworkReachabilityStatus status) {
    printer_->print("Reachability: " + std::string(word(status)));
    const bool connected = isReachable(status) && !snapshot_;
    if (connected == hasInternetConnection_)
        return;
    hasInternetConnection_ = connected;
    notificationCenter_->post({std::string(InternetConnectionNotification), connected, {}});
}

} // namespace teralune
