#include "Platform/Reachability/NetlinkMessages.h"

#include <linux/if_addr.h>
#include <linux/if_link.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstring>
#include <optional>

namespace teralune {
namespace {

using Bytes = std::span<const std::byte>;

/// The structure at the beginning of the bytes; nothing when there are too few. Copied, because nothing
/// promises alignment.
template<class Structure>
std::optional<Structure> structureAt(Bytes bytes) {
    if (bytes.size() < sizeof(Structure))
        return std::nullopt;
    Structure structure;
    std::memcpy(&structure, bytes.data(), sizeof structure);
    return structure;
}

/// What lies behind a piece of that length, which begins on the next multiple of four. The padding of the
/// last piece may be missing.
Bytes behind(Bytes bytes, std::size_t length) {
    const std::size_t aligned = (length + 3) & ~std::size_t{3};
    return bytes.subspan(std::min(aligned, bytes.size()));
}

/// Hands each attribute to the visitor; false when one does not fit.
template<class Visitor>
bool forEachAttribute(Bytes bytes, Visitor visit) {
    while (!bytes.empty()) {
        const auto header = structureAt<rtattr>(bytes);
        if (!header || header->rta_len < sizeof(rtattr) || header->rta_len > bytes.size())
            return false;
        visit(header->rta_type & NLA_TYPE_MASK, bytes.first(header->rta_len).subspan(sizeof(rtattr)));
        bytes = behind(bytes, header->rta_len);
    }
    return true;
}

std::string textOf(Bytes bytes) {
    const std::string text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    return text.substr(0, text.find('\0'));
}

/// What became of one message: nothing to tell, something to tell, or no sense in it.
struct Reading {
    bool intact = true;
    std::optional<decltype(NetlinkMessage::content)> content;
};

Reading readLink(Bytes body) {
    const auto header = structureAt<ifinfomsg>(body);
    if (!header)
        return {false, std::nullopt};
    NetlinkLink link{header->ifi_index, {}, header->ifi_flags};
    bool wireless = false;
    const bool whole = forEachAttribute(behind(body, sizeof(ifinfomsg)), [&](int type, Bytes value) {
        if (type == IFLA_IFNAME)
            link.name = textOf(value);
        wireless = wireless || type == IFLA_WIRELESS;
    });
    // A bridge tells of its ports with the same message; and a driver tells of scans and signal strength
    // through a message in which no flag has changed.
    if (header->ifi_family != AF_UNSPEC || (wireless && header->ifi_change == 0))
        return {whole, std::nullopt};
    return {whole, std::move(link)};
}

Reading readAddress(Bytes body) {
    const auto header = structureAt<ifaddrmsg>(body);
    if (!header)
        return {false, std::nullopt};
    NetlinkAddress address{
        static_cast<int>(header->ifa_index), header->ifa_family, header->ifa_scope, header->ifa_flags, {}};
    std::string peer;
    const bool whole = forEachAttribute(behind(body, sizeof(ifaddrmsg)), [&](int type, Bytes value) {
        const std::string bytes(reinterpret_cast<const char*>(value.data()), value.size());
        if (type == IFA_LOCAL)
            address.bytes = bytes;
        else if (type == IFA_ADDRESS)
            peer = bytes;
        else if (type == IFA_FLAGS)
            address.flags = structureAt<unsigned>(value).value_or(address.flags);
    });
    // On a line from point to point the other attribute is the far end's address.
    if (address.bytes.empty())
        address.bytes = peer;
    if (address.family != AF_INET && address.family != AF_INET6)
        return {whole, std::nullopt};
    return {whole, std::move(address)};
}

bool readNextHops(Bytes bytes, std::vector<NetlinkNextHop>& nextHops) {
    while (!bytes.empty()) {
        const auto header = structureAt<rtnexthop>(bytes);
        if (!header || header->rtnh_len < sizeof(rtnexthop) || header->rtnh_len > bytes.size())
            return false;
        nextHops.push_back({header->rtnh_ifindex, header->rtnh_flags});
        bytes = behind(bytes, header->rtnh_len);
    }
    return true;
}

Reading readRoute(Bytes body) {
    const auto header = structureAt<rtmsg>(body);
    if (!header)
        return {false, std::nullopt};
    NetlinkRoute route{header->rtm_family, header->rtm_dst_len, header->rtm_type, header->rtm_table, {}};
    bool hopsWhole = true;
    const bool whole = forEachAttribute(behind(body, sizeof(rtmsg)), [&](int type, Bytes value) {
        if (type == RTA_TABLE)
            route.table = structureAt<unsigned>(value).value_or(route.table);
        else if (type == RTA_OIF)
            route.nextHops.push_back({structureAt<int>(value).value_or(0), header->rtm_flags});
        else if (type == RTA_MULTIPATH)
            hopsWhole = readNextHops(value, route.nextHops);
    });
    // Entries of the route cache are no routes of their own.
    if ((route.family != AF_INET && route.family != AF_INET6) || (header->rtm_flags & RTM_F_CLONED) != 0)
        return {whole && hopsWhole, std::nullopt};
    return {whole && hopsWhole, std::move(route)};
}

Reading readEnd(Bytes body) {
    // Both NLMSG_DONE and NLMSG_ERROR begin with a negative error number; an early kernel ended a dump
    // without one.
    const int code = structureAt<int>(body).value_or(0);
    return {true, NetlinkRequestEnd{code < 0 && code > -4096 ? -code : 0}};
}

Reading readMessage(int type, Bytes body) {
    switch (type) {
    case RTM_NEWLINK:
    case RTM_DELLINK:
        return readLink(body);
    case RTM_NEWADDR:
    case RTM_DELADDR:
        return readAddress(body);
    case RTM_NEWROUTE:
    case RTM_DELROUTE:
        return readRoute(body);
    case NLMSG_DONE:
    case NLMSG_ERROR:
        return readEnd(body);
    case NLMSG_OVERRUN:
        return {false, std::nullopt};
    default:
        return {};
    }
}

} // namespace

NetlinkMessages NetlinkMessages::parse(std::span<const std::byte> bytes) {
    NetlinkMessages result;
    while (!bytes.empty()) {
        const auto header = structureAt<nlmsghdr>(bytes);
        if (!header || header->nlmsg_len < sizeof(nlmsghdr) || header->nlmsg_len > bytes.size()) {
            result.intact = false;
            break;
        }
        Reading reading =
            readMessage(header->nlmsg_type, bytes.first(header->nlmsg_len).subspan(sizeof(nlmsghdr)));
        result.intact = result.intact && reading.intact;
        if (reading.intact && reading.content) {
            const bool removed = header->nlmsg_type == RTM_DELLINK || header->nlmsg_type == RTM_DELADDR ||
                                 header->nlmsg_type == RTM_DELROUTE;
            result.messages.push_back(
                {header->nlmsg_seq, header->nlmsg_pid, (header->nlmsg_flags & NLM_F_DUMP_INTR) != 0,
                 removed ? NetlinkMessage::Change::removed : NetlinkMessage::Change::present,
                 std::move(*reading.content)});
        }
        bytes = behind(bytes, header->nlmsg_len);
    }
    return result;
}

} // namespace teralune
