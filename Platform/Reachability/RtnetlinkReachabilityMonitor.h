#pragma once

#include "Platform/Foundation/Result.h"
#include "Platform/Reachability/NetworkReachabilityMonitor.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <string_view>

namespace teralune {

class DispatchQueue;

/// What a monitor is set up with, other than by default.
struct RtnetlinkReachabilityOptions {
    /// Where the system describes its interfaces.
    std::filesystem::path networkClassFolder = "/sys/class/net";
    /// How long changes are gathered before the tables are read again.
    std::chrono::milliseconds debounce{250};
    /// What the kernel keeps of its notifications while a thread is busy.
    int bufferBytes = 1 << 20;
};

/// Judges by the kernel's interfaces, addresses and routes, whoever set them up; no service of the system has
/// to run. It has one thread, which sleeps until the kernel tells of a change.
class RtnetlinkReachabilityMonitor final : public NetworkReachabilityMonitor {
public:
    /// Reports to that queue. Fails where the process may have no sockets to the kernel's tables. The probe
    /// host stands for the network as a whole: the monitor judges by the default routes, which lead to it as
    /// to any public host, and neither looks its name up nor sends it anything. An empty name fails.
    static Result<std::unique_ptr<NetworkReachabilityMonitor>>
    open(std::string_view probeHost, std::shared_ptr<DispatchQueue> queue,
         RtnetlinkReachabilityOptions options = {});
    ~RtnetlinkReachabilityMonitor() override;

    void startListening(Listener listener) override;

private:
    struct State;
    explicit RtnetlinkReachabilityMonitor(std::unique_ptr<State> state);
    std::unique_ptr<State> state_;
};

} // namespace teralune
