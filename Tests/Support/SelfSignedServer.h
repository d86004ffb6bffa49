#pragma once

#include <string>
#include <thread>

namespace teralune {

/// A TLS server on 127.0.0.1 whose certificate is for that address and signed by nobody but itself. It only
/// shakes hands, one connection after the other.
class SelfSignedServer {
public:
    SelfSignedServer();
    ~SelfSignedServer();
    SelfSignedServer(const SelfSignedServer&) = delete;
    SelfSignedServer& operator=(const SelfSignedServer&) = delete;

    std::string url() const;
    /// How many handshakes the client carried through to the end. Asked after the server has ended.
    int completedHandshakes() const { return completedHandshakes_; }
    void end();

private:
    void serve();

    int listener_ = -1;
    int completedHandshakes_ = 0;
    std::thread thread_;
};

} // namespace teralune
