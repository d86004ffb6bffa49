#include "Platform/Reachability/InterfaceTableReader.h"

#include "Platform/Foundation/WakeEvent.h"

#include <linux/rtnetlink.h>
#include <poll.h>

#include <array>

namespace teralune {
namespace {

/// How often tables that change while they are read are read again. After that they are taken as they came:
/// the notifications of those changes ask for another reading anyway.
constexpr int attempts = 5;
constexpr std::chrono::seconds answerLimit(2);

} // namespace

Result<InterfaceTableReader> InterfaceTableReader::open() {
    Result<NetlinkSocket> socket = NetlinkSocket::open(0);
    if (!socket)
        return socket.error();
    return InterfaceTableReader(std::move(socket).value());
}

std::optional<InterfaceTable> InterfaceTableReader::read(const WakeEvent& end) {
    if (!socket_) {
        Result<NetlinkSocket> socket = NetlinkSocket::open(0);
        if (!socket)
            return std::nullopt;
        socket_ = std::move(socket).value();
    }
    InterfaceTable table;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        table = {};
        const Outcome outcome = readOnce(table, end);
        if (outcome == Outcome::failed) {
            // Half an answer may still be on its way to this socket.
            socket_.reset();
            return std::nullopt;
        }
        if (outcome == Outcome::whole)
            break;
    }
    return table;
}

InterfaceTableReader::Outcome InterfaceTableReader::readOnce(InterfaceTable& table, const WakeEvent& end) {
    Outcome outcome = Outcome::whole;
    // One after the other: the kernel refuses a second dump while the first is under way.
    for (const std::uint16_t type : {RTM_GETLINK, RTM_GETADDR, RTM_GETROUTE}) {
        const Outcome kind = readKind(type, table, end);
        if (kind == Outcome::failed)
            return kind;
        if (kind == Outcome::interrupted)
            outcome = kind;
    }
    return outcome;
}

InterfaceTableReader::Outcome InterfaceTableReader::readKind(std::uint16_t messageType, InterfaceTable& table,
                                                             const WakeEvent& end) {
    const std::uint32_t sequence = ++sequence_;
    if (!socket_->requestDump(messageType, sequence))
        return Outcome::failed;
    const auto deadline = std::chrono::steady_clock::now() + answerLimit;
    Outcome outcome = Outcome::whole;
    for (;;) {
        NetlinkMessages received;
        switch (socket_->receive(received)) {
        case NetlinkSocket::Reception::nothing: {
            std::vector<pollfd> descriptors = {{socket_->descriptor(), POLLIN, 0}};
            if (end.wait(descriptors, deadline) || descriptors.front().revents == 0)
                return Outcome::failed;
            continue;
        }
        case NetlinkSocket::Reception::lost:
        case NetlinkSocket::Reception::failed:
            return Outcome::failed;
        case NetlinkSocket::Reception::messages:
            break;
        }
        for (const NetlinkMessage& message : received.messages) {
            if (message.port != socket_->port() || message.sequence != sequence)
                continue;
            if (message.dumpInterrupted)
                outcome = Outcome::interrupted;
            if (const auto* ended = std::get_if<NetlinkRequestEnd>(&message.content))
                return ended->errorNumber == 0 ? outcome : Outcome::failed;
            table.add(message);
        }
    }
}

} // namespace teralune
