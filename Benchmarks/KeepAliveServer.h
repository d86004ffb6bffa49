#pragma once

#include <string>

#include <sys/types.h>

namespace teralune::benchmarks {

/// A process of its own that answers every request on 127.0.0.1 with the same 256 bytes of JSON, as fast as
/// one epoll loop can, and keeps connections open. It understands requests without a body alone.
class KeepAliveServer {
public:
    /// To be made before the program has other threads.
    KeepAliveServer();
    ~KeepAliveServer();
    KeepAliveServer(const KeepAliveServer&) = delete;
    KeepAliveServer& operator=(const KeepAliveServer&) = delete;

    const std::string& url() const { return url_; }

private:
    pid_t process_ = -1;
    std::string url_;
};

} // namespace teralune::benchmarks
