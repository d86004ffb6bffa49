#pragma once

#include "SolverService/Http/Answer.h"
#include "SolverService/Http/ReceivedRequest.h"

#include <cstddef>
#include <functional>

namespace teralune::service {

/// Turns a request into its answer. Called on the thread of the request's connection, for several
/// connections at once.
using Exchange = std::function<Answer(const ReceivedRequest&)>;

/// Serves the requests of one accepted socket, one after another, until either side closes it. Returns
/// when the connection is done; the socket is still the caller's to close. Throws nothing.
void serveConnection(int socket, std::size_t bodyLimit, const Exchange& exchange) noexcept;

} // namespace teralune::service
