#include "Platform/Reachability/NetworkReachabilityStatus.h"

#include "Platform/Foundation/FatalError.h"

namespace teralune {

bool isReachable(NetworkReachabilityStatus status) {
    return status == NetworkReachabilityStatus::reachableViaEthernetOrWiFi ||
           status == NetworkReachabilityStatus::reachableViaCellular;
}

std::string_view word(NetworkReachabilityStatus status) {
    switch (status) {
    case NetworkReachabilityStatus::unknown:
        return "unknown";
    case NetworkReachabilityStatus::notReachable:
        return "notReachable";
    case NetworkReachabilityStatus::reachableViaEthernetOrWiFi:
        return "reachable(ethernetOrWiFi)";
    case NetworkReachabilityStatus::reachableViaCellular:
        return "reachable(cellular)";
    }
    fatalError("Unexpected reachability status");
}

} // namespace teralune
