#include "Platform/Reachability/InterfaceTable.h"
#include "Tests/Platform/Reachability/NetlinkBuilder.h"

#include <gtest/gtest.h>

namespace teralune {
namespace {

using Status = NetworkReachabilityStatus;

InterfaceTable tableOf(const NetlinkBuilder& builder) {
    InterfaceTable table;
    for (const NetlinkMessage& message : NetlinkMessages::parse(builder.bytes()).messages)
        table.add(message);
    return table;
}

Status statusOf(const NetlinkBuilder& builder) {
    return tableOf(builder).status([](std::string_view name) {
        return name.starts_with("ww") ? InterfaceMedium::cellular : InterfaceMedium::ethernetOrWiFi;
    });
}

/// Links 1 lo, 2 eth0, 3 wwan0 and 4 eth1 without a carrier; lo has an address of its host only.
NetlinkBuilder links() {
    NetlinkBuilder builder;
    builder.link(1, "lo", carryingFlags | IFF_LOOPBACK);
    builder.link(2, "eth0", carryingFlags | IFF_MULTICAST);
    builder.link(3, "wwan0", carryingFlags | IFF_POINTOPOINT);
    builder.link(4, "eth1", IFF_UP);
    return builder.address(1, AF_INET, "self", RT_SCOPE_HOST);
}

NetlinkBuilder route(NetlinkBuilder builder, int index, int family = AF_INET, int type = RTN_UNICAST,
                     int table = RT_TABLE_MAIN) {
    return builder.route(family, type, table).attribute(RTA_OIF, index);
}

NetlinkBuilder addressed(int index, int family = AF_INET, int scope = RT_SCOPE_UNIVERSE, unsigned flags = 0) {
    return links().address(index, family, "addr", scope, flags);
}

TEST(InterfaceTable, is_reachable_through_a_default_route_that_can_carry_packets) {
    const NetlinkBuilder hops =
        NetlinkBuilder().raw(rtnexthop{8, RTNH_F_LINKDOWN, 0, 2}).raw(rtnexthop{8, 0, 0, 3});
    NetlinkBuilder viaSixthFamily = addressed(2);
    viaSixthFamily.route(AF_INET).attribute(RTA_VIA, "gateway").attribute(RTA_OIF, 2);
    NetlinkBuilder subnet = addressed(2);
    rtmsg subnetRoute{};
    subnetRoute.rtm_family = AF_INET;
    subnetRoute.rtm_dst_len = 24;
    subnetRoute.rtm_type = RTN_UNICAST;
    subnet.message(RTM_NEWROUTE, subnetRoute).attribute(RTA_OIF, 2);

    constexpr Status none = Status::notReachable;
    constexpr Status wired = Status::reachableViaEthernetOrWiFi;
    constexpr Status cellular = Status::reachableViaCellular;
    const std::tuple<const char*, NetlinkBuilder, Status> cases[] = {
        {"nothing at all", {}, none},
        {"no route", addressed(2), none},
        {"a route to one subnet", subnet, none},
        {"an address and a route", route(addressed(2), 2), wired},
        {"the sixth version", route(addressed(2, AF_INET6), 2, AF_INET6), wired},
        {"a gateway of the other family", viaSixthFamily, wired},
        {"a table of its own", route(addressed(2), 2, AF_INET, RTN_UNICAST, 100), wired},
        {"the table of local routes", route(addressed(2), 2, AF_INET, RTN_UNICAST, RT_TABLE_LOCAL), none},
        {"a route that leads nowhere", route(addressed(2), 2, AF_INET, RTN_UNREACHABLE), none},
        {"no carrier", route(addressed(4), 4), none},
        {"an unknown link", route(addressed(9), 9), none},
        {"the loopback link", route(addressed(1), 1), none},
        {"an address of the other family", route(addressed(2, AF_INET6), 2), none},
        {"an address of another link", route(addressed(3), 2), none},
        {"an address of the loopback link", route(addressed(1), 2), wired},
        {"an address of the link only", route(addressed(2, AF_INET, RT_SCOPE_LINK), 2), none},
        {"a tentative address", route(addressed(2, AF_INET6, 0, IFA_F_TENTATIVE), 2, AF_INET6), none},
        {"an optimistic one",
         route(addressed(2, AF_INET6, 0, IFA_F_TENTATIVE | IFA_F_OPTIMISTIC), 2, AF_INET6), wired},
        {"a duplicate", route(addressed(2, AF_INET6, 0, IFA_F_DADFAILED), 2, AF_INET6), none},
        {"a cellular link", route(addressed(3), 3), cellular},
        {"both kinds", route(route(addressed(3).address(2, AF_INET, "addr"), 3), 2), wired},
        {"the living one of two ways", addressed(3).route(AF_INET).nest(RTA_MULTIPATH, hops), cellular},
        {"only the dead one", addressed(2).route(AF_INET).nest(RTA_MULTIPATH, hops), none},
    };
    for (const auto& [name, builder, expected] : cases)
        EXPECT_EQ(word(statusOf(builder)), word(expected)) << name;
}

TEST(InterfaceTable, is_outdated_only_by_what_it_does_not_know) {
    const InterfaceTable table = tableOf(route(addressed(2), 2));
    const auto withWay = [](NetlinkBuilder& builder, int index) { return builder.attribute(RTA_OIF, index); };
    NetlinkBuilder news;
    const std::tuple<const char*, NetlinkBuilder, bool> cases[] = {
        {"a link as it was", NetlinkBuilder().link(2, "eth0", carryingFlags | IFF_PROMISC), false},
        {"a lost carrier", NetlinkBuilder().link(2, "eth0", IFF_UP), true},
        {"a new link", NetlinkBuilder().link(5, "eth2", 0), true},
        {"a link gone", NetlinkBuilder().link(2, "eth0", 0, RTM_DELLINK), true},
        {"an unknown link gone", NetlinkBuilder().link(5, "eth2", 0, RTM_DELLINK), false},
        {"an address refreshed", NetlinkBuilder().address(2, AF_INET, "addr", 0, IFA_F_DEPRECATED), false},
        {"a new address", NetlinkBuilder().address(2, AF_INET, "more"), true},
        {"an address for its link", NetlinkBuilder().address(2, AF_INET6, "more", RT_SCOPE_LINK), false},
        {"an address gone", NetlinkBuilder().address(2, AF_INET, "addr", 0, 0, RTM_DELADDR), true},
        {"a known address become a duplicate",
         NetlinkBuilder().address(2, AF_INET, "addr", 0, IFA_F_DADFAILED), true},
        {"a route as it was", route({}, 2), false},
        {"a route by another way", route({}, 3), true},
        {"a route gone", withWay(news.route(AF_INET, RTN_UNICAST, RT_TABLE_MAIN, RTM_DELROUTE), 2), true},
        {"a route replaced by one that leads nowhere", route({}, 1, AF_INET, RTN_UNREACHABLE), true},
        {"a local route", route({}, 2, AF_INET, RTN_LOCAL, RT_TABLE_LOCAL), false},
    };
    for (const auto& [name, builder, expected] : cases) {
        const NetlinkMessages parsed = NetlinkMessages::parse(builder.bytes());
        ASSERT_EQ(parsed.messages.size(), 1U) << name;
        EXPECT_EQ(table.isOutdatedBy(parsed.messages.front()), expected) << name;
    }
}

} // namespace
} // namespace teralune
