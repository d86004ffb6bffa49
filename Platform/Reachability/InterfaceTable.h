#pragma once

#include "Platform/Reachability/InterfaceMedium.h"
#include "Platform/Reachability/NetlinkMessages.h"
#include "Platform/Reachability/NetworkReachabilityStatus.h"

#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <tuple>

namespace teralune {

/// The interfaces, addresses and default routes that decide whether the network can be reached. Filled from
/// dumps of the kernel's tables alone: the kernel drops routes without a word when an interface goes down, so
/// a notification can say that the table is out of date but can't be relied on to bring it up to date.
class InterfaceTable {
public:
    using MediumOfInterface = std::function<InterfaceMedium(std::string_view name)>;

    void add(const NetlinkMessage& dumped);

    /// Whether the notification tells something that this table does not hold already.
    bool isOutdatedBy(const NetlinkMessage& notification) const;

    /// Reachable: a default route leads out through an interface that is up and has an address of the route's
    /// family that is valid beyond its own link. Over a cellular network only if all such routes are.
    NetworkReachabilityStatus status(const MediumOfInterface& mediumOf) const;

private:
    struct Link {
        std::string name;
        unsigned flags = 0;
        friend bool operator==(const Link&, const Link&) = default;
    };
    /// Interface, family and bytes of a usable address.
    using Address = std::tuple<int, int, std::string>;
    /// Interface, family and table of a usable way out of a default route.
    using DefaultRoute = std::tuple<int, int, unsigned>;

    static Link linkOf(const NetlinkLink& link);
    static Address addressOf(const NetlinkAddress& address);
    static std::set<DefaultRoute> defaultRoutesOf(const NetlinkRoute& route);

    bool leadsOut(int interfaceIndex, int family) const;
    bool hasAddress(int interfaceIndex, int family) const;

    std::map<int, Link> links_;
    std::set<Address> addresses_;
    std::set<DefaultRoute> defaultRoutes_;
};

} // namespace teralune
