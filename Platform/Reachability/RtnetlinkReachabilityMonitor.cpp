#include "Platform/Reachability/RtnetlinkReachabilityMonitor.h"

#include "Platform/Dispatch/DispatchQueue.h"
#include "Platform/Foundation/Lifetime.h"
#include "Platform/Foundation/WakeEvent.h"
#include "Platform/Reachability/InterfaceTableReader.h"

#include <linux/rtnetlink.h>
#include <poll.h>

#include <system_error>
#include <thread>

namespace teralune {
namespace {

constexpr std::uint32_t groups =
    RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR | RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE;
/// How long the monitor waits before it tries again what the system has refused.
constexpr std::chrono::seconds recoveryDelay(5);

} // namespace

struct RtnetlinkReachabilityMonitor::State {
    State(WakeEvent wake, InterfaceTableReader tables, NetlinkSocket socket,
          std::shared_ptr<DispatchQueue> target, RtnetlinkReachabilityOptions wishes)
        : end(std::move(wake))
        , reader(std::move(tables))
        , notifications(std::move(socket))
        , queue(std::move(target))
        , options(std::move(wishes)) {}

    void run();
    void readNotifications();
    void readTables();
    void publish(NetworkReachabilityStatus status);
    /// Reads the tables after the delay, or when it is already going to, whichever comes first.
    void readTablesWithin(std::chrono::milliseconds delay);

    WakeEvent end;
    InterfaceTableReader reader;
    std::optional<NetlinkSocket> notifications;
    const std::shared_ptr<DispatchQueue> queue;
    const RtnetlinkReachabilityOptions options;
    std::shared_ptr<const Listener> listener;
    /// Over before the thread is told to end, so that what it reports while it ends is not heard.
    std::optional<Lifetime> lifetime{std::in_place};
    const Lifetime::Watch watch = lifetime->watch();

    InterfaceTable table;
    WakeEvent::Deadline due;
    std::optional<NetworkReachabilityStatus> published;
    std::thread thread;
};

RtnetlinkReachabilityMonitor::RtnetlinkReachabilityMonitor(std::unique_ptr<State> state)
    : state_(std::move(state)) {}

Result<std::unique_ptr<NetworkReachabilityMonitor>>
RtnetlinkReachabilityMonitor::open(std::string_view probeHost, std::shared_ptr<DispatchQueue> queue,
                                   RtnetlinkReachabilityOptions options) {
    if (probeHost.empty())
        return Error{"RtnetlinkReachabilityMonitor", 0, "A monitor needs the name of a host.", {}};
    Result<WakeEvent> wake = WakeEvent::make();
    if (!wake)
        return wake.error();
    // Before the first reading, so that no change falls between the two.
    Result<NetlinkSocket> socket = NetlinkSocket::open(groups, options.bufferBytes);
    if (!socket)
        return socket.error();
    Result<InterfaceTableReader> reader = InterfaceTableReader::open();
    if (!reader)
        return reader.error();
    auto state = std::make_unique<State>(std::move(wake).value(), std::move(reader).value(),
                                         std::move(socket).value(), std::move(queue), std::move(options));
    return std::unique_ptr<NetworkReachabilityMonitor>(new RtnetlinkReachabilityMonitor(std::move(state)));
}

RtnetlinkReachabilityMonitor::~RtnetlinkReachabilityMonitor() {
    state_->lifetime.reset();
    state_->end.signal();
    if (state_->thread.joinable())
        state_->thread.join();
}

void RtnetlinkReachabilityMonitor::startListening(Listener listener) {
    state_->listener = std::make_shared<const Listener>(std::move(listener));
    try {
        state_->thread = std::thread([state = state_.get()] { state->run(); });
    } catch (const std::system_error&) {
        // The system has no thread left. Who listens hears nothing, and the network counts as not reachable.
        state_->listener.reset();
    }
}

void RtnetlinkReachabilityMonitor::State::run() {
    readTables();
    for (;;) {
        std::vector<pollfd> descriptors;
        if (notifications)
            descriptors.push_back({notifications->descriptor(), POLLIN, 0});
        if (end.wait(descriptors, due))
            return;
        if (!descriptors.empty() && descriptors.front().revents != 0)
            readNotifications();
        if (due && *due <= std::chrono::steady_clock::now())
            readTables();
    }
}

void RtnetlinkReachabilityMonitor::State::readNotifications() {
    for (;;) {
        NetlinkMessages received;
        const NetlinkSocket::Reception reception = notifications->receive(received);
        if (reception == NetlinkSocket::Reception::nothing)
            return;
        if (reception == NetlinkSocket::Reception::failed) {
            notifications.reset();
            readTablesWithin(options.debounce);
            return;
        }
        bool outdated = reception == NetlinkSocket::Reception::lost;
        for (const NetlinkMessage& notification : received.messages)
            outdated = outdated || table.isOutdatedBy(notification);
        if (outdated)
            readTablesWithin(options.debounce);
    }
}

void RtnetlinkReachabilityMonitor::State::readTables() {
    due.reset();
    if (!notifications) {
        if (Result<NetlinkSocket> socket = NetlinkSocket::open(groups, options.bufferBytes))
            notifications = std::move(socket).value();
    }
    std::optional<InterfaceTable> fresh = notifications ? reader.read(end) : std::nullopt;
    if (!fresh) {
        readTablesWithin(recoveryDelay);
        publish(NetworkReachabilityStatus::unknown);
        return;
    }
    table = std::move(*fresh);
    publish(table.status(
        [this](std::string_view name) { return interfaceMedium(options.networkClassFolder, name); }));
}

void RtnetlinkReachabilityMonitor::State::publish(NetworkReachabilityStatus status) {
    if (published == status)
        return;
    published = status;
    queue->async([watch = watch, heard = listener, status] {
        if (!watch.isOver())
            (*heard)(status);
    });
}

void RtnetlinkReachabilityMonitor::State::readTablesWithin(std::chrono::milliseconds delay) {
    const auto moment = std::chrono::steady_clock::now() + delay;
    if (!due || moment < *due)
        due = moment;
}

} // namespace teralune
