#include "Tests/Support/LoopbackServer.h"

#include "Platform/Foundation/AsciiText.h"
#include "Platform/Foundation/FatalError.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <optional>

namespace teralune {

namespace {

/// The bytes that have come in on one connection and were not taken yet.
class Input {
public:
    explicit Input(int socket) : socket_(socket) {}

    /// Through the first occurrence of the mark; no value at the end of the connection.
    std::optional<std::string> through(std::string_view mark) {
        std::size_t found = 0;
        while ((found = buffer_.find(mark)) == std::string::npos) {
            if (!receive()) {
                return std::nullopt;
            }
        }
        return take(found + mark.size());
    }

    std::optional<std::string> exactly(std::size_t count) {
        while (buffer_.size() < count) {
            if (!receive()) {
                return std::nullopt;
            }
        }
        return take(count);
    }

private:
    bool receive() {
        char bytes[16 * 1024];
        const ssize_t count = recv(socket_, bytes, sizeof bytes, 0);
        buffer_.append(bytes, static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        return count > 0;
    }

    std::string take(std::size_t count) {
        std::string taken = buffer_.substr(0, count);
        buffer_.erase(0, count);
        return taken;
    }

    int socket_;
    std::string buffer_;
};

} // namespace

int listenOnLoopback() {
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
        listen(listener, SOMAXCONN) != 0) {
        fatalError("There is no port left to listen at.");
    }
    return listener;
}

int portOf(int socket) {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

std::string LoopbackServer::Request::target() const {
    const std::size_t begin = head.find(' ') + 1;
    return head.substr(begin, head.find(' ', begin) - begin);
}

std::vector<std::string> LoopbackServer::Request::headers(std::string_view name) const {
    std::vector<std::string> values;
    for (std::size_t begin = head.find('\n') + 1; begin < head.size();) {
        const std::size_t end = head.find("\r\n", begin);
        const std::string_view line = std::string_view(head).substr(begin, end - begin);
        const std::size_t colon = std::min(line.find(':'), line.size());
        if (!line.empty() && equalsIgnoringCase(line.substr(0, colon), name)) {
            values.emplace_back(trimmed(line.substr(std::min(colon + 1, line.size()))));
        }
        begin = end + 2;
    }
    return values;
}

std::string LoopbackServer::Request::header(std::string_view name) const {
    const auto values = headers(name);
    return values.empty() ? std::string() : values.front();
}

LoopbackServer::Reply::Reply(int status, std::string_view body, const HttpHeaders& headers) {
    std::string raw = "HTTP/1.1 " + std::to_string(status) + " Text\r\n";
    for (const auto& [name, value] : headers) {
        raw.append(name).append(": ").append(value).append("\r\n");
    }
    raw.append("Content-Length: ").append(std::to_string(body.size())).append("\r\n\r\n").append(body);
    steps_.push_back({std::move(raw), {}});
}

LoopbackServer::Reply&& LoopbackServer::Reply::then(std::string raw) && {
    steps_.push_back({std::move(raw), {}});
    return std::move(*this);
}

LoopbackServer::Reply&& LoopbackServer::Reply::hold(std::string name) && {
    steps_.push_back({{}, std::move(name)});
    return std::move(*this);
}

LoopbackServer::Reply&& LoopbackServer::Reply::hangUp() && {
    hangsUp_ = true;
    return std::move(*this);
}

LoopbackServer::LoopbackServer(Script script)
    : script_(std::move(script))
    , listener_(listenOnLoopback())
    , port_(portOf(listener_))
    , accepting_([this] { accept(); }) {}

LoopbackServer::~LoopbackServer() {
    shutdown(listener_, SHUT_RDWR);
    accepting_.join();
    close(listener_);
    std::unique_lock lock(mutex_);
    isEnding_ = true;
    for (const int socket : sockets_) {
        shutdown(socket, SHUT_RDWR);
    }
    changed_.notify_all();
    changed_.wait(lock, [this] { return sockets_.empty(); });
}

std::string LoopbackServer::url(std::string_view path) const {
    return "http://127.0.0.1:" + std::to_string(port_) + std::string(path);
}

void LoopbackServer::release(const std::string& name) {
    const std::lock_guard lock(mutex_);
    released_.insert(name);
    changed_.notify_all();
}

void LoopbackServer::waitForRequests(std::size_t count) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this, count] { return requests_.size() >= count; });
}

std::vector<LoopbackServer::Request> LoopbackServer::requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
}

std::size_t LoopbackServer::connectionCount() const {
    const std::lock_guard lock(mutex_);
    return connectionCount_;
}

void LoopbackServer::accept() {
    while (true) {
        const int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket < 0) {
            return;
        }
        const std::lock_guard lock(mutex_);
        ++connectionCount_;
        sockets_.insert(socket);
        std::thread([this, socket] {
            serve(socket);
            const std::lock_guard ending(mutex_);
            sockets_.erase(socket);
            close(socket);
            changed_.notify_all();
        }).detach();
    }
}

void LoopbackServer::serve(int socket) {
    Input input(socket);
    while (auto head = input.through("\r\n\r\n")) {
        Request request{*std::move(head), {}};
        const std::string length = request.header("Content-Length");
        auto body = input.exactly(length.empty() ? 0 : std::stoul(length));
        if (!body) {
            return;
        }
        request.body = *std::move(body);
        {
            const std::lock_guard lock(mutex_);
            requests_.push_back(request);
            changed_.notify_all();
        }
        if (!send(socket, script_(request))) {
            return;
        }
    }
}

bool LoopbackServer::send(int socket, const Reply& reply) {
    for (const Reply::Step& step : reply.steps_) {
        if (!step.held.empty()) {
            std::unique_lock lock(mutex_);
            changed_.wait(lock, [&] { return isEnding_ || released_.contains(step.held); });
        }
        for (std::size_t sent = 0; sent < step.bytes.size();) {
            const ssize_t count =
                ::send(socket, step.bytes.data() + sent, step.bytes.size() - sent, MSG_NOSIGNAL);
            if (count <= 0) {
                return false;
            }
            sent += static_cast<std::size_t>(count);
        }
    }
    return !reply.hangsUp_;
}

} // namespace teralune
