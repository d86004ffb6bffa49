#pragma once

#include "SolverService/Http/ServiceReply.h"

namespace teralune::service {

/// How an exchange ends on the wire.
enum class Ending {
    /// The whole reply is sent.
    complete,
    /// The connection is closed before a byte of the reply.
    hungUp,
    /// The connection is closed after half of the reply's body.
    cutInBody,
};

/// A reply and how much of it is really sent.
struct Answer {
    ServiceReply reply;
    Ending ending = Ending::complete;
};

} // namespace teralune::service
