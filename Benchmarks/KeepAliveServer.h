#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <string>

#include <sys/types.h>

namespace teralune::benchmarks {

/// A process of its own on 127.0.0.1 that answers each request "GET /NUMBER" with the same 256 bytes of JSON,
/// as fast as one epoll loop can, and keeps connections open. A request that carries staleToken is refused
/// with 403; one to "/refresh" is answered with a token that is not stale. It understands requests without a
/// body alone, and keeps count of them.
class KeepAliveServer {
public:
    static constexpr const char* staleToken = "stale";
    static constexpr std::size_t numbers = 1000;

    /// What the server saw since reset(). To be read and reset while no request is under way.
    struct Counts {
        std::atomic<int> refreshes;
        std::atomic<int> openConnections;
        std::atomic<int> mostConnections; ///< open at the same time
        /// By the request's number, as long as that is below numbers.
        std::array<std::atomic<int>, numbers> served;
        std::array<std::atomic<int>, numbers> refused;

        void reset();
    };

    /// To be made before the program has other threads.
    KeepAliveServer();
    ~KeepAliveServer();
    KeepAliveServer(const KeepAliveServer&) = delete;
    KeepAliveServer& operator=(const KeepAliveServer&) = delete;

    /// 127.0.0.1:PORT
    const std::string& host() const { return host_; }
    Counts& counts() const { return *counts_; }

private:
    Counts* const counts_; ///< shared with the process
    pid_t process_ = -1;
    std::string host_;
};

} // namespace teralune::benchmarks
