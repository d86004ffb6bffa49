#pragma once

#include <cstddef>
#include <string>
#include <sys/types.h>

namespace teralune::service {

/// One accepted socket under the HTTP engine. It keeps the bytes of the request that is
/// being read, takes no more of them than allowed, and holds the reply back until flush(), so that the
/// end of the exchange can still be decided when the reply is known. Used by one thread.
class ConnectionStream {
public:
    /// How long a connection may lie idle between two requests.
    static constexpr int idleSeconds = 120;

    /// The socket stays the caller's to close. requestLimit bounds head and body of one request together.
    ConnectionStream(int socket, std::size_t requestLimit);

    /// Waits for the first byte of the next request. False when the peer closed or stayed silent too long.
    bool waitForRequest();
    /// What came in since waitForRequest().
    const std::string& received() const { return received_; }

    /// The reply that waits to be sent.
    const std::string& pendingReply() const { return pending_; }
    /// Sends the first size bytes of the waiting reply and drops the rest.
    bool flush(std::size_t size);

    /// Takes up to size bytes of the request, waiting for the first; -1 at the end of the connection, when
    /// the peer stalls, and when the request is larger than allowed.
    ssize_t read(char* bytes, std::size_t size);
    /// Adds to the waiting reply.
    void write(const char* bytes, std::size_t size) { pending_.append(bytes, size); }

private:
    bool fill();

    int socket_;
    std::size_t requestLimit_;
    std::string buffer_;
    std::size_t consumed_ = 0;
    std::string received_;
    std::string pending_;
};

} // namespace teralune::service
