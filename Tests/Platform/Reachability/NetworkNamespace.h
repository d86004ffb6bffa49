#pragma once

#include "Tests/Platform/Reachability/NetlinkBuilder.h"

#include <string>

namespace teralune {

/// A network without any interface but a sleeping loopback, for the whole process from then on, and the
/// commands that shape it. Only for a process that has one thread.
class NetworkNamespace {
public:
    /// False where the system lets us have none.
    static bool enter();

    /// Two interfaces that are the ends of one cable.
    static bool addCable(const std::string& name, const std::string& peer);
    static bool setUp(const std::string& name, bool up);
    /// 10.0.high.low/16
    static bool addAddress(const std::string& name, int high, int low);
    static bool addDefaultRoute(const std::string& name);
    /// The same through a gateway with an IPv6 address.
    static bool addDefaultRouteThroughSixthVersion(const std::string& name);
    static bool removeDefaultRoute();

private:
    /// Whether the kernel took the one message.
    static bool request(NetlinkBuilder& builder, int flags);
};

} // namespace teralune
