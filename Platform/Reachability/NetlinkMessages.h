#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace teralune {

/// A network interface.
struct NetlinkLink {
    int index = 0;
    std::string name;
    unsigned flags = 0; ///< IFF_…
};

/// An address of an interface, IPv4 or IPv6.
struct NetlinkAddress {
    int interfaceIndex = 0;
    int family = 0;
    int scope = 0;      ///< RT_SCOPE_…
    unsigned flags = 0; ///< IFA_F_…
    std::string bytes;
};

/// One way out of a route. The gateway does not matter here, and so an IPv4 route through an IPv6 gateway
/// counts like any other.
struct NetlinkNextHop {
    int interfaceIndex = 0;
    unsigned flags = 0; ///< RTNH_F_…
};

/// An IPv4 or IPv6 route.
struct NetlinkRoute {
    int family = 0;
    int destinationLength = 0;
    int type = 0; ///< RTN_…
    unsigned table = 0;
    std::vector<NetlinkNextHop> nextHops;
};

/// The end of the answer to a request.
struct NetlinkRequestEnd {
    int errorNumber = 0; ///< 0 when the answer is whole
};

/// One message of the kernel that has to do with reachability.
struct NetlinkMessage {
    enum class Change { present, removed };

    std::uint32_t sequence = 0;
    std::uint32_t port = 0;
    bool dumpInterrupted = false;
    Change change = Change::present;
    std::variant<NetlinkLink, NetlinkAddress, NetlinkRoute, NetlinkRequestEnd> content;
};

/// The messages in the bytes of one datagram of rtnetlink. Pure: any bytes may be handed in, nothing outside
/// them is read, and no length in them is trusted.
struct NetlinkMessages {
    std::vector<NetlinkMessage> messages;
    /// False when part of the bytes made no sense; the messages before it are kept.
    bool intact = true;

    static NetlinkMessages parse(std::span<const std::byte> bytes);
};

} // namespace teralune
