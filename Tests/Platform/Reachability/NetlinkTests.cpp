#include "Platform/Reachability/InterfaceTable.h"

#include <gtest/gtest.h>
#include <linux/if.h>
#include <linux/if_addr.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

namespace teralune {
namespace {

using namespace std::string_view_literals;

/// The flags of a link that can carry packets.
constexpr unsigned carryingFlags = IFF_UP | IFF_RUNNING | IFF_LOWER_UP;

/// Writes a datagram of rtnetlink messages, as the kernel sends them. Attributes go into the message that was
/// begun last.
struct Builder {
    std::string bytes;
    std::size_t messageStart = 0;

    template<class Value>
    Builder& raw(const Value& value) {
        bytes.resize((bytes.size() + 3) & ~std::size_t{3});
        bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
        header().nlmsg_len = static_cast<unsigned>(bytes.size() - messageStart);
        return *this;
    }
    template<class Body>
    Builder& message(int type, const Body& body, unsigned short flags = 0) {
        messageStart = (bytes.size() + 3) & ~std::size_t{3};
        return raw(nlmsghdr{0, static_cast<unsigned short>(type), flags, 9, 77}).raw(body);
    }
    Builder& attribute(unsigned short type, std::string_view value) {
        raw(rtattr{static_cast<unsigned short>(sizeof(rtattr) + value.size()), type});
        bytes += value;
        header().nlmsg_len += static_cast<unsigned>(value.size());
        return *this;
    }
    Builder& attribute(unsigned short type, unsigned value) {
        return attribute(type, std::string_view(reinterpret_cast<const char*>(&value), sizeof value));
    }
    nlmsghdr& header() { return *reinterpret_cast<nlmsghdr*>(bytes.data() + messageStart); }

