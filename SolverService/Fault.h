#pragma once

#include "SolverService/Http/Answer.h"

#include <chrono>
#include <optional>
#include <string>

namespace teralune::service {

/// What is to go wrong with a request, in the order of the members: it is held, then delayed, then
/// answered by the script instead of the service, then cut off on the wire. Made by the functions below
/// and combined with also().
struct Fault {
    bool held = false;
    std::chrono::milliseconds delay{0};
    std::optional<ServiceReply> reply;
    Ending ending = Ending::complete;

    /// This status, body and content type instead of the service's own answer.
    static Fault answer(int status, std::string body = {}, std::string contentType = "text/plain");
    static Fault redirect(std::string location, int status = 302);
    /// The service answers, but so much later.
    static Fault delayed(std::chrono::milliseconds delay);
    /// The service looks at the request only once Faults::release() is called.
    static Fault hold();
    /// The connection is closed without a byte of a reply. The service has carried the request out.
    static Fault hangUp();
    /// The connection is closed after the head and half of the body.
    static Fault cutBody();

    /// Both faults at once.
    Fault also(const Fault& other) const;
};

} // namespace teralune::service
