#pragma once

#include "Platform/Foundation/Result.h"
#include "SolverService/Http/HttpConnection.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace teralune::service {

/// Accepts connections on 127.0.0.1 and serves each on a thread of its own. start() and stop() belong
/// to one thread; the exchange is called on the connections' threads.
class HttpListener {
public:
    /// Port 0 takes any free one. Fails when the port can't be had.
    static Result<std::unique_ptr<HttpListener>> start(std::uint16_t port, std::size_t bodyLimit,
                                                       Exchange exchange);
    /// Stops.
    ~HttpListener();

    std::uint16_t port() const;

    /// Closes every connection, a half-read or half-sent one too, and accepts no more. A reply that is not
    /// out yet stays in.
    void closeConnections();
    /// Closes the connections and waits for the threads. An exchange that is running is waited for, so its
    /// owner must have told it to end.
    void stop();

private:
    struct State;
    explicit HttpListener(std::unique_ptr<State> state);

    std::unique_ptr<State> state_;
};

} // namespace teralune::service