    Builder& link(int index, std::string_view name, unsigned flags, int type = RTM_NEWLINK) {
        return message(type, ifinfomsg{0, 0, 0, index, flags, 0}).attribute(IFLA_IFNAME, name);
    }
    Builder& address(unsigned index, unsigned char family, std::string_view value, unsigned char scope = 0,
                     unsigned flags = 0, int type = RTM_NEWADDR) {
        const ifaddrmsg body{family, 0, 0, scope, index};
        return message(type, body).attribute(IFA_ADDRESS, value).attribute(IFA_FLAGS, flags);
    }
    /// A default route, unless it has a length; the way out is added as an attribute.
    Builder& route(unsigned char family, unsigned char kind = RTN_UNICAST,
                   unsigned char table = RT_TABLE_MAIN, int type = RTM_NEWROUTE, unsigned char length = 0) {
        return message(type, rtmsg{family, length, 0, 0, table, RTPROT_STATIC, 0, kind, 0});
    }
};

NetlinkMessages parse(std::string_view bytes) {
    return NetlinkMessages::parse(std::as_bytes(std::span(bytes)));
}

TEST(NetlinkMessages, reads_links_addresses_routes_and_the_end_of_a_dump) {
    Builder builder;
    builder.link(3, "wlan0\0garbage"sv, carryingFlags);
    builder.address(3, AF_INET, "peer").attribute(IFA_LOCAL, "mine");
    builder.route(AF_INET6, RTN_UNICAST, RT_TABLE_COMPAT, RTM_DELROUTE).attribute(RTA_TABLE, 51820);
    builder.attribute(RTA_MULTIPATH, "\x08\0\x01\0\x07\0\0\0\x08\0\0\0\x08\0\0\0"sv);
    builder.message(NLMSG_ERROR, -EBUSY, NLM_F_DUMP_INTR);
    const NetlinkMessages parsed = parse(builder.bytes);
    ASSERT_EQ(parsed.messages.size(), 4U);
    EXPECT_EQ(std::get<NetlinkLink>(parsed.messages[0].content).name, "wlan0");
    EXPECT_EQ(std::get<NetlinkAddress>(parsed.messages[1].content).bytes, "mine");
    const auto& route = std::get<NetlinkRoute>(parsed.messages[2].content);
    EXPECT_EQ(parsed.messages[2].change, NetlinkMessage::Change::removed);
    EXPECT_EQ(std::tie(route.family, route.table), std::make_tuple(AF_INET6, 51820U));
    EXPECT_EQ(route.nextHops.at(1).interfaceIndex, 8);
    const NetlinkMessage& end = parsed.messages[3];
    EXPECT_EQ(std::get<NetlinkRequestEnd>(end.content).errorNumber, EBUSY);
    EXPECT_EQ(std::tie(end.sequence, end.port, end.dumpInterrupted), std::make_tuple(9U, 77U, true));
}

TEST(NetlinkMessages, leaves_out_what_says_nothing_of_reachability) {
    Builder builder;
    builder.link(3, "wlan0", carryingFlags).attribute(IFLA_WIRELESS, "scan");
    builder.message(RTM_DELLINK, ifinfomsg{AF_BRIDGE, 0, 0, 3, 0, 0});
    builder.address(3, AF_PACKET, "mac");
    builder.message(RTM_NEWROUTE, rtmsg{AF_INET6, 0, 0, 0, 0, 0, 0, RTN_UNICAST, RTM_F_CLONED});
    builder.message(RTM_NEWNEIGH, 'n');
    const NetlinkMessages parsed = parse(builder.bytes);
    EXPECT_TRUE(parsed.intact && parsed.messages.empty());
}

TEST(NetlinkMessages, keeps_what_stands_before_something_that_makes_no_sense) {
    const std::pair<const char*, void (*)(Builder&)> cases[] = {
        {"message too long", [](Builder& b) { b.route(AF_INET).header().nlmsg_len += 1; }},
        {"message too short", [](Builder& b) { b.route(AF_INET).header().nlmsg_len = 15; }},
        {"body too short", [](Builder& b) { b.message(RTM_NEWROUTE, 1); }},
        {"attribute too long",
         [](Builder& b) {
             b.route(AF_INET).raw(rtattr({99, 1}));
         }},
        {"attribute too short",
         [](Builder& b) {
             b.route(AF_INET).raw(rtattr({3, 1}));
         }},
        {"empty next hop", [](Builder& b) { b.route(AF_INET).attribute(RTA_MULTIPATH, "\0\0\0"sv); }},
        {"overrun", [](Builder& b) { b.message(NLMSG_OVERRUN, 0); }},
        {"a rest", [](Builder& b) { b.bytes += "1234"; }},
    };
    for (const auto& [name, spoil] : cases) {
        Builder builder;
        spoil(builder.link(3, "eth0", carryingFlags));
        const NetlinkMessages parsed = parse(builder.bytes);
        EXPECT_FALSE(parsed.intact) << name;
        EXPECT_EQ(parsed.messages.size(), 1U) << name;
    }
}

InterfaceTable tableOf(const Builder& builder) {
    InterfaceTable table;
    for (const NetlinkMessage& message : parse(builder.bytes).messages)
        table.add(message);
    return table;
}

/// Links 1 lo, 2 eth0, 3 wwan0 and 4 eth1 without a carrier, one of which has an address.
Builder addressed(unsigned index, unsigned char family = AF_INET, unsigned char scope = 0,
                  unsigned flags = 0) {
    Builder builder;
    builder.link(1, "lo", carryingFlags | IFF_LOOPBACK).link(2, "eth0", carryingFlags | IFF_MULTICAST);
    builder.link(3, "wwan0", carryingFlags | IFF_POINTOPOINT).link(4, "eth1", IFF_UP);
    return builder.address(index, family, "addr", scope, flags);
}

Builder route(Builder builder, unsigned index, unsigned char family = AF_INET,
              unsigned char kind = RTN_UNICAST, unsigned char table = RT_TABLE_MAIN) {
    return builder.route(family, kind, table).attribute(RTA_OIF, index);
}

TEST(InterfaceTable, is_reachable_through_a_default_route_that_can_carry_packets) {
    const rtnexthop hops[] = {{8, RTNH_F_LINKDOWN, 0, 2}, {8, 0, 0, 3}};
    const std::string_view ways(reinterpret_cast<const char*>(hops), sizeof hops);
    using enum NetworkReachabilityStatus;
    constexpr auto none = notReachable, wired = reachableViaEthernetOrWiFi, cellular = reachableViaCellular;
    const std::tuple<const char*, Builder, NetworkReachabilityStatus> cases[] = {
        {"a subnet", addressed(2).route(AF_INET, 1, 254, RTM_NEWROUTE, 24).attribute(RTA_OIF, 2), none},
        {"an address and a route", route(addressed(2), 2), wired},
        {"a gateway of the other family", route(addressed(2), 2).attribute(RTA_VIA, "gateway"), wired},
        {"a route that leads nowhere", route(addressed(2), 2, AF_INET, RTN_UNREACHABLE), none},
        {"no carrier", route(addressed(4), 4), none},
        {"the loopback link", route(addressed(1), 1), none},
        {"an address of the other family", route(addressed(2, AF_INET6), 2), none},
        {"an address of the loopback link", route(addressed(1), 2), wired},
        {"an address of the link only", route(addressed(2, AF_INET, RT_SCOPE_LINK), 2), none},
        {"a tentative address", route(addressed(2, AF_INET6, 0, IFA_F_TENTATIVE), 2, AF_INET6), none},
        {"an optimistic one", route(addressed(2, 10, 0, IFA_F_TENTATIVE | IFA_F_OPTIMISTIC), 2, 10), wired},
        {"a duplicate", route(addressed(2, AF_INET6, 0, IFA_F_DADFAILED), 2, AF_INET6), none},
        {"both media", route(route(addressed(3).address(2, AF_INET, "addr"), 3), 2), wired},
        {"the living one of two ways", addressed(3).route(2).attribute(RTA_MULTIPATH, ways), cellular},
    };
    for (const auto& [name, builder, expected] : cases) {
        const auto status = tableOf(builder).status([](std::string_view link) {
            return link == "wwan0" ? InterfaceMedium::cellular : InterfaceMedium::ethernetOrWiFi;
        });
        EXPECT_EQ(word(status), word(expected)) << name;
    }
}

TEST(InterfaceTable, is_outdated_only_by_what_it_does_not_know) {
    const InterfaceTable table = tableOf(route(addressed(2), 2));
    const std::tuple<const char*, Builder, bool> cases[] = {
        {"a link as it was", Builder().link(2, "eth0", carryingFlags | IFF_PROMISC), false},
        {"a lost carrier", Builder().link(2, "eth0", IFF_UP), true},
        {"an address refreshed", Builder().address(2, AF_INET, "addr", 0, IFA_F_DEPRECATED), false},
        {"a new address", Builder().address(2, AF_INET, "more"), true},
        {"an address for its link", Builder().address(2, AF_INET6, "more", RT_SCOPE_LINK), false},
        {"an address gone", Builder().address(2, AF_INET, "addr", 0, 0, RTM_DELADDR), true},
        {"a route as it was", route({}, 2), false},
        {"a route by another way", route({}, 3), true},
        {"a route gone", Builder().route(AF_INET, 1, RT_TABLE_MAIN, RTM_DELROUTE), true},
        {"a route replaced by one that leads nowhere", route({}, 1, AF_INET, RTN_UNREACHABLE), true},
    };
    for (const auto& [name, builder, expected] : cases)
        EXPECT_EQ(table.isOutdatedBy(parse(builder.bytes).messages.at(0)), expected) << name;
}

} // namespace
} // namespace teralune
