#pragma once

#include "Classes/Interfaces/AccountEndpointsType.h"
#include "Classes/Interfaces/NotebookEndpointsType.h"
#include "Classes/Interfaces/SolverEndpointsType.h"
#include "Classes/Interfaces/UsageLogEndpointsType.h"
#include "Platform/Foundation/Lifetime.h"

#include <optional>
#include <string>
#include <string_view>

namespace teralune {

/// The API client's public operations, one base for each family of endpoints.
class NetworkingType : public AccountEndpointsType,
                       public NotebookEndpointsType,
                       public SolverEndpointsType,
                       public UsageLogEndpointsType {
public:
    /// Posted, without object or user info, after a change of a note that the server accepted.
    static constexpr std::string_view UserUpdatedNoteNotification = "UserUpdatedNoteNotification";

    /// The file of a page of the host's main bundle for this kind of device, as a file URL; absent when the
    /// bundle lacks it.
    virtual std::optional<std::string> staticLocalURL(std::string_view page) const = 0;

    /// Percent-encodes a text for a query string that is built by hand: all that a URL fragment may not hold,
    /// and "+" and "&". Bytes that are not UTF-8 are sent as U+FFFD.
    virtual std::string urlEncode(std::string_view text) const = 0;

    /// For whoever wants to send again when an answer has come: tells, on the main queue, whether the client
    /// is still there.
    virtual Lifetime::Watch lifetime() const = 0;
};

} // namespace teralune
