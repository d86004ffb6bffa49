#include "Platform/Reachability/NetlinkMessages.h"
#include "Tests/Platform/Reachability/NetlinkBuilder.h"

#include <gtest/gtest.h>

#include <memory>

namespace teralune {
namespace {

using namespace std::string_view_literals;

NetlinkBuilder oneOfEach() {
    NetlinkBuilder hops;
    hops.raw(rtnexthop{16, RTNH_F_DEAD, 0, 7}).attribute(RTA_GATEWAY, "\x0a\0\0\x01"sv);
    hops.raw(rtnexthop{8, 0, 0, 8});
    NetlinkBuilder builder;
    builder.link(3, "wlan0\0garbage"sv, carryingFlags);
    builder.address(3, AF_INET, "peer", RT_SCOPE_SITE, IFA_F_TENTATIVE).attribute(IFA_LOCAL, "mine"sv);
    builder.route(AF_INET6, RTN_UNICAST, RT_TABLE_COMPAT, RTM_DELROUTE)
        .attribute(RTA_TABLE, 51820)
        .nest(RTA_MULTIPATH, hops);
    builder.route(AF_INET).attribute(RTA_VIA, "\x0a\0"sv).attribute(RTA_OIF, 3);
    builder.header().nlmsg_seq = 9;
    builder.header().nlmsg_pid = 77;
    builder.message(NLMSG_DONE, 0, NLM_F_DUMP_INTR);
    return builder;
}

template<class Content>
const Content& contentAt(const NetlinkMessages& parsed, std::size_t index) {
    return std::get<Content>(parsed.messages.at(index).content);
}

TEST(NetlinkMessages, reads_links_addresses_routes_and_the_end_of_a_dump) {
    const NetlinkMessages parsed = NetlinkMessages::parse(oneOfEach().bytes());
    EXPECT_TRUE(parsed.intact);
    ASSERT_EQ(parsed.messages.size(), 5U);
    const auto& link = contentAt<NetlinkLink>(parsed, 0);
    EXPECT_EQ(std::tie(link.index, link.name, link.flags), std::make_tuple(3, "wlan0", carryingFlags));
    const auto& address = contentAt<NetlinkAddress>(parsed, 1);
    EXPECT_EQ(address.bytes, "mine");
    EXPECT_EQ(std::tie(address.interfaceIndex, address.family, address.scope, address.flags),
              std::make_tuple(3, AF_INET, RT_SCOPE_SITE, IFA_F_TENTATIVE));
    const auto& route = contentAt<NetlinkRoute>(parsed, 2);
    EXPECT_EQ(parsed.messages[2].change, NetlinkMessage::Change::removed);
    EXPECT_EQ(std::tie(route.family, route.table), std::make_tuple(AF_INET6, 51820U));
    ASSERT_EQ(route.nextHops.size(), 2U);
    EXPECT_EQ(route.nextHops[0].flags, RTNH_F_DEAD);
    EXPECT_EQ(route.nextHops[1].interfaceIndex, 8);
    EXPECT_EQ(contentAt<NetlinkRoute>(parsed, 3).nextHops.at(0).interfaceIndex, 3);
    EXPECT_EQ(parsed.messages[3].sequence, 9U);
    EXPECT_EQ(parsed.messages[3].port, 77U);
    EXPECT_EQ(contentAt<NetlinkRequestEnd>(parsed, 4).errorNumber, 0);
    EXPECT_TRUE(parsed.messages[4].dumpInterrupted);
}

TEST(NetlinkMessages, takes_the_error_number_out_of_a_refusal) {
    for (const auto& [code, expected] : {std::pair(-EBUSY, EBUSY), {0, 0}, {5, 0}, {INT_MIN, 0}}) {
        NetlinkBuilder builder;
        builder.message(NLMSG_ERROR, nlmsgerr{code, {}});
        EXPECT_EQ(contentAt<NetlinkRequestEnd>(NetlinkMessages::parse(builder.bytes()), 0).errorNumber,
                  expected);
    }
}

TEST(NetlinkMessages, leaves_out_what_says_nothing_of_reachability) {
    ifinfomsg bridgePort{};
    bridgePort.ifi_family = AF_BRIDGE;
    rtmsg cached{};
    cached.rtm_family = AF_INET6;
    cached.rtm_flags = RTM_F_CLONED;
    NetlinkBuilder builder;
    builder.link(3, "wlan0", carryingFlags).attribute(IFLA_WIRELESS, 1);
    builder.message(RTM_DELLINK, bridgePort);
    builder.address(3, AF_PACKET, "mac");
    builder.message(RTM_NEWROUTE, cached);
    builder.message(RTM_NEWNEIGH, 'n');
    const NetlinkMessages parsed = NetlinkMessages::parse(builder.bytes());
    EXPECT_TRUE(parsed.intact);
    EXPECT_TRUE(parsed.messages.empty());
}

TEST(NetlinkMessages, keeps_what_stands_before_something_that_makes_no_sense) {
    const auto afterLink = [](auto&& spoil) {
        NetlinkBuilder builder;
        builder.link(3, "eth0", carryingFlags);
        spoil(builder);
        return builder;
    };
    const NetlinkBuilder noHops = NetlinkBuilder().raw(rtnexthop{0, 0, 0, 7});
    const std::pair<const char*, NetlinkBuilder> cases[] = {
        {"message too long", afterLink([](auto& b) { b.route(AF_INET).header().nlmsg_len += 1; })},
        {"message too short", afterLink([](auto& b) { b.route(AF_INET).header().nlmsg_len = 15; })},
        {"body too short", afterLink([](auto& b) { b.message(RTM_NEWROUTE, 1); })},
        {"attribute too long", afterLink([](auto& b) {
             b.route(AF_INET).raw(rtattr{99, RTA_OIF}).setLength();
         })},
        {"attribute too short", afterLink([](auto& b) {
             b.route(AF_INET).raw(rtattr{0, RTA_OIF}).setLength();
         })},
        {"next hop too short", afterLink([&](auto& b) { b.route(AF_INET).nest(RTA_MULTIPATH, noHops); })},
        {"overrun", afterLink([](auto& b) { b.message(NLMSG_OVERRUN, 0); })},
        {"a rest", afterLink([](auto& b) { b.raw(0); })},
    };
    for (const auto& [name, builder] : cases) {
        const NetlinkMessages parsed = NetlinkMessages::parse(builder.bytes());
        EXPECT_FALSE(parsed.intact) << name;
        ASSERT_EQ(parsed.messages.size(), 1U) << name;
        EXPECT_EQ(contentAt<NetlinkLink>(parsed, 0).name, "eth0") << name;
    }
}

TEST(NetlinkMessages, no_cut_and_no_changed_byte_leads_it_outside_the_datagram) {
    const std::vector<std::byte> whole = oneOfEach().bytes();
    // Blocks of exactly the right size, so that the address sanitizer sees a byte too many.
    const auto parseCopy = [&](std::size_t size, std::size_t changed, std::byte value) {
        const auto copy = std::make_unique<std::byte[]>(size);
        std::copy_n(whole.begin(), size, copy.get());
        if (changed < size)
            copy[changed] = value;
        return NetlinkMessages::parse(std::span(copy.get(), size));
    };
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const NetlinkMessages cut = parseCopy(size, size, {});
        EXPECT_LT(cut.messages.size(), 5U);
        for (const auto value : {std::byte{0}, std::byte{1}, std::byte{0x7f}, std::byte{0xff}})
            EXPECT_LE(parseCopy(whole.size(), size, value).messages.size(), whole.size() / sizeof(nlmsghdr));
    }
}

} // namespace
} // namespace teralune
