#include "Platform/Reachability/InterfaceTable.h"

#include <linux/if.h>
#include <linux/if_addr.h>
#include <linux/rtnetlink.h>

#include <algorithm>

namespace teralune {
namespace {

constexpr unsigned carrierFlags = IFF_UP | IFF_RUNNING | IFF_LOWER_UP;

bool isDefault(const NetlinkRoute& route) {
    return route.destinationLength == 0 && route.table != RT_TABLE_LOCAL;
}

bool isUsable(const NetlinkAddress& address) {
    // An optimistic address may be used while it is still tentative.
    const bool settled = (address.flags & IFA_F_TENTATIVE) == 0 || (address.flags & IFA_F_OPTIMISTIC) != 0;
    return address.scope < RT_SCOPE_LINK && settled && (address.flags & IFA_F_DADFAILED) == 0;
}

} // namespace

InterfaceTable::Link InterfaceTable::linkOf(const NetlinkLink& link) {
    return {link.name, link.flags & (carrierFlags | IFF_LOOPBACK)};
}

InterfaceTable::Address InterfaceTable::addressOf(const NetlinkAddress& address) {
    return {address.interfaceIndex, address.family, address.bytes};
}

std::set<InterfaceTable::DefaultRoute> InterfaceTable::defaultRoutesOf(const NetlinkRoute& route) {
    std::set<DefaultRoute> routes;
    if (!isDefault(route) || route.type != RTN_UNICAST)
        return routes;
    for (const NetlinkNextHop& hop : route.nextHops) {
        if ((hop.flags & (RTNH_F_DEAD | RTNH_F_LINKDOWN)) == 0)
            routes.emplace(hop.interfaceIndex, route.family, route.table);
    }
    return routes;
}

void InterfaceTable::add(const NetlinkMessage& dumped) {
    if (const auto* link = std::get_if<NetlinkLink>(&dumped.content))
        links_[link->index] = linkOf(*link);
    else if (const auto* address = std::get_if<NetlinkAddress>(&dumped.content);
             address && isUsable(*address))
        addresses_.insert(addressOf(*address));
    else if (const auto* route = std::get_if<NetlinkRoute>(&dumped.content))
        defaultRoutes_.merge(defaultRoutesOf(*route));
}

bool InterfaceTable::isOutdatedBy(const NetlinkMessage& notification) const {
    const bool present = notification.change == NetlinkMessage::Change::present;
    if (const auto* link = std::get_if<NetlinkLink>(&notification.content)) {
        const auto known = links_.find(link->index);
        return present ? known == links_.end() || known->second != linkOf(*link) : known != links_.end();
    }
    if (const auto* address = std::get_if<NetlinkAddress>(&notification.content))
        return (present && isUsable(*address)) != addresses_.contains(addressOf(*address));
    if (const auto* route = std::get_if<NetlinkRoute>(&notification.content)) {
        if (!isDefault(*route))
            return false;
        // A route that is gone, or has become one that leads nowhere, may have replaced a known one.
        const std::set<DefaultRoute> routes = defaultRoutesOf(*route);
        return !present || routes.empty() ||
               !std::includes(defaultRoutes_.begin(), defaultRoutes_.end(), routes.begin(), routes.end());
    }
    return false;
}

NetworkReachabilityStatus InterfaceTable::status(const MediumOfInterface& mediumOf) const {
    NetworkReachabilityStatus status = NetworkReachabilityStatus::notReachable;
    for (const auto& [interfaceIndex, family, table] : defaultRoutes_) {
        if (!leadsOut(interfaceIndex, family))
            continue;
        if (mediumOf(links_.at(interfaceIndex).name) == InterfaceMedium::ethernetOrWiFi)
            return NetworkReachabilityStatus::reachableViaEthernetOrWiFi;
        status = NetworkReachabilityStatus::reachableViaCellular;
    }
    return status;
}

bool InterfaceTable::leadsOut(int interfaceIndex, int family) const {
    const auto link = links_.find(interfaceIndex);
    if (link == links_.end() || link->second.flags != carrierFlags)
        return false;
    // A router's line may have no address of its own; packets then carry one of the loopback interface.
    return hasAddress(interfaceIndex, family) ||
           std::any_of(links_.begin(), links_.end(), [&](const auto& other) {
               return (other.second.flags & IFF_LOOPBACK) != 0 && hasAddress(other.first, family);
           });
}

bool InterfaceTable::hasAddress(int interfaceIndex, int family) const {
    const auto first = addresses_.lower_bound(Address(interfaceIndex, family, std::string()));
    return first != addresses_.end() && std::get<0>(*first) == interfaceIndex &&
           std::get<1>(*first) == family;
}

} // namespace teralune
