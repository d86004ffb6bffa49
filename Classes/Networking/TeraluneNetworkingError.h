#pragma once

#include "Platform/Foundation/Error.h"

#include <optional>
#include <string>
#include <string_view>

namespace teralune {

/// The API client's own failures, as the error of a task.
class TeraluneNetworkingError {
public:
    enum class Case {
        failureWithMessage = 0,     ///< the server's text, to be shown as it is
        jsonContentFailure = 1,     ///< the reply could not be read
        internalRequestFailure = 2, ///< the server reported failure without a text
    };

    static constexpr std::string_view Domain = "TeraluneNetworkingError";

    static Error failureWithMessage(const std::string& message);
    static Error jsonContentFailure();
    static Error internalRequestFailure();

    /// Which case an error is; no value for an error of another domain.
    static std::optional<Case> caseOf(const Error& error);
};

} // namespace teralune
