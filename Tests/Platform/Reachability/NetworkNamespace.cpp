#include "Tests/Platform/Reachability/NetworkNamespace.h"

#include "Platform/Foundation/FileDescriptor.h"
#include "Platform/Reachability/NetlinkMessages.h"

#include <linux/veth.h>
#include <sched.h>

#include <algorithm>
#include <array>

// The C library's header that declares it can't stand beside the kernel's.
extern "C" unsigned if_nametoindex(const char* name) noexcept;

namespace teralune {
namespace {

int indexOf(const std::string& name) {
    return static_cast<int>(if_nametoindex(name.c_str()));
}

} // namespace

bool NetworkNamespace::enter() {
    return unshare(CLONE_NEWNET) == 0 || unshare(CLONE_NEWUSER | CLONE_NEWNET) == 0;
}

bool NetworkNamespace::addCable(const std::string& name, const std::string& peer) {
    const NetlinkBuilder other = NetlinkBuilder().raw(ifinfomsg{}).attribute(IFLA_IFNAME, peer);
    const NetlinkBuilder data = NetlinkBuilder().nest(VETH_INFO_PEER, other);
    const NetlinkBuilder kind = NetlinkBuilder().attribute(IFLA_INFO_KIND, "veth").nest(IFLA_INFO_DATA, data);
    NetlinkBuilder builder;
    builder.link(0, name, 0).nest(IFLA_LINKINFO, kind);
    return request(builder, NLM_F_CREATE | NLM_F_EXCL);
}

bool NetworkNamespace::setUp(const std::string& name, bool up) {
    ifinfomsg body{};
    body.ifi_index = indexOf(name);
    body.ifi_flags = up ? IFF_UP : 0;
    body.ifi_change = IFF_UP;
    NetlinkBuilder builder;
    builder.message(RTM_NEWLINK, body);
    return request(builder, 0);
}

bool NetworkNamespace::addAddress(const std::string& name, int high, int low) {
    ifaddrmsg body{};
    body.ifa_family = AF_INET;
    body.ifa_prefixlen = 16;
    body.ifa_index = static_cast<unsigned>(indexOf(name));
    const std::string bytes = {10, 0, static_cast<char>(high), static_cast<char>(low)};
    NetlinkBuilder builder;
    builder.message(RTM_NEWADDR, body).attribute(IFA_LOCAL, bytes);
    return request(builder, NLM_F_CREATE);
}

bool NetworkNamespace::addDefaultRoute(const std::string& name) {
    NetlinkBuilder builder;
    builder.route(AF_INET).attribute(RTA_OIF, indexOf(name));
    return request(builder, NLM_F_CREATE);
}

bool NetworkNamespace::addDefaultRouteThroughSixthVersion(const std::string& name) {
    std::string gateway = {static_cast<char>(AF_INET6), 0, static_cast<char>(0xfe), static_cast<char>(0x80)};
    gateway.resize(17);
    gateway += '\1';
    NetlinkBuilder builder;
    builder.route(AF_INET).attribute(RTA_VIA, gateway).attribute(RTA_OIF, indexOf(name));
    return request(builder, NLM_F_CREATE);
}

bool NetworkNamespace::removeDefaultRoute() {
    NetlinkBuilder builder;
    builder.route(AF_INET, RTN_UNSPEC, RT_TABLE_MAIN, RTM_DELROUTE);
    return request(builder, 0);
}

bool NetworkNamespace::request(NetlinkBuilder& builder, int flags) {
    builder.header().nlmsg_flags = static_cast<unsigned short>(NLM_F_REQUEST | NLM_F_ACK | flags);
    const FileDescriptor socket(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE));
    std::array<std::byte, 4096> answer{};
    if (::send(socket.get(), builder.bytes().data(), builder.bytes().size(), 0) < 0)
        return false;
    const ssize_t size = ::recv(socket.get(), answer.data(), answer.size(), 0);
    const NetlinkMessages parsed =
        NetlinkMessages::parse(std::span(answer).first(static_cast<std::size_t>(std::max<ssize_t>(size, 0))));
    const auto* end =
        parsed.messages.empty() ? nullptr : std::get_if<NetlinkRequestEnd>(&parsed.messages.front().content);
    return end && end->errorNumber == 0;
}

} // namespace teralune
