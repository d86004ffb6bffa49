#include "SolverService/Http/HttpListener.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <list>
#include <mutex>
#include <thread>

namespace teralune::service {

namespace {

/// More than any client of one machine opens; a flood beyond it is turned away at once.
constexpr std::size_t connectionLimit = 1024;
constexpr time_t stalledSeconds = 10;
constexpr int retryMilliseconds = 5;

Error listenError(const std::string& what) {
    return Error{"TeraluneSolverService", errno, what + ": " + std::strerror(errno), {}};
}

} // namespace

struct HttpListener::State {
    struct Connection {
        int socket = -1;
        bool done = false;
        std::thread thread;
    };

    int socket = -1;
    std::uint16_t port = 0;
    std::size_t bodyLimit = 0;
    Exchange exchange;
    std::thread acceptor;

    std::mutex mutex;
    bool stopped = false;
    std::list<Connection> connections;

    ~State() {
        if (socket >= 0) {
            close(socket);
        }
    }

    void acceptAll() {
        for (;;) {
            const int accepted = accept4(socket, nullptr, nullptr, SOCK_CLOEXEC);
            if (accepted < 0) {
                if (errno == EINTR || errno == ECONNABORTED || errno == EMFILE || errno == ENFILE) {
                    if (isStopped()) {
                        return;
                    }
                    // Out of descriptors: some connection has to end first.
                    poll(nullptr, 0, retryMilliseconds);
                    continue;
                }
                return;
            }
            if (!serve(accepted)) {
                close(accepted);
            }
            joinFinished();
        }
    }

    bool isStopped() {
        const std::lock_guard lock(mutex);
        return stopped;
    }

    bool serve(int accepted) {
        // Replies are written in one piece; waiting for more would only delay them.
        const int on = 1;
        setsockopt(accepted, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        const timeval stalled{stalledSeconds, 0};
        setsockopt(accepted, SOL_SOCKET, SO_RCVTIMEO, &stalled, sizeof stalled);
        setsockopt(accepted, SOL_SOCKET, SO_SNDTIMEO, &stalled, sizeof stalled);

        const std::lock_guard lock(mutex);
        if (stopped || connections.size() >= connectionLimit) {
            return false;
        }
        Connection& connection = connections.emplace_back();
        connection.socket = accepted;
        try {
            connection.thread = std::thread([this, &connection] { run(connection); });
        } catch (const std::system_error&) {
            connections.pop_back();
            return false;
        }
        return true;
    }

    void run(Connection& connection) {
        serveConnection(connection.socket, bodyLimit, exchange);
        const std::lock_guard lock(mutex);
        close(connection.socket);
        connection.socket = -1;
        connection.done = true;
    }

    void joinFinished() {
        std::list<Connection> finished;
        {
            const std::lock_guard lock(mutex);
            for (auto next = connections.begin(); next != connections.end();) {
                const auto current = next++;
                if (current->done) {
                    finished.splice(finished.end(), connections, current);
                }
            }
        }
        for (Connection& connection : finished) {
            connection.thread.join();
        }
    }
};

HttpListener::HttpListener(std::unique_ptr<State> state) : state_(std::move(state)) {}

HttpListener::~HttpListener() {
    stop();
}

Result<std::unique_ptr<HttpListener>> HttpListener::start(std::uint16_t port, std::size_t bodyLimit,
                                                          Exchange exchange) {
    auto state = std::make_unique<State>();
    state->bodyLimit = bodyLimit;
    state->exchange = std::move(exchange);
    state->socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (state->socket < 0) {
        return listenError("No socket");
    }
    const int on = 1;
    setsockopt(state->socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    socklen_t size = sizeof address;
    if (bind(state->socket, reinterpret_cast<const sockaddr*>(&address), size) != 0 ||
        listen(state->socket, SOMAXCONN) != 0 ||
        getsockname(state->socket, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        return listenError("Port " + std::to_string(port) + " of 127.0.0.1 can't be had");
    }
    state->port = ntohs(address.sin_port);
    State& running = *state;
    state->acceptor = std::thread([&running] { running.acceptAll(); });
    return std::unique_ptr<HttpListener>(new HttpListener(std::move(state)));
}

std::uint16_t HttpListener::port() const {
    return state_->port;
}

void HttpListener::closeConnections() {
    const std::lock_guard lock(state_->mutex);
    state_->stopped = true;
    for (const State::Connection& connection : state_->connections) {
        if (connection.socket >= 0) {
            shutdown(connection.socket, SHUT_RDWR);
        }
    }
    shutdown(state_->socket, SHUT_RDWR);
}

void HttpListener::stop() {
    if (!state_->acceptor.joinable()) {
        return;
    }
    closeConnections();
    state_->acceptor.join();
    for (State::Connection& connection : state_->connections) {
        connection.thread.join();
    }
    state_->connections.clear();
}

} // namespace teralune::service
