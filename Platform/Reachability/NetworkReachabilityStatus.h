#pragma once

#include <string_view>

namespace teralune {

/// What a monitor knows of the network. Unknown means that it could not find out.
enum class NetworkReachabilityStatus {
    unknown,
    notReachable,
    reachableViaEthernetOrWiFi,
    reachableViaCellular,
};

bool isReachable(NetworkReachabilityStatus status);

/// The status as it is printed.
std::string_view word(NetworkReachabilityStatus status);

} // namespace teralune
