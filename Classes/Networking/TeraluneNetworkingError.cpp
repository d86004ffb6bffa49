#include "Classes/Networking/TeraluneNetworkingError.h"

namespace teralune {
namespace {

Error make(TeraluneNetworkingError::Case which, std::string description) {
    return {std::string(TeraluneNetworkingError::Domain),
            static_cast<std::int64_t>(which),
            std::move(description),
            {}};
}

} // namespace

Error TeraluneNetworkingError::failureWithMessage(const std::string& message) {
    return make(Case::failureWithMessage, message);
}

Error TeraluneNetworkingError::jsonContentFailure() {
    return make(Case::jsonContentFailure, "The server's reply could not be read.");
}

Error TeraluneNetworkingError::internalRequestFailure() {
    return make(Case::internalRequestFailure, "The server could not carry out the request.");
}

std::optional<TeraluneNetworkingError::Case> TeraluneNetworkingError::caseOf(const Error& error) {
    if (error.domain != Domain || error.code < 0 ||
        error.code > static_cast<std::int64_t>(Case::internalRequestFailure))
        return std::nullopt;
    return static_cast<Case>(error.code);
}

} // namespace teralune
